// What the tests of the system's own files share: files to begin with, and openings that are to be
// refused.
#pragma once

#include "platform/file.h"
#include "platform/file_expectations.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace tympan::test {

inline constexpr UINT kCreate = CFile::modeCreate | CFile::modeWrite | CFile::typeBinary;

inline std::string MakeFile(const TemporaryFolder& folder, const std::string& name,
                            const std::string& text)
{
    CFile file(folder.Path(name).c_str(), kCreate);
    file.Write(text.data(), static_cast<UINT>(text.size()));
    return folder.Path(name);
}

inline std::string TextOf(const std::string& path)
{
    CFile file(path.c_str(), CFile::modeRead);
    std::string text(static_cast<std::size_t>(file.GetLength()), '\0');
    EXPECT_EQ(file.Read(text.data(), static_cast<UINT>(text.size())), text.size());
    return text;
}

/// The number that the next file to be opened gets.
inline int NextNumber(const std::string& path)
{
    return CFile(path.c_str(), CFile::modeRead).m_hFile;
}

struct RefusedCase {
    const char* name;
    std::string path;
    UINT flags;
    int cause;
    LONG osError;
};

/// Opens what can't be opened, by both ways. Nothing stays open.
inline void ExpectRefused(const TemporaryFolder& folder, std::initializer_list<RefusedCase> cases)
{
    const std::string plain = MakeFile(folder, "for numbers", "");
    const int firstFree = NextNumber(plain);
    for (const RefusedCase& row : cases) {
        CFile file;
        CFileException failure;
        EXPECT_FALSE(file.Open(row.path.c_str(), row.flags, &failure)) << row.name;
        EXPECT_EQ(failure.m_cause, row.cause) << row.name;
        EXPECT_EQ(failure.m_lOsError, row.osError) << row.name;
        EXPECT_EQ(failure.m_strFileName, row.path.c_str()) << row.name;
        EXPECT_EQ(file.m_hFile, CFile::hFileNull) << row.name;
        EXPECT_FALSE(file.Open(row.path.c_str(), row.flags)) << row.name;
        EXPECT_EQ(ThrownCause([&] { CFile(row.path.c_str(), row.flags); }), row.cause) << row.name;
    }
    EXPECT_EQ(NextNumber(plain), firstFree) << "a refused file was left open";
}

} // namespace tympan::test
