// `tympan import`: what each kind of picture becomes as plates.
#include "tools/import_run.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::Each;
using testing::HasSubstr;

constexpr std::array<std::uint32_t, 6> kGreys{ 0xFFFFFF, 0x000000, 0x7F7F7F,
                                               0xFFFFFF, 0x7F7F7F, 0x000000 };

Samples Grey()
{
    return Fields(1, [](std::size_t field) { return Numbers{ Channels(kGreys[field])[0] }; });
}

Samples ColourIndexes()
{
    return Fields(1,
                  [](std::size_t field) { return Numbers{ static_cast<std::uint16_t>(field) }; });
}

// White is transparent, grey is half transparent black; else as plain.
Samples WithAlpha(const Samples& plain, std::uint16_t hidden)
{
    Samples result{ plain.width, plain.height, plain.perPixel + 1, {} };
    for (std::size_t at = 0; at < plain.numbers.size(); at += plain.perPixel) {
        Numbers pixel(&plain.numbers[at], &plain.numbers[at] + plain.perPixel);
        const bool isGrey = std::count(pixel.begin(), pixel.end(), 127) > 0;
        const bool isWhite = std::count(pixel.begin(), pixel.end(), 255) ==
                             static_cast<std::ptrdiff_t>(pixel.size());
        const std::uint16_t alpha = isWhite ? 0 : isGrey ? 128 : 255;
        if (isWhite || isGrey)
            std::fill(pixel.begin(), pixel.end(), isWhite ? hidden : std::uint16_t{ 0 });
        pixel.push_back(alpha);
        result.numbers.insert(result.numbers.end(), pixel.begin(), pixel.end());
    }
    return result;
}

Samples Times(Samples samples, unsigned int factor)
{
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(number * factor);
    return samples;
}

Samples From(Samples samples, unsigned int most)
{
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(most - number);
    return samples;
}

// White as a number that is made the transparent one.
Samples WhiteAs(Samples samples, std::uint16_t key)
{
    std::replace(samples.numbers.begin(), samples.numbers.end(), std::uint16_t{ 255 }, key);
    return samples;
}

Samples FlatInk()
{
    return Fields(4, [](std::size_t field) {
        const auto number = [&](std::size_t i) {
            return static_cast<std::uint16_t>(field * 40 + i * 10);
        };
        return Numbers{ number(0), number(1), number(2), number(3) };
    });
}

// ---- the plates of a CT file, by the places of its bytes

class Plates {
  public:
    explicit Plates(const std::string& path) : bytes_(ReadFile(path)) {}

    std::array<int, 4> At(std::size_t x, std::size_t y) const
    {
        std::array<int, 4> plates{};
        for (std::size_t i = 0; i < plates.size(); ++i)
            plates[i] = static_cast<unsigned char>(
                bytes_.at(2048 + (y * 4 + i) * (kWidth + kWidth % 2) + x));
        return plates;
    }
    std::array<int, 4> Of(Field field) const
    {
        return At(std::size_t{ field } % 3 * 16 + 5, std::size_t{ field } / 3 * 16 + 5);
    }
    std::vector<int> All() const
    {
        std::vector<int> all;
        for (std::size_t y = 0; y < kHeight; ++y)
            for (std::size_t x = 0; x < kWidth; ++x) {
                const auto plates = At(x, y);
                all.insert(all.end(), plates.begin(), plates.end());
            }
        return all;
    }

  private:
    std::string bytes_;
};

std::vector<int> PlatesOf(const Samples& ink)
{
    std::vector<int> plates;
    for (const std::uint16_t number : ink.numbers)
        plates.push_back(255 - number);
    return plates;
}

int LargestDifference(const std::vector<int>& one, const std::vector<int>& other)
{
    int largest = one.size() == other.size() ? 0 : 1000;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
        largest = std::max(largest, std::abs(one[i] - other[i]));
    return largest;
}

class Import : public ImportRun {
  protected:
    Plates Imported(const std::string& name, const Maker& make)
    {
        const Outcome outcome = Run(make, { "--resolution", "100" });
        EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.err;
        EXPECT_EQ(outcome.err, "") << name;
        return Plates(ct_);
    }
};

TEST_F(Import, GivesColoursTheirInks)
{
    const Plates plates = Imported("RGB", Png(Rgb(), { kRgbPng }));
    EXPECT_THAT(plates.Of(kWhite), Each(255)) << "paper takes no ink";

    const auto ink = [&](Field field, std::size_t i) { return 255 - plates.Of(field)[i]; };
    EXPECT_GT(ink(kBlack, 0) + ink(kBlack, 1) + ink(kBlack, 2) + ink(kBlack, 3), 600);
    EXPECT_GT(ink(kBlack, 3), 180);
    EXPECT_GT(std::min(ink(kRed, 1), ink(kRed, 2)), 200);
    EXPECT_LT(std::max(ink(kRed, 0), ink(kRed, 3)), 30);
    EXPECT_GT(std::min(ink(kGreen, 0), ink(kGreen, 2)), 150);
    EXPECT_LT(ink(kGreen, 1), 60);
    EXPECT_GT(std::min(ink(kBlue, 0), ink(kBlue, 1)), 150);
    EXPECT_LT(ink(kBlue, 2), 60);
}

TEST_F(Import, GivesEveryKindOfColourPictureTheSamePlates)
{
    const std::vector<std::uint32_t> palette(kColours.begin(), kColours.end());
    std::vector<std::uint32_t> holes = palette;
    holes[kWhite] = 0x123456;
    const Samples rgb = Rgb();
    const Samples keyed = Fields(3, [](std::size_t field) {
        return field == kWhite ? Numbers{ 1, 2, 3 } : Channels(kColours[field]);
    });
    const PngForm plainPng{ kRgbPng };
    const KindCase cases[] = {
        { "PNG of 16 bits", Png(Times(rgb, 257), { .as = kRgbPng, .bits = 16 }) },
        { "PNG, interlaced", Png(rgb, { .as = kRgbPng, .interlaced = true }) },
        { "PNG with alpha", Png(WithAlpha(rgb, 99), { kRgbaPng }) },
        { "PNG with alpha, 16 bits, interlaced",
          Png(Times(WithAlpha(rgb, 99), 257), { .as = kRgbaPng, .bits = 16, .interlaced = true }) },
        { "PNG palette of 8 bits",
          Png(ColourIndexes(), { .as = kPalettePng, .palette = palette }) },
        { "PNG palette of 4 bits, interlaced",
          Png(ColourIndexes(),
              { .as = kPalettePng, .bits = 4, .interlaced = true, .palette = palette }) },
        { "PNG palette with a transparent colour",
          Png(ColourIndexes(), { .as = kPalettePng, .palette = holes, .alphas = { 0 } }) },
        { "PNG with a transparent colour", Png(keyed, { .as = kRgbPng, .key = { 1, 2, 3 } }) },
        { "JPEG in RGB", Jpeg(rgb, { JCS_RGB, JCS_RGB }) },
        { "JPEG in YCbCr", Jpeg(rgb, {}), 4 },
        { "JPEG in YCbCr, progressive", Jpeg(rgb, { .progressive = true }), 4 },
        { "TIFF", Tiff(rgb, { kRgb }) },
        { "TIFF of 16 bits", Tiff(Times(rgb, 257), { .as = kRgb, .bits = 16 }) },
        { "TIFF in planes", Tiff(rgb, { .as = kRgb, .planes = true }) },
        { "TIFF in tiles", Tiff(rgb, { .as = kRgb, .packed = kLzw, .tiled = true }) },
        { "TIFF in tiles in planes of 16 bits",
          Tiff(Times(rgb, 257), { .as = kRgb, .bits = 16, .planes = true, .tiled = true }) },
        { "TIFF, Deflate", Tiff(rgb, { .as = kRgb, .packed = kDeflate }) },
        { "TIFF with alpha", Tiff(WithAlpha(rgb, 99), { .as = kRgb, .extra = kAlpha }) },
        { "TIFF with alpha multiplied in",
          Tiff(WithAlpha(rgb, 0), { .as = kRgb, .extra = kMultipliedAlpha }) },
        { "TIFF palette of 8 bits", Tiff(ColourIndexes(), { .as = kPalette, .palette = palette }) },
        { "TIFF palette of 4 bits in tiles",
          Tiff(ColourIndexes(), { .as = kPalette, .bits = 4, .tiled = true, .palette = palette }) },
    };
    const std::vector<int> expected = Imported("PNG", Png(rgb, plainPng)).All();
    for (const KindCase& one : cases)
        EXPECT_LE(LargestDifference(Imported(one.name, one.make).All(), expected), one.tolerance)
            << one.name;
}

TEST_F(Import, GivesEveryKindOfGreyPictureTheSamePlates)
{
    const Samples grey = Grey();
    const KindCase cases[] = {
        { "PNG of 16 bits", Png(Times(grey, 257), { .as = kGreyPng, .bits = 16 }) },
        { "PNG with alpha", Png(WithAlpha(grey, 5), { kGreyAlphaPng }) },
        { "PNG with a transparent grey",
          Png(WhiteAs(grey, 77), { .as = kGreyPng, .key = { 77 } }) },
        { "JPEG", Jpeg(grey, { JCS_GRAYSCALE, JCS_GRAYSCALE }) },
        { "TIFF", Tiff(grey, { kBlackIsZero }) },
        { "TIFF, white as 0", Tiff(From(grey, 255), { kWhiteIsZero }) },
        { "TIFF of 16 bits, white as 0",
          Tiff(Times(From(grey, 255), 257), { .as = kWhiteIsZero, .bits = 16 }) },
        { "TIFF with alpha in planes",
          Tiff(WithAlpha(grey, 5), { .as = kBlackIsZero, .planes = true, .extra = kAlpha }) },
    };
    const Plates plain = Imported("PNG", Png(grey, { kGreyPng }));
    EXPECT_THAT(plain.Of(kWhite), Each(255));
    EXPECT_LT(plain.Of(kBlack)[3], 75);
    for (const KindCase& one : cases)
        EXPECT_EQ(LargestDifference(Imported(one.name, one.make).All(), plain.All()), 0)
            << one.name;
}

TEST_F(Import, SpreadsFewBitsOverTheWholeScale)
{
    const auto levels = [](unsigned int bits, bool whiteIsZero) {
        return Fields(1, [=](std::size_t field) {
            const unsigned int most = (1U << bits) - 1U;
            const unsigned int level = field == kWhite ? most : field == kBlack ? 0 : most / 3;
            return Numbers{ static_cast<std::uint16_t>(whiteIsZero ? most - level : level) };
        });
    };
    const auto bytes = [](unsigned int bits) {
        return Fields(1, [=](std::size_t field) {
            const unsigned int grey = bits == 1 ? 0 : 85; // a third of the scale
            return Numbers{ static_cast<std::uint16_t>(field == kWhite   ? 255
                                                       : field == kBlack ? 0
                                                                         : grey) };
        });
    };
    for (const unsigned int bits : { 1U, 2U, 4U }) {
        const std::string name = std::to_string(bits) + " bits";
        const int count = static_cast<int>(bits);
        const std::vector<int> expected = Imported(name, Png(bytes(bits), { kGreyPng })).All();
        const KindCase cases[] = {
            { "PNG", Png(levels(bits, false), { .as = kGreyPng, .bits = count }) },
            { "TIFF", Tiff(levels(bits, false), { .as = kBlackIsZero, .bits = count }) },
            { "TIFF, white as 0", Tiff(levels(bits, true), { .as = kWhiteIsZero, .bits = count }) },
        };
        for (const KindCase& one : cases)
            EXPECT_EQ(Imported(one.name, one.make).All(), expected) << name << ' ' << one.name;
    }
}

TEST_F(Import, TakesInksAsTheyAre)
{
    const Samples ink = Ink();
    const Samples flat = FlatInk();
    Samples transparent{ kWidth, kHeight, 5, {} };
    for (std::size_t at = 0; at < ink.numbers.size(); at += 4) {
        for (std::size_t i = 0; i < 4; ++i)
            transparent.numbers.push_back(ink.numbers[at + i]);
        transparent.numbers.push_back(255);
    }
    struct InkCase {
        const char* name;
        Maker make;
        const Samples& expected;
        int tolerance = 0;
    };
    const InkCase cases[] = {
        { "TIFF", Tiff(ink, { kSeparated }), ink },
        { "TIFF of 16 bits", Tiff(Times(ink, 257), { .as = kSeparated, .bits = 16 }), ink },
        { "TIFF, LZW", Tiff(ink, { .as = kSeparated, .packed = kLzw }), ink },
        { "TIFF in planes", Tiff(ink, { .as = kSeparated, .planes = true }), ink },
        { "TIFF in tiles", Tiff(ink, { .as = kSeparated, .tiled = true }), ink },
        { "TIFF in tiles in planes",
          Tiff(ink, { .as = kSeparated, .planes = true, .packed = kLzw, .tiled = true }), ink },
        { "TIFF with alpha", Tiff(transparent, { .as = kSeparated, .extra = kAlpha }), ink },
        { "JPEG of Adobe's kind, inverted", Jpeg(From(flat, 255), { JCS_CMYK, JCS_CMYK }), flat },
        { "JPEG without Adobe's mark",
          Jpeg(flat, { .from = JCS_CMYK, .to = JCS_CMYK, .adobe = false }), flat },
        { "JPEG in YCCK", Jpeg(From(flat, 255), { JCS_CMYK, JCS_YCCK }), flat, 2 },
    };
    for (const InkCase& one : cases)
        EXPECT_LE(LargestDifference(Imported(one.name, one.make).All(), PlatesOf(one.expected)),
                  one.tolerance)
            << one.name;
}

// ---- resolution

std::string ExifWith(std::uint16_t orientation, std::uint32_t perInch)
{
    using namespace std::string_literals;
    const auto byte = [](unsigned int number) { return std::string(1, static_cast<char>(number)); };
    const std::string fraction = "\0\0"s + byte(perInch >> 8U) + byte(perInch & 255U) + "\0\0\0\1"s;
    return "Exif\0\0MM\0*\0\0\0\10"s + "\0\3"s +                  // three entries, from place 8 on
           "\1\22\0\3\0\0\0\1\0"s + byte(orientation) + "\0\0"s + // orientation
           "\1\32\0\5\0\0\0\1\0\0\0\62"s +                        // both fractions at place 50
           "\1\33\0\5\0\0\0\1\0\0\0\62"s + "\0\0\0\0"s + fraction;
}

TEST_F(Import, TakesTheResolutionOfThePicture)
{
    struct ResolutionCase {
        const char* name;
        Maker make;
        double x, y;
        std::vector<std::string> options = {};
    };
    const Samples rgb = Rgb();
    const auto png = [&](std::uint32_t x, std::uint32_t y, bool known) {
        return Png(rgb, { .as = kRgbPng, .x = x, .y = y, .knownUnit = known });
    };
    const auto jpeg = [&](int unit, std::uint16_t x, std::uint16_t y,
                          const std::string& exif = {}) {
        return Jpeg(rgb, { .unit = unit, .x = x, .y = y, .exif = exif });
    };
    const auto tiff = [&](int unit, float x, float y) {
        return Tiff(rgb, { .as = kRgb, .unit = unit, .x = x, .y = y });
    };
    const ResolutionCase cases[] = {
        { "PNG, a whole number meant", png(11811, 2362, true), 300.0, 60.0 },
        { "PNG, none meant", png(4000, 4000, true), 101.6, 101.6 },
        { "PNG without a unit", png(11811, 11811, false), 150.0, 150.0, { "--resolution", "150" } },
        { "JPEG by inches", jpeg(1, 150, 75), 150.0, 75.0 },
        { "JPEG by centimetres", jpeg(2, 40, 20), 101.6, 50.8 },
        { "JPEG by Exif", jpeg(1, 1, 1, ExifWith(1, 240)), 240.0, 240.0 },
        { "TIFF by inches", tiff(RESUNIT_INCH, 200.0F, 100.0F), 200.0, 100.0 },
        { "TIFF by centimetres", tiff(RESUNIT_CENTIMETER, 100.0F, 50.0F), 254.0, 127.0 },
        { "the option goes first", jpeg(1, 72, 72), 250.0, 250.0, { "--resolution", "250" } },
        { "PNG without any", Png(rgb, { kRgbPng }), 300.0, 300.0 },
        { "PNG of a shape only", png(500, 500, false), 300.0, 300.0 },
        { "JPEG of a shape only", jpeg(0, 2, 3), 300.0, 300.0 },
        { "TIFF of a shape only", tiff(RESUNIT_NONE, 2.0F, 3.0F), 300.0, 300.0 },
    };
    for (const ResolutionCase& one : cases) {
        const Outcome outcome = Run(one.make, one.options);
        ASSERT_EQ(outcome.status, 0) << one.name << ": " << outcome.err;
        const auto info = ParsedJson(RunCommand({ "info", "--json", ct_ }).out).at(0);
        EXPECT_NEAR(info.at("resolution_x"), one.x, 0.001) << one.name;
        EXPECT_NEAR(info.at("resolution_y"), one.y, 0.001) << one.name;
        EXPECT_EQ(info.at("width"), kWidth) << one.name;
        EXPECT_EQ(info.at("height"), kHeight) << one.name;
    }
}

TEST_F(Import, TellsWhatItDoesNotDo)
{
    const ToldCase cases[] = {
        { "turned JPEG",
          Jpeg(Rgb(), { .unit = 1, .x = 1, .y = 1, .exif = ExifWith(6, 100) }),
          {},
          "orientation 6" },
        { "turned TIFF", Tiff(Rgb(), { .as = kRgb, .orientation = 3 }), {}, "orientation 3" },
        { "several pages", Tiff(Rgb(), { .as = kRgb, .pages = 2 }), {}, "several pictures" },
        { "a profile for what is CMYK",
          Tiff(Ink(), { kSeparated }),
          { "--profile", "x.icc" },
          "no effect" },
    };
    for (const ToldCase& one : cases) {
        const Outcome outcome = Run(one.make, one.options);
        EXPECT_EQ(outcome.status, 0) << one.name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
    }
}

} // namespace
} // namespace tympan::test
