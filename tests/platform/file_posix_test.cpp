// CFile on what only POSIX systems have: pipes, devices, permissions by user, a disk that is full.
#include "platform/file.h"
#include "platform/file_openings.h"
#include "support/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

using namespace tympan::test;

TEST(File, WhatIsNoPlainFileIsRefused)
{
    const TemporaryFolder folder;
    const std::string plain = MakeFile(folder, "plain", "text");
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    constexpr int kDenied = CFileException::accessDenied;
    ExpectRefused(
        folder,
        { { "below a file", plain + "/a", CFile::modeRead, CFileException::badPath, ENOTDIR },
          { "folder read", folder.Path(""), CFile::modeRead, kDenied, EISDIR },
          { "folder created", folder.Path(""), kCreate, kDenied, EISDIR },
          { "device read", "/dev/zero", CFile::modeRead, kDenied, EACCES },
          { "device read and written", "/dev/null", CFile::modeReadWrite, kDenied, EACCES },
          { "pipe read", pipe, CFile::modeRead, kDenied, EACCES },
          { "pipe read and written", pipe, CFile::modeReadWrite, kDenied, EACCES },
          { "pipe written", pipe, kCreate, kDenied, EACCES } });
}

TEST(File, APipeWithAReaderIsRefusedToo)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(ThrownCause([&] { CFile(pipe.c_str(), kCreate); }), CFileException::accessDenied);
    ::close(reader);
}

// Runs the work as a user whom permissions bind, in a process of its own; gives its result.
template <typename Work>
int AsPlainUser(Work work)
{
    constexpr uid_t kNobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isBound = ::geteuid() != 0 || (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        ::_exit(isBound ? work() : 99);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(File, PermissionsAreKeptTo)
{
    const TemporaryFolder folder;
    const std::string secret = MakeFile(folder, "secret", "text");
    ASSERT_EQ(::chmod(secret.c_str(), 0), 0);
    for (const UINT flags : { UINT{ CFile::modeRead }, kCreate }) {
        const int cause = AsPlainUser([&] {
            CFileException failure;
            CFile file;
            return file.Open(secret.c_str(), flags, &failure) ? 98 : failure.m_cause;
        });
        EXPECT_EQ(cause, CFileException::accessDenied) << flags;
    }
}

TEST(File, AFullDiskIsToldWhereItHappens)
{
    CFile file("/dev/full", kCreate);
    EXPECT_EQ(ThrownCause([&] { file.Write("abc", 3); }), CFileException::diskFull);
    EXPECT_EQ(file.GetPosition(), 0U);
    EXPECT_EQ(ThrownCause([&] { file.Flush(); }), -1);
}

} // namespace
