// Where uncompressed rows stand in their file. They are read from there without libtiff, which
// would copy them once more.
#pragma once

#include "platform/tiff_layout.h"

#include <cstdint>
#include <optional>

namespace tympan {

/// Rows that stand in the file one behind the other.
struct PlainStretch {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint64_t position = 0; ///< in the file
};

/// The rows around `row` that are worth one read: the same for each of them, whatever strips they
/// are of. None where the file, or the strip as it tells its own length, ends before the row does.
/// \param layout one that `isPlain`, of a picture whose rows can be read.
/// \param most what one read may have, in bytes; a row is read in any case.
std::optional<PlainStretch> PlainStretchAround(TIFF* open, const TiffLayout& layout,
                                               std::uint32_t row, std::uint64_t most,
                                               std::uint64_t fileLength);

} // namespace tympan
