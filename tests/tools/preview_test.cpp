// `tympan preview`: its pixels against the library's rule for one pixel, its memory, its refusals.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/png_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

using Pixel = std::vector<std::uint8_t>;
using PixelOf = std::function<Pixel(std::uint32_t column, std::uint32_t row)>;

// A preview of the picture of a folder, made by the command with more options.
PngPicture PreviewIn(const TemporaryFolder& folder, const char* file,
                     std::vector<std::string> options)
{
    options.insert(options.begin(), { "preview", folder / file, "-o", folder / "a.png" });
    const Outcome outcome = RunCommand(options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(folder.Entries(), 2U);
    return ReadPng(folder / "a.png");
}

PngPicture PreviewOf(const CtPicture& picture, const std::vector<std::string>& options)
{
    return PreviewIn(CtFolder(picture), "a.ct", options);
}

void ExpectPixels(const PngPicture& png, std::uint32_t width, std::uint32_t height,
                  const PixelOf& pixel)
{
    ASSERT_EQ(png.width, width);
    ASSERT_EQ(png.height, height);
    for (std::uint32_t row = 0; row < height; ++row)
        for (std::uint32_t column = 0; column < width; ++column)
            ASSERT_EQ(png.At(column, row), pixel(column, row)) << column << ", " << row;
}

// The last is more than one band of rows.
constexpr std::uint32_t kSizes[][3] = { { 1, 1, 4 },   { 7, 5, 4 },    { 8, 1, 1 },
                                        { 33, 70, 1 }, { 1021, 3, 4 }, { 701, 2100, 4 } };

TEST(Preview, ShowsEachPixelByTheColourRule)
{
    for (const auto& [width, height, separations] : kSizes) {
        SCOPED_TRACE(width);
        const CtPicture picture = RandomCt(width, height, separations);
        ExpectPixels(PreviewOf(picture, {}), width, height,
                     [&](auto column, auto row) { return picture.Colour(column, row); });
    }
}

TEST(Preview, OneSeparationHasItsTintOrIsGrey)
{
    const CtPicture picture = RandomCt(31, 9);
    const std::array names{ "cyan", "1", "Yellow", "black" };
    for (std::uint32_t plate = 0; plate < names.size(); ++plate) {
        SCOPED_TRACE(names[plate]);
        ExpectPixels(PreviewOf(picture, { "--separation", names[plate] }), 31, 9,
                     [&](auto column, auto row) { return picture.Tint(column, row, plate); });
        ExpectPixels(
            PreviewOf(picture, { "--separation", names[plate], "--gray" }), 31, 9,
            [&](auto column, auto row) { return Pixel{ picture.At(column, row, plate) }; });
    }
}

TEST(Preview, RowsAreCutOut)
{
    const CtPicture picture = RandomCt(13, 50);
    struct {
        const char* rows;
        std::uint32_t first, end;
    } const cases[] = { { "0:50", 0, 50 }, { "17:18", 17, 18 }, { "40:", 40, 50 }, { ":3", 0, 3 } };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.rows);
        ExpectPixels(
            PreviewOf(picture, { "--rows", one.rows }), 13, one.end - one.first,
            [&](auto column, auto row) { return picture.Colour(column, one.first + row); });
    }
}

// The mean of the pixels of a box, rounded half up.
Pixel MeanOf(const PixelOf& pixel, std::uint32_t left, std::uint32_t right, std::uint32_t top,
             std::uint32_t bottom)
{
    std::array<unsigned int, 3> sums{};
    for (std::uint32_t row = top; row < bottom; ++row)
        for (std::uint32_t column = left; column < right; ++column)
            for (std::size_t channel = 0; channel < 3; ++channel)
                sums[channel] += pixel(column, row)[channel];
    const unsigned int count = (right - left) * (bottom - top);
    Pixel mean;
    for (const unsigned int sum : sums)
        mean.push_back(static_cast<std::uint8_t>((2 * sum + count) / (2 * count)));
    return mean;
}

struct FitCase {
    std::uint32_t width, height;
    const char* longest;
    std::uint32_t fitWidth, fitHeight;
};

constexpr FitCase kFitCases[] = {
    { 100, 50, "10", 10, 5 },   { 101, 53, "17", 17, 9 }, { 53, 101, "100", 52, 100 },
    { 400, 3, "20", 20, 1 },    { 7, 5, "1", 1, 1 },      { 20, 10, "20", 20, 10 },
    { 20, 10, "4000", 20, 10 },
};

TEST(Preview, FitAveragesBoxesThatShareThePictureOut)
{
    for (const FitCase& one : kFitCases) {
        SCOPED_TRACE(std::to_string(one.width) + " into " + one.longest);
        const CtPicture picture = RandomCt(one.width, one.height);
        const PngPicture png = PreviewOf(picture, { "--fit", one.longest });
        ExpectPixels(png, one.fitWidth, one.fitHeight, [&](auto column, auto row) {
            const auto pixel = [&](auto x, auto y) { return picture.Colour(x, y); };
            return MeanOf(pixel, column * one.width / one.fitWidth,
                          (column + 1) * one.width / one.fitWidth, row * one.height / one.fitHeight,
                          (row + 1) * one.height / one.fitHeight);
        });
    }
}

TEST(Preview, LineWorkLooksAsItsPlatesOnPaper)
{
    for (const auto& [width, height, separations] : kSizes) {
        SCOPED_TRACE(width);
        LwPicture picture = RandomLw(width, height);
        picture.mask = separations == 4 ? 15 : 1;
        const CtPicture plates = PlatesOf(OnPaper(picture));
        const LwFolder folder(picture);
        ExpectPixels(PreviewIn(folder, "a.lw", {}), width, height,
                     [&](auto column, auto row) { return plates.Colour(column, row); });
    }
}

TEST(Preview, LineWorkIsCutFittedAndShownByPlates)
{
    const LwPicture picture = RandomLw(101, 53);
    const CtPicture plates = PlatesOf(OnPaper(picture));
    const LwFolder folder(picture);
    ExpectPixels(PreviewIn(folder, "a.lw", { "--fit", "17" }), 17, 9, [&](auto column, auto row) {
        return MeanOf([&](auto x, auto y) { return plates.Colour(x, y); }, column * 101 / 17,
                      (column + 1) * 101 / 17, row * 53 / 9, (row + 1) * 53 / 9);
    });
    ExpectPixels(PreviewIn(folder, "a.lw", { "--rows", "50:53", "--separation", "black" }), 101, 3,
                 [&](auto column, auto row) { return plates.Tint(column, row + 50, 3); });
    ExpectPixels(PreviewIn(folder, "a.lw", { "--separation", "0", "--gray" }), 101, 53,
                 [&](auto column, auto row) { return Pixel{ plates.At(column, row, 0) }; });
}

TEST(Preview, ResolutionFollowsTheReduction)
{
    CtPicture picture = RandomCt(600, 300);
    picture.resolutionY = 150.0;
    const PngPicture whole = PreviewOf(picture, {});
    EXPECT_EQ(whole.pixelsPerMetreX, 11811U);
    EXPECT_EQ(whole.pixelsPerMetreY, 5906U);
    const PngPicture half = PreviewOf(picture, { "--fit", "300" });
    EXPECT_EQ(half.pixelsPerMetreX, 5906U);
    EXPECT_EQ(half.pixelsPerMetreY, 2953U);
}

TEST(Preview, MissingRowsAreShownWithoutInkAndTold)
{
    const TemporaryFolder folder;
    const CtPicture picture = RandomCt(10, 20);
    const std::string file = picture.File();
    WriteFile(folder / "cut.ct", file.substr(0, 2048 + 12 * 40 + 39));
    const Outcome outcome = RunCommand({ "preview", folder / "cut.ct", "-o", folder / "a.png" });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("row 12 of 20"));
    const PngPicture png = ReadPng(folder / "a.png");
    EXPECT_EQ(png.height, 20U);
    EXPECT_EQ(png.At(9, 11), picture.Colour(9, 11));
    EXPECT_EQ(png.At(0, 13), (Pixel{ 255, 255, 255 }));

    const Outcome held =
        RunCommand({ "preview", folder / "cut.ct", "-o", folder / "b.png", "--rows", "0:12" });
    EXPECT_EQ(held.status, 0) << held.err;
    const Outcome none =
        RunCommand({ "preview", folder / "cut.ct", "-o", folder / "c.png", "--rows", "12:" });
    EXPECT_EQ(none.status, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "c.png"));
}

TEST(Preview, LastRowWithoutItsPaddingIsHeld)
{
    const TemporaryFolder folder;
    std::string file = RandomCt(11, 3).File();
    file.pop_back();
    WriteFile(folder / "a.ct", file);
    EXPECT_EQ(RunCommand({ "preview", folder / "a.ct", "-o", folder / "a.png" }).status, 0);
}

// A picture of zeros, which is all ink, that takes no room on the disk.
void WriteSparseCt(const std::string& path, std::uint32_t width, std::uint32_t height)
{
    const CtPicture picture{ width, height, 4, 300.0, 300.0, {} };
    WriteFile(path, picture.Header());
    std::filesystem::resize_file(path, 2048 + std::uintmax_t{ width } * height * 4);
}

#ifdef TYMPAN_UNDER_SANITIZERS
constexpr std::uint32_t kLargeSide = 3000;
constexpr std::uint32_t kNoisySide = 2000;
constexpr Limits kLittleMemory{};
#else
constexpr std::uint32_t kLargeSide = 30000; // 3.4 GiB
constexpr std::uint32_t kNoisySide = 3000;
constexpr Limits kLittleMemory{ 256U << 20U, 0 };
#endif

TEST(Preview, PictureLargerThanMemoryFits)
{
    const TemporaryFolder folder;
    WriteSparseCt(folder / "large.ct", kLargeSide, kLargeSide);
    const Outcome outcome = RunCommand(
        { "preview", folder / "large.ct", "-o", folder / "a.png", "--fit", "100" }, kLittleMemory);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, ""); // no progress where there is no terminal
    ExpectPixels(ReadPng(folder / "a.png"), 100, 100, [](auto, auto) { return Pixel{ 0, 0, 0 }; });
}

TEST(Preview, VeryWideRowsAreDrawnInParts)
{
    const TemporaryFolder folder;
    constexpr std::uint32_t kWidth = 3'000'000; // more than two bands
    const CtPicture picture = RandomCt(kWidth, 2, 1);
    WriteFile(folder / "wide.ct", picture.File());
    ASSERT_EQ(RunCommand({ "preview", folder / "wide.ct", "-o", folder / "a.png", "--separation",
                           "cyan", "--gray", "--fit", "1000000" })
                  .status,
              0);
    const PngPicture png = ReadPng(folder / "a.png");
    ASSERT_EQ(png.width, kWidth / 3);
    ASSERT_EQ(png.height, 1U);
    for (std::uint32_t column = 0; column < png.width; ++column) {
        int sum = 0;
        for (std::uint32_t i = 0; i < 3; ++i)
            sum += picture.At(3 * column + i, 0, 0) + picture.At(3 * column + i, 1, 0);
        ASSERT_EQ(png.samples[column], (sum + 3) / 6) << column;
    }
}

TEST(Preview, LongWorkShowsProgressOnATerminalAndWipesItOut)
{
    const CtFolder folder(RandomCt(kNoisySide, kNoisySide)); // slow to compress
    const std::string sent = RunOnTerminal({ "preview", folder / "a.ct", "-o", folder / "a.png" });
    EXPECT_THAT(sent, HasSubstr("%"));
    EXPECT_THAT(sent, testing::EndsWith("\r\033[K"));
}

} // namespace
