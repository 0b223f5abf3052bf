// Rows of a picture in the colours that the screen shows them in, whatever the picture's format.
#pragma once

#include "failure.h"
#include "picture.h"
#include "preview_bands.h"
#include "row_range.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

namespace tympan::tool {

using BgrColour = std::array<std::uint8_t, 3>; ///< blue, green and red

/// Of a colour as the library packs it.
BgrColour BgrOf(unsigned long packed);

/// Gives rows from the top down, the pixels of each from left to right.
using GiveRows = std::function<void(const TakePixels& take)>;

/// All separations together, in blue, green and red: line work and CT as the library draws them, a
/// JPEG and a TIFF in their own colours. A few MiB of memory, but for TIFF/IT.
/// \param picture one that outlives the rows
/// \throws FileFailure, when they are given, naming a row that can't be read.
GiveRows ShownRows(const Picture& picture, RowRange rows);

/// The same rows, held to what the picture had when the first was asked for: a CT may be cut short
/// while it is open, and the library leaves rows that it doesn't hold as they were.
/// \throws FileFailure, behind the last row, when the picture holds fewer rows by then.
GiveRows HeldToItsRows(const Picture& picture, GiveRows give);

/// Refuses what takes more memory than is allowed: TIFF/IT is drawn as a whole.
void RequireMemory(const Picture& picture, RowRange rows, std::uint64_t most,
                   const std::string& advice);

/// What is to be told of a CT whose end is missing, once the rest is shown; nothing of one that is
/// whole.
/// \throws that failure when there is no rest to show, or next to none.
std::optional<FileFailure> ShortfallOf(const Picture& picture, RowRange rows);

} // namespace tympan::tool
