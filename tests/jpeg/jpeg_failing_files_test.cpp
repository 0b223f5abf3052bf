// Every operation on the files made to fail in turn: the code that the header tells, and an object
// that works again afterwards.
#include "jpeg_pictures.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <vector>

namespace {

using namespace tympan::test;

constexpr Failing kWays[] = { Failing::once, Failing::fromThereOn };

TEST(JpegFailingFiles, AnOpeningThatFailsGivesAnObjectThatSaysSo)
{
    JpegFiles files;
    for (const Failing way : kWays)
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(number);
            files.Watched().FailAny(number, EIO, way);
            const auto picture = JpegFiles::Open();
            ASSERT_NE(picture, nullptr);
            const bool failed = files.Watched().HasFailed();
            files.Watched().FailAny(0, 0);
            if (!failed) {
                EXPECT_TRUE(picture->ObjectStatus());
                break;
            }
            // Segments that couldn't be read count as missing, which opens without the tables or
            // not at all; all else is a file failure.
            EXPECT_TRUE(picture->ObjectStatus() || picture->TraceStatus() == 90001 ||
                        (picture->TraceStatus() == 90040 && number > 1) ||
                        (picture->TraceStatus() == 0 && number == 1));
            EXPECT_TRUE(picture->OpenPictureFile("pic.jpg", true, true, nullptr));
            EXPECT_EQ(picture->FileWidthInPixels(), 20U);
            EXPECT_EQ(tympan::IndexOf(*picture)->blocks.size(), 4U);
        }
    EXPECT_EQ(files.Memory().OpenCount(), 0U);
}

struct ReadingCase {
    const char* name;
    std::function<bool(JpegFileInterface&)> work; // whether it gave rows
};

TEST(JpegFailingFiles, AReadThatFailsLeavesItsCode)
{
    JpegFiles files;
    std::vector<unsigned char> buffer(1000);
    std::vector<unsigned long> offsets(5);
    unsigned int lastBlock = 0;
    const ReadingCase kCases[] = {
        { "a row",
          [&](auto& picture) {
              return picture.GetPictureRow(buffer.data(), 8, Cyan, 1, 1, 1000) != 0;
          } },
        { "rows",
          [&](auto& picture) {
              return picture.GetPictureRows(buffer.data(), 0, 26, lastBlock, offsets.data(), Cyan,
                                            1000, false) != 0;
          } },
        { "rows as an object",
          [&](auto& picture) {
              return std::unique_ptr<PictureRowsData>(picture.GetPictureRows(Cyan, 0, 26, false)) !=
                     nullptr;
          } },
    };
    for (const ReadingCase& reading : kCases)
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(std::string(reading.name) + ", operation " + std::to_string(number));
            const auto picture = JpegFiles::Open();
            files.Watched().FailAny(number, EIO);
            const bool gave = reading.work(*picture);
            const bool failed = files.Watched().HasFailed();
            files.Watched().FailAny(0, 0);
            EXPECT_EQ(gave, !failed);
            EXPECT_EQ(picture->TraceStatus(), failed ? 90001U : 0U);
            EXPECT_TRUE(reading.work(*picture));
            if (!failed)
                break;
        }
}

TEST(JpegFailingFiles, AClosedPictureGivesNoRows)
{
    const JpegFiles files;
    const auto picture = JpegFiles::Open();
    picture->ClosePictureFile();
    std::vector<unsigned char> buffer(1000);
    EXPECT_EQ(picture->GetPictureRow(buffer.data(), 8, Cyan, 1, 1, 1000), 0U);
    EXPECT_EQ(picture->TraceStatus(), 90001U);
    EXPECT_EQ(picture->GetPictureRows(Cyan, 0, 7, false), nullptr);
    unsigned long start = 0, end = 0;
    EXPECT_TRUE(
        picture->GetCompressedBlocksOffsetInfo(0, 26, start, end)); // the index is still open
}

TEST(JpegFailingFiles, AnOutputThatCannotBeMadeSaysSo)
{
    JpegFiles files;
    for (const std::size_t number : { 1U, 2U }) {
        files.Watched().Fail(FileOperation::open, number, EACCES);
        const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object("new.jpg", false));
        EXPECT_FALSE(picture->ObjectStatus());
        EXPECT_EQ(picture->TraceStatus(), number == 1 ? 0U : 90001U);
    }
    // A picture whose index would take its own place.
    for (const char* path : { "new.bin", "./new.bin" }) {
        const JpegSample::Bytes stream = JpegSample{}.Stream();
        {
            const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object(path, false));
            EXPECT_FALSE(picture->ObjectStatus());
            EXPECT_EQ(picture->TraceStatus(), 90001U);
            picture->JpegFileHandle()->Write(stream.data(), static_cast<UINT>(stream.size()));
        }
        EXPECT_EQ(files.Get(path), stream);
    }
    // A picture whose index can't be put down before the next one is opened.
    files.Watched().FailAny(0, 0);
    const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object("one.jpg", false));
    picture->StoreCompressedLinesBlock({ 1, 2 });
    files.Watched().Fail(FileOperation::writeAt, 1, ENOSPC);
    EXPECT_FALSE(picture->OpenPictureFile("two.jpg", false, false, nullptr));
    EXPECT_EQ(picture->TraceStatus(), 90001U);
    EXPECT_TRUE(files.Get("one.bin").empty());
}

} // namespace
