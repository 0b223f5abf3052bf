// `tympan import` to an LW file: the pixels of each kind of picture come back out of the file's bytes.
#include "tools/command_runner.h"
#include "tools/parsed_json.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

constexpr int kGreyPng = PNG_COLOR_TYPE_GRAY, kRgbPng = PNG_COLOR_TYPE_RGB;
constexpr int kPalettePng = PNG_COLOR_TYPE_PALETTE;
constexpr std::uint32_t kHeight = 11;

using Plates = std::array<int, 4>; // of a pixel, 255 for no ink

int ByteAt(const std::string& bytes, std::size_t place)
{
    return static_cast<unsigned char>(bytes.at(place));
}

/// The pixels of an LW file, by the places of its bytes. Fails the test where a row isn't sound.
std::vector<Plates> PixelsOfLw(const std::string& bytes, std::size_t width)
{
    std::vector<Plates> pixels;
    const auto colours = static_cast<std::size_t>(ByteAt(bytes, 1080));
    std::size_t place = 2048 + 18 * colours;
    for (std::uint32_t row = 0; row < kHeight; ++row) {
        EXPECT_EQ(bytes.substr(place, 2), std::string(2, '\0')) << row;
        for (place += 2; ByteAt(bytes, place + 1) != 0; place += 2) {
            const auto index = static_cast<std::size_t>(ByteAt(bytes, place));
            EXPECT_TRUE(index >= 1 && index <= colours) << row;
            Plates plates{};
            for (std::size_t i = 0; i < plates.size(); ++i)
                plates[i] = ByteAt(bytes, 2048 + 18 * (index - 1) + 2 + i);
            pixels.insert(pixels.end(), static_cast<std::size_t>(ByteAt(bytes, place + 1)), plates);
        }
        EXPECT_EQ(bytes.substr(place, 2), std::string(2, '\0')) << row;
        EXPECT_EQ(pixels.size(), (row + 1) * width) << row;
        place += 2;
    }
    EXPECT_EQ(place, bytes.size());
    return pixels;
}

std::vector<Plates> PixelsOfCt(const std::string& bytes, std::size_t width)
{
    std::vector<Plates> pixels;
    for (std::size_t row = 0; row < kHeight; ++row)
        for (std::size_t x = 0; x < width; ++x) {
            Plates plates{};
            for (std::size_t i = 0; i < plates.size(); ++i)
                plates[i] = ByteAt(bytes, 2048 + (row * 4 + i) * (width + width % 2) + x);
            pixels.push_back(plates);
        }
    return pixels;
}

/// Stretches of numbers below `count`, of up to `longest` pixels; each number at least once, where
/// there is room.
Samples Stretches(std::uint32_t width, unsigned int count, unsigned int longest)
{
    std::mt19937 random(width + count);
    Samples samples{ width, kHeight, 1, {} };
    for (unsigned int number = 0; number < count; ++number)
        samples.numbers.push_back(static_cast<std::uint16_t>(number));
    const std::size_t size = std::size_t{ width } * kHeight;
    while (samples.numbers.size() < size)
        samples.numbers.insert(samples.numbers.end(), 1 + random() % longest,
                               static_cast<std::uint16_t>(random() % count));
    samples.numbers.resize(size);
    return samples;
}

Samples Changed(Samples samples, const std::function<unsigned int(unsigned int)>& change)
{
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(change(number));
    return samples;
}

// Flat black is the first one.
std::vector<std::uint32_t> Palette(std::size_t count)
{
    std::vector<std::uint32_t> colours;
    for (std::uint32_t i = 0; i < count; ++i)
        colours.push_back(i * 0x10305U & 0xFFFFFFU);
    return colours;
}

Samples InRgb(const Samples& indexes, const std::vector<std::uint32_t>& palette)
{
    Samples rgb{ indexes.width, indexes.height, 3, {} };
    for (const std::uint16_t index : indexes.numbers)
        for (const unsigned int shift : { 16U, 8U, 0U })
            rgb.numbers.push_back(static_cast<std::uint16_t>(palette[index] >> shift & 255U));
    return rgb;
}

using Maker = std::function<void(const std::string& path)>;

Maker Png(const Samples& samples, const PngForm& form)
{
    return [=](const std::string& path) { WritePng(path, samples, form); };
}
Maker Tiff(const Samples& samples, const TiffForm& form)
{
    return [=](const std::string& path) { WriteTiff(path, samples, form); };
}

struct KindCase {
    const char* name;
    Maker make;
};

class ImportLw : public testing::Test {
  protected:
    Outcome Run(const Maker& make, const std::string& output,
                const std::vector<std::string>& options = { "--resolution", "10" })
    {
        make(source_);
        std::vector<std::string> arguments{ "import", source_, "-o", output };
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunCommand(arguments);
    }

    std::vector<Plates> Imported(const char* name, const Maker& make, std::size_t width,
                                 const std::string& told = "")
    {
        const Outcome outcome = Run(make, lw_);
        EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.err;
        EXPECT_EQ(outcome.err.empty(), told.empty()) << name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(told)) << name;
        return outcome.status == 0 ? PixelsOfLw(ReadFile(lw_), width) : std::vector<Plates>{};
    }

    TemporaryFolder folder_;
    std::string source_ = folder_ / "picture";
    std::string lw_ = folder_ / "a name.lw";
    std::string ct_ = folder_ / "out.ct";
};

TEST_F(ImportLw, TakesGreysOfAnyWidthAsTheyAreBut64)
{
    for (const std::uint32_t width : { 1U, 7U, 8U, 9U, 256U, 3001U })
        for (const int bits : { 1, 2, 4, 8 }) {
            const unsigned int most = (1U << static_cast<unsigned int>(bits)) - 1U;
            const Samples levels = Stretches(width, most + 1, 600);
            const Samples fromWhite =
                Changed(levels, [=](unsigned int level) { return most - level; });
            const Samples deep = Changed(levels, [=](unsigned int x) { return x * 65535U / most; });
            std::vector<Plates> expected;
            for (const std::uint16_t level : levels.numbers)
                expected.push_back({ 255, 255, 255, static_cast<int>(level * 255U / most) });
            const Plates k64{ 255, 255, 255, 64 };
            const auto of64 = std::count(expected.begin(), expected.end(), k64);
            std::replace(expected.begin(), expected.end(), k64, { 255, 255, 255, 63 });
            const std::string told = of64 == 0   ? ""
                                     : of64 == 1 ? "1 pixel of the value 64"
                                                 : std::to_string(of64) + " pixels of the value 64";
            const KindCase cases[] = {
                { "PNG", Png(levels, { .as = kGreyPng, .bits = bits }) },
                { "PNG, interlaced",
                  Png(levels, { .as = kGreyPng, .bits = bits, .interlaced = true }) },
                { "PNG of 16 bits", Png(deep, { .as = kGreyPng, .bits = 16 }) },
                { "TIFF", Tiff(levels, { .as = kBlackIsZero, .bits = bits }) },
                { "TIFF, white as 0", Tiff(fromWhite, { .as = kWhiteIsZero, .bits = bits }) },
                { bits == 1 ? "TIFF as a fax" : "TIFF in tiles",
                  Tiff(fromWhite, { .as = kWhiteIsZero,
                                    .bits = bits,
                                    .packed = bits == 1 ? kFaxG4 : kLzw,
                                    .tiled = bits != 1 }) },
            };
            for (const KindCase& one : cases) {
                SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(width) + " wide");
                EXPECT_EQ(Imported(one.name, one.make, width, told), expected) << one.name;
            }
        }
}

// The plates are those of the same file as CT, but for flat black.
TEST_F(ImportLw, GivesColoursTheInksOfACtFile)
{
    const auto palette = Palette(16);
    const auto many = Palette(255);
    const Samples numbers = Stretches(47, 16, 30);
    const Samples bits = Stretches(61, 2, 9);
    const Samples ofMany = Stretches(333, 255, 30);
    struct ColourCase {
        const char* name;
        Maker make;
        const Samples& numbers;
    };
    const ColourCase cases[] = {
        { "PNG of 4 bits, interlaced",
          Png(numbers, { .as = kPalettePng, .bits = 4, .interlaced = true, .palette = palette }),
          numbers },
        { "PNG of 1 bit", Png(bits, { .as = kPalettePng, .bits = 1, .palette = { 0, 0x30F030 } }),
          bits },
        { "PNG with transparent colours",
          Png(numbers, { .as = kPalettePng, .palette = palette, .alphas = { 255, 0, 128 } }),
          numbers },
        { "PNG of 255 colours", Png(ofMany, { .as = kPalettePng, .palette = many }), ofMany },
        { "PNG in RGB", Png(InRgb(ofMany, many), { kRgbPng }), ofMany },
        { "TIFF", Tiff(numbers, { .as = kPalette, .palette = palette }), numbers },
        { "TIFF of 4 bits in tiles",
          Tiff(numbers, { .as = kPalette, .bits = 4, .tiled = true, .palette = palette }),
          numbers },
        { "TIFF of 16 bits", Tiff(numbers, { .as = kPalette, .bits = 16, .palette = palette }),
          numbers },
    };
    for (const ColourCase& one : cases) {
        ASSERT_EQ(Run(one.make, ct_).status, 0) << one.name;
        std::vector<Plates> expected = PixelsOfCt(ReadFile(ct_), one.numbers.width);
        for (std::size_t i = 0; i < expected.size(); ++i)
            if (one.numbers.numbers[i] == 0)
                expected[i] = { 255, 255, 255, 0 };
        EXPECT_EQ(Imported(one.name, one.make, one.numbers.width), expected) << one.name;
        const auto& used = one.numbers.numbers;
        EXPECT_EQ(ByteAt(ReadFile(lw_), 1080), 1 + *std::max_element(used.begin(), used.end()));
    }
}

TEST_F(ImportLw, WritesAHeaderThatTellsThePicture)
{
    struct HeaderCase {
        Maker make;
        std::size_t separations;
        double resolution;
        std::vector<std::string> options;
    };
    const TiffForm bilevel{ .as = kWhiteIsZero, .bits = 1, .unit = 2, .x = 40.0F, .y = 40.0F };
    const PngForm coloured{ .as = kPalettePng, .palette = Palette(4) };
    const HeaderCase cases[] = {
        { Tiff(Stretches(99, 2, 9), bilevel), 1, 40.0, {} },
        { Png(Stretches(99, 4, 9), coloured), 4, 20.0, { "--resolution", "20" } },
    };
    for (const HeaderCase& one : cases) {
        const Outcome outcome = Run(one.make, lw_, one.options);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const auto info = ParsedJson(RunCommand({ "info", "--json", lw_ }).out).at(0);
        EXPECT_EQ(info.at("file_type"), "LW");
        EXPECT_EQ(info.at("width"), 99);
        EXPECT_EQ(info.at("height"), kHeight);
        EXPECT_NEAR(info.at("resolution"), one.resolution, 0.001);
        EXPECT_EQ(info.at("separations").size(), one.separations);
        EXPECT_EQ(info.at("separations").back(), "black");
        EXPECT_EQ(ReadFile(lw_).substr(1, 7), std::string("a name\0", 7));
    }
}

TEST_F(ImportLw, TellsOnceWhatItDoesNotDo)
{
    const Samples few = Stretches(99, 4, 9), many = Stretches(333, 256, 30);
    const Samples ink{ 30, 30, 4, std::vector<std::uint16_t>(3600) };
    const auto palette = Palette(256);
    struct TellingCase {
        const char* name;
        Maker make;
        int status;
        const char* text;
        std::vector<std::string> options = { "--resolution", "10" };
    };
    const TellingCase cases[] = {
        { "a profile for greys",
          Png(few, { kGreyPng }),
          0,
          "no effect",
          { "--profile", "x.icc", "--resolution", "10" } },
        { "a turned palette picture, which is read twice",
          Tiff(few, { .as = kPalette, .orientation = 3, .palette = Palette(4) }), 0,
          "orientation 3" },
        { "256 colours of a palette", Png(many, { .as = kPalettePng, .palette = palette }), 1,
          "more than 255 colours" },
        { "256 colours in RGB", Png(InRgb(many, palette), { kRgbPng }), 1,
          "more than 255 colours" },
        { "CMYK", Tiff(ink, { kSeparated }), 1, ".ct" },
        { "too small at its resolution",
          Png(many, { kGreyPng }),
          1,
          "--resolution",
          { "--resolution", "1000" } },
    };
    for (const TellingCase& one : cases) {
        SCOPED_TRACE(one.name);
        const TemporaryFolder empty;
        const Outcome outcome = Run(one.make, empty / "out.lw", one.options);
        EXPECT_EQ(outcome.status, one.status) << outcome.err;
        EXPECT_EQ(empty.Entries(), one.status == 0 ? 1U : 0U);
        EXPECT_THAT(outcome.err, HasSubstr(source_));
        const std::size_t place = outcome.err.find(one.text);
        ASSERT_NE(place, std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.err.find(one.text, place + 1), std::string::npos) << outcome.err;
    }
}

TEST_F(ImportLw, EndsWhenThePictureIsCutShort)
{
    const Samples numbers = Stretches(3000, 200, 3);
    for (const Maker& make : { Png(numbers, { .as = kPalettePng, .palette = Palette(200) }),
                               Tiff(numbers, { kBlackIsZero }) }) {
        make(source_);
        const std::string whole = ReadFile(source_);
        for (const std::size_t tenth : { 1U, 5U, 9U }) {
            const std::string part = whole.substr(0, whole.size() * tenth / 10);
            const auto cut = [&](const std::string& path) { WriteFile(path, part); };
            EXPECT_EQ(Run(cut, lw_).status, 1) << whole.substr(0, 4) << tenth << "/10";
            EXPECT_EQ(folder_.Entries(), 1U) << "something was left";
        }
    }
}

} // namespace
} // namespace tympan::test
