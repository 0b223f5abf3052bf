// Pictures that `tympan import` is given, and a run of it.
#pragma once

#include "support/temporary_folder.h"
#include "tools/command_runner.h"
#include "tools/source_pictures.h"

#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {

inline constexpr int kGreyPng = PNG_COLOR_TYPE_GRAY, kGreyAlphaPng = PNG_COLOR_TYPE_GRAY_ALPHA;
inline constexpr int kRgbPng = PNG_COLOR_TYPE_RGB, kRgbaPng = PNG_COLOR_TYPE_RGBA;
inline constexpr int kPalettePng = PNG_COLOR_TYPE_PALETTE;

inline constexpr std::uint32_t kWidth = 47; // odd: a byte of padding behind each row
inline constexpr std::uint32_t kHeight = 31;

// Fields of 16 x 16 pixels, so that a JPEG of quality 100 keeps them.
enum Field { kWhite, kBlack, kRed, kGrey, kGreen, kBlue };
inline constexpr std::array<std::uint32_t, 6> kColours{ 0xFFFFFF, 0x000000, 0xFF0000,
                                                        0x7F7F7F, 0x00FF00, 0x0000FF };

inline std::size_t FieldAt(std::size_t x, std::size_t y)
{
    return y / 16 * 3 + x / 16;
}

using Numbers = std::vector<std::uint16_t>;

inline Samples Fields(unsigned int perPixel, const std::function<Numbers(std::size_t field)>& pixel)
{
    Samples samples{ kWidth, kHeight, perPixel, {} };
    for (std::size_t y = 0; y < kHeight; ++y)
        for (std::size_t x = 0; x < kWidth; ++x) {
            const Numbers numbers = pixel(FieldAt(x, y));
            samples.numbers.insert(samples.numbers.end(), numbers.begin(), numbers.end());
        }
    return samples;
}

inline Numbers Channels(std::uint32_t colour)
{
    return { static_cast<std::uint16_t>(colour >> 16U & 255U),
             static_cast<std::uint16_t>(colour >> 8U & 255U),
             static_cast<std::uint16_t>(colour & 255U) };
}

inline Samples Rgb()
{
    return Fields(3, [](std::size_t field) { return Channels(kColours[field]); });
}

inline Samples Ink()
{
    Samples samples{ kWidth, kHeight, 4, Numbers(std::size_t{ kWidth } * kHeight * 4) };
    std::mt19937 random(7);
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(random() % 256);
    return samples;
}

using Maker = std::function<void(const std::string& path)>;

inline Maker Png(const Samples& samples, const PngForm& form)
{
    return [=](const std::string& path) { WritePng(path, samples, form); };
}
inline Maker Jpeg(const Samples& samples, const JpegForm& form)
{
    return [=](const std::string& path) { WriteJpeg(path, samples, form); };
}
inline Maker Tiff(const Samples& samples, const TiffForm& form)
{
    return [=](const std::string& path) { WriteTiff(path, samples, form); };
}

// Imports a picture to a CT file in a folder of its own.
class ImportRun : public testing::Test {
  protected:
    // Imports what `make` writes. The name says nothing: the command looks at the bytes.
    Outcome Run(const Maker& make, const std::vector<std::string>& options = {})
    {
        make(source_);
        std::vector<std::string> arguments{ "import", source_, "-o", ct_ };
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunCommand(arguments);
    }

    TemporaryFolder folder_;
    std::string source_ = folder_ / "picture";
    std::string ct_ = folder_ / "out.ct";
};

struct KindCase {
    const char* name;
    Maker make;
    int tolerance = 0; // in steps of a plate's byte
};

// An import that tells something of its picture, on the way or as it ends.
struct ToldCase {
    const char* name;
    Maker make;
    std::vector<std::string> options;
    const char* text;
};

} // namespace tympan::test
