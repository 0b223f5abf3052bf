// The rows of line work as runs of colours, and the colours themselves.
#pragma once

#include "picture.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tympan::tool {

/// Some pixels of one colour, which the file names by its index, from 1.
struct LineWorkRun {
    std::uint8_t colour;
    std::uint8_t length;
};

/// Reads one row after the other.
class LineWorkRows {
  public:
    /// \param picture line work; it outlives the rows
    explicit LineWorkRows(const Picture& picture);

    /// The runs of a row as the file has them. They hold until the next call.
    /// \throws FileFailure for a row that isn't sound, one with a colour that isn't in the table too.
    std::span<const LineWorkRun> Row(std::uint32_t row);

  private:
    const Picture& picture_;
    LWFileInterface& lineWork_;
    std::vector<std::uint8_t> bytes_;
    std::vector<LineWorkRun> runs_;
};

/// The header record of line work.
const LwPictureParameters& LineWorkRecord(const Picture& picture);

/// The four inks of a colour, by its index from 1; 255 is full ink. What the picture has no
/// separation for has none.
std::array<std::uint8_t, 4> InksOfColour(const Picture& picture, unsigned int index);

/// The index of the first colour without any ink; nothing when each has some.
std::optional<unsigned int> PaperIndex(const LwPictureParameters& record);

} // namespace tympan::tool
