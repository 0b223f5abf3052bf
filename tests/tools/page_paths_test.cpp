// Where the command finds the files that a page names: `tympan info` on pages with one entry.
#include "support/page_samples.h"
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

namespace fs = std::filesystem;

// The page is job/p.pg, and the command runs in the folder here. @ stands for the case's folder.
struct PathCase {
    const char* name;
    std::vector<std::string> files; // pictures; "link>target" is a symbolic link
    std::string options;
    std::string path;  // of the entry
    std::string found; // empty for nothing
};

const PathCase kPathCases[] = {
    { "relative to the page", { "job/pics/a.ct" }, "", "pics/a.ct", "job/pics/a.ct" },
    { "backslashes part names", { "job/pics/a.ct" }, "", ".\\pics\\\\a.ct", "job/pics/a.ct" },
    { "blanks at the end", { "job/a.ct" }, "", "a.ct   ", "job/a.ct" },
    { "a drive's file beside the page", { "job/a.ct" }, "", "P:\\JOBS\\a.ct", "job/a.ct" },
    { "a drive without a separator", { "job/a.ct" }, "", "P:a.ct", "job/a.ct" },
    { "a server's file beside the page", { "job/a.ct" }, "", "\\\\host\\jobs\\a.ct", "job/a.ct" },
    { "never in the current folder", { "here/a.ct" }, "", "a.ct", "" },
    { "no file", { "job/b.ct" }, "", "P:\\JOBS\\a.ct", "" },
    { "a folder is no file", { "job/a.ct/b.ct" }, "", "a.ct", "" },
    { "no name at all", { "job/b.ct" }, "", "P:\\", "" },

    { "another case", { "job/Pics/A.CT" }, "", "PICS\\a.ct", "job/Pics/A.CT" },
    { "the case as written is first", { "job/A.ct", "job/a.CT" }, "", "P:\\a.CT", "job/a.CT" },
    { "else the first by bytes", { "job/a.CT", "job/A.ct" }, "", "P:\\a.ct", "job/A.ct" },
    { "not UTF-8", { "job/b\xE4.ct" }, "", "P:\\B\xE4.CT", "job/b%E4.ct" },

    { "a root, the whole path first",
      { "root/JOBS/a.ct", "root/a.ct" },
      "--root @root",
      "P:\\JOBS\\a.ct",
      "root/JOBS/a.ct" },
    { "a root, the last part",
      { "root/a.ct", "job/a.ct" },
      "--root @root",
      "P:\\JOBS\\a.ct",
      "root/a.ct" },
    { "a root in another case",
      { "root/Jobs/A.ct" },
      "--root @root",
      "/JOBS/a.ct",
      "root/Jobs/A.ct" },
    { "the first root that has it",
      { "one/b.ct", "two/a.ct", "three/a.ct" },
      "--root @one --root @two --root @three",
      "P:\\a.ct",
      "two/a.ct" },
    { "a map before a root",
      { "srv/b/a.ct", "root/a.ct" },
      "--root @root --map P:\\jobs=@srv",
      "p:\\JOBS\\b\\a.ct",
      "srv/b/a.ct" },
    { "a map of a server",
      { "srv/a.ct" },
      "--map \\\\host\\jobs=@srv",
      "//HOST/jobs/a.ct",
      "srv/a.ct" },
    { "the map that fits",
      { "one/a.ct", "two/a.ct" },
      "--map P:\\ONE=@one --map P:\\TWO\\=@two",
      "P:\\TWO\\a.ct",
      "two/a.ct" },
    { "a map ends at a separator",
      { "srv/a.ct", "srv/S/a.ct" },
      "--map P:\\JOB=@srv",
      "P:\\JOBS\\a.ct",
      "" },
    { "a map has the same root", { "srv/a.ct" }, "--map P:\\JOBS=@srv", "\\JOBS\\a.ct", "" },

    { "an absolute path in the page's folder", { "job/b/a.ct" }, "", "@job/b/a.ct", "job/b/a.ct" },
    { "an absolute path elsewhere", { "a.ct" }, "", "@a.ct", "" },
    { "an absolute path in a root",
      { "root/b/a.ct" },
      "--root @root",
      "@root/b/a.ct",
      "root/b/a.ct" },
    { "an absolute path out of a root",
      { "a.ct", "root/b.ct" },
      "--root @root",
      "@root/../a.ct",
      "" },

    { "back inside of the folder", { "job/a.ct" }, "", "pics\\..\\a.ct", "job/a.ct" },
    { "back out of the folder", { "a.ct" }, "", "..\\a.ct", "" },
    { "forth and back out", { "a.ct", "job/b/c.ct" }, "", "b/../../a.ct", "" },
    { "back out of a root", { "a.ct", "root/b.ct" }, "--root @root", "P:\\..\\a.ct", "" },
    { "back out of a map",
      { "a.ct", "srv/b.ct" },
      "--map P:\\JOBS=@srv",
      "P:\\JOBS\\..\\..\\a.ct",
      "" },
    { "a link to outside", { "a.ct", "job/b.ct>../a.ct" }, "", "b.ct", "" },
    { "a linked folder outside", { "a.ct", "job/out>.." }, "", "out/a.ct", "" },
    { "a linked folder outside, another case", { "a.ct", "job/out>.." }, "", "OUT/a.ct", "" },
    { "a link inside", { "job/a.ct", "job/b.ct>a.ct" }, "", "b.ct", "job/b.ct" },
    { "a root that is a link",
      { "real/a.ct", "root>real" },
      "--root @root",
      "P:\\a.ct",
      "real/a.ct" },
};

std::string Filled(const std::string& text, const TemporaryFolder& folder)
{
    std::string filled;
    for (const char character : text)
        filled += character == '@' ? folder / "" : std::string(1, character);
    return filled;
}

void Make(const std::string& file, const TemporaryFolder& folder)
{
    const std::string name = file.substr(0, file.find('>'));
    fs::create_directories(fs::path(folder / name).parent_path());
    if (name != file)
        fs::create_symlink(file.substr(name.size() + 1), folder / name);
    else
        WriteFile(folder / name, RandomCt(10, 10).File());
}

ordered_json EntryOf(const PathCase& one, const TemporaryFolder& folder)
{
    folder.File("job/p.pg", PageSample{ { { .path = Filled(one.path, folder) } } }.Bytes());
    const Outcome outcome =
        RunWords("info --json @job/p.pg " + Filled(one.options, folder), folder);
    EXPECT_EQ(outcome.status, one.found.empty() ? 1 : 0) << outcome.err;
    return ParsedJson(outcome.out).at(0).at("entries").at(0);
}

TEST(PagePaths, FindAPagesPictures)
{
    const fs::path before = fs::current_path();
    for (const PathCase& one : kPathCases) {
        SCOPED_TRACE(one.name);
        const TemporaryFolder folder;
        fs::create_directories(folder / "job");
        fs::create_directories(folder / "here");
        for (const std::string& file : one.files)
            Make(file, folder);
        fs::current_path(folder / "here");
        const ordered_json entry = EntryOf(one, folder);
        fs::current_path(before);
        const ordered_json found = entry.value("resolved_raw", entry.at("resolved"));
        EXPECT_EQ(found, one.found.empty()
                             ? ordered_json(nullptr)
                             : ordered_json(fs::canonical(folder.Path()) / one.found));
    }
}

} // namespace
} // namespace tympan::test
