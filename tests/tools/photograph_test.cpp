// A real photograph, separated by another program: there and back, and on the screen.
#include "tools/command_runner.h"
#include "tools/png_pictures.h"
#include "tools/source_pictures.h"

#include <tympan/tympan.h>

#include <gtest/gtest.h>
#include <tiffio.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

constexpr char kPhotograph[] = TYMPAN_PHOTOGRAPH;

class Photograph : public testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(std::filesystem::exists(kPhotograph))
            << kPhotograph << " is missing: scripts/setup installs its package, or give another "
            << "JPEG photograph by -DTYMPAN_PHOTOGRAPH=FILE";
        ASSERT_EQ(RunProgram("gm", { "version" }).status, 0)
            << "gm is missing: install graphicsmagick, as scripts/setup does";
    }

    // A smaller copy of the photograph, made by the other program.
    std::string Converted(const std::string& name, const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments{ "convert", kPhotograph, "-resize", "900x" };
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(folder_ / name);
        const Outcome outcome = RunProgram("gm", arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return folder_ / name;
    }

    void Run(const std::vector<std::string>& arguments) const
    {
        const Outcome outcome = RunCommand(arguments);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }

    TemporaryFolder folder_;
};

std::vector<std::uint8_t> ScreenColours(const Samples& ink)
{
    std::vector<std::uint8_t> colours;
    for (std::size_t at = 0; at < ink.numbers.size(); at += 4) {
        std::array<unsigned char, 4> pixel{};
        for (std::size_t i = 0; i < pixel.size(); ++i)
            pixel[i] = static_cast<unsigned char>(ink.numbers[at + i]);
        const unsigned long packed = PictureFileInterface::CalculatePixelAsRGB3(pixel.data());
        for (const unsigned int shift : { 0U, 8U, 16U })
            colours.push_back(static_cast<std::uint8_t>(packed >> shift));
    }
    return colours;
}

// How alike two channels are: 1 for the same, -1 for a negative.
double Correlation(const std::vector<std::uint8_t>& one, const std::vector<std::uint8_t>& other,
                   std::size_t channel)
{
    double count = 0, a = 0, b = 0, aa = 0, bb = 0, ab = 0;
    for (std::size_t i = channel; i < one.size(); i += 3) {
        const double x = one[i];
        const double y = other[i];
        ++count, a += x, b += y, aa += x * x, bb += y * y, ab += x * y;
    }
    return (count * ab - a * b) / std::sqrt((count * aa - a * a) * (count * bb - b * b));
}

TEST_F(Photograph, KeepsItsInkThereAndBackAndShowsIt)
{
    for (const std::string compression : { "None", "LZW" }) {
        const std::string original = Converted(
            "photo.tif", { "-colorspace", "CMYK", "-depth", "8", "-compress", compression });
        const std::string ct = folder_ / "photo.ct";
        const std::string back = folder_ / "back.tif";
        const std::string shown = folder_ / "photo.png";
        Run({ "import", original, "-o", ct });
        Run({ "export", ct, "-o", back });
        Run({ "preview", ct, "-o", shown });

        const TiffPicture before = ReadTiff(original);
        const TiffPicture after = ReadTiff(back);
        ASSERT_EQ(before.samples.perPixel, 4U) << compression;
        EXPECT_EQ(after.samples.width, before.samples.width) << compression;
        EXPECT_TRUE(after.samples.numbers == before.samples.numbers) << compression;
        EXPECT_TRUE(ReadPng(shown).samples == ScreenColours(before.samples)) << compression;
    }
}

// The other program draws the colour picture that the command separates; what the command shows is
// the right way up and no negative.
TEST_F(Photograph, LooksLikeItselfOnceSeparated)
{
    const std::string jpeg = Converted("photo.jpg", { "-quality", "95" });
    const std::string plain = Converted("plain.png", { "-depth", "8" });
    const std::string ct = folder_ / "photo.ct";
    const std::string shown = folder_ / "shown.png";
    Run({ "import", jpeg, "-o", ct });
    Run({ "preview", ct, "-o", shown });

    const PngPicture original = ReadPng(plain);
    const PngPicture preview = ReadPng(shown);
    ASSERT_EQ(preview.width, original.width);
    ASSERT_EQ(preview.height, original.height);
    ASSERT_EQ(original.channels, 3U);
    for (std::size_t channel = 0; channel < 3; ++channel)
        EXPECT_GT(Correlation(preview.samples, original.samples, channel), 0.9)
            << "channel " << channel;
}

} // namespace
} // namespace tympan::test
