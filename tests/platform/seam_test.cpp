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

TEST(Seam, TheInnermostFilesAreInUse)
{
    MemoryFileSystem files[2];
    {
        const ScopedFileSystem outer(files[0]);
        EXPECT_EQ((ScopedFileSystem(files[1]), &CurrentFileSystem()), &files[1]);
        EXPECT_EQ(&CurrentFileSystem(), &files[0]);
    }
    EXPECT_EQ(&CurrentFileSystem(), &SystemFiles());
}

TEST(Seam, AReadIsOneCallAndASeekNone)
{
    MemoryFileSystem memory;
    memory.Put("a", std::string(1000, 'x'));
    WatchedFileSystem counting(memory);
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
    EXPECT_EQ(counting.Count(FileOperation::size), 0U);
}

char scratch = 0;

struct FailingCase {
    const char* name;
    FileOperation operation;
    void (*work)(CFile& file);
};

constexpr FailingCase kFailingCases[] = {
    { "read", FileOperation::readAt, [](CFile& file) { file.Read(&scratch, 1); } },
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
        WatchedFileSystem failing(memory);
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
    WatchedFileSystem failing(memory);
    const ScopedFileSystem scope(failing);
    {
        const CFile file("a", kCreate);
        failing.Fail(FileOperation::close, 1, EIO);
    }
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(memory.OpenCount(), 0U);
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
