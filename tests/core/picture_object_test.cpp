// The frame: opening, closing, and what stays behind.
#include "core/picture_object.h"
#include "platform/gdi.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using tympan::test::BytesOf;
using tympan::test::CtSample;
using tympan::test::TemporaryFolder;

class CountingRecord : public PictureParameters {
  public:
    bool Load(CFile& file) override
    {
        ++loads;
        return !refuses && PictureParameters::Load(file);
    }
    void Clear() override
    {
        ++clears;
        PictureParameters::Clear();
    }

    int loads = 0;
    int clears = 0;
    bool refuses = false;
};

class Picture : public BasePictureIF {
  public:
    using BasePictureIF::IsPictureFileOpen;
    using BasePictureIF::IsPictureInputFile;

    Picture() : record(new CountingRecord) { PictureParams(record); }

    CountingRecord* record; // the object's
};

void SetEachFact(BasePictureIF& picture)
{
    picture.FileSizeUnitsFactor(2.0);
    picture.FileHeightInUnits(3.0);
    picture.FileWidthInUnits(4.0);
    picture.FileHeightInPixels(5);
    picture.FileWidthInPixels(6);
    picture.FileNumberOfSeparations(3);
}

class PictureObject : public testing::Test {
  protected:
    TemporaryFolder folder_;
    std::string path_ = folder_.File("picture.ct", CtSample().Bytes());
    Picture picture_;
};

TEST_F(PictureObject, StartsClosedAndSound)
{
    Picture picture;
    EXPECT_TRUE(picture.ObjectStatus());
    EXPECT_FALSE(picture.IsPictureFileOpen());
    EXPECT_FALSE(picture.IsPictureInputFile());
    EXPECT_EQ(picture.TraceStatus(), 0U);
    EXPECT_STREQ(picture.ErrorMsg(), "BasePictureIF:\n No Error !");
    EXPECT_TRUE(picture.PictureFileName().IsEmpty());
}

TEST_F(PictureObject, OpensAnInputAndLoadsItsRecord)
{
    const TemporaryFolder folder;
    const std::string path =
        folder.File("picture.ct", CtSample{ .width = 30, .height = 20 }.Bytes());
    Picture picture;
    ASSERT_TRUE(picture.OpenPictureFile(path.c_str(), true, false, nullptr));
    EXPECT_STREQ(picture.PictureFileName(), "picture.ct");
    EXPECT_TRUE(picture.IsPictureInputFile());
    EXPECT_EQ(picture.FileHandle().GetPosition(), 0U);
    EXPECT_EQ(picture.FileHeightInPixels(), 20U);
    EXPECT_EQ(picture.FileWidthInPixels(), 30U);
    EXPECT_EQ(picture.FileWidthInUnits(), 1.0);
    EXPECT_EQ(picture.FileSizeUnits(), 1U);
    EXPECT_EQ(picture.FileResolution(), -1.0);
    EXPECT_DOUBLE_EQ(picture.ResolutionOnScanAxis(), 20.0);
    EXPECT_DOUBLE_EQ(picture.ResolutionOnXScanAxis(), 30.0);
    EXPECT_EQ(picture.FileNumberOfSeparations(), 4U);
    EXPECT_EQ(picture.FileSeparation(2), Yellow);
    EXPECT_TRUE(picture.SeparationExists(Black));

    picture.ClosePictureFile();
    EXPECT_FALSE(picture.IsPictureFileOpen());
    EXPECT_EQ(picture.FileWidthInPixels(), 0U);
    EXPECT_EQ(picture.FileWidthInUnits(), 1.0); // clearing leaves it
}

TEST_F(PictureObject, AnswersTheOpenFilesBareNameAtOnce)
{
    ASSERT_TRUE(picture_.OpenPictureFile(path_.c_str(), true, false, nullptr));
    picture_.FileHandle().Seek(77, CFile::begin);
    EXPECT_TRUE(picture_.OpenPictureFile("picture.ct", true, false, nullptr));
    EXPECT_EQ(picture_.FileHandle().GetPosition(), 77U);
    EXPECT_EQ(picture_.record->loads, 1);

    EXPECT_TRUE(picture_.OpenPictureFile(path_.c_str(), true, false, nullptr)); // a path opens anew
    EXPECT_EQ(picture_.record->loads, 2);
    EXPECT_EQ(picture_.record->clears, 1);
    EXPECT_FALSE(picture_.OpenPictureFile("picture.ct", true, true, nullptr)); // it lies elsewhere
}

// An empty name is that of an object without a file: nothing is opened.
TEST_F(PictureObject, AnEmptyNameOpensNothing)
{
    Picture picture;
    EXPECT_TRUE(picture.OpenPictureFile("", true, false, nullptr));
    EXPECT_FALSE(picture.IsPictureFileOpen());
}

TEST_F(PictureObject, AFailureMarksItForGood)
{
    EXPECT_FALSE(picture_.OpenPictureFile(folder_.Path("missing").c_str(), true, false, nullptr));
    EXPECT_EQ(picture_.TraceStatus(), 0U);
    EXPECT_TRUE(picture_.OpenPictureFile(path_.c_str(), true, false, nullptr));
    EXPECT_FALSE(picture_.ObjectStatus());
}

TEST_F(PictureObject, ARefusedFileStaysOpen)
{
    picture_.record->refuses = true;
    EXPECT_FALSE(picture_.OpenPictureFile(path_.c_str(), true, false, nullptr));
    EXPECT_TRUE(picture_.IsPictureFileOpen());
    EXPECT_EQ(picture_.FileHandle().GetPosition(), 0U);
}

TEST_F(PictureObject, ThrowsTheGivenFailureAndOnlyForOne)
{
    CFileException given;
    EXPECT_TRUE(picture_.OpenPictureFile(path_.c_str(), true, false, &given));
    try {
        picture_.OpenPictureFile(folder_.Path("missing").c_str(), true, false, &given);
        FAIL() << "nothing was thrown";
    } catch (CFileException* thrown) {
        EXPECT_EQ(thrown, &given);
        EXPECT_EQ(given.m_cause, CFileException::fileNotFound);
    }
    EXPECT_FALSE(picture_.ObjectStatus());
}

TEST_F(PictureObject, AnOutputIsEmptiedAndLoadsNothing)
{
    ASSERT_TRUE(picture_.OpenPictureFile(path_.c_str(), false, false, nullptr));
    EXPECT_FALSE(picture_.IsPictureInputFile());
    EXPECT_EQ(picture_.record->loads, 0);
    EXPECT_EQ(std::filesystem::file_size(path_), 0U);
    picture_.FileWidthInPixels(5);
    EXPECT_TRUE(picture_.SavePictureParams());
    EXPECT_EQ(picture_.FileHandle().GetPosition(), 1080U);
    EXPECT_EQ(BytesOf(path_).size(), 1080U);
}

TEST_F(PictureObject, SetsEachFactOfItsRecord)
{
    SetEachFact(picture_);
    EXPECT_EQ(picture_.FileSizeUnitsFactor(), 2.0);
    EXPECT_EQ(picture_.FileHeightInUnits(), 3.0);
    EXPECT_EQ(picture_.FileWidthInUnits(), 4.0);
    EXPECT_EQ(picture_.FileHeightInPixels(), 5U);
    EXPECT_EQ(picture_.FileWidthInPixels(), 6U);
    EXPECT_EQ(picture_.FileNumberOfSeparations(), 3U);
    picture_.FileWidthInPixels(3000000000UL); // more than its text holds
    EXPECT_FALSE(picture_.SavePictureParams());
}

TEST_F(PictureObject, NumbersTheSeparations)
{
    EXPECT_EQ(BasePictureIF::AvailableSeps(0), Cyan);
    EXPECT_EQ(BasePictureIF::AvailableSeps(3), Black);
    EXPECT_EQ(BasePictureIF::AvailableSeps(4), NoSeparation);
    EXPECT_EQ(BasePictureIF::AvailableSeps(~0U), NoSeparation);
}

TEST_F(PictureObject, WithoutARecordAnswersAsAnEmptyOne)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("picture.ct", CtSample().Bytes());
    BasePictureIF picture;
    EXPECT_FALSE(picture.SeparationExists(Cyan));
    EXPECT_EQ(picture.FileWidthInPixels(), 0U);
    SetEachFact(picture);
    EXPECT_EQ(picture.FileWidthInPixels(), 0U);
    EXPECT_FALSE(picture.OpenPictureFile(path.c_str(), true, false, nullptr));
    EXPECT_FALSE(picture.SavePictureParams());
    CDC nowhere;
    picture.Display(0, 5, nowhere);
    picture.ClosePictureFile();
}

} // namespace
