// `tympan import`: what each kind of picture becomes as plates, and what ends an import.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/parsed_json.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::Each;
using testing::HasSubstr;

constexpr int kGreyPng = PNG_COLOR_TYPE_GRAY, kGreyAlphaPng = PNG_COLOR_TYPE_GRAY_ALPHA;
constexpr int kRgbPng = PNG_COLOR_TYPE_RGB, kRgbaPng = PNG_COLOR_TYPE_RGBA;
constexpr int kPalettePng = PNG_COLOR_TYPE_PALETTE;

constexpr std::uint32_t kWidth = 47; // odd: a byte of padding behind each row
constexpr std::uint32_t kHeight = 31;

// Fields of 16 x 16 pixels, so that a JPEG of quality 100 keeps them.
enum Field { kWhite, kBlack, kRed, kGrey, kGreen, kBlue };
constexpr std::array<std::uint32_t, 6> kColours{ 0xFFFFFF, 0x000000, 0xFF0000,
                                                 0x7F7F7F, 0x00FF00, 0x0000FF };
constexpr std::array<std::uint32_t, 6> kGreys{ 0xFFFFFF, 0x000000, 0x7F7F7F,
                                               0xFFFFFF, 0x7F7F7F, 0x000000 };

std::size_t FieldAt(std::size_t x, std::size_t y)
{
    return y / 16 * 3 + x / 16;
}

using Numbers = std::vector<std::uint16_t>;

Samples Fields(unsigned int perPixel, const std::function<Numbers(std::size_t field)>& pixel)
{
    Samples samples{ kWidth, kHeight, perPixel, {} };
    for (std::size_t y = 0; y < kHeight; ++y)
        for (std::size_t x = 0; x < kWidth; ++x) {
            const Numbers numbers = pixel(FieldAt(x, y));
            samples.numbers.insert(samples.numbers.end(), numbers.begin(), numbers.end());
        }
    return samples;
}

Numbers Channels(std::uint32_t colour)
{
    return { static_cast<std::uint16_t>(colour >> 16U & 255U),
             static_cast<std::uint16_t>(colour >> 8U & 255U),
             static_cast<std::uint16_t>(colour & 255U) };
}

Samples Rgb()
{
    return Fields(3, [](std::size_t field) { return Channels(kColours[field]); });
}

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

Samples Ink()
{
    Samples samples{ kWidth, kHeight, 4, Numbers(std::size_t{ kWidth } * kHeight * 4) };
    std::mt19937 random(7);
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(random() % 256);
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

using Maker = std::function<void(const std::string& path)>;

Maker Png(const Samples& samples, const PngForm& form)
{
    return [=](const std::string& path) { WritePng(path, samples, form); };
}
Maker Jpeg(const Samples& samples, const JpegForm& form)
{
    return [=](const std::string& path) { WriteJpeg(path, samples, form); };
}
Maker Tiff(const Samples& samples, const TiffForm& form)
{
    return [=](const std::string& path) { WriteTiff(path, samples, form); };
}

class Import : public testing::Test {
  protected:
    // Imports what `make` writes. The name says nothing: the command looks at the bytes.
    Outcome Run(const Maker& make, const std::vector<std::string>& options = {})
    {
        make(source_);
        std::vector<std::string> arguments{ "import", source_, "-o", ct_ };
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunCommand(arguments);
    }

    Plates Imported(const std::string& name, const Maker& make)
    {
        const Outcome outcome = Run(make, { "--resolution", "100" });
        EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.err;
        EXPECT_EQ(outcome.err, "") << name;
        return Plates(ct_);
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

// An import that tells something of its picture, on the way or as it ends.
struct ToldCase {
    const char* name;
    Maker make;
    std::vector<std::string> options;
    const char* text;
};

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

// ---- what ends an import

constexpr char kRgbProfile[] = "/usr/share/color/icc/ghostscript/srgb.icc";

TEST_F(Import, RefusesWhatItCanNotTake)
{
    const auto bytes = [](const std::string& text) {
        return [=](const std::string& path) { WriteFile(path, text); };
    };
    const Maker png = Png(Rgb(), { kRgbPng });
    Samples floats{ kWidth, kHeight, 1, Numbers(std::size_t{ kWidth } * kHeight) };
    Samples fiveInks{ kWidth, kHeight, 5, Numbers(std::size_t{ kWidth } * kHeight * 5) };
    const ToldCase cases[] = {
        { "empty file", bytes(""), {}, "is empty" },
        { "a text", bytes("not a picture at all"), {}, "JPEG, PNG or TIFF" },
        { "the start of a PNG alone", bytes("\x89PNG\r\n\x1A\n"), {}, "ends too early" },
        { "the start of a TIFF alone", bytes(std::string("II*\0", 4)), {}, "TIFF" },
        { "the start of a JPEG alone", bytes("\xFF\xD8\xFF"), {}, "JPEG" },
        { "TIFF in Lab", Tiff(Rgb(), { kLab }), {}, "Lab" },
        { "TIFF with signs",
          Tiff(floats, { .as = kBlackIsZero, .bits = 16, .sampleFormat = SAMPLEFORMAT_INT }),
          {},
          "a sign" },
        { "TIFF of five inks",
          Tiff(fiveInks, { .as = kSeparated, .extra = kUnknownExtra }),
          {},
          "fifth channel" },
        { "TIFF of other inks",
          Tiff(Ink(), { .as = kSeparated, .inkSet = INKSET_MULTIINK }),
          {},
          "inks other than" },
        { "too small at its resolution", png, { "--resolution", "1000" }, "--resolution" },
        { "no such profile", png, { "--profile", "/nowhere/x.icc" }, "/nowhere/x.icc" },
        { "a profile that isn't one", png, { "--profile", "/proc/self/status" }, "profile" },
        { "an RGB profile", png, { "--profile", kRgbProfile }, "CMYK" },
    };
    for (const ToldCase& one : cases) {
        const Outcome outcome = Run(one.make, one.options);
        EXPECT_EQ(outcome.status, 1) << one.name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
    }
}

TEST_F(Import, TellsWhatToInstallWhereNoProfileIs)
{
    const char* const before = std::getenv("XDG_DATA_DIRS");
    const std::string saved = before != nullptr ? before : "";
    setenv("XDG_DATA_DIRS", folder_.Path().c_str(), 1);
    const Outcome outcome = Run(Png(Rgb(), { kRgbPng }));
    const Outcome ofInk = Run(Tiff(Ink(), { kSeparated }), { "--resolution", "100" });
    if (before != nullptr)
        setenv("XDG_DATA_DIRS", saved.c_str(), 1);
    else
        unsetenv("XDG_DATA_DIRS");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("libgs-common"));
    EXPECT_EQ(ofInk.status, 0) << "ink needs no profile: " << ofInk.err;
}

// Noise, so that every part of the file matters.
TEST_F(Import, EndsWhenThePictureIsCutShort)
{
    std::mt19937 random(3);
    Samples noise{ 90, 70, 3, Numbers(std::size_t{ 90 } * 70 * 3) };
    for (std::uint16_t& number : noise.numbers)
        number = static_cast<std::uint16_t>(random() % 256);
    const KindCase cases[] = {
        { "PNG", Png(noise, { kRgbPng }) },
        { "PNG, interlaced", Png(noise, { .as = kRgbPng, .interlaced = true }) },
        { "JPEG", Jpeg(noise, {}) },
        { "JPEG, progressive", Jpeg(noise, { .progressive = true }) },
        { "TIFF", Tiff(noise, { kRgb }) },
    };
    for (const KindCase& one : cases) {
        ASSERT_EQ(Run(one.make).status, 0) << one.name;
        std::filesystem::remove(ct_);
        const std::string whole = ReadFile(source_);
        for (const std::size_t tenth : { 1U, 3U, 5U, 7U, 9U }) {
            const std::string part = whole.substr(0, whole.size() * tenth / 10);
            const Outcome outcome = Run([&](const std::string& path) { WriteFile(path, part); });
            EXPECT_EQ(outcome.status, 1) << one.name << " cut at " << tenth << "/10";
            EXPECT_THAT(outcome.err, HasSubstr(source_)) << one.name;
            EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
        }
    }
}

// The sizes in the headers are changed to the largest ones; the data stays.
TEST_F(Import, TakesNoMemoryByTheClaimOfAHeader)
{
    struct ClaimCase {
        const char* name;
        Maker make;
        std::function<void(std::string& bytes)> claim;
    };
    const auto claimPng = [](std::string& bytes) {
        bytes.replace(16, 8, std::string("\x00\x0F\x42\x40\x00\x0F\x42\x40", 8));
        const auto* const header = reinterpret_cast<const Bytef*>(bytes.data() + 12);
        const unsigned long sum = crc32(crc32(0, nullptr, 0), header, 17);
        for (unsigned int i = 0; i < 4; ++i)
            bytes[29 + i] = static_cast<char>(sum >> (24U - 8U * i));
    };
    const auto claimJpeg = [](std::string& bytes) {
        const std::size_t frame = bytes.find("\xFF\xC2");
        ASSERT_NE(frame, std::string::npos);
        bytes.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
    };
    const ClaimCase cases[] = {
        { "PNG, interlaced", Png(Rgb(), { .as = kRgbPng, .interlaced = true }), claimPng },
        { "PNG", Png(Rgb(), { kRgbPng }), claimPng },
        { "JPEG, progressive", Jpeg(Rgb(), { .progressive = true }), claimJpeg },
    };
    for (const ClaimCase& one : cases) {
        one.make(source_);
        std::string bytes = ReadFile(source_);
        one.claim(bytes);
        WriteFile(source_, bytes);
        Limits limits;
#if !defined(TYMPAN_UNDER_SANITIZERS)
        limits.addressSpace = std::uint64_t{ 512 } << 20U;
#endif
        const Outcome outcome = RunCommand({ "import", source_, "-o", ct_ }, limits);
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_EQ(outcome.err.find("memory"), std::string::npos) << one.name << outcome.err;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name;
    }
}

TEST_F(Import, KnowsWrongUsage)
{
    struct UsageCase {
        const char* name;
        std::vector<std::string> arguments;
        const char* text;
    };
    WritePng(source_, Rgb(), { kRgbPng });
    const UsageCase cases[] = {
        { "no output", { source_ }, "--output" },
        { "an ending that isn't written", { source_, "-o", folder_ / "out.tif" }, ".ct, .lw" },
        { "no ending", { source_, "-o", folder_ / "out" }, ".ct" },
        { "a resolution of 0", { source_, "-o", ct_, "--resolution", "0" }, "--resolution" },
        { "no number", { source_, "-o", ct_, "--resolution", "nan" }, "--resolution" },
    };
    for (const UsageCase& one : cases) {
        std::vector<std::string> arguments{ "import" };
        arguments.insert(arguments.end(), one.arguments.begin(), one.arguments.end());
        const Outcome outcome = RunCommand(arguments);
        EXPECT_EQ(outcome.status, 2) << one.name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
    }
}

TEST_F(Import, TellsWhichFileFailed)
{
    struct FileCase {
        const char* name;
        std::string picture, output;
        std::string told;
    };
    WritePng(source_, Rgb(), { kRgbPng });
    const std::string missing = folder_ / "missing.png";
    const std::string nowhere = folder_ / "none/out.ct";
    const FileCase cases[] = {
        { "no such picture", missing, ct_, missing },
        { "a folder as picture", folder_.Path().string(), ct_, folder_.Path().string() },
        { "no such folder", source_, nowhere, nowhere },
    };
    for (const FileCase& one : cases) {
        const Outcome outcome =
            RunCommand({ "import", one.picture, "-o", one.output, "--resolution", "100" });
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr("tympan: " + one.told + ": ")) << one.name;
    }
}

TEST_F(Import, LeavesTheOldFileWhenTheDiskIsFull)
{
    WriteFile(ct_, "as it was");
    WritePng(source_, Rgb(), { kRgbPng });
    Limits limits;
    limits.fileSize = 4000;
    const Outcome outcome =
        RunCommand({ "import", source_, "-o", ct_, "--resolution", "100" }, limits);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tympan: " + ct_ + ": "));
    EXPECT_EQ(ReadFile(ct_), "as it was");
    EXPECT_EQ(folder_.Entries(), 2U);
}

} // namespace
} // namespace tympan::test
