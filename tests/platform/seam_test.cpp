// What stands under CFile: other files in the place of the system's, and the path resolver.
#include "platform/file.h"
#include "platform/file_expectations.h"
#include "platform/file_system.h"
#include "platform/memory_files.h"
#include "platform/path_resolver.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace tympan;
using namespace tympan::test;

constexpr UINT kCreate = CFile::modeCreate | CFile::modeWrite;

TEST(Seam, FilesStandInMemory)
{
    MemoryFileSystem memory;
    const ScopedFileSystem scope(memory);
    {
        CFile file("a.ct", kCreate);
        file.Write("abc", 3);
        file.Seek(5, CFile::begin);
        file.Write("d", 1);
        EXPECT_EQ(memory.OpenCount(), 1U);
    }
    EXPECT_EQ(memory.OpenCount(), 0U);
    EXPECT_EQ(memory.Text("a.ct"), std::string("abc\0\0d", 6));

    CFile::Rename("a.ct", "b.ct");
    CFile file("b.ct", CFile::modeReadWrite);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, sizeof buffer), 6U);
    EXPECT_EQ(file.Read(buffer, sizeof buffer), 0U);
    file.SetLength(2);
    EXPECT_EQ(file.GetLength(), 2U);
    file.Flush();
    CFile::Remove("b.ct");
    EXPECT_FALSE(memory.Exists("b.ct"));
    EXPECT_EQ(ThrownCause([] { CFile("b.ct", CFile::modeRead); }), CFileException::fileNotFound);
}

TEST(Seam, TheInnermostFilesAreInUse)
{
    MemoryFileSystem outer;
    MemoryFileSystem inner;
    EXPECT_EQ(&CurrentFileSystem(), &SystemFiles());
    {
        const ScopedFileSystem first(outer);
        {
            const ScopedFileSystem second(inner);
            EXPECT_EQ(&CurrentFileSystem(), &inner);
        }
        EXPECT_EQ(&CurrentFileSystem(), &outer);
    }
    EXPECT_EQ(&CurrentFileSystem(), &SystemFiles());
}

TEST(Seam, ReadingByTheNumberLeavesThePosition)
{
    MemoryFileSystem memory;
    memory.Put("a", "abcdef");
    const ScopedFileSystem scope(memory);
    CFile file("a", CFile::modeRead);
    file.Seek(4, CFile::begin);
    Bytes bytes(2);
    EXPECT_EQ(CurrentFileSystem().ReadAt(file.m_hFile, bytes, 1).value, 2);
    EXPECT_EQ(bytes, TextBytes("bc"));
    EXPECT_EQ(file.GetPosition(), 4U);
}

TEST(Seam, AReadIsOneCallAndASeekNone)
{
    MemoryFileSystem memory;
    memory.Put("a", std::string(1000, 'x'));
    CountingFileSystem counting(memory);
    const ScopedFileSystem scope(counting);
    CFile file("a", CFile::modeRead);
    char buffer[300];
    for (int i = 0; i < 3; ++i) {
        file.Seek(LONGLONG{ 100 } * i, CFile::begin);
        file.Read(buffer, sizeof buffer);
        file.Seek(7, CFile::current);
    }
    EXPECT_EQ(counting.Count(FileOperation::readAt), 3U);
    EXPECT_EQ(counting.ByteCount(FileOperation::readAt), 900U);
    EXPECT_EQ(counting.CountAll(), 4U);
}

struct FailingCase {
    const char* name;
    FileOperation operation;
    void (*work)(CFile& file);
};

constexpr FailingCase kFailingCases[] = {
    { "read", FileOperation::readAt,
      [](CFile& file) {
          char byte = 0;
          file.Read(&byte, 1);
      } },
    { "write", FileOperation::writeAt, [](CFile& file) { file.Write("x", 1); } },
    { "length", FileOperation::size, [](CFile& file) { file.GetLength(); } },
    { "seek from the end", FileOperation::size, [](CFile& file) { file.Seek(0, CFile::end); } },
    { "flush", FileOperation::flush, [](CFile& file) { file.Flush(); } },
    { "cut", FileOperation::truncate, [](CFile& file) { file.SetLength(0); } },
    { "close", FileOperation::close, [](CFile& file) { file.Close(); } },
    { "remove", FileOperation::remove, [](CFile&) { CFile::Remove("a"); } },
    { "rename", FileOperation::rename, [](CFile&) { CFile::Rename("a", "b"); } },
};

TEST(Seam, EveryFailureIsThrownWithItsCauseAndName)
{
    for (const FailingCase& row : kFailingCases) {
        SCOPED_TRACE(row.name);
        MemoryFileSystem memory;
        memory.Put("a", "text");
        FailingFileSystem failing(memory);
        const ScopedFileSystem scope(failing);
        CFile file("a", CFile::modeReadWrite);
        file.Seek(1, CFile::begin);
        failing.Fail(row.operation, 1, EIO);
        try {
            row.work(file);
            ADD_FAILURE() << "nothing thrown";
        } catch (CFileException* failure) {
            EXPECT_EQ(failure->m_cause, CFileException::hardIO);
            EXPECT_EQ(failure->m_lOsError, EIO);
            EXPECT_EQ(failure->m_strFileName, "a");
            failure->Delete();
        }
        if (row.operation == FileOperation::close)
            EXPECT_EQ(file.m_hFile, CFile::hFileNull);
        else
            EXPECT_EQ(file.GetPosition(), 1U);
        EXPECT_EQ(memory.Text("a"), "text");
        EXPECT_EQ(ThrownCause([&] { row.work(file); }), -1); // it failed once
    }
}

TEST(Seam, TheDestructorDropsAFailure)
{
    MemoryFileSystem memory;
    FailingFileSystem failing(memory);
    const ScopedFileSystem scope(failing);
    {
        const CFile file("a", kCreate);
        failing.Fail(FileOperation::close, 1, EIO);
    }
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(memory.OpenCount(), 0U);
}

TEST(Seam, FailingFromAPlaceOnGoesOnFailing)
{
    MemoryFileSystem memory;
    FailingFileSystem failing(memory);
    const ScopedFileSystem scope(failing);
    failing.FailAny(3, ENOSPC, Failing::fromThereOn); // the opening is the first
    CFile file("a", kCreate);
    file.Write("a", 1);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(ThrownCause([&] { file.Write("b", 1); }), CFileException::diskFull);
    EXPECT_EQ(memory.Text("a"), "a");
}

struct PathCase {
    const char* path;
    const char* title;
};

constexpr PathCase kPathCases[] = {
    { "a.ct", "a.ct" },           { "folder/a.ct", "a.ct" }, { "C:\\folder\\a.ct", "a.ct" },
    { "C:\\mixed/a.ct", "a.ct" }, { "mixed/b\\a", "a" },     { "folder/", "" },
};

TEST(Seam, TitleAndPathAreThoseOfTheOpenFile)
{
    MemoryFileSystem memory;
    const ScopedFileSystem scope(memory);
    for (const PathCase& row : kPathCases) {
        CFile file(row.path, kCreate);
        EXPECT_EQ(file.GetFileTitle(), row.title);
        EXPECT_EQ(file.GetFilePath(), row.path);
        file.Close();
        EXPECT_TRUE(file.GetFileTitle().IsEmpty() && file.GetFilePath().IsEmpty()) << row.path;
    }
}

// A resolver that is taken away with the test.
struct Resolver {
    explicit Resolver(PathResolver resolver) { SetPathResolver(std::move(resolver)); }
    Resolver(const Resolver&) = delete;
    Resolver& operator=(const Resolver&) = delete;
    ~Resolver() { SetPathResolver({}); }
};

TEST(Seam, TheResolverIsAskedByEveryRoadToAFile)
{
    MemoryFileSystem memory;
    const ScopedFileSystem scope(memory);
    const Resolver resolver([](const CString& path) { return "/jobs/" + path; });
    {
        const CFile made("a", kCreate);
        EXPECT_EQ(made.GetFilePath(), "a"); // as the client named it
    }
    EXPECT_TRUE(memory.Exists("/jobs/a"));
    CFile file;
    EXPECT_TRUE(file.Open("a", CFile::modeRead));
    CFile::Rename("a", "b");
    EXPECT_TRUE(memory.Exists("/jobs/b"));
    CFile::Remove("b");
    EXPECT_FALSE(memory.Exists("/jobs/b"));
    CFileException failure;
    EXPECT_FALSE(file.Open("b", CFile::modeRead, &failure));
    EXPECT_EQ(failure.m_strFileName, "b");
}

TEST(Seam, AResolverThatThrowsFindsNoFile)
{
    MemoryFileSystem memory;
    memory.Put("a", "text");
    const ScopedFileSystem scope(memory);
    {
        const Resolver resolver([](const CString&) -> CString { throw std::runtime_error("no"); });
        CFile file;
        CFileException failure;
        EXPECT_FALSE(file.Open("a", CFile::modeRead, &failure));
        EXPECT_EQ(failure.m_cause, CFileException::fileNotFound);
        EXPECT_EQ(ThrownCause([] { CFile::Remove("a"); }), CFileException::fileNotFound);
    }
    EXPECT_NO_THROW(CFile("a", CFile::modeRead));
}

TEST(Seam, AResolverMayReadFilesAndTakeItselfAway)
{
    MemoryFileSystem memory;
    memory.Put("map", "b");
    memory.Put("b", "text");
    const ScopedFileSystem scope(memory);
    const Resolver resolver([](const CString&) {
        SetPathResolver({});
        char name[2] = {};
        CFile("map", CFile::modeRead).Read(name, 1);
        return CString(name);
    });
    EXPECT_EQ(CFile("a", CFile::modeRead).GetLength(), 4U);
}

} // namespace
