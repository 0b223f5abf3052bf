// `tympan ink`: its figures are held against pixels that are counted one by one, of every format; and
// the spot inks of a TIFF, which must not be lost on their way.
#include "support/temporary_folder.h"
#include "support/tiff_it_samples.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

constexpr std::uint32_t kWidth = 83;
constexpr std::uint32_t kHeight = 61;
constexpr unsigned int kLimit = 210; // percent, which some of the pixels exceed

using Plates = std::vector<std::string>; // 255 is no ink

ordered_json Measured(const std::string& words, const TemporaryFolder& folder)
{
    const Outcome outcome = RunWords("ink --json " + words, folder);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.status == 0 ? ParsedJson(outcome.out).at(0) : ordered_json();
}

// ---- figures

int InkAt(const std::string& plate, std::size_t pixel)
{
    return 255 - static_cast<unsigned char>(plate[pixel]);
}

ordered_json ExpectedSeparation(const std::string& name, const std::string& plate)
{
    std::vector<std::uint64_t> histogram(256);
    std::uint64_t sum = 0;
    int minimum = 255;
    int maximum = 0;
    for (std::size_t pixel = 0; pixel < plate.size(); ++pixel) {
        const int ink = InkAt(plate, pixel);
        ++histogram[static_cast<std::size_t>(ink)];
        sum += static_cast<std::uint64_t>(ink);
        minimum = std::min(minimum, ink);
        maximum = std::max(maximum, ink);
    }
    return { { "name", name },
             { "sum", sum },
             { "minimum", minimum },
             { "maximum", maximum },
             { "histogram", histogram } };
}

ordered_json ExpectedTotal(const Plates& plates)
{
    std::vector<int> totals(plates.front().size());
    for (const std::string& plate : plates)
        for (std::size_t pixel = 0; pixel < plate.size(); ++pixel)
            totals[pixel] += InkAt(plate, pixel);
    std::sort(totals.begin(), totals.end());
    const std::size_t others = totals.size() / 1000; // may have more
    const auto over = std::count_if(totals.begin(), totals.end(), [](int total) {
        return total * 100 > static_cast<int>(kLimit) * 255;
    });
    return { { "maximum", totals.back() },
             { "percentile_99_9", totals[totals.size() - 1 - others] },
             { "limit_percent", kLimit },
             { "pixels_over_limit", over } };
}

void ExpectFigures(const ordered_json& told, const std::vector<std::string>& names,
                   const Plates& plates)
{
    EXPECT_EQ(told.at("pixels"), plates.front().size());
    ASSERT_EQ(told.at("separations").size(), plates.size());
    for (std::size_t i = 0; i < plates.size(); ++i)
        EXPECT_EQ(told.at("separations")[i], ExpectedSeparation(names[i], plates[i])) << i;
    EXPECT_EQ(told.at("total_ink"), ExpectedTotal(plates));
}

Plates PlatesOfCt(const CtPicture& picture)
{
    Plates plates(picture.separations);
    for (std::uint32_t row = 0; row < picture.height; ++row)
        for (std::uint32_t plate = 0; plate < picture.separations; ++plate)
            plates[plate] += picture.Row(row, plate);
    return plates;
}

Samples RandomSamples(unsigned int perPixel, unsigned int values = 256)
{
    Samples samples{ kWidth, kHeight, perPixel, {} };
    std::mt19937 random(perPixel);
    for (std::size_t i = 0; i < std::size_t{ kWidth } * kHeight * perPixel; ++i)
        samples.numbers.push_back(static_cast<std::uint16_t>(random() % values));
    return samples;
}

// As `tympan rows` gives them, in the order of the file.
Plates DecodedRows(const std::string& file, std::size_t count, const TemporaryFolder& folder)
{
    Plates plates;
    for (std::size_t i = 0; i < count; ++i) {
        const Outcome outcome =
            RunWords("rows @" + file + " -o @row.raw --separation " + std::to_string(i), folder);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        plates.push_back(ReadFile(folder / "row.raw"));
    }
    return plates;
}

const std::vector<std::string> kProcess{ "cyan", "magenta", "yellow", "black" };

TEST(Ink, CountsThePixelsOfCt)
{
    for (const std::uint32_t separations : { 1U, 4U }) {
        const CtPicture picture = RandomCt(kWidth, kHeight, separations);
        ExpectFigures(Measured("@a.ct --limit 210", CtFolder(picture)), kProcess,
                      PlatesOfCt(picture));
    }
}

TEST(Ink, CountsTheRunsOfLineWorkAndTakesTransparentForPaper)
{
    for (const LwRuns kind : kLwRuns) {
        SCOPED_TRACE(static_cast<int>(kind));
        const LwPicture picture = RandomLw(1000, 90, kind);
        ExpectFigures(Measured("@a.lw --limit 210", LwFolder(picture)), kProcess,
                      PlatesOfCt(PlatesOf(OnPaper(picture))));
    }
}

TEST(Ink, CountsTheDecodedPixelsOfJpeg)
{
    const TemporaryFolder folder;
    WritePng(folder / "rgb.png", RandomSamples(3), { .as = 2 });
    ASSERT_EQ(RunWords("import @rgb.png -o @a.jpg", folder).status, 0);
    ExpectFigures(Measured("@a.jpg --limit 210", folder), kProcess,
                  DecodedRows("a.jpg", 3, folder));
}

struct TiffCase {
    const char* name;
    TiffForm (*form)();
    unsigned int samples;
    std::size_t inks;
    std::vector<std::string> names;
};

TEST(Ink, CountsThePixelsOfTiff)
{
    const TiffCase cases[] = {
        { "six inks",
          [] { return TiffForm{ .as = kSeparated, .inkSet = INKSET_MULTIINK }; },
          6,
          6,
          { "Cyan", "Magenta", "Yellow", "Black", "Ink 5", "Ink 6" } },
        { "four inks and alpha",
          [] { return TiffForm{ .as = kSeparated, .extra = kAlpha }; },
          5,
          4,
          { "Cyan", "Magenta", "Yellow", "Black" } },
        { "grey", [] { return TiffForm{ .as = kBlackIsZero }; }, 1, 1, { "black" } },
        { "inverse grey", [] { return TiffForm{ .as = kWhiteIsZero }; }, 1, 1, { "black" } },
        { "bits", [] { return TiffForm{ .as = kWhiteIsZero, .bits = 1 }; }, 1, 1, { "black" } },
        { "RGB", [] { return TiffForm{ .as = kRgb }; }, 3, 3, kProcess },
    };
    for (const TiffCase& one : cases) {
        SCOPED_TRACE(one.name);
        const TemporaryFolder folder;
        const TiffForm form = one.form();
        WriteTiff(folder / "a.tif", RandomSamples(one.samples, form.bits == 1 ? 2 : 256), form);
        ExpectFigures(Measured("@a.tif --limit 210", folder), one.names,
                      DecodedRows("a.tif", one.inks, folder));
    }
}

// Two colours by turns, 79 runs a row, and a last row of one colour.
TEST(Ink, TakesAPageOf400MillionPixelsByItsRuns)
{
    constexpr std::uint32_t kSide = 20000;
    LwRow row;
    for (std::uint32_t left = kSide; left != 0; left -= row.back().length)
        row.push_back({ static_cast<unsigned char>(1 + row.size() % 2),
                        static_cast<unsigned char>(std::min(left, 255U)) });
    LwPicture picture{ .width = kSide,
                       .height = kSide,
                       .colours = { { { 255, 255, 255, 255 } }, { { 0, 55, 155, 0 } } },
                       .rows = std::vector<LwRow>(kSide, row) };
    const ordered_json told = Measured("@a.lw", LwFolder(picture));
    const std::uint64_t dark = std::uint64_t{ 39 } * 255 * kSide; // pixels of the second colour
    EXPECT_EQ(told.at("pixels"), std::uint64_t{ kSide } * kSide);
    const std::array<std::uint64_t, 4> inks{ 255, 200, 100, 255 };
    for (std::size_t i = 0; i < inks.size(); ++i) {
        EXPECT_EQ(told.at("separations")[i].at("sum"), dark * inks[i]);
        EXPECT_EQ(told.at("separations")[i].at("histogram")[inks[i]], dark);
    }
    EXPECT_EQ(told.at("total_ink").at("maximum"), 810);
    EXPECT_EQ(told.at("total_ink").at("pixels_over_limit"), dark);
}

TEST(Ink, TellsAPersonPercent)
{
    CtPicture picture = RandomCt(2, 2, 1);
    picture.bytes = { 255, 0, 204, 255 };
    const CtFolder folder(picture);
    const Outcome outcome = RunWords("ink @a.ct --limit 20", folder);
    EXPECT_EQ(outcome.out, (folder / "a.ct") + R"(
             Coverage   Least  Greatest
  cyan        30.00 %  0.00 %  100.00 %
  Total ink   30.00 %  0.00 %  100.00 %
  99.9 % of the pixels have at most 100.00 %
  25.00 % of the picture, 1 pixels, have more than 20 %
)");
}

TEST(Ink, RefusesWhatHasNoInk)
{
    const CtFolder folder(RandomCt(400, 300));
    const std::string ct = ReadFile(folder / "a.ct");
    WriteFile(folder / "cut.ct", ct.substr(0, ct.size() / 2));
    WriteTiff(folder / "ycbcr.tif", RandomSamples(3), { .as = kYCbCr });
    WriteTiff(folder / "palette.tif", RandomSamples(1),
              { .as = kPalette, .palette = std::vector<std::uint32_t>(256) });
    TiffItSample continuous = CtSample(7, 5);
    continuous.data.resize(std::size_t{ 7 } * 5 * 4);
    const std::vector<unsigned char> bytes = continuous.Bytes();
    WriteFile(folder / "it.tif", { bytes.begin(), bytes.end() });
    ASSERT_EQ(RunWords("page @job.pg --size 2x2 --resolution 300 --place @a.ct@0,0", folder).status,
              0);
    const RefusalCase cases[] = {
        { "ink @ycbcr.tif", 1, "a YCbCr TIFF stores no ink" },
        { "ink @palette.tif", 1, "a palette TIFF stores no ink" },
        { "ink @it.tif --as tiffit", 1, "gives no rows" },
        { "ink @job.pg", 1, "Measure the pictures that it places" },
        { "ink @cut.ct --heat @x.png", 1, "is the first that is missing" },
        { "ink @a.ct @a.ct --heat @x.png", 2, "name a single FILE" },
        { "ink @a.ct --heat @x.jpg", 2, "must end in .png" },
        { "ink @a.ct --heat @a.ct", 2, "must end in .png" },
        { "ink @a.ct --fit 100", 2, "--heat" },
        { "ink @a.ct --limit 801", 2, "--limit" },
    };
    ExpectRefused(cases, folder);
}

// ---- the map

using Colour = std::vector<std::uint8_t>;
const Colour kPaper{ 255, 255, 255 };
const Colour kOverLimit{ 0, 229, 160 };
const Colour kFullRamp{ 24, 15, 62 };

// A picture without ink but for a field that has all of four inks, and one that has three.
CtPicture TwoFields()
{
    CtPicture picture{ 300, 200, 4, 300.0, 300.0, {} };
    for (std::uint32_t row = 0; row < picture.height; ++row)
        for (std::uint32_t plate = 0; plate < 4; ++plate)
            for (std::uint32_t column = 0; column < picture.width; ++column) {
                const bool isInRow = row >= 100 && row < 140;
                const bool isFull = isInRow && column >= 40 && column < 80;
                const bool isThree = isInRow && column >= 200 && column < 240 && plate != 3;
                picture.bytes.push_back(isFull || isThree ? 0 : 255);
            }
    return picture;
}

std::uint32_t AsNumber(const Colour& colour)
{
    std::uint32_t number = 0;
    for (const unsigned char part : colour)
        number = number << 8U | part;
    return number;
}

std::map<std::uint32_t, int> ColoursOf(const PngPicture& picture, std::uint32_t firstRow)
{
    std::map<std::uint32_t, int> colours;
    for (std::uint32_t row = firstRow; row < picture.height; ++row)
        for (std::uint32_t column = 0; column < picture.width; ++column)
            ++colours[AsNumber(picture.At(column, row))];
    return colours;
}

TEST(HeatMap, MarksWhatIsOverTheLimitWhereItIs)
{
    const CtFolder folder(TwoFields());
    ASSERT_EQ(RunWords("ink @a.ct --heat @map.png --fit 150", folder).status, 0);
    const PngPicture map = ReadPng(folder / "map.png");
    ASSERT_EQ(map.width, 308U);
    ASSERT_EQ(map.height, 183U);
    constexpr std::uint32_t kLeft = (308 - 150) / 2;
    constexpr std::uint32_t kTop = 22;
    const auto at = [&](std::uint32_t column, std::uint32_t row) { // of the picture
        return map.At(kLeft + column / 2, kTop + row / 2);
    };
    EXPECT_EQ(at(0, 0), kPaper);
    EXPECT_EQ(at(40, 100), kOverLimit);
    EXPECT_EQ(at(79, 139), kOverLimit);
    EXPECT_EQ(at(80, 100), kPaper);
    const Colour three = at(220, 120);
    for (std::size_t i = 0; i < three.size(); ++i)
        EXPECT_NEAR(three[i], kFullRamp[i], 2) << "300 % is not above the limit";
    std::map<std::uint32_t, int> legend = ColoursOf(map, kTop + 101);
    EXPECT_GT(legend[AsNumber(kOverLimit)], 100);
    EXPECT_GT(legend.size(), 100U) << "a ramp has many colours";
}

TEST(HeatMap, NeedsNoMarkWhereAllInksStayBelowTheLimit)
{
    CtPicture picture = RandomCt(90, 30, 1);
    const CtFolder folder(picture);
    ASSERT_EQ(RunWords("ink @a.ct --heat @map.png", folder).status, 0);
    EXPECT_EQ(ColoursOf(ReadPng(folder / "map.png"), 0).count(AsNumber(kOverLimit)), 0U);
}

TEST(HeatMap, OfLineWorkIsThatOfItsPixels)
{
    const LwPicture picture = RandomLw(20000, 40, LwRuns::mixed);
    const LwFolder folder(picture);
    CtPicture plates = PlatesOf(OnPaper(picture));
    WriteFile(folder / "a.ct", plates.File());
    ASSERT_EQ(RunWords("ink @a.lw --heat @lw.png --limit 180 --fit 700", folder).status, 0);
    ASSERT_EQ(RunWords("ink @a.ct --heat @ct.png --limit 180 --fit 700", folder).status, 0);
    EXPECT_TRUE(ReadPng(folder / "lw.png").samples == ReadPng(folder / "ct.png").samples);
}

// ---- spot inks

// "a.tif", of six inks with names of their own.
struct SpotFolder : TemporaryFolder {
    SpotFolder()
    {
        WriteTiff(*this / "a.tif", samples, { .as = kSeparated, .inkSet = INKSET_MULTIINK });
        TIFF* const tiff = TIFFOpen((*this / "a.tif").c_str(), "r+");
        TIFFSetField(tiff, TIFFTAG_NUMBEROFINKS, 6);
        TIFFSetField(tiff, TIFFTAG_INKNAMES, static_cast<int>(names.size()), names.data());
        TIFFRewriteDirectory(tiff);
        TIFFClose(tiff);
    }

    Samples samples = RandomSamples(6);
    std::string names{ "Cyan\0Magenta\0Yellow\0Black\0Orange\0Warm Red\0", 42 };
};

TEST(SpotInks, KeepTheirNames)
{
    const SpotFolder folder;
    const ordered_json info = ParsedJson(RunWords("info --json @a.tif", folder).out)[0];
    EXPECT_EQ(info.at("separations").dump(),
              R"(["Cyan","Magenta","Yellow","Black","Orange","Warm Red"])");
    EXPECT_EQ(Measured("@a.tif", folder).at("separations")[5].at("name"), "Warm Red");
    ASSERT_EQ(RunWords("rows @a.tif --separation orange -o @orange.raw", folder).status, 0);
    EXPECT_EQ(InkAt(ReadFile(folder / "orange.raw"), 0), folder.samples.numbers[4]);

    ASSERT_EQ(RunWords("export @a.tif -o @b.tif", folder).status, 0);
    const TiffPicture exported = ReadTiff(folder / "b.tif");
    EXPECT_EQ(exported.inkNames, folder.names);
    EXPECT_EQ(exported.samples.numbers, folder.samples.numbers);
}

TEST(SpotInks, AreNotLostInSilence)
{
    const SpotFolder folder;
    const RefusalCase cases[] = {
        { "import @a.tif -o @x.ct", 1, "would be lost: Orange, Warm Red" },
        { "import @a.tif -o @x.jpg", 1, "would be lost: Orange, Warm Red" },
        { "import @a.tif -o @x.lw", 1, "would be lost: Orange, Warm Red" },
    };
    ExpectRefused(cases, folder);
}

} // namespace
} // namespace tympan::test
