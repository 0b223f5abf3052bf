// CFile on what only Windows has: devices by name anywhere, backslashes, sharing that is kept to.
#include "platform/file.h"
#include "platform/file_openings.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace {

using namespace tympan::test;

constexpr int kDenied = CFileException::accessDenied;

TEST(File, WhatIsNoPlainFileIsRefused)
{
    const TemporaryFolder folder;
    const std::string plain = MakeFile(folder, "plain", "text");
    ExpectRefused(
        folder,
        { { "below a file", plain + "/a", CFile::modeRead, CFileException::fileNotFound, ENOENT },
          { "folder read", folder.Path().string(), CFile::modeRead, kDenied, EACCES },
          { "folder created", folder.Path().string(), kCreate, kDenied, EACCES },
          { "device read", "NUL", CFile::modeRead, kDenied, EACCES },
          { "device read and written", "NUL", CFile::modeReadWrite, kDenied, EACCES } });
}

TEST(File, BothSlashesLeadToAFile)
{
    const TemporaryFolder folder;
    std::string path = MakeFile(folder, "a", "text");
    std::replace(path.begin(), path.end(), '/', '\\');
    EXPECT_EQ(TextOf(path), "text");
    EXPECT_EQ(CFile(path.c_str(), CFile::modeRead).GetFileTitle(), "a");
    std::replace(path.begin(), path.end(), '\\', '/');
    EXPECT_EQ(TextOf(path), "text");
    EXPECT_EQ(CFile(path.c_str(), CFile::modeRead).GetFileTitle(), "a");
}

TEST(File, WritingIsDeniedToOthersWhereTheOpeningSaysSo)
{
    const TemporaryFolder folder;
    const std::string path = MakeFile(folder, "a", "text");
    const CFile reader(path.c_str(), CFile::modeRead | CFile::shareDenyWrite);
    EXPECT_EQ(TextOf(path), "text");
    CFileException failure;
    CFile writer;
    EXPECT_FALSE(writer.Open(path.c_str(), CFile::modeWrite, &failure));
    EXPECT_EQ(failure.m_cause, CFileException::sharingViolation);
    const std::string other = MakeFile(folder, "b", "text");
    const CFile first(other.c_str(), CFile::modeReadWrite | CFile::shareDenyNone);
    EXPECT_TRUE(writer.Open(other.c_str(), CFile::modeWrite | CFile::shareDenyNone));
}

} // namespace
