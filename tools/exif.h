// The little that import wants of what a camera writes into a JPEG file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace tympan::tool {

struct ExifFields {
    unsigned int orientation = 1;      ///< 1 to 8; 1 is the right way up
    std::optional<double> resolutionX; ///< pixels per `inchesPerUnit`
    std::optional<double> resolutionY;
    double inchesPerUnit = 1.0;
};

/// Reads the fields out of an APP1 segment; what isn't there, or is no Exif, keeps its default.
ExifFields ReadExif(std::span<const std::uint8_t> segment);

} // namespace tympan::tool
