// Every operation on the file made to fail in turn, once and from there on: the code that the header
// tells, or the failure itself where it says so, and an object that works again afterwards. And how
// much is read.
#include "lw/lw_trial.h"
#include "lw/run_reader.h"
#include "platform/file_expectations.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <random>
#include <utility>

namespace {

using tympan::test::Failing;
using tympan::test::FileOperation;
using tympan::test::LwAnswer;
using tympan::test::LwCall;
using tympan::test::LwOperation;
using tympan::test::LwPicture;
using tympan::test::LwTrial;
using tympan::test::OpenLw;
using tympan::test::ThrownCause;

constexpr unsigned int kWidth = 60, kHeight = 40;
constexpr std::size_t kPixels = std::size_t{ kWidth } * kHeight;

LwPicture Sample(unsigned int width, unsigned int height, tympan::test::LwRuns kind)
{
    std::mt19937 random(8);
    return RandomPicture(random, width, height, 9, kind);
}

TEST(LwFailingFiles, AnOpeningThatFailsGivesAnObjectThatSaysSo)
{
    LwTrial trial(Sample(kWidth, kHeight, tympan::test::LwRuns::single));
    for (const Failing way : { Failing::once, Failing::fromThereOn })
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(number);
            trial.Files().FailAny(number, EIO, way);
            OpenLw picture("sample.lw");
            if (!trial.Files().HasFailed()) {
                EXPECT_TRUE(picture.ObjectStatus());
                break;
            }
            EXPECT_FALSE(picture.ObjectStatus());
            EXPECT_EQ(picture.FileHandle().m_hFile, CFile::hFileNull);
            EXPECT_EQ(picture.TraceStatus(), number == 1 ? 0U : 90001U);
            EXPECT_EQ(picture.ErrorMsg(),
                      number == 1 ? tympan::test::kNoError : tympan::test::kOpeningFailed);
            trial.Files().FailAny(0, 0);
            EXPECT_TRUE(picture.OpenPictureFile("sample.lw", true, true, nullptr));
            EXPECT_NE(picture.LwFileArray(), nullptr);
        }
}

struct ReadingCase {
    LwOperation operation{};
    LwCall call{};
    std::size_t most = 0; // of what the result may be
    bool isThrown = false;
};

TEST(LwFailingFiles, AReadThatFailsLeavesItsCode)
{
    const LwPicture sample = Sample(kWidth, kHeight, tympan::test::LwRuns::single);
    const LwCall all{ .last = kHeight - 1, .copies = 2 };
    const ReadingCase kCases[] = {
        { tympan::test::kRow, { .first = 2 }, kWidth, false },
        { tympan::test::kRows, { .last = kHeight }, kPixels, false },
        { tympan::test::kOriginal, { .first = 1 }, 0, false },
        { tympan::test::kPlain, all, 0, false },
        { tympan::test::kPlacing, all, 0, false },
        { tympan::test::kSize, all, 0, false },
        { tympan::test::kDisplay, all, 0, false },
        { tympan::test::kOpen, {}, 0, false },
        { tympan::test::kCrop, { .crop = { 3, 9, 2, 5 } }, 0, true },
        { tympan::test::kCrop, { .crop = { 0, 0, 2, 5 } }, 0, true },
    };
    for (const ReadingCase& reading : kCases)
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(std::string(reading.operation.name) + ' ' + std::to_string(number));
            LwTrial trial(sample);
            trial.Files().Fail(FileOperation::readAt, number, EIO);
            LwAnswer answer;
            const int cause =
                ThrownCause([&] { answer = trial.Given(reading.operation, reading.call); });
            if (!trial.Files().HasFailed()) {
                EXPECT_GT(number, 1U);
                break;
            }
            EXPECT_EQ(cause, reading.isThrown ? CFileException::hardIO : -1);
            EXPECT_EQ(answer.code, reading.isThrown ? 0U : 90001U);
            EXPECT_LE(answer.result, reading.most);
        }
}

TEST(LwFailingFiles, RowsBeforeAFailureAreToldAndStored)
{
    const LwPicture sample = Sample(30000, 40, tympan::test::LwRuns::single);
    LwTrial trial(sample);
    const LwCall call{ .last = 40 };
    const LwAnswer whole = trial.Same(tympan::test::kRows, call);
    trial.Files().Fail(FileOperation::readAt, 3, EIO);
    const LwAnswer part = trial.Given(tympan::test::kRows, call);
    EXPECT_GT(part.result, 0U);
    EXPECT_EQ(part.rows, part.result / 30000);
    EXPECT_TRUE(std::equal(whole.bytes.begin(),
                           whole.bytes.begin() + static_cast<std::ptrdiff_t>(part.result),
                           part.bytes.begin()));
}

TEST(LwFailingFiles, AWriteThatFailsReachesTheCaller)
{
    LwTrial trial(Sample(kWidth, kHeight, tympan::test::LwRuns::single));
    OpenLw& picture = trial.Picture();
    unsigned char pixels[] = { 1, 2, 3 };
    const std::function<void(CFile&)> kWrites[] = {
        [&](CFile& file) { picture.SetLWPictureRow(pixels, file, 3); },
        [&](CFile& file) { picture.SaveLWRun(file, 1, 2); },
        [&](CFile& file) { picture.SaveLWRow(file, pixels, 3); },
        [&](CFile& file) {
            CompressParameters crop{ 3, 9, 2, 5 };
            picture.CreateCropedLWFile(picture.FileHandle(), file, &crop);
        },
    };
    for (const auto& write : kWrites)
        for (std::size_t number = 1;; ++number) {
            CFile file("new.lw", CFile::modeCreate | CFile::modeWrite);
            trial.Files().Fail(FileOperation::writeAt, number, ENOSPC);
            const int cause = ThrownCause([&] { write(file); });
            EXPECT_EQ(cause, trial.Files().HasFailed() ? CFileException::diskFull : -1);
            if (!trial.Files().HasFailed())
                break;
        }
}

TEST(LwFailingFiles, ReadsWholeBlocksOnceAndARowByItself)
{
    const LwPicture sample = Sample(20000, 150, tympan::test::LwRuns::dense);
    const std::size_t length = sample.Bytes().size();
    LwTrial trial(sample);
    const auto counted = [&](const std::function<void()>& work) {
        const std::size_t reads = trial.Files().Count(FileOperation::readAt);
        const std::size_t bytes = trial.Files().ByteCount(FileOperation::readAt);
        work();
        return std::pair(trial.Files().Count(FileOperation::readAt) - reads,
                         trial.Files().ByteCount(FileOperation::readAt) - bytes);
    };
    const auto opening = counted([] { const OpenLw picture("sample.lw"); });
    constexpr std::size_t kHeaderReads = 40 + 9 * 7; // its fields, and the bytes of the colours
    EXPECT_LE(opening.first, length / tympan::kRunBlockBytes + kHeaderReads);
    EXPECT_LE(opening.second, length + tympan::kRunBlockBytes + 4096);
    for (const LwOperation& operation : { tympan::test::kRow, tympan::test::kOriginal })
        for (const unsigned int row : { 0U, 70U, 148U }) {
            const std::size_t rowBytes = sample.Place(row + 1) - sample.Place(row);
            const auto one = counted([&] { trial.Same(operation, { .first = row }); });
            EXPECT_LE(one.first, rowBytes / tympan::kRunBlockBytes + 1);
            EXPECT_EQ(one.second, rowBytes);
        }
}

} // namespace
