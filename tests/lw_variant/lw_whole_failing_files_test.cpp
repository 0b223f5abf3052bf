// Every operation on the file made to fail in turn, once and from there on, under the whole-file
// object: the code or the failure that the header tells, and a side file that is whole or empty.
#include "lw_variant/lw_side_file.h"
#include "lw_variant/lw_whole_trial.h"
#include "platform/file_expectations.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <random>

namespace {

using namespace tympan::test;
using tympan::ScopedFileSystem;

constexpr char kPath[] = "sample.lw";

LwPicture Sample()
{
    std::mt19937 random(8);
    return RandomPicture(random, 60, 40, 9, LwRuns::single);
}

/// Has `work(trial)` done with the first operation on a file failing, then the second, and so on,
/// until there is none to fail; then `check(trial)`, with all files in order again.
void WithEachFailing(const std::function<void(LwWholeTrial&)>& work,
                     const std::function<void(LwWholeTrial&, bool failed)>& check)
{
    for (const Failing way : { Failing::once, Failing::fromThereOn })
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(std::to_string(number) + (way == Failing::once ? " once" : " and on"));
            LwWholeTrial trial(Sample());
            trial.Files().FailAny(number, EIO, way);
            work(trial);
            const bool failed = trial.Files().HasFailed();
            trial.Files().FailAny(0, 0);
            check(trial, failed);
            if (!failed) {
                EXPECT_GT(number, 1U);
                break;
            }
        }
}

TEST(LwWholeFailingFiles, AnOpeningThatFailsGivesNothing)
{
    std::unique_ptr<VelmarLWFileInterface> picture;
    WithEachFailing(
        [&](LwWholeTrial&) { picture.reset(create_velmar_lw_file_object(kPath, true)); },
        [&](LwWholeTrial& trial, bool failed) {
            EXPECT_EQ(picture == nullptr, failed);
            picture.reset();
            EXPECT_EQ(trial.Memory().OpenCount(), 2U); // those of the trial
        });
}

struct Failure {
    LwOperation operation;
    unsigned long code;
    const char* text;
    bool isOpen;
};

constexpr char kNotStreamed[] = "LWInterface: Error Extracting LineWork RawBuffer, aborting!";
constexpr char kNotCounted[] = "LWInterface: Error counting LW buffer size, aborting!";
const Failure kFailures[] = { { kCheck, 90001, kOpeningFailed, false },
                              { kBuild, 0, "", true },
                              { kPlacing, 90020, kNotStreamed, true },
                              { kSize, 90001, kNotCounted, true },
                              { kWholeSize, 90001, kNotCounted, true } };

TEST(LwWholeFailingFiles, LeaveTheirCodes)
{
    const LwCall call{ .last = 39, .copies = 2 };
    for (const Failure& failure : kFailures) {
        SCOPED_TRACE(failure.operation.name);
        LwAnswer given;
        const LwAnswer whole = LwWholeTrial(Sample()).Same(failure.operation, call);
        const auto work = [&](LwWholeTrial& trial) {
            given = trial.Given(failure.operation, call);
        };
        WithEachFailing(work, [&](LwWholeTrial& trial, bool failed) {
            EXPECT_EQ(given.code, failed ? failure.code : 0);
            EXPECT_EQ(given.text, failed ? failure.text : "");
            EXPECT_EQ(given.result < whole.result, failed);
            const auto stored = static_cast<std::ptrdiff_t>(given.moved);
            EXPECT_TRUE(
                std::equal(given.bytes.begin(), given.bytes.begin() + stored, whole.bytes.begin()));
            VelmarLWFileInterface& picture = trial.Whole();
            EXPECT_EQ(picture.ObjectStatus(), failure.isOpen || !failed);
            EXPECT_EQ(IsFileOpen(picture), failure.isOpen || !failed);
            EXPECT_TRUE(!failed || picture.GetLwPictureParams()->LwFileSize() == 0);
            EXPECT_EQ(picture.GetLWBufferSize() != 0, IsFileOpen(picture));
        });
    }
}

TEST(LwWholeFailingFiles, ASideFileIsWholeOrEmpty)
{
    int cause = -1;
    bool isValid = true;
    const auto make = [&](LwWholeTrial& trial) {
        trial.Memory().Put("sample.bin", "before");
        CString path = kPath;
        isValid = true;
        cause = ThrownCause([&] { trial.Whole().CreateLwBinFile(path, false, isValid); });
    };
    WithEachFailing(make, [&](LwWholeTrial& trial, bool failed) {
        const std::string side = trial.Memory().Text("sample.bin");
        if (!failed)
            EXPECT_TRUE(isValid && cause == -1);
        else if (side == "before")
            EXPECT_TRUE(isValid && cause == CFileException::hardIO);
        else if (side.empty())
            EXPECT_TRUE(!isValid || cause == CFileException::hardIO);
        else
            EXPECT_TRUE(cause == CFileException::hardIO || trial.Whole().TraceStatus() == 90001);
        EXPECT_TRUE(side == "before" || side.empty() || tympan::IsLwSideFile(side)) << side;
        EXPECT_EQ(trial.Memory().OpenCount(), IsFileOpen(trial.Whole()) ? 2U : 1U);
        EXPECT_EQ(IsFileOpen(trial.Whole()), isValid);
    });
}

TEST(LwWholeFailingFiles, ASideFileThatCantBeReadIsToldOrDoneWithout)
{
    const LwPicture sample = Sample();
    const auto counted = static_cast<unsigned long>(sample.Bytes().size() - sample.Start() + 2);
    constexpr unsigned long kThrown = 9;
    std::vector<unsigned long> sizes;
    const auto read = [&](LwWholeTrial& trial) {
        trial.Memory().Put("sample.bin", "77");
        CString path = kPath;
        bool isValid = true;
        unsigned long size = kThrown;
        const int cause =
            ThrownCause([&] { size = trial.Whole().CreateLwBinFile(path, true, isValid); });
        EXPECT_EQ(cause, size == kThrown ? int{ CFileException::hardIO } : -1);
        sizes.push_back(size);
    };
    WithEachFailing(read, [](LwWholeTrial&, bool) {});
    // Its opening, reading and closing fail; from its opening on also what counts the rows.
    EXPECT_EQ(sizes, (std::vector<unsigned long>{ counted, kThrown, kThrown, 77, 0, kThrown,
                                                  kThrown, 77 }));
}

// A disk that is full behind the first half of what is written.
class FullDisk : public MemoryFileSystem {
  public:
    tympan::IoResult WriteAt(int file, std::span<const std::byte> bytes,
                             std::int64_t position) noexcept override
    {
        MemoryFileSystem::WriteAt(file, bytes.first(bytes.size() / 2), position);
        return tympan::IoResult::Failed(ENOSPC);
    }
};

TEST(LwWholeFailingFiles, WhatIsLeftOfAWriteIsCut)
{
    FullDisk files;
    files.Put(kPath, AsText(Sample().Bytes()));
    const ScopedFileSystem scoped(files);
    const auto picture = OpenedWhole(kPath);
    CString path = kPath;
    bool isValid = false;
    EXPECT_EQ(ThrownCause([&] { picture->CreateLwBinFile(path, false, isValid); }),
              CFileException::diskFull);
    EXPECT_TRUE(isValid);
    EXPECT_TRUE(files.Exists("sample.bin"));
    EXPECT_EQ(files.Text("sample.bin"), "");
}

} // namespace
