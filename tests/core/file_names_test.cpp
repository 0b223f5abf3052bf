#include "core/file_names.h"

#include <gtest/gtest.h>

namespace {

struct PathCase {
    const char* path;
    const char* last;      // StripPath
    const char* folder;    // StripFileName
    const char* shortened; // StripExtension
};

const PathCase kPathCases[] = {
    { "", "", "", "" },
    { "plain", "", "", "plain" },
    { "plain.ct", "", "", "plain" },
    { "P:\\jobs\\page.ct", "page.ct", "P:\\jobs\\", "P:\\jobs\\page" },
    { "P:\\jobs\\", "", "P:\\jobs\\", "P:\\jobs\\" },
    { "P:\\jobs.old\\page", "page", "P:\\jobs.old\\", "P:\\jobs" }, // cut inside the folder's name
    { "jobs/page.one.lw", "", "", "jobs/page.one" },                // no separator
    { ".hidden", "", "", "" },
};

TEST(FileNameParser, CutsPaths)
{
    for (const PathCase& path : kPathCases) {
        SCOPED_TRACE(path.path);
        CString result = "left over";
        FileNameParser::StripPath(path.path, result);
        EXPECT_STREQ(result, path.last);
        FileNameParser::StripFileName(path.path, result);
        EXPECT_STREQ(result, path.folder);
        FileNameParser::StripExtension(path.path, result);
        EXPECT_STREQ(result, path.shortened);
    }
}

TEST(FileNameParser, MayCutATextInPlace)
{
    CString path = "P:\\jobs\\page.ct";
    FileNameParser::StripPath(path, path);
    FileNameParser::StripExtension(path, path);
    EXPECT_STREQ(path, "page");
}

} // namespace
