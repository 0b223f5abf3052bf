// `tympan page`, and `info` and `check` of page files.
#include "support/page_samples.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace tympan::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A folder with the folder job, in which are a CT of 600 x 300 pixels at 300 to the inch and line
// work of 200 x 100 at 100.
struct JobFolder : TemporaryFolder {
    JobFolder()
    {
        fs::create_directories(*this / "job/pics");
        WriteFile(*this / "job/pics/a.ct", RandomCt(600, 300).File());
        Write("job/b.lw", RandomLw(200, 100));
    }
    void Write(const std::string& name, const LwPicture& picture) const
    {
        const LwFolder made(picture);
        fs::copy_file(made / "a.lw", *this / name);
    }
};

ordered_json InfoOf(const TemporaryFolder& folder, const std::string& words, int status)
{
    const Outcome outcome = RunWords("info --json " + words, folder);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    return ParsedJson(outcome.out).at(0);
}

const std::string kPage = "page @job/p.pg --size 8x5 --resolution 300 --place @job/";

TEST(Page, ReadsBackAsItWasAskedFor)
{
    const JobFolder folder;
    const Outcome written = RunWords(kPage + "b.lw@1.5,0.25 --place @job/pics/a.ct@3,2,1,0.5,90 "
                                             "--window 0:2,1 --place @job/pics/a.ct@0,0",
                                     folder);
    ASSERT_EQ(written.status, 0) << written.err;
    EXPECT_EQ(written.out + written.err, "");
    fs::rename(folder / "job", folder / "moved");
    const ordered_json info = InfoOf(folder, "@moved/p.pg", 0);
    EXPECT_EQ(info.at("format"), "Page");
    EXPECT_EQ(info.at("width"), 2400);
    EXPECT_EQ(info.at("height_in"), 5.0);
    EXPECT_EQ(info.at("resolution"), 300.0);
    EXPECT_TRUE(info.at("row_size").is_null());
    const std::string moved = fs::canonical(folder / "moved").string();
    const ordered_json& entries = info.at("entries");
    ASSERT_EQ(entries.size(), 3U);
    ordered_json lineWork = entries[0];
    EXPECT_EQ(lineWork.at("picture").at("format"), "LW");
    EXPECT_EQ(lineWork.at("picture").at("width"), 200);
    lineWork.erase("picture");
    EXPECT_EQ(lineWork.dump(), ordered_json({ { "type", "line work" },
                                              { "path", "b.lw" },
                                              { "resolved", moved + "/b.lw" },
                                              { "x", 1.5 },
                                              { "y", 0.25 },
                                              { "width", 2.0 },
                                              { "height", 1.0 },
                                              { "rotation", 0.0 },
                                              { "container", nullptr },
                                              { "colors", nullptr } })
                                   .dump());
    EXPECT_EQ(entries[1].at("type"), "CT window");
    EXPECT_EQ(entries[1].at("path"), "pics/a.ct");
    EXPECT_EQ(entries[1].at("rotation"), 90.0);
    EXPECT_EQ(entries[1].at("height"), 0.5);
    EXPECT_EQ(entries[1].at("container"), 0);
    EXPECT_EQ(entries[1].at("colors"), ordered_json({ 2, 1 }));
    EXPECT_EQ(entries[2].at("width"), 2.0);
    EXPECT_EQ(entries[2].at("picture").at("resolution"), 300.0);
    EXPECT_EQ(RunWords("check @moved/p.pg", folder).status, 0);
}

TEST(Page, FilesElsewhereAreEnteredAsGivenAndFoundByTheOptions)
{
    const JobFolder folder;
    WriteFile(folder / "c.ct", RandomCt(300, 300).File());
    const std::string given[] = { folder / "c.ct", "P:\\JOBS\\C.CT" };
    for (const std::string& file : given) {
        const std::string asked = "page @job/p.pg --size 8x5 --resolution 300 --place " + file +
                                  "@1,1 --map P:\\JOBS=" + folder.Path().string();
        ASSERT_EQ(RunWords(asked, folder).status, 0);
        const std::string map = " --map P:\\JOBS=" + folder.Path().string();
        EXPECT_EQ(InfoOf(folder, "@job/p.pg" + map, 0).at("entries").at(0).at("path"), file);
        EXPECT_EQ(RunWords("check -q @job/p.pg" + map, folder).status, 0);
        EXPECT_EQ(RunWords("check -q @job/p.pg", folder).status, 1);
    }
}

TEST(Page, TellsWhatReachesBeyondTheEdge)
{
    const JobFolder folder;
    const Outcome outcome = RunWords(kPage + "pics/a.ct@7,1", folder);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, HasSubstr("p.pg: "));
    EXPECT_TRUE(fs::exists(folder / "job/p.pg"));
}

TEST(Page, RefusesWhatItCannotWrite)
{
    const JobFolder folder;
    fs::create_directories(folder / ("job/" + std::string(80, 'x')));
    WriteFile(folder / ("job/" + std::string(80, 'x') + "/a.ct"), RandomCt(30, 30).File());
    WriteFile(folder / "job/cut.ct", RandomCt(300, 300).File().substr(0, 90'000));
    WriteFile(folder / "c.ct", RandomCt(30, 30).File());
    WriteFile(folder / "job/p.pg", "as it was");
    const std::string longPath = kPage + std::string(80, 'x') + "/a.ct@1,1";
    const std::string manyColours = [] {
        std::string text = kPage + "b.lw@1,1 --place @job/pics/a.ct@1,1 --window 0:1";
        for (int colour = 0; colour < 31; ++colour)
            text += ",1";
        return text;
    }();
    const std::string window = kPage + "b.lw@1,1 --place @job/pics/a.ct@1,1 --window ";
    const std::string places[] = {
        kPage + "pics/a.ct",
        kPage + "pics/a.ct@1",
        kPage + "pics/a.ct@1,2,3",
        kPage + "pics/a.ct@1,2,0,3",
        kPage + "pics/a.ct@1,nan",
        kPage + "pics/a.ct@1,1 --window 0:1",
        kPage + "b.lw@1,1 --place @job/b.lw@1,1 --window 0:1",
        window + "0",
        window + "0:",
        window + "0:0",
        window + "0:256",
        window + "1:1",
        window + "0:1 --window 0:2",
        "page @job/p.pg --size 8x5 --resolution 300 --window 0:1",
        "page @job/p.pg --size 8 --resolution 300",
        "page @job/p.pg --size 0.05x5 --resolution 300",
        "page @job/p.pg --size 1e6x5 --resolution 100000",
    };
    const RefusalCase cases[] = {
        { longPath.c_str(), 2, "an entry holds 80" },
        { manyColours.c_str(), 2, "31 colours at most" },
        { "page @job/p.pg --size 8x5 --resolution 300 --place @none.ct@1,1", 1, "no such" },
        { "page @job/p.pg --size 8x5 --resolution 300 --place @c.ct@1,1", 1, "--root or --map" },
        { "page @job/p.pg --size 8x5 --resolution 300 --place @job/cut.ct@1,1", 1, "has 1 error" },
        { "page @job/pics/a.ct --size 8x5 --resolution 300 --place @job/pics/a.ct@1,1", 2,
          "the output is one of the pictures" },
    };
    ExpectRefused(cases, folder);
    for (const std::string& words : places) {
        const RefusalCase one{ words.c_str(), 2, "" };
        ExpectRefused({ &one, 1 }, folder);
    }
    EXPECT_EQ(ReadFile(folder / "job/p.pg"), "as it was");
    EXPECT_EQ(RunProgram("find", { folder.Path().string(), "-name", ".tympan-*" }).out, "");
}

TEST(Page, AMissingPictureHidesNoOther)
{
    const JobFolder folder;
    folder.File("job/p.pg", PageSample{ { { .path = "P:\\gone.ct" },
                                          { .type = 4 },
                                          { .type = 5, .path = "B.LW" },
                                          { .path = "p.pg" } } }
                                .Bytes());
    const ordered_json info = InfoOf(folder, "@job/p.pg", 1);
    EXPECT_EQ(info.at("code"), 90065);
    EXPECT_THAT(info.at("error"), HasSubstr("P:\\gone.ct isn't found"));
    EXPECT_EQ(info.at("width"), 1000);
    const ordered_json& entries = info.at("entries");
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_THAT(entries[0].at("error"), HasSubstr("gone.ct"));
    EXPECT_EQ(entries[0].at("x"), 2.0);
    EXPECT_EQ(entries[1].at("type"), "unknown");
    EXPECT_EQ(entries[2].at("picture").at("format"), "LW");
    EXPECT_FALSE(entries[2].contains("error"));
    EXPECT_EQ(entries[3].at("picture").at("format"), "Page");
    const Outcome text = RunWords("info @job/p.pg", folder);
    EXPECT_EQ(text.status, 1);
    for (const char* const part :
         { "  Entries       4\n", "  0 picture     P:\\gone.ct\n", "  2 line work   B.LW\n",
           "Not taken: its picture P:\\gone.ct isn't found", "LW, 200 x 100 pixels\n",
           "1 x 1 inches, 2 x 1 inches from the left and upper edge\n" })
        EXPECT_THAT(text.out, HasSubstr(part));
}

TEST(Page, APictureThatDoesNotOpenFailsThePage)
{
    const JobFolder folder;
    WriteFile(folder / "job/half.lw", ReadFile(folder / "job/b.lw").substr(0, 2100));
    folder.File("job/p.pg", PageSample{ { { .type = 5, .path = "half.lw" } } }.Bytes());
    const ordered_json info = InfoOf(folder, "@job/p.pg", 1);
    EXPECT_THAT(info.at("error"), HasSubstr("half.lw"));
    EXPECT_TRUE(info.at("entries").at(0).contains("error"));
}

TEST(Page, CountsNoMoreEntriesThanTheFileHas)
{
    const JobFolder folder;
    PageSample page{ { { .path = "pics/a.ct" } } };
    page.count = "065535";
    folder.File("job/p.pg", page.Bytes());
    EXPECT_EQ(InfoOf(folder, "@job/p.pg", 1).at("entries").size(), 1U);
}

// Decoys of the same name stand where a picture would be looked for next.
TEST(Page, AJpegsSideFileIsTheOneBesideIt)
{
    const JobFolder folder;
    fs::create_directories(folder / "root");
    ASSERT_EQ(RunWords("export @job/pics/a.ct -o @a.tif", folder).status, 0);
    ASSERT_EQ(RunWords("import @a.tif -o @root/photo.jpg", folder).status, 0);
    WriteFile(folder / "job/photo.bin", "no index");
    WriteFile(folder / "job/PHOTO.bin", "no index");
    folder.File("job/p.pg", PageSample{ { { .path = "P:\\JOBS\\PHOTO.JPG" } } }.Bytes());
    const ordered_json info = InfoOf(folder, "@job/p.pg --root @root", 0);
    EXPECT_EQ(info.at("entries").at(0).at("picture").at("width"), 600);
    EXPECT_THAT(RunWords("check @job/p.pg --root @root", folder).out, HasSubstr("Page, valid"));
    fs::remove(folder / "root/photo.bin");
    EXPECT_THAT(InfoOf(folder, "@job/p.pg --root @root", 1).at("error"), HasSubstr("side file"));
}

TEST(Page, GivesNoRows)
{
    const JobFolder folder;
    ASSERT_EQ(RunWords(kPage + "b.lw@1,1", folder).status, 0);
    fs::copy_file(folder / "job/p.pg", folder / "gone.pg");
    const RefusalCase cases[] = {
        { "rows @job/p.pg --separation cyan -o @x.pgm", 1, "gives no rows" },
        { "export @job/p.pg -o @x.tif", 1, "gives no rows" },
        { "export @gone.pg -o @x.tif", 1, "gives no rows" },
        { "crop @job/p.pg @x.lw", 1, "only line work" },
        { "stream @job/p.pg -o @x.runs --separation cyan", 1, "only line work" },
        { "index @job/p.pg", 1, "has no side file" },
        { "info @job/p.pg --root @none", 2, "" },
        { "info @job/p.pg --map P:=@none", 2, "does not exist" },
        { "info @job/p.pg --map P:", 2, "PREFIX=DIR" },
    };
    ExpectRefused(cases, folder);
}

} // namespace
} // namespace tympan::test
