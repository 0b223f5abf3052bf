// `tympan export`: the TIFF that a CT picture becomes, and what ends an export.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;
using namespace std::string_literals;

class Export : public testing::Test {
  protected:
    Outcome Run(const std::string& bytes)
    {
        WriteFile(ct_, bytes);
        return RunCommand({ "export", ct_, "-o", tiff_ });
    }

    TemporaryFolder folder_;
    std::string ct_ = folder_ / "in.ct";
    std::string tiff_ = folder_ / "out.tif";
};

// Whether the samples are the picture's, as ink where there are four.
void ExpectSamples(TiffPicture tiff, const CtPicture& picture)
{
    ASSERT_EQ(tiff.samples.width, picture.width);
    ASSERT_EQ(tiff.samples.height, picture.height);
    ASSERT_EQ(tiff.samples.perPixel, picture.separations);
    std::size_t wrong = 0;
    for (std::uint32_t y = 0; y < picture.height; ++y)
        for (std::uint32_t x = 0; x < picture.width; ++x)
            for (std::uint32_t i = 0; i < picture.separations; ++i) {
                const int byte = picture.At(x, y, i);
                const int expected = picture.separations == 4 ? 255 - byte : byte;
                wrong += tiff.samples.At(x, y, i) != expected ? 1U : 0U;
            }
    EXPECT_EQ(wrong, 0U);
}

struct ExportCase {
    const char* name;
    std::uint32_t width, height, separations;
};
const ExportCase kPictures[] = {
    { "four separations, even width", 64, 20, 4 }, { "four separations, odd width", 33, 50, 4 },
    { "one separation, odd width", 33, 50, 1 },    { "one pixel", 1, 1, 4 },
    { "several bands and strips", 1500, 1400, 4 }, { "wide, of one row", 70001, 1, 1 },
};

TEST_F(Export, WritesInkForFourSeparationsAndGreyForOne)
{
    for (const ExportCase& one : kPictures) {
        SCOPED_TRACE(one.name);
        CtPicture ct = RandomCt(one.width, one.height, one.separations);
        ct.resolutionX = ct.resolutionY = 10.0;
        const Outcome outcome = Run(ct.File());
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        ExpectSamples(ReadTiff(tiff_), ct);
    }
}

TEST_F(Export, LineWorkIsOnPaper)
{
    for (const ExportCase& one : kPictures) {
        SCOPED_TRACE(one.name);
        LwPicture picture = RandomLw(one.width, one.height);
        picture.mask = one.separations == 4 ? 15 : 1;
        const Outcome outcome = Run(std::string(AsText(picture.Bytes())));
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        ExpectSamples(ReadTiff(tiff_), PlatesOf(OnPaper(picture)));
    }
}

TEST_F(Export, TellsOtherProgramsWhatTheSamplesAre)
{
    CtPicture ct = RandomCt(40, 30);
    ct.resolutionX = 200.0;
    ct.resolutionY = 100.0;
    ASSERT_EQ(Run(ct.File()).status, 0);
    TiffPicture ink = ReadTiff(tiff_);
    EXPECT_EQ(ink.tags[TIFFTAG_PHOTOMETRIC], PHOTOMETRIC_SEPARATED);
    EXPECT_EQ(ink.tags[TIFFTAG_INKSET], INKSET_CMYK);
    EXPECT_EQ(ink.tags[TIFFTAG_NUMBEROFINKS], 4);
    EXPECT_EQ(ink.inkNames, "Cyan\0Magenta\0Yellow\0Black\0"s);
    EXPECT_EQ(ink.tags[TIFFTAG_COMPRESSION], COMPRESSION_ADOBE_DEFLATE);
    EXPECT_EQ(ink.tags[TIFFTAG_PREDICTOR], PREDICTOR_HORIZONTAL);
    EXPECT_EQ(ink.tags[TIFFTAG_RESOLUTIONUNIT], RESUNIT_INCH);
    EXPECT_FLOAT_EQ(ink.resolutionX, 200.0F);
    EXPECT_FLOAT_EQ(ink.resolutionY, 100.0F);

    ASSERT_EQ(Run(RandomCt(40, 30, 1).File()).status, 0);
    TiffPicture grey = ReadTiff(tiff_);
    EXPECT_EQ(grey.tags[TIFFTAG_PHOTOMETRIC], PHOTOMETRIC_MINISBLACK);
    EXPECT_EQ(grey.tags.count(TIFFTAG_NUMBEROFINKS), 0U);
}

TEST_F(Export, ComesBackByImport)
{
    CtPicture ct = RandomCt(33, 50);
    ASSERT_EQ(Run(ct.File()).status, 0);
    const std::string again = folder_ / "again.ct";
    ASSERT_EQ(RunCommand({ "import", tiff_, "-o", again }).status, 0);
    std::string expected = ct.File();
    expected.pop_back(); // the padding behind the last row, which is not written
    EXPECT_EQ(ReadFile(again).substr(2048), expected.substr(2048));
}

TEST_F(Export, EndsAtTheFirstMissingRow)
{
    struct MissingCase {
        const char* name;
        std::uint32_t width, separations;
        std::size_t bytes; // behind the header
        const char* told;
    };
    const MissingCase cases[] = {
        { "no row", 20, 4, 0, "row 0 of 10" },
        { "half a row", 20, 4, 40, "row 0 of 10" },
        { "one row", 20, 4, 80, "row 1 of 10" },
        { "all but a byte", 20, 4, 799, "row 9 of 10" },
        { "odd width, all but a byte of pixels", 21, 4, 22 * 40 - 2, "row 9 of 10" },
        { "one separation", 20, 1, 139, "row 6 of 10" },
    };
    for (const MissingCase& one : cases) {
        CtPicture ct = RandomCt(one.width, 10, one.separations);
        ct.resolutionX = ct.resolutionY = 10.0;
        const Outcome outcome = Run(ct.File().substr(0, 2048 + one.bytes));
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr(one.told)) << one.name;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
    }
}

TEST_F(Export, RefusesWhatIsNoPicture)
{
    struct RefusalCase {
        const char* name;
        std::string bytes;
        const char* text;
    };
    CtPicture none = RandomCt(0, 0);
    const RefusalCase cases[] = {
        { "empty", "", "tympan: " },
        { "zeros", std::string(5000, '\0'), "90066" },
        { "no pixels", none.File(), "no pixels" },
    };
    for (const RefusalCase& one : cases) {
        const Outcome outcome = Run(one.bytes);
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
    }
}

TEST_F(Export, KnowsWrongUsage)
{
    WriteFile(ct_, RandomCt(40, 30).File());
    const Outcome ending = RunCommand({ "export", ct_, "-o", folder_ / "out.png" });
    EXPECT_EQ(ending.status, 2);
    EXPECT_THAT(ending.err, HasSubstr(".tif"));
    const std::string same = folder_ / "same.tif";
    WriteFile(same, RandomCt(40, 30).File());
    EXPECT_EQ(RunCommand({ "export", same, "-o", same }).status, 2) << "the output is the input";
}

TEST_F(Export, LeavesTheOldFileWhenTheDiskIsFull)
{
    WriteFile(ct_, RandomCt(400, 300).File());
    WriteFile(tiff_, "as it was");
    Limits limits;
    limits.fileSize = 100000;
    const Outcome outcome = RunCommand({ "export", ct_, "-o", tiff_ }, limits);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tympan: " + tiff_ + ": "));
    EXPECT_EQ(ReadFile(tiff_), "as it was");
    EXPECT_EQ(folder_.Entries(), 2U);
}

} // namespace
} // namespace tympan::test
