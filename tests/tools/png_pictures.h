// PNG files read as a whole, by libpng.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tympan::test {

struct PngPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t channels = 0;        ///< 1 grey, 3 RGB; 0 when the file is no good
    std::uint32_t pixelsPerMetreX = 0; ///< 0 when the file doesn't tell
    std::uint32_t pixelsPerMetreY = 0;
    std::vector<std::uint8_t> samples; ///< rows from the top down

    /// The samples of one pixel.
    std::vector<std::uint8_t> At(std::uint32_t column, std::uint32_t row) const;
};

/// Fails the running test when the file isn't a whole PNG of 8 bits a sample.
PngPicture ReadPng(const std::string& path);

} // namespace tympan::test
