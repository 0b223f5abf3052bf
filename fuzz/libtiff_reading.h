// What libtiff by itself reads of a TIFF, for targets that compare with it. Its header stays in the
// source: it declares a `tiff` of its own.
#pragma once

#include "fuzz/drawn.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tympan::fuzz {

/// A picture of 8-bit samples side by side, in strips.
struct PlainTiff {
    std::uint32_t width = 0, length = 0;
    std::uint16_t samples = 0, photometric = 0;
    bool isUncompressed = false;
    std::uint32_t rowsPerStrip = 0;
    std::vector<std::vector<unsigned char>> rows;

    std::size_t RowBytes() const { return std::size_t{ width } * samples; }
};

/// \return nothing for what libtiff doesn't open or read to its end, another layout, and more than
///   64 KiB of samples.
std::optional<PlainTiff> ReadByLibtiff(Input file);

} // namespace tympan::fuzz
