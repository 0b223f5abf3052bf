// `tympan diff`: what it counts is held against samples that are compared one by one.
#include "support/temporary_folder.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

constexpr std::array kNames{ "black", "cyan", "magenta", "yellow" }; // in canonical order
constexpr std::array<std::uint32_t, 4> kPlates{ 3, 0, 1, 2 };        // those of a CT

// A folder with two pictures.
struct PairFolder : TemporaryFolder {
    PairFolder(const CtPicture& a, const CtPicture& b)
    {
        WriteFile(*this / "a.ct", a.File());
        WriteFile(*this / "b.ct", b.File());
    }
};

// What the command tells, and that its exit status goes with it.
ordered_json Told(const std::string& words, const TemporaryFolder& folder)
{
    const Outcome outcome = RunWords("diff --json " + words, folder);
    ordered_json told = ParsedJson(outcome.out);
    EXPECT_EQ(outcome.status, told.at("verdict") == "same"        ? 0
                              : told.at("verdict") == "different" ? 1
                                                                  : 2);
    return told;
}

// What it must tell of two CTs, but for their names.
ordered_json Expected(const CtPicture& a, const CtPicture& b)
{
    ordered_json first;
    std::array<int, 4> samples{};
    std::array<int, 4> largest{};
    int pixels = 0;
    for (std::uint32_t y = 0; y < a.height; ++y)
        for (std::uint32_t x = 0; x < a.width; ++x) {
            bool differs = false;
            for (std::size_t i = 0; i < kNames.size(); ++i) {
                const int one = a.At(x, y, kPlates[i]);
                const int other = b.At(x, y, kPlates[i]);
                if (one == other)
                    continue;
                if (first.is_null())
                    first = { { "x", x },
                              { "y", y },
                              { "separation", kNames[i] },
                              { "a_sample", one },
                              { "b_sample", other } };
                differs = true;
                ++samples[i];
                largest[i] = std::max(largest[i], std::abs(one - other));
            }
            pixels += differs ? 1 : 0;
        }
    ordered_json separations = ordered_json::array();
    for (std::size_t i = 0; i < kNames.size(); ++i)
        separations.push_back({ { "name", kNames[i] },
                                { "differing_samples", samples[i] },
                                { "largest_difference", largest[i] } });
    return { { "verdict", pixels == 0 ? "same" : "different" },
             { "width", a.width },
             { "height", a.height },
             { "differing_pixels", pixels },
             { "first", first },
             { "separations", separations } };
}

CtPicture WithChanges(CtPicture picture, std::size_t changes)
{
    std::mt19937 random(static_cast<std::uint32_t>(changes));
    for (std::size_t i = 0; i < changes; ++i) {
        std::uint8_t& byte = picture.bytes[random() % picture.bytes.size()];
        byte = static_cast<std::uint8_t>(byte + 1 + random() % 9); // rarely wraps, which is large
    }
    return picture;
}

TEST(Diff, CountsWhatDiffers)
{
    struct CountCase {
        std::uint32_t width, height;
        std::size_t changes;
    };
    const CountCase cases[] = {
        { 83, 61, 0 },     { 83, 61, 1 },
        { 83, 61, 400 }, // some in each row: the first goes by row, then column, then separation
        { 83, 61, 70000 }, { 1500, 1100, 5 },
        { 1, 1, 3 },
    };
    for (const CountCase& one : cases) {
        SCOPED_TRACE(std::to_string(one.changes) + " changes of " + std::to_string(one.width));
        const CtPicture a = RandomCt(one.width, one.height);
        const CtPicture b = WithChanges(a, one.changes);
        ordered_json told = Told("@a.ct @b.ct", PairFolder(a, b));
        told.erase("a");
        told.erase("b");
        EXPECT_EQ(told, Expected(a, b));
    }
}

TEST(Diff, TellsAPerson)
{
    CtPicture a{ 2, 2, 4, 300.0, 300.0, std::vector<std::uint8_t>(16, 255) };
    CtPicture b = a;
    b.bytes[9] = 250; // cyan of the second row
    b.bytes[15] = 0;  // black
    const PairFolder folder(a, b);
    const std::string names = (folder / "a.ct") + " and " + (folder / "b.ct");
    EXPECT_EQ(RunWords("diff @a.ct @b.ct", folder).out, names + R"( differ in 1 of 4 pixels, 25.00 %
  First at x 1, y 1: black is 255 and 0
           Samples     Area  Largest difference
  black          1  25.00 %                 255
  cyan           1  25.00 %                   5
  magenta        0   0.00 %                   0
  yellow         0   0.00 %                   0
)");
    std::filesystem::copy_file(folder / "a.ct", folder / "b.ct",
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(RunWords("diff @a.ct @b.ct", folder).out,
              names + " are the same: 2 x 2 pixels of black, cyan, magenta, yellow\n");
}

TEST(Diff, TakesTransparentColoursByTheirOwnValue)
{
    LwPicture picture = RandomLw(200, 50);
    const LwFolder folder(picture);
    ASSERT_EQ(RunWords("export @a.lw -o @paper.tif", folder).status, 0);
    EXPECT_EQ(Told("@a.lw @paper.tif", folder).at("verdict"), "different");
    WriteFile(folder / "rows.ct", PlatesOf(AsLoaded(picture)).File());
    EXPECT_EQ(Told("@a.lw @rows.ct", folder).at("verdict"), "same");
}

TEST(Diff, EndsInStatus2WhenThePicturesCantBeCompared)
{
    const PairFolder folder(RandomCt(40, 30), RandomCt(40, 31));
    WriteFile(folder / "one.ct", RandomCt(40, 30, 1).File());
    WriteFile(folder / "turned.ct", RandomCt(30, 40).File());
    const std::string ct = ReadFile(folder / "a.ct");
    WriteFile(folder / "cut.ct", ct.substr(0, ct.size() / 2));
    WriteFile(folder / "text", "no picture");
    const RefusalCase cases[] = {
        { "diff @a.ct @b.ct", 2, "b.ct: has 40 x 31 pixels, but " },
        { "diff @a.ct @turned.ct", 2, "has 30 x 40 pixels" },
        { "diff @a.ct @one.ct", 2, "one.ct: its separations are single, but those of " },
        { "diff @a.ct @cut.ct", 2, "cut.ct: the file is shorter than its header says" },
        { "diff @cut.ct @a.ct", 2, "cut.ct: the file is shorter than its header says" },
        { "diff @a.ct @none.ct", 2, "none.ct: No such file" },
        { "diff @text @a.ct", 2, "text: " },
        { "diff @a.ct", 2, "B" },
        { "diff @a.ct @a.ct --image @x.jpg", 2, "must end in .png" },
        { "diff @a.ct @a.ct --image @none/x.png", 2, "x.png: No such file" },
        { "diff @a.ct @a.ct --fit 100", 2, "--image" },
    };
    ExpectRefused(cases, folder);
    const ordered_json told = Told("@a.ct @b.ct", folder);
    EXPECT_EQ(told.at("verdict"), "not compared");
    EXPECT_EQ(told.at("failed"), folder / "b.ct");
    EXPECT_THAT(told.at("error").get<std::string>(), HasSubstr("40 x 31"));
}

TEST(Diff, NeverReplacesWhatItCompares)
{
    const CtFolder folder(RandomCt(40, 30));
    for (const char* const name : { "one.png", "two.png" }) // a CT all the same
        std::filesystem::copy_file(folder / "a.ct", folder / name);
    const RefusalCase cases[] = {
        { "diff @one.png @two.png --image @one.png", 2, "give it another name" },
        { "diff @one.png @two.png --image @two.png", 2, "give it another name" },
    };
    ExpectRefused(cases, folder);
}

// ---- the image

using Colour = std::vector<std::uint8_t>;
constexpr std::uint32_t kTop = 22;   // of the map
constexpr std::uint32_t kLegend = 4; // rows at least from the map to its legend

// The coloured pixels of a map of this size, of which no other is.
std::vector<std::pair<std::uint32_t, std::uint32_t>>
Marks(const PngPicture& png, std::uint32_t width, std::uint32_t height)
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> marks;
    for (std::uint32_t y = 0; y < kTop + height + kLegend; ++y)
        for (std::uint32_t x = 0; x < png.width; ++x)
            if (const Colour colour = png.At(x, y); colour[0] != colour[1])
                marks.emplace_back(x - (png.width - width) / 2, y - kTop);
    return marks;
}

TEST(DiffMap, ShowsOneSampleAmongMillions)
{
    CtPicture a{ 2000,  1500,  4,
                 300.0, 300.0, std::vector<std::uint8_t>(std::size_t{ 2000 } * 1500 * 4, 255) };
    CtPicture b = a;
    b.bytes[(std::size_t{ 1234 } * 4 + 2) * 2000 + 567] = 254;
    const PairFolder folder(a, b);
    EXPECT_EQ(RunWords("diff @a.ct @b.ct --image @d.png --fit 100", folder).status, 1);
    const PngPicture png = ReadPng(folder / "d.png");
    EXPECT_THAT(Marks(png, 100, 75), testing::ElementsAre(std::pair(567U / 20, 1234U / 20)));
    EXPECT_EQ(RunWords("diff @a.ct @a.ct --image @d.png --fit 100", folder).status, 0);
    EXPECT_TRUE(Marks(ReadPng(folder / "d.png"), 100, 75).empty());
}

// Differences of 1, 2, 4 to 128 side by side, over ink in full.
TEST(DiffMap, HasAColourOfTheLegendForEachSizeAndThePictureFaintBehind)
{
    CtPicture a{ 300,   200,   4,
                 300.0, 300.0, std::vector<std::uint8_t>(std::size_t{ 300 } * 200 * 4, 0) };
    CtPicture b = a;
    for (std::size_t i = 0; i < 8; ++i)
        b.bytes[(std::size_t{ 100 } * 4 + 1) * 300 + 20 + 10 * i] =
            static_cast<std::uint8_t>(1U << i);
    const PairFolder folder(a, b);
    ASSERT_EQ(RunWords("diff @a.ct @b.ct --image @d.png", folder).status, 1);
    const PngPicture png = ReadPng(folder / "d.png");
    EXPECT_EQ(Marks(png, 300, 200).size(), 8U);
    EXPECT_EQ(png.At((png.width - 300) / 2 + 7, kTop + 7), (Colour{ 192, 192, 192 }));
    const std::uint32_t inLegend = png.height - 45;
    for (std::uint32_t i = 0; i < 8; ++i) {
        const Colour mark = png.At((png.width - 300) / 2 + 20 + 10 * i, kTop + 100);
        EXPECT_EQ(mark, png.At(kTop + (png.width - 2 * kTop) * (2 * i + 1) / 16, inLegend)) << i;
    }
}

} // namespace
} // namespace tympan::test
