// CFile on the system's own files: openings that fail, positions, modes and closed files.
#include "platform/file.h"
#include "platform/file_openings.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>
#include <type_traits>

namespace {

using namespace tympan::test;

static_assert(!std::is_copy_constructible_v<CFile> && !std::is_copy_assignable_v<CFile>);

TEST(File, OpeningsThatCannotBeAreRefused)
{
    const TemporaryFolder folder;
    const std::string none = folder.Path("none");
    const std::string plain = MakeFile(folder, "plain", "text");
    ExpectRefused(
        folder,
        { { "missing", none, CFile::modeRead, CFileException::fileNotFound, ENOENT },
          { "to be written", none, CFile::modeWrite, CFileException::fileNotFound, ENOENT },
          { "no name", "", CFile::modeRead, CFileException::fileNotFound, ENOENT },
          { "in a missing folder", none + "/a", kCreate, CFileException::fileNotFound, ENOENT },
          { "a mode that there isn't", plain, 3, CFileException::hardIO, EINVAL } });
    EXPECT_EQ(TextOf(plain), "text");
}

TEST(File, CreatingEmptiesInEveryMode)
{
    const TemporaryFolder folder;
    for (const UINT mode : { CFile::modeRead, CFile::modeWrite, CFile::modeReadWrite }) {
        const std::string path = MakeFile(folder, "a", "old text");
        const CFile file(path.c_str(), CFile::modeCreate | mode);
        EXPECT_EQ(file.GetLength(), 0U) << mode;
    }
}

TEST(File, ReadsShortAtTheEndOnly)
{
    const TemporaryFolder folder;
    CFile file(MakeFile(folder, "a", "abcdef").c_str(), CFile::modeRead | CFile::shareDenyWrite);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 4), 4U);
    EXPECT_EQ(file.Read(buffer, 4), 2U);
    EXPECT_STREQ(buffer, "efcd");
    EXPECT_EQ(file.Read(buffer, 4), 0U);
    EXPECT_EQ(file.GetPosition(), 6U);
    EXPECT_EQ(file.Read(nullptr, 0), 0U);
}

struct SeekCase {
    const char* name;
    LONGLONG offset;
    UINT from;
    LONGLONG expected; // -1: refused
};

constexpr LONGLONG kMost = std::numeric_limits<LONGLONG>::max();
constexpr LONGLONG kLeast = std::numeric_limits<LONGLONG>::min();

// Each from position 4 of a file of 10 bytes.
constexpr SeekCase kSeekCases[] = {
    { "from the begin", 3, CFile::begin, 3 },
    { "from here", 3, CFile::current, 7 },
    { "back from here", -4, CFile::current, 0 },
    { "from the end", -3, CFile::end, 7 },
    { "behind the end", 5, CFile::end, 15 },
    { "as far as there is", kMost, CFile::begin, kMost },
    { "as far as there is from here", kMost - 4, CFile::current, kMost },
    { "before the begin", -1, CFile::begin, -1 },
    { "before the begin from here", -5, CFile::current, -1 },
    { "before the begin from the end", -11, CFile::end, -1 },
    { "far before the begin", kLeast, CFile::current, -1 },
    { "too far", kMost - 3, CFile::current, -1 },
    { "too far from the end", kMost, CFile::end, -1 },
    { "from nowhere", 0, 3, -1 },
};

TEST(File, SeeksWithinSixtyFourBits)
{
    const TemporaryFolder folder;
    CFile file(MakeFile(folder, "a", "0123456789").c_str(), CFile::modeRead);
    for (const SeekCase& row : kSeekCases) {
        file.Seek(4, CFile::begin);
        ULONGLONG reached = 4;
        const int cause = ThrownCause([&] { reached = file.Seek(row.offset, row.from); });
        const bool isRefused = row.expected == -1;
        EXPECT_EQ(cause, isRefused ? int{ CFileException::badSeek } : -1) << row.name;
        EXPECT_EQ(reached, isRefused ? 4U : static_cast<ULONGLONG>(row.expected)) << row.name;
        EXPECT_EQ(file.GetPosition(), reached) << row.name;
    }
    EXPECT_EQ(file.SeekToEnd(), 10U);
    file.SeekToBegin();
    EXPECT_EQ(file.GetPosition(), 0U);
}

TEST(File, TheFarthestPositionReadsNothingAndTakesNothing)
{
    const TemporaryFolder folder;
    CFile file(MakeFile(folder, "a", "text").c_str(), CFile::modeReadWrite);
    for (const LONGLONG position : { kMost, kMost - 1 }) {
        char buffer[8] = {};
        file.Seek(position, CFile::begin);
        EXPECT_EQ(file.Read(buffer, sizeof buffer), 0U);
        EXPECT_EQ(ThrownCause([&] { file.Write(buffer, sizeof buffer); }),
                  CFileException::diskFull);
        EXPECT_EQ(file.GetPosition(), static_cast<ULONGLONG>(position));
    }
    EXPECT_EQ(file.GetLength(), 4U);
}

TEST(File, PositionsBeyondFourGigabytesDoNotWrap)
{
    constexpr ULONGLONG kFar = (ULONGLONG{ 5 } << 30) + 3;
    const TemporaryFolder folder;
    CFile file(folder.Path("sparse").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    file.Write("near", 4);
    EXPECT_EQ(file.Seek(static_cast<LONGLONG>(kFar), CFile::begin), kFar);
    file.Write("far", 3);
    EXPECT_EQ(file.GetLength(), kFar + 3);
    EXPECT_EQ(file.Seek(-3, CFile::end), kFar);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, sizeof buffer), 3U);
    EXPECT_STREQ(buffer, "far");
    file.SeekToBegin();
    EXPECT_EQ(file.Read(buffer, 4), 4U);
    EXPECT_STREQ(buffer, "near");
}

TEST(File, SetLengthKeepsThePosition)
{
    const TemporaryFolder folder;
    const std::string path = MakeFile(folder, "a", "0123456789");
    CFile file(path.c_str(), CFile::modeReadWrite);
    file.Seek(6, CFile::begin);
    file.SetLength(3);
    EXPECT_EQ(file.GetPosition(), 6U);
    file.Write("x", 1);
    EXPECT_EQ(ThrownCause([&] { file.SetLength(ULONGLONG{ 1 } << 63); }), CFileException::diskFull);
    file.Close();
    EXPECT_EQ(TextOf(path), std::string("012\0\0\0x", 7));
}

struct OperationCase {
    const char* name;
    void (*work)(CFile& file);
    int readOnly; // the cause thrown by a file opened to be read, to be written, and one closed
    int writeOnly;
    int closed;
};

char scratch[4];
constexpr int kDenied = CFileException::accessDenied;
constexpr int kClosed = CFileException::invalidFile;

constexpr OperationCase kOperations[] = {
    { "Read", [](CFile& file) { file.Read(scratch, 1); }, -1, kDenied, kClosed },
    { "Read of nothing", [](CFile& file) { file.Read(scratch, 0); }, -1, kDenied, kClosed },
    { "Write", [](CFile& file) { file.Write(scratch, 1); }, kDenied, -1, kClosed },
    { "Write of nothing", [](CFile& file) { file.Write(scratch, 0); }, kDenied, -1, kClosed },
    { "SetLength", [](CFile& file) { file.SetLength(1); }, kDenied, -1, kClosed },
    { "Seek", [](CFile& file) { file.Seek(0, CFile::begin); }, -1, -1, kClosed },
    { "SeekToBegin", [](CFile& file) { file.SeekToBegin(); }, -1, -1, kClosed },
    { "SeekToEnd", [](CFile& file) { file.SeekToEnd(); }, -1, -1, kClosed },
    { "GetPosition", [](CFile& file) { file.GetPosition(); }, -1, -1, kClosed },
    { "GetLength", [](CFile& file) { file.GetLength(); }, -1, -1, kClosed },
    { "Flush", [](CFile& file) { file.Flush(); }, -1, -1, kClosed },
    { "Close", [](CFile& file) { file.Close(); }, -1, -1, -1 },
};

TEST(File, OperationsKeepToTheModeAndToOpenFiles)
{
    const TemporaryFolder folder;
    const std::string path = MakeFile(folder, "a", "text");
    for (const OperationCase& row : kOperations) {
        CFile reader(path.c_str(), CFile::modeRead);
        CFile writer(path.c_str(), CFile::modeWrite);
        CFile closed;
        EXPECT_EQ(ThrownCause([&] { row.work(reader); }), row.readOnly) << row.name;
        EXPECT_EQ(ThrownCause([&] { row.work(writer); }), row.writeOnly) << row.name;
        EXPECT_EQ(ThrownCause([&] { row.work(closed); }), row.closed) << row.name;
        closed.Open(path.c_str(), CFile::modeRead);
        closed.Close();
        EXPECT_EQ(ThrownCause([&] { row.work(closed); }), row.closed) << row.name;
    }
}

TEST(File, OpeningAnewClosesTheOldFile)
{
    const TemporaryFolder folder;
    const std::string first = MakeFile(folder, "first", "1");
    const std::string second = MakeFile(folder, "second", "22");
    CFile file(first.c_str(), CFile::modeRead);
    const int number = file.m_hFile;
    file.SeekToEnd();
    ASSERT_TRUE(file.Open(second.c_str(), CFile::modeWrite));
    EXPECT_EQ(file.m_hFile, number); // the number was free again
    EXPECT_EQ(file.GetPosition(), 0U);
    EXPECT_EQ(file.GetFileTitle(), "second");
    EXPECT_TRUE(file.Open(CString(file.GetFilePath()), CFile::modeRead));
    EXPECT_EQ(file.GetLength(), 2U);
    EXPECT_FALSE(file.Open(folder.Path("none").c_str(), CFile::modeRead));
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_EQ(NextNumber(first), number) << "the number is free";
}

TEST(File, RemovesAndRenames)
{
    const TemporaryFolder folder;
    const std::string first = MakeFile(folder, "first", "1");
    const std::string second = MakeFile(folder, "second", "2");
    const std::string third = folder.Path("third");
    EXPECT_EQ(ThrownCause([&] { CFile::Rename(first.c_str(), second.c_str()); }), kDenied);
    EXPECT_EQ(TextOf(second), "2");
    CFile::Rename(first.c_str(), third.c_str());
    EXPECT_EQ(TextOf(third), "1");
    EXPECT_EQ(ThrownCause([&] { CFile::Rename(first.c_str(), "x"); }),
              CFileException::fileNotFound);
    CFile::Remove(third.c_str());
    EXPECT_EQ(ThrownCause([&] { CFile::Remove(third.c_str()); }), CFileException::fileNotFound);
    EXPECT_EQ(ThrownCause([&] { CFile::Remove(folder.Path("").c_str()); }), kDenied);
}

} // namespace
