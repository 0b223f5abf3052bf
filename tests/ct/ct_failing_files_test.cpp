// Every operation on the file made to fail in turn, once and from there on: the code that the
// header tells, or the failure itself where it says so, and an object that works again afterwards.
#include "core/factory.h"
#include "ct/ct_file.h"
#include "platform/file_expectations.h"
#include "platform/gdi_spans.h"
#include "platform/memory_files.h"
#include "support/canvas.h"
#include "support/ct_samples.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <memory>

namespace {

using tympan::test::CtSample;
using tympan::test::Failing;
using tympan::test::FileOperation;
using tympan::test::MemoryFileSystem;
using tympan::test::WatchedFileSystem;

// A sample in memory, and what can be made to fail on the way to it.
class FailingSample : public testing::Test {
  protected:
    FailingSample()
    {
        const auto bytes = sample_.Bytes();
        memory_.Put("sample.ct",
                    std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    ~FailingSample() override { EXPECT_EQ(memory_.OpenCount(), 0U); }

    std::unique_ptr<CtFileInterface> Opened()
    {
        files_.FailAny(0, 0);
        std::unique_ptr<CtFileInterface> picture(create_ct_file_object("sample.ct", true));
        EXPECT_TRUE(picture->ObjectStatus());
        return picture;
    }

    CtSample sample_{ .width = 9, .height = 6 };
    MemoryFileSystem memory_;
    WatchedFileSystem files_{ memory_ };
    tympan::ScopedFileSystem scoped_{ files_ };
};

constexpr Failing kWays[] = { Failing::once, Failing::fromThereOn };

TEST_F(FailingSample, AnOpeningThatFailsGivesAnObjectThatSaysSo)
{
    for (const Failing way : kWays)
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(number);
            files_.FailAny(number, EIO, way);
            const std::unique_ptr<CtFileInterface> picture(
                create_ct_file_object("sample.ct", true));
            ASSERT_NE(picture, nullptr);
            if (!files_.HasFailed()) {
                EXPECT_TRUE(picture->ObjectStatus());
                break;
            }
            EXPECT_FALSE(picture->ObjectStatus());
            EXPECT_EQ(picture->TraceStatus(),
                      number == 1 ? 0U : 90001U); // the opening itself, then reads
            files_.FailAny(0, 0);
            EXPECT_TRUE(picture->OpenPictureFile("sample.ct", true, true, nullptr));
            EXPECT_EQ(picture->WidthInPixels(), 9U);
        }
}

TEST_F(FailingSample, TheFactoryGivesNullForAFileThatFails)
{
    std::vector<bool> isMade; // by the operation that fails, all formats' together
    do {
        files_.FailAny(isMade.size() + 1, EIO, Failing::fromThereOn);
        const std::unique_ptr<BasePictureIF> picture(create_picture_object("sample.ct"));
        isMade.push_back(picture != nullptr);
    } while (files_.HasFailed());
    ASSERT_GT(isMade.size(), 3U);
    EXPECT_TRUE(isMade.back());
    isMade.pop_back();
    // A failing close of a file that was only read takes nothing away.
    EXPECT_TRUE(isMade.back());
    isMade.pop_back();
    EXPECT_EQ(isMade, std::vector<bool>(isMade.size()));
}

struct ReadingCase {
    const char* name;
    unsigned long code; // 0: the failure reaches the caller
    std::function<unsigned long(CtFileInterface&)> work;
};

TEST_F(FailingSample, AReadThatFailsLeavesItsCode)
{
    unsigned char buffer[100];
    unsigned long offsets[6];
    unsigned int rowsInfo = 0;
    tympan::test::Canvas canvas(16, 16);

    const ReadingCase kCases[] = {
        { "one row", 90001,
          [&](auto& picture) {
              return picture.GetPictureRow(buffer, 2, Cyan, picture.ResolutionOnScanAxis(),
                                           picture.ResolutionOnXScanAxis(), 100);
          } },
        { "one row enlarged", 90001,
          [&](auto& picture) {
              return picture.GetPictureRow(buffer, 2, Cyan, 2 * picture.ResolutionOnScanAxis(),
                                           picture.ResolutionOnXScanAxis(), 100);
          } },
        { "rows", 90001,
          [&](auto& picture) {
              return picture.GetPictureRows(buffer, 0, 6, rowsInfo, offsets, Black, 100, false);
          } },
        { "colours on a context", 90030,
          [&](auto& picture) { return picture.Display(0, 5, canvas.dc), 0UL; } },
        { "a plate on a context", 90030,
          [&](auto& picture) { return picture.Display(0, 5, &canvas.dc, Magenta), 0UL; } },
        { "the colour bitmap", 90030,
          [&](auto& picture) {
              return !picture.Display(nullptr, nullptr, AllSeparations, 0, 5, 24, nullptr, false)
                         ? 1UL
                         : 0UL;
          } },
        { "a plate's bitmap", 90030,
          [&](auto& picture) {
              return !picture.Display(nullptr, nullptr, Yellow, 0, 5, 8, nullptr, false) ? 1UL
                                                                                         : 0UL;
          } },
        { "inks", 0, [&](auto& picture) { return picture.ExtractCMYKPixelInfo(1, 1); } },
    };
    for (const ReadingCase& reading : kCases)
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(std::string(reading.name) + ", read " + std::to_string(number));
            const auto picture = Opened();
            files_.Fail(FileOperation::readAt, number, EIO);
            if (reading.code == 0 && number <= 4) {
                EXPECT_EQ(tympan::test::ThrownCause([&] { reading.work(*picture); }),
                          CFileException::hardIO);
                continue;
            }
            const unsigned long result = reading.work(*picture);
            if (!files_.HasFailed()) {
                EXPECT_GT(number, 1U);
                break;
            }
            EXPECT_EQ(result, 0U);
            EXPECT_EQ(picture->TraceStatus(), reading.code);
        }
}

TEST_F(FailingSample, AWriteThatFailsReachesTheCaller)
{
    for (std::size_t number = 1; number <= 2; ++number) {
        files_.FailAny(0, 0);
        const std::unique_ptr<CtFileInterface> picture(create_ct_file_object("new.ct", false));
        PictureParameters record;
        record.WidthInPixels(3.0);
        record.DefineAvailableSeparations(1);
        picture->StorePictureParams(&record);
        files_.Fail(FileOperation::writeAt, number, ENOSPC);
        const unsigned char row[3] = {};
        EXPECT_EQ(tympan::test::ThrownCause([&] {
                      picture->SavePictureParams();
                      picture->SavePictureRow(row, 0, Cyan, 3);
                  }),
                  CFileException::diskFull);
    }
}

} // namespace
