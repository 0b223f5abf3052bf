// TIFF and TIFF/IT pictures in `info`, `check`, `preview`, `rows`, `export` and `import`: what they
// give is held against the samples that libtiff was told to write, and against its own screen colours.
#include "support/temporary_folder.h"
#include "support/tiff_it_samples.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <tympan/tympan.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

constexpr std::uint32_t kWidth = 37;
constexpr std::uint32_t kHeight = 23;

struct Kind {
    const char* name = "";
    Photometric as = kBlackIsZero;
    unsigned int samples = 1;
    int bits = 8;
    bool isTurned = false; // 255 of a plate is 0 in the file
    const char* separations = "";
};
const Kind kKinds[] = {
    { "CMYK", kSeparated, 4, 8, true, R"(["Cyan","Magenta","Yellow","Black"])" },
    { "6 inks", kSeparated, 6, 8, true, R"(["Cyan","Magenta","Yellow","Black","Ink 5","Ink 6"])" },
    { "RGB", kRgb, 3, 8, false, R"(["Red","Green","Blue"])" },
    { "YCbCr", kYCbCr, 3, 8, false, R"(["Y","Cb","Cr"])" },
    { "grey", kBlackIsZero, 1, 8, false, R"(["Gray"])" },
    { "inverse grey", kWhiteIsZero, 1, 8, true, R"(["Gray"])" },
    { "palette", kPalette, 1, 8, false, R"(["Index"])" },
    { "bilevel", kWhiteIsZero, 1, 1, true, R"(["Gray"])" },
};

struct Layout {
    const char* name;
    bool tiled;
    bool planes;
    Packing packed;
    const char* mode; // the byte order
};
constexpr Layout kLayouts[] = {
    { "strips", false, false, kUncompressed, "wl" },
    { "strips, LZW, high byte first", false, false, kLzw, "wb" },
    { "tiles, Deflate", true, false, kDeflate, "wl" },
    { "tiles in planes, PackBits, high byte first", true, true, kPackBits, "wb" },
    { "strips in planes, Deflate", false, true, kDeflate, "wl" },
    { "strips in planes, high byte first", false, true, kUncompressed, "wb" },
    { "tiles in planes, LZW", true, true, kLzw, "wl" },
    { "tiles, high byte first", true, false, kUncompressed, "wb" },
};

Samples RandomSamples(const Kind& kind)
{
    Samples samples{ kWidth, kHeight, kind.samples, {} };
    std::mt19937 random(kind.samples);
    const std::uint32_t values = 1U << static_cast<unsigned int>(kind.bits);
    for (std::size_t i = 0; i < std::size_t{ kWidth } * kHeight * kind.samples; ++i)
        samples.numbers.push_back(static_cast<std::uint16_t>(random() % values));
    return samples;
}

TiffForm FormOf(const Kind& kind, const Layout& layout)
{
    TiffForm form{ .as = kind.as, .bits = kind.bits };
    form.planes = layout.planes;
    form.packed = layout.packed;
    form.tiled = layout.tiled;
    form.mode = layout.mode;
    form.inkSet = kind.samples == 6 ? INKSET_MULTIINK : INKSET_CMYK;
    form.unit = RESUNIT_CENTIMETER;
    form.x = 100.0F;
    form.y = 50.0F;
    if (kind.as == kPalette)
        for (std::uint32_t colour = 0; colour < 256; ++colour)
            form.palette.push_back(colour * 0x010305U & 0xFFFFFFU);
    return form;
}

// A TIFF "a.tif" in a folder of its own.
struct TiffFolder : TemporaryFolder {
    explicit TiffFolder(const Kind& kind, const Layout& layout = kLayouts[0])
        : samples(RandomSamples(kind))
    {
        WriteTiff(path, samples, FormOf(kind, layout));
    }

    std::string path = *this / "a.tif";
    Samples samples;
};

// A plate as it must come out: 255 is no ink.
std::string Plate(Samples samples, const Kind& kind, std::size_t sample)
{
    std::string plate;
    for (std::uint32_t row = 0; row < samples.height; ++row)
        for (std::uint32_t column = 0; column < samples.width; ++column) {
            const int most = (1 << kind.bits) - 1;
            const int level = samples.At(column, row, sample) * 255 / most;
            plate += static_cast<char>(kind.isTurned ? 255 - level : level);
        }
    return plate;
}

// What a screen shows: inks by the library's rule, all else as libtiff shows it.
std::vector<std::uint8_t> Shown(const TiffFolder& folder, const Kind& kind)
{
    std::vector<std::uint8_t> colours;
    if (kind.as == kSeparated) {
        for (std::size_t at = 0; at < folder.samples.numbers.size(); at += kind.samples) {
            unsigned char pixel[4]{};
            for (std::size_t i = 0; i < 4; ++i)
                pixel[i] = static_cast<unsigned char>(folder.samples.numbers[at + i]);
            const unsigned long packed = PictureFileInterface::CalculatePixelAsRGB3(pixel);
            for (const unsigned int shift : { 0U, 8U, 16U })
                colours.push_back(static_cast<std::uint8_t>(packed >> shift));
        }
        return colours;
    }
    TIFF* const tiff = TIFFOpen(folder.path.c_str(), "r");
    std::vector<std::uint32_t> raster(std::size_t{ kWidth } * kHeight);
    EXPECT_EQ(
        TIFFReadRGBAImageOriented(tiff, kWidth, kHeight, raster.data(), ORIENTATION_TOPLEFT, 0), 1);
    TIFFClose(tiff);
    for (const std::uint32_t pixel : raster)
        for (const std::uint32_t colour : { TIFFGetR(pixel), TIFFGetG(pixel), TIFFGetB(pixel) })
            colours.push_back(static_cast<std::uint8_t>(colour));
    return colours;
}

template <typename Numbers, typename Others>
void ExpectNear(const Numbers& numbers, const Others& others, int most)
{
    ASSERT_EQ(numbers.size(), others.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
        ASSERT_LE(std::abs(int{ numbers[i] } - int{ others[i] }), most) << "sample " << i;
}

ordered_json InfoOf(const std::string& path, int status = 0)
{
    const Outcome outcome = RunCommand({ "info", "--json", path });
    EXPECT_EQ(outcome.status, status) << outcome.err;
    return ParsedJson(outcome.out).at(0);
}

TEST(TiffPicture, RowsAreThoseOfTheFileInEveryLayout)
{
    for (const Kind& kind : kKinds)
        for (const Layout& layout : kLayouts) {
            SCOPED_TRACE(std::string(kind.name) + ", " + layout.name);
            const TiffFolder folder(kind, layout);
            for (std::size_t sample = 0; sample < kind.samples; ++sample) {
                const Outcome outcome =
                    RunCommand({ "rows", folder.path, "--separation", std::to_string(sample), "-o",
                                 folder / "a.raw" });
                ASSERT_EQ(outcome.status, 0) << outcome.err;
                ASSERT_TRUE(ReadFile(folder / "a.raw") == Plate(folder.samples, kind, sample))
                    << "separation " << sample;
            }
        }
}

TEST(TiffPicture, InfoPreviewExportAndCheckOfEveryKind)
{
    constexpr int kRounding = 1; // of YCbCr
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const TiffFolder folder(kind);
        const ordered_json info = InfoOf(folder.path);
        EXPECT_EQ(info.at("format"), "TIFF");
        EXPECT_EQ(info.at("kind"), kind.name);
        EXPECT_EQ(info.at("separations").dump(), kind.separations);
        EXPECT_EQ(info.at("bits_per_sample"), kind.bits);
        EXPECT_NEAR(info.at("resolution_x").get<double>(), 254.0, 1e-9);
        EXPECT_NEAR(info.at("height_in").get<double>(), kHeight / 127.0, 1e-9);
        EXPECT_TRUE(info.at("resolution").is_null());
        EXPECT_EQ(RunCommand({ "check", folder.path }).status, 0);

        const auto shown = Shown(folder, kind);
        const Outcome outcome = RunCommand({ "preview", folder.path, "-o", folder / "a.png" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        ExpectNear(ReadPng(folder / "a.png").samples, shown, kRounding);

        ASSERT_EQ(RunCommand({ "export", folder.path, "-o", folder / "b.tif" }).status, 0);
        const TiffPicture exported = ReadTiff(folder / "b.tif");
        EXPECT_NEAR(exported.resolutionY, 127.0F, 1e-3);
        if (kind.as == kSeparated)
            EXPECT_EQ(exported.samples.numbers, folder.samples.numbers);
        else if (exported.samples.perPixel == 3)
            ExpectNear(exported.samples.numbers, shown, kRounding);
        else
            EXPECT_TRUE(Plate(exported.samples, { "", kBlackIsZero, 1, 8, false, "" }, 0) ==
                        Plate(folder.samples, kind, 0));
    }
}

TEST(TiffPicture, ExportKeepsTheNamesOfInks)
{
    const TiffFolder folder(kKinds[1]);
    ASSERT_EQ(RunCommand({ "export", folder.path, "-o", folder / "b.tif" }).status, 0);
    const TiffPicture exported = ReadTiff(folder / "b.tif");
    EXPECT_EQ(exported.tags.at(TIFFTAG_INKSET), INKSET_MULTIINK);
    EXPECT_EQ(exported.inkNames, std::string("Cyan\0Magenta\0Yellow\0Black\0Ink 5\0Ink 6\0", 38));
}

TEST(TiffPicture, ImportTakesTheSamePlates)
{
    const TiffFolder folder(kKinds[0]);
    ASSERT_EQ(
        RunCommand({ "import", folder.path, "-o", folder / "a.ct", "--resolution", "100" }).status,
        0);
    for (const char* const ink : { "CYAN", "black" }) {
        ASSERT_EQ(
            RunCommand({ "rows", folder.path, "--separation", ink, "-o", folder / "a.raw" }).status,
            0);
        ASSERT_EQ(
            RunCommand({ "rows", folder / "a.ct", "--separation", ink, "-o", folder / "b.raw" })
                .status,
            0);
        EXPECT_TRUE(ReadFile(folder / "a.raw") == ReadFile(folder / "b.raw")) << ink;
    }
}

TEST(TiffPicture, RowsAreResampledByTheUnitOfTheFile)
{
    const TiffFolder folder(kKinds[2]);
    const Outcome outcome =
        RunWords("rows @a.tif --separation green --resolution 254 --rows 0:2 -o @a.raw", folder);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const std::string plate = Plate(folder.samples, kKinds[2], 1);
    std::string twice; // 127 pixels per inch along the height become 254
    for (const std::size_t row : { 0U, 0U, 1U, 1U })
        twice += plate.substr(row * kWidth, kWidth);
    EXPECT_TRUE(ReadFile(folder / "a.raw") == twice);
}

TEST(TiffPicture, PlatesHaveTintsWhereTheyAreInks)
{
    const TiffFolder folder(kKinds[1]);
    const std::array<std::size_t, 3> samples{ 0, 4, 5 };
    for (const std::size_t sample : samples) {
        const Outcome outcome = RunCommand({ "preview", folder.path, "--separation",
                                             std::to_string(sample), "-o", folder / "a.png" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const auto value =
            static_cast<std::uint8_t>(Plate(folder.samples, kKinds[1], sample).front());
        const std::uint8_t others = sample == 0 ? 255 : value; // cyan takes red away
        EXPECT_EQ(ReadPng(folder / "a.png").At(0, 0),
                  (std::vector<std::uint8_t>{ value, others, others }))
            << sample;
    }
}

TEST(TiffPicture, IsShownAsSuchThoughItPassesForACt)
{
    TemporaryFolder folder;
    Samples samples{ 100, 100, 1, std::vector<std::uint16_t>(10000, 1) };
    samples.numbers[1027 - 8] = 0; // one plate, by the bits of these three bytes
    WriteTiff(folder / "a.tif", samples, { .as = kBlackIsZero });
    ASSERT_EQ(ReadFile(folder / "a.tif").substr(1025, 3), std::string("\1\1\0", 3));
    EXPECT_EQ(InfoOf(folder / "a.tif").at("format"), "TIFF");
}

TEST(TiffPicture, WhatCantBeReadIsRefused)
{
    const TiffFolder folder(kKinds[0]);
    WriteTiff(folder / "deep.tif", RandomSamples(kKinds[4]), { .as = kBlackIsZero, .bits = 16 });
    const TiffFolder packed(kKinds[0], kLayouts[1]);
    std::string damaged = ReadFile(packed.path);
    damaged.replace(200, 400, std::string(400, '\xFF'));
    WriteFile(folder / "bad.tif", damaged);
    const RefusalCase cases[] = {
        { "rows @a.tif --separation orange -o @x.pgm", 1, "has no separation orange" },
        { "rows @a.tif --separation 4 -o @x.pgm", 1, "It has: Cyan, Magenta, Yellow, Black." },
        { "rows @deep.tif --separation 0 -o @x.pgm", 1, "(code 90050)" },
        { "preview @deep.tif -o @x.png", 1, "BitPerSample=16" },
        { "rows @bad.tif --separation 0 -o @x.pgm", 1, "bad.tif: row 1 of 23: Using code" },
        { "preview @bad.tif -o @x.png", 1, "bad.tif: row 1 of 23: Using code" },
        { "export @bad.tif -o @x.tif", 1, "bad.tif: row 1 of 23: Using code" },
    };
    ExpectRefused(cases, folder);
    EXPECT_EQ(InfoOf(folder / "deep.tif", 1).at("code"), 90050);
    EXPECT_EQ(RunCommand({ "check", folder / "bad.tif" }).status, 1);
}

// ---- TIFF/IT

std::string TextOf(const std::vector<unsigned char>& bytes)
{
    return { bytes.begin(), bytes.end() };
}

struct TiffItFolder : TemporaryFolder {
    TiffItFolder()
    {
        TiffItSample ct = CtSample(7, 5);
        for (unsigned int i = 0; i < 7 * 5 * 4; ++i)
            ct.data.push_back(static_cast<unsigned char>(i * 37 % 256));
        ink = ct.data;
        WriteFile(*this / "ct.tif", TextOf(ct.Bytes()));

        TiffItSample lw = LwSample(7, 2, 3);
        auto& fields = lw.directories[0]; // separated, in the compression of line work
        fields.insert(fields.begin() + 3, { { 259, 3, { 32896 } }, { 262, 3, { 5 } } });
        lw.data = { 0, 0, 0, 3, 1, 4, 0, 0, 0, 0, 2, 0, 0, 7, 0, 0, 0, 0 };
        WriteFile(*this / "lw.tif", TextOf(lw.Bytes()));
    }

    std::vector<unsigned char> ink;
};

// The screen colour of four inks.
std::vector<std::uint8_t> ColourOf(const unsigned char* pixel)
{
    std::array<unsigned char, 4> ink{ pixel[0], pixel[1], pixel[2], pixel[3] };
    const unsigned long packed = PictureFileInterface::CalculatePixelAsRGB3(ink.data());
    return { static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8U),
             static_cast<std::uint8_t>(packed >> 16U) };
}

TEST(TiffItPicture, IsDrawnAsAWhole)
{
    const TiffItFolder folder;
    for (const char* const rows : { "0:5", "2:4" }) {
        const Outcome outcome =
            RunCommand({ "preview", "--as", "tiffit", folder / "ct.tif", "-o", folder / "a.png",
                         "--rows", rows, "--max-memory", "1KiB" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const PngPicture shown = ReadPng(folder / "a.png");
        const auto first = static_cast<std::uint32_t>(rows[0] - '0');
        ASSERT_EQ(shown.height, static_cast<std::uint32_t>(rows[2] - '0') - first);
        for (std::uint32_t y = 0; y < shown.height; ++y)
            for (std::uint32_t x = 0; x < shown.width; ++x)
                EXPECT_EQ(shown.At(x, y),
                          ColourOf(&folder.ink[(std::size_t{ first + y } * 7 + x) * 4]));
    }
}

TEST(TiffItPicture, LineWorkIsTakenWhereNothingElseOpens)
{
    const TiffItFolder folder;
    const ordered_json info = InfoOf(folder / "lw.tif");
    EXPECT_EQ(info.at("format"), "TIFF/IT");
    EXPECT_EQ(info.at("kind"), "LW");
    EXPECT_EQ(info.at("width"), 7);
    EXPECT_TRUE(info.at("resolution").is_null());
    EXPECT_EQ(RunCommand({ "check", folder / "lw.tif" }).status, 0);

    ASSERT_EQ(RunCommand({ "preview", folder / "lw.tif", "-o", folder / "a.png" }).status, 0);
    const PngPicture shown = ReadPng(folder / "a.png");
    std::vector<unsigned char> table;
    for (unsigned int i = 0; i < 60; ++i) // as the sample has it
        table.push_back(static_cast<unsigned char>((i / 20 * 53 + i % 20 * 29 + 7) % 256));
    EXPECT_EQ(shown.At(2, 0), ColourOf(&table[4]));
    EXPECT_EQ(shown.At(3, 0), ColourOf(&table[24]));
    EXPECT_EQ(shown.At(6, 1), ColourOf(&table[44]));
}

TEST(TiffItPicture, GivesNoRows)
{
    const TiffItFolder folder;
    const RefusalCase cases[] = {
        { "rows @ct.tif --as tiffit --separation 0 -o @x.pgm", 1, "gives no rows" },
        { "rows @lw.tif --separation 0 -o @x.pgm", 1, "gives no rows" },
        { "export @lw.tif -o @x.tif", 1, "gives no rows" },
        { "preview @lw.tif --separation cyan -o @x.png", 1, "gives no rows" },
        { "preview @lw.tif -o @x.png --max-memory 40", 1, "takes 48 bytes of memory" },
        { "crop @lw.tif @x.lw", 1, "TIFF/IT" },
        { "info @ct.tif --as lw", 1, "" },
    };
    ExpectRefused(cases, folder);
}

} // namespace
} // namespace tympan::test
