// `tympan info`: what it tells of good and bad files, as text and as JSON.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

std::vector<std::string> KeysOf(const ordered_json& object)
{
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

// The one object of `info --json FILE`.
ordered_json InfoOf(const std::string& file, int status, std::vector<std::string> options = {})
{
    options.insert(options.begin(), { "info", "--json", file });
    const Outcome outcome = RunCommand(options);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    const auto array = ParsedJson(outcome.out);
    EXPECT_EQ(array.size(), 1U);
    return array.at(0);
}

TEST(Info, JsonOfAPictureHasEveryKey)
{
    const TemporaryFolder folder;
    CtPicture picture = RandomCt(301, 600);
    picture.resolutionX = 301.0;
    WriteFile(folder / "a.ct", picture.File());
    const ordered_json expected = {
        { "file", folder / "a.ct" },
        { "format", "CT" },
        { "file_type", "" },
        { "width", 301 },
        { "height", 600 },
        { "width_in", 1.0 },
        { "height_in", 2.0 },
        { "resolution", nullptr },
        { "resolution_x", 301.0 },
        { "resolution_y", 300.0 },
        { "separations", { "cyan", "magenta", "yellow", "black" } },
        { "bits_per_sample", 8 },
        { "row_size", 301 },
        { "nlw", false },
        { "index", nullptr },
        { "colors", nullptr },
        { "transparent_colors", nullptr },
        { "blocks", nullptr },
        { "mcu_number", nullptr },
        { "kind", nullptr },
        { "compression", nullptr },
        { "photometric", nullptr },
        { "entries", nullptr },
    };
    EXPECT_EQ(InfoOf(folder / "a.ct", 0).dump(), expected.dump());
    const ordered_json runs = InfoOf(folder / "a.ct", 0, { "--runs" });
    EXPECT_TRUE(runs.at("runs").is_null() && runs.at("mean_run").is_null());
}

TEST(Info, LineWorkHasColoursAndRuns)
{
    LwPicture picture{ .width = 6, .height = 3, .colours = std::vector<LwColour>(255) };
    for (std::size_t i = 0; i < picture.colours.size(); ++i)
        picture.colours[i].inks[3] = static_cast<unsigned char>(i); // so that none is free
    picture.colours[0] = { { 0, 1, 255, 0 }, 0xB0 };
    picture.rows = { { { 1, 6 } }, { { 1, 2 }, { 2, 4 } }, { { 1, 3 }, { 3, 0 }, { 4, 3 } } };
    const LwFolder folder(picture);
    const ordered_json info = InfoOf(folder / "a.lw", 0, { "--runs" });
    EXPECT_EQ(info.at("format"), "LW");
    EXPECT_EQ(info.at("file_type"), "LW");
    EXPECT_EQ(info.at("row_size"), 6);
    EXPECT_EQ(info.at("colors"), 255);
    EXPECT_EQ(
        info.at("transparent_colors"),
        ordered_json({ { "cyan", 1 }, { "magenta", 0 }, { "yellow", 0 }, { "black", nullptr } }));
    EXPECT_EQ(info.at("runs"), 6);
    EXPECT_EQ(info.at("mean_run"), 3.0);
    EXPECT_FALSE(InfoOf(folder / "a.lw", 0).contains("runs"));
    const Outcome text = RunCommand({ "info", "--runs", folder / "a.lw" });
    for (const char* const part :
         { "Colours       255\n", "Transparent   cyan 1, magenta 0, yellow 0, black none\n",
           "Runs          6, of 3 pixels in the mean\n" })
        EXPECT_THAT(text.out, HasSubstr(part));
}

TEST(Info, RunsOfACutLastRowCannotBeCounted)
{
    const LwFolder folder(RandomLw(50, 2), 5);
    EXPECT_EQ(InfoOf(folder / "a.lw", 0).at("width"), 50);
    const ordered_json info = InfoOf(folder / "a.lw", 1, { "--runs" });
    EXPECT_TRUE(info.at("runs").is_null());
    EXPECT_EQ(info.at("code"), 90001);
    EXPECT_THAT(info.at("error"), HasSubstr("last row"));
}

TEST(Info, JsonTellsTypeFlagAndOneSeparation)
{
    const TemporaryFolder folder;
    std::string file = RandomCt(300, 300, 1).File();
    file[2] = 2;
    file.replace(80, 2, "C\xFE");
    WriteFile(folder / "a.ct", file);
    const ordered_json info = InfoOf(folder / "a.ct", 0);
    EXPECT_EQ(info.at("nlw"), true);
    EXPECT_EQ(info.at("file_type"), "C\xEF\xBF\xBD");
    EXPECT_EQ(info.at("separations"), ordered_json::array({ "cyan" }));
    EXPECT_EQ(info.at("bits_per_sample"), 8);
    EXPECT_EQ(info.at("resolution"), 300.0);
}

TEST(Info, NumbersThatAreNotFiniteAreNull)
{
    const TemporaryFolder folder;
    std::string file = RandomCt(10, 10).File();
    file.replace(1028, 14, "+.00000000E+00");
    WriteFile(folder / "a.ct", file);
    const ordered_json info = InfoOf(folder / "a.ct", 0);
    EXPECT_TRUE(info.at("resolution_y").is_null());
    EXPECT_TRUE(info.at("resolution").is_null());
    EXPECT_EQ(info.at("height_in"), 0.0);
}

std::string HeaderWith(std::size_t offset, const std::string& bytes)
{
    std::string header = RandomCt(10, 10).Header();
    return header.replace(offset, bytes.size(), bytes);
}

TEST(Info, TellsErrorAndCodeOfABadFile)
{
    const std::vector<std::string> refused{ "file", "format", "error", "code" };
    const std::vector<std::string> unknown{ "file", "error", "code" };
    const std::vector<std::string> all{ "file",
                                        "format",
                                        "file_type",
                                        "width",
                                        "height",
                                        "width_in",
                                        "height_in",
                                        "resolution",
                                        "resolution_x",
                                        "resolution_y",
                                        "separations",
                                        "bits_per_sample",
                                        "row_size",
                                        "nlw",
                                        "index",
                                        "colors",
                                        "transparent_colors",
                                        "blocks",
                                        "mcu_number",
                                        "kind",
                                        "compression",
                                        "photometric",
                                        "entries",
                                        "error",
                                        "code" };
    struct {
        const char* name;
        std::string bytes;
        const std::vector<std::string>& keys;
        ordered_json code;
        const char* told = "";
    } const cases[] = {
        { "an empty file has no separations", "", refused, 90066 },
        { "zeros have no separations", std::string(4000, '\0'), refused, 90066 },
        { "three separations", HeaderWith(1025, { 3, 0, 7 }), refused, 90066 },
        { "four, but a mask of one", HeaderWith(1025, { 4, 0, 1 }), unknown, nullptr },
        { "rows wider than file and memory", HeaderWith(1068, "+02147483647"), all, 0 },
        { "a JPEG of a camera", "\xFF\xD8\xFF\xE1" + std::string(4000, '\0'), unknown, nullptr,
          "is a JPEG" },
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        const TemporaryFolder folder;
        WriteFile(folder / "bad.ct", one.bytes);
        const ordered_json info = InfoOf(folder / "bad.ct", 1);
        EXPECT_EQ(KeysOf(info), one.keys);
        EXPECT_EQ(info.at("code"), one.code);
        EXPECT_FALSE(info.at("error").get<std::string>().empty());
        EXPECT_THAT(info.at("error"), HasSubstr(one.told));
    }
}

TEST(Info, FileNamesOfOtherCharactersAreTold)
{
    const TemporaryFolder folder;
    const std::string name = folder / "a\xFF%\n.ct";
    WriteFile(name, RandomCt(10, 10).File());
    const ordered_json info = InfoOf(name, 0);
    EXPECT_THAT(info.at("file"), HasSubstr("a\xEF\xBF\xBD%\n.ct"));
    EXPECT_THAT(info.at("file_raw"), HasSubstr("/a%FF%25%0A.ct"));
}

TEST(Info, JsonIsAsciiAndUtf8NamesHaveNoRawForm)
{
    const TemporaryFolder folder;
    const std::string name = folder / "\xC3\xA4.ct";
    WriteFile(name, RandomCt(10, 10).File());
    const Outcome outcome = RunCommand({ "info", "--json", name });
    EXPECT_THAT(outcome.out, HasSubstr("\\u00e4.ct"));
    EXPECT_EQ(outcome.out.find("file_raw"), std::string::npos);
}

TEST(Info, AllFilesAreToldWhenOneFails)
{
    const TemporaryFolder folder;
    WriteFile(folder / "good.ct", RandomCt(10, 10).File());
    const Outcome outcome = RunCommand(
        { "info", "--json", folder / "none.ct", folder / "good.ct", folder.Path().string() });
    EXPECT_EQ(outcome.status, 1);
    const auto array = ParsedJson(outcome.out);
    ASSERT_EQ(array.size(), 3U);
    EXPECT_TRUE(array[0].at("code").is_null());
    EXPECT_EQ(array[1].at("width"), 10);
    EXPECT_TRUE(array[2].contains("error"));
    EXPECT_THAT(outcome.err, HasSubstr("tympan: " + (folder / "none.ct") + ": No such file"));
    EXPECT_THAT(outcome.err, HasSubstr("tympan: " + folder.Path().string() + ": is a folder"));
}

TEST(Info, TextIsForPeople)
{
    const TemporaryFolder folder;
    CtPicture picture = RandomCt(300, 600);
    WriteFile(folder / "a.ct", picture.File());
    const Outcome outcome = RunCommand({ "info", folder / "a.ct" });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const char* const part :
         { "Format        CT\n", "300 x 600 pixels\n", "1 x 2 inches\n", "25.4 x 50.8 mm\n",
           "300 pixels per inch\n", "cyan, magenta, yellow, black\n", "8 bits\n" })
        EXPECT_THAT(outcome.out, HasSubstr(part));
}

TEST(Info, FormatCanBeNamed)
{
    const TemporaryFolder folder;
    WriteFile(folder / "bad.ct", HeaderWith(1025, { 4, 0, 1 })); // which the formats' tests refuse
    const Outcome outcome = RunCommand({ "info", "--json", "--as", "ct", folder / "bad.ct" });
    EXPECT_EQ(ParsedJson(outcome.out).at(0).at("format"), "CT");
}

} // namespace
