// Pictures of the kinds that the command imports, written by the libraries themselves, and TIFF
// files read back.
#pragma once

#include "support/tiff_numbers.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct jpeg_compress_struct;

namespace tympan::test {

/// Samples as numbers of as many bits as are stored, those of a pixel together, rows from the top.
struct Samples {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned int perPixel = 1;
    std::vector<std::uint16_t> numbers;

    std::uint16_t& At(std::size_t column, std::size_t row, std::size_t sample)
    {
        return numbers[(row * width + column) * perPixel + sample];
    }
};

struct PngForm {
    int as; ///< the colour type
    int bits = 8;
    bool interlaced = false;
    std::vector<std::uint32_t> palette = {}; ///< 0xRRGGBB
    std::vector<std::uint8_t> alphas = {};   ///< tRNS of a palette
    std::vector<std::uint16_t> key = {};     ///< tRNS of a grey or RGB picture
    std::uint32_t x = 0;                     ///< pixels a metre; none when 0
    std::uint32_t y = 0;
    bool knownUnit = true;
};
void WritePng(const std::string& path, const Samples& samples, const PngForm& form);

/// How the samples are stored in a JPEG file; those given are grey, RGB or CMYK as the file wants
/// it.
struct JpegForm {
    int from = 2;      ///< J_COLOR_SPACE of the samples given: RGB
    int to = 3;        ///< J_COLOR_SPACE of the file: YCbCr
    bool adobe = true; ///< whether a CMYK file is marked as Adobe's
    bool progressive = false;
    int unit = 0; ///< of the density: 1 inch, 2 centimetre
    std::uint16_t x = 1;
    std::uint16_t y = 1;
    std::string exif = {}; ///< an APP1 segment, which takes the place of the JFIF one
    void (*change)(jpeg_compress_struct& jpeg) = nullptr; ///< of anything else, before it begins
};
void WriteJpeg(const std::string& path, const Samples& samples, const JpegForm& form);

/// A JPEG decoded as a whole: grey, RGB, or CMYK as it is stored. Fails the running test when libjpeg
/// warns of anything.
Samples ReadJpeg(const std::string& path);

struct TiffForm {
    Photometric as;
    int bits = 8;
    bool planes = false;
    Packing packed = kUncompressed;
    bool tiled = false;
    ExtraSample extra = kNoExtra; ///< what the last sample is, when it is no colour
    int sampleFormat = 1;
    int inkSet = 1;
    int unit = 0; ///< of the resolution; none when 0
    float x = 0.0F;
    float y = 0.0F;
    int orientation = 1;
    std::vector<std::uint32_t> palette = {}; ///< 0xRRGGBB
    int pages = 1;
    const char* mode = "w"; ///< as TIFFOpen has it, for the byte order
};
void WriteTiff(const std::string& path, const Samples& samples, const TiffForm& form);

/// What a TIFF of 8 bits a sample, samples together, holds.
struct TiffPicture {
    Samples samples;
    std::map<std::uint32_t, int> tags; ///< those that hold one small number
    float resolutionX = 0.0F;
    float resolutionY = 0.0F;
    std::string inkNames; ///< with a zero byte behind each
};

/// Fails the running test when the file can't be read.
TiffPicture ReadTiff(const std::string& path);

} // namespace tympan::test
