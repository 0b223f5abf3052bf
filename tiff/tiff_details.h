// What a TIFF's picture object doesn't carry: the names of its channels, the unit of its resolutions,
// the colours of its palette.
#pragma once

#include "platform/export.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class BasePictureIF;

namespace tympan {

/// What the directory of a TIFF tells beside the record.
struct TiffDetails {
    /// For each sample of a pixel: the file's ink names where it has them, else "Cyan", "Red", "Gray",
    /// "Ink 5", "Alpha 4" and the like.
    std::vector<std::string> channels;
    /// What a resolution of the record is to be multiplied by for pixels per inch; 0.0 where the file
    /// has no unit.
    double perInch = 0.0;
    /// Red, green and blue of each value of the sample of a picture with a palette; else empty.
    std::vector<std::array<std::uint8_t, 3>> palette;
};

/// \return nothing for an object of another format, or without an open file.
/// \throws std::bad_alloc.
TYMPAN_API std::optional<TiffDetails> TiffDetailsOf(const BasePictureIF& picture);

} // namespace tympan
