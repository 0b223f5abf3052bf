// `tympan rows`: one separation in each kind of file, as stored and enlarged.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/png_pictures.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

// The bytes of the rows that a command with these options writes to a file of this ending.
std::string RowsIn(const TemporaryFolder& folder, const char* file, const std::string& ending,
                   std::vector<std::string> options)
{
    options.insert(options.begin(), { "rows", folder / file, "-o", folder / ("rows" + ending) });
    const Outcome outcome = RunCommand(options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return ReadFile(folder / ("rows" + ending));
}

std::string RowsOf(const CtPicture& picture, const std::string& ending,
                   const std::vector<std::string>& options)
{
    return RowsIn(CtFolder(picture), "a.ct", ending, options);
}

std::string StoredRows(const CtPicture& picture, std::uint32_t plate, std::uint32_t first,
                       std::uint32_t end)
{
    std::string rows;
    for (std::uint32_t row = first; row < end; ++row)
        rows += picture.Row(row, plate);
    return rows;
}

TEST(Rows, RawFileIsTheBytes)
{
    const CtPicture picture = RandomCt(33, 20);
    for (std::uint32_t plate = 0; plate < 4; ++plate)
        EXPECT_EQ(RowsOf(picture, ".raw", { "--separation", std::to_string(plate) }),
                  StoredRows(picture, plate, 0, 20));
    EXPECT_EQ(RowsOf(picture, ".raw", { "--separation", "magenta", "--rows", "3:7" }),
              StoredRows(picture, 1, 3, 7));
}

TEST(Rows, MoreThanOneBandOfRowsIsWhole)
{
    const CtPicture picture = RandomCt(5001, 900, 1);
    EXPECT_EQ(RowsOf(picture, ".raw", { "--separation", "cyan" }), StoredRows(picture, 0, 0, 900));
}

TEST(Rows, LineWorkKeepsTheLibrarysValues)
{
    for (const std::uint32_t height : { 20U, 900U }) { // the last is more than one band
        const LwPicture picture = RandomLw(5001, height);
        const LwFolder folder(picture);
        for (std::uint32_t plate = 0; plate < 4; ++plate)
            EXPECT_EQ(RowsIn(folder, "a.lw", ".raw",
                             { "--separation", std::to_string(plate), "--rows", "3:" }),
                      StoredRows(PlatesOf(AsLoaded(picture)), plate, 3, height));
    }
}

TEST(Rows, LineWorkIsEnlargedAndReduced)
{
    const LwPicture picture = RandomLw(33, 20); // at 100 to the inch
    const CtPicture plates = PlatesOf(AsLoaded(picture));
    const LwFolder folder(picture);
    struct {
        const char* resolution;
        std::uint32_t width, height;
    } const cases[] = { { "100", 33, 20 }, { "400", 132, 80 }, { "50", 17, 10 }, { "25", 8, 5 } };
    for (const auto& one : cases) {
        std::string expected =
            "P5\n" + std::to_string(one.width) + " " + std::to_string(one.height) + "\n255\n";
        const double ratio = std::stod(one.resolution) / 100.0;
        for (std::uint32_t row = 0; row < one.height; ++row)
            for (std::uint32_t column = 0; column < one.width; ++column)
                expected +=
                    static_cast<char>(plates.At(static_cast<std::uint32_t>(column / ratio),
                                                static_cast<std::uint32_t>(row / ratio), 2));
        EXPECT_EQ(RowsIn(folder, "a.lw", ".pgm",
                         { "--separation", "yellow", "--resolution", one.resolution }),
                  expected)
            << one.resolution;
    }
    EXPECT_EQ(RowsIn(folder, "a.lw", ".raw",
                     { "--separation", "2", "--resolution", "50", "--rows", "4:9" })
                  .size(),
              3U * 17U); // rows 4, 6 and 8
    for (const char* const rows : { "3:4", "0:" }) {
        const Outcome none =
            RunCommand({ "rows", folder / "a.lw", "-o", folder / "none.raw", "--separation", "2",
                         "--rows", rows, "--resolution", *rows == '3' ? "50" : "1" });
        EXPECT_EQ(none.status, 2);
        EXPECT_THAT(none.err, HasSubstr("no pixel"));
    }
}

TEST(Rows, PgmFile)
{
    const CtPicture picture = RandomCt(33, 20);
    EXPECT_EQ(RowsOf(picture, ".pgm", { "--separation", "black" }),
              "P5\n33 20\n255\n" + StoredRows(picture, 3, 0, 20));
}

TEST(Rows, PngFileIsGreyWithResolution)
{
    const TemporaryFolder folder;
    const CtPicture picture = RandomCt(300, 600);
    WriteFile(folder / "a.png", RowsOf(picture, ".png", { "--separation", "yellow" }));
    const PngPicture png = ReadPng(folder / "a.png");
    EXPECT_EQ(png.channels, 1U);
    EXPECT_EQ(std::string(png.samples.begin(), png.samples.end()), StoredRows(picture, 2, 0, 600));
    EXPECT_EQ(png.pixelsPerMetreX, 11811U);
}

TEST(Rows, TiffFileIsGreyWithResolution)
{
    const TemporaryFolder folder;
    CtPicture picture = RandomCt(300, 600);
    picture.resolutionY = 150.0;
    WriteFile(folder / "a.tif", RowsOf(picture, ".tif", { "--separation", "cyan" }));
    TiffPicture tiff = ReadTiff(folder / "a.tif");
    EXPECT_EQ(tiff.tags[TIFFTAG_PHOTOMETRIC], PHOTOMETRIC_MINISBLACK);
    EXPECT_EQ(tiff.resolutionX, 300.0F);
    EXPECT_EQ(tiff.resolutionY, 150.0F);
    EXPECT_EQ(tiff.samples.width, 300U);
    EXPECT_EQ(std::string(tiff.samples.numbers.begin(), tiff.samples.numbers.end()),
              StoredRows(picture, 0, 0, 600));
}

TEST(Rows, EnlargedOnesRepeatPixels)
{
    const CtPicture picture = RandomCt(300, 150, 1); // at 300 to the inch
    for (const std::uint32_t times : { 1U, 2U, 8U }) {
        const std::uint32_t width = times * 300, height = times * 150;
        const std::string resolution = std::to_string(width);
        const std::string pgm =
            RowsOf(picture, ".pgm", { "--separation", "0", "--resolution", resolution });
        const std::string start =
            "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
        ASSERT_EQ(pgm.substr(0, start.size()), start);
        ASSERT_EQ(pgm.size(), start.size() + std::size_t{ width } * height);
        for (std::uint32_t row = 0; row < height; ++row)
            for (std::uint32_t column = 0; column < width; ++column)
                ASSERT_EQ(static_cast<std::uint8_t>(
                              pgm[start.size() + std::size_t{ row } * width + column]),
                          picture.At(column * 300 / width, row * 150 / height, 0))
                    << column << ", " << row;
    }
}

TEST(Rows, EnlargedOnesHaveTheResolutionOnBothAxes)
{
    CtPicture picture = RandomCt(40, 30, 1);
    picture.resolutionX = 100.0;
    picture.resolutionY = 50.0;
    const std::string start = "P5\n80 120\n255\n";
    const std::string pgm = RowsOf(picture, ".pgm", { "--separation", "0", "--resolution", "200" });
    ASSERT_EQ(pgm.substr(0, start.size()), start);
    for (std::uint32_t row = 0; row < 120; ++row)
        for (std::uint32_t column = 0; column < 80; ++column)
            ASSERT_EQ(
                static_cast<std::uint8_t>(pgm[start.size() + std::size_t{ row } * 80 + column]),
                picture.At(column / 2, row / 4, 0));
}

TEST(Rows, EnlargedRangeIsTheSameRowsOfTheEnlargedWhole)
{
    const CtPicture picture = RandomCt(300, 210, 1);
    const auto enlarged = [&](const std::string& rows) {
        return RowsOf(picture, ".raw",
                      { "--separation", "0", "--resolution", "700", "--rows", rows });
    };
    EXPECT_EQ(enlarged("0:40") + enlarged("40:41") + enlarged("41:210"), enlarged("0:210"));
}

// Sizes in a header have eight digits, so that 300 pixels per inch may come out a little below.
// Rows enlarged by so little would show all pixels one column further.
TEST(Rows, TheResolutionThatTheHeaderMeansIsTheFilesOwn)
{
    CtPicture picture = RandomCt(300, 30, 1);
    picture.resolutionX = picture.resolutionY = 299.99995;
    EXPECT_EQ(RowsOf(picture, ".raw", { "--separation", "0", "--resolution", "300" }),
              StoredRows(picture, 0, 0, 30));
}

TEST(Rows, LowerResolutionIsTheLibrarysRefusal)
{
    const CtFolder folder(RandomCt(300, 300));
    const Outcome outcome = RunCommand({ "rows", folder / "a.ct", "--separation", "cyan", "-o",
                                         folder / "a.raw", "--resolution", "299" });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err,
                HasSubstr("Output Res requested smaller than Input Res. (code 90064)"));
    EXPECT_THAT(outcome.err, HasSubstr("300"));
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST(Rows, MissingRowLeavesNoOutput)
{
    const TemporaryFolder folder;
    const CtPicture picture = RandomCt(10, 20);
    WriteFile(folder / "cut.ct", picture.File().substr(0, 2048 + 12 * 40 + 39));
    for (const char* const separation : { "cyan", "black" }) {
        const Outcome outcome = RunCommand(
            { "rows", folder / "cut.ct", "--separation", separation, "-o", folder / "a.raw" });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, HasSubstr("row 12 of 20 is the first that is missing"));
        EXPECT_EQ(folder.Entries(), 1U);
    }
    const Outcome held = RunCommand({ "rows", folder / "cut.ct", "--separation", "black", "-o",
                                      folder / "a.raw", "--rows", "0:12" });
    EXPECT_EQ(held.status, 0) << held.err;
    EXPECT_EQ(ReadFile(folder / "a.raw"), StoredRows(picture, 3, 0, 12));
}

TEST(Rows, RowsOfAllValuesAreSeenToBeThere)
{
    // Whether a row is there is told by what reading leaves alone: bytes equal to either fill
    // count.
    for (const std::uint8_t value : { std::uint8_t{ 0 }, std::uint8_t{ 255 } }) {
        CtPicture picture = RandomCt(9, 5);
        picture.bytes.assign(picture.bytes.size(), value);
        EXPECT_EQ(RowsOf(picture, ".raw", { "--separation", "3" }).size(), 45U);
    }
}

TEST(Rows, SeparationThatIsNotThereIsTold)
{
    const CtFolder folder(RandomCt(10, 10, 1));
    const Outcome outcome =
        RunCommand({ "rows", folder / "a.ct", "--separation", "black", "-o", folder / "a.raw" });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("has no separation black"));
    EXPECT_THAT(outcome.err, HasSubstr("cyan"));
}

} // namespace
