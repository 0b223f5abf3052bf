// `tympan check`: what it tells as text and as JSON, and how it ends.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

// A valid file, one with a remark, one with two bad rows, one that is no picture, and none.
struct FilesOfEachKind : TemporaryFolder {
    FilesOfEachKind()
    {
        LwPicture picture{ .width = 10, .height = 4, .inchesHigh = 0.4, .inchesWide = 1.0 };
        picture.rows.assign(4, { { 1, 4 }, { 2, 6 } });
        Write("valid.lw", picture);
        picture.rows[3] = { { 1, 4 }, { 1, 0 }, { 2, 6 } };
        Write("remark.lw", picture);
        picture.rows[1] = { { 1, 4 }, { 2, 5 } };
        picture.rows[2] = { { 1, 4 }, { 9, 6 } };
        Write("bad.lw", picture);
        WriteFile(*this / "none.txt", "no picture");
    }

    std::vector<std::string> All() const
    {
        return { *this / "valid.lw", *this / "remark.lw", *this / "bad.lw", *this / "none.txt",
                 *this / "missing.lw" };
    }

  private:
    void Write(const char* name, const LwPicture& picture) const
    {
        WriteFile(*this / name, std::string(AsText(picture.Bytes())));
    }
};

Outcome Check(std::vector<std::string> arguments, const std::vector<std::string>& files)
{
    arguments.insert(arguments.begin(), "check");
    arguments.insert(arguments.end(), files.begin(), files.end());
    return RunCommand(arguments);
}

TEST(Check, StatusTellsWhetherAllFilesAreValid)
{
    const FilesOfEachKind files;
    const auto all = files.All();
    const int expected[] = { 0, 0, 1, 1, 1 };
    for (const char* const form : { "--json", "--json-lines", "--quiet" })
        for (std::size_t i = 0; i < all.size(); ++i)
            EXPECT_EQ(Check({ form }, { all[i] }).status, expected[i]) << form << ' ' << all[i];
    EXPECT_EQ(Check({}, all).status, 1);
    EXPECT_EQ(Check({}, { all[0], all[1] }).status, 0);
}

TEST(Check, WrongUsageEndsInTwo)
{
    const FilesOfEachKind files;
    const std::vector<std::string> good{ files / "valid.lw" };
    EXPECT_EQ(Check({}, {}).status, 2);
    EXPECT_EQ(Check({ "--json", "--json-lines" }, good).status, 2);
    EXPECT_EQ(Check({ "--list" }, good).status, 2);
    EXPECT_EQ(Check({ "--as", "gif" }, good).status, 2);
}

TEST(Check, JsonTellsVerdictFormatAndFindings)
{
    const FilesOfEachKind files;
    const auto array = ParsedJson(Check({ "--json" }, files.All()).out);
    ASSERT_EQ(array.size(), 5U);
    const char* const verdicts[] = { "valid", "valid with remarks", "invalid", "undetermined",
                                     "undetermined" };
    for (std::size_t i = 0; i < array.size(); ++i) {
        EXPECT_EQ(array[i].at("file"), files.All()[i]);
        EXPECT_EQ(array[i].at("verdict"), verdicts[i]);
        EXPECT_EQ(array[i].at("format"), i < 3 ? ordered_json("LW") : ordered_json(nullptr));
    }
    EXPECT_EQ(array[0].at("findings"), ordered_json::array());
    EXPECT_EQ(array[0].at("findings_total"), 0);
    EXPECT_EQ(array[2].at("findings_total"), 3);
    EXPECT_EQ(array[2].at("counts").dump(), R"({"TYM-LW-0005":1,"TYM-LW-0007":1,"TYM-LW-0009":1})");
    const ordered_json expected = {
        { "id", "TYM-LW-0005" },
        { "severity", "error" },
        { "row", 1 },
        { "offset", 2098 },
        { "found", "The runs hold 9 pixels; 10 were expected." },
        { "remedy", "Get another copy of the file, or write it anew from its source." },
    };
    EXPECT_EQ(array[2].at("findings").at(0).dump(), expected.dump());
    EXPECT_TRUE(array[4].at("findings").at(0).at("row").is_null());
}

TEST(Check, JsonLinesHoldTheSameObjects)
{
    const FilesOfEachKind files;
    std::string lines;
    for (const auto& one : ParsedJson(Check({ "--json" }, files.All()).out))
        lines += one.dump(-1, ' ', true) + '\n';
    EXPECT_EQ(Check({ "--json-lines" }, files.All()).out, lines);
}

TEST(Check, NamesOfOtherCharactersAreTold)
{
    const TemporaryFolder folder;
    const std::string name = folder / "a\xFF\n.ct";
    WriteFile(name, RandomCt(10, 10).File());
    const auto object = ParsedJson(Check({ "--json-lines" }, { name }).out);
    EXPECT_THAT(object.at("file_raw"), HasSubstr("/a%FF%0A.ct"));
    EXPECT_THAT(Check({}, { name }).out, HasSubstr("a%FF%0A.ct: CT, valid\n"));
}

TEST(Check, TextIsForPeople)
{
    const FilesOfEachKind files;
    const std::string expected =
        (files / "bad.lw") + ": LW, invalid\n" +
        R"(  error TYM-LW-0005, row 1, byte 2098: The runs hold 9 pixels; 10 were expected.
      Get another copy of the file, or write it anew from its source.
  error TYM-LW-0007, row 2, byte 2104: The run names colour 9; the table has 2 colours.
      Get another copy of the file, or write it anew from its source.
  remark TYM-LW-0009, row 3, byte 2112: The run of colour 1 has length 0; at least 1 was expected.
      Nothing has to be done; write the file anew if another program refuses it.
)";
    const Outcome outcome =
        Check({ "--quiet" }, { files / "valid.lw", files / "remark.lw", files / "bad.lw" });
    EXPECT_EQ(outcome.out, expected);
    EXPECT_EQ(outcome.err, "");
}

TEST(Check, ABadFileOfManyFaultsIsToldInBrief)
{
    const TemporaryFolder folder;
    LwPicture picture{ .width = 4, .height = 5000 };
    picture.rows.assign(5000, { { 7, 4 } });
    WriteFile(folder / "a.lw", std::string(AsText(picture.Bytes())));
    const Outcome outcome = Check({}, { folder / "a.lw" });
    EXPECT_THAT(outcome.out, HasSubstr("\n  and 4900 more of TYM-LW-0007\n"));
    const auto lines = std::count(outcome.out.begin(), outcome.out.end(), '\n');
    EXPECT_LT(lines, 110);
    const auto object = ParsedJson(Check({ "--json-lines" }, { folder / "a.lw" }).out);
    EXPECT_EQ(object.at("counts").at("TYM-LW-0007"), 5000);
}

// The page is made with `tympan check --list >docs/checks.md`.
TEST(Check, ThePageOfIdentifiersIsTheList)
{
    EXPECT_EQ(RunCommand({ "check", "--list" }).out, ReadFile(TYMPAN_DOCS "/checks.md"));
    const auto list = ParsedJson(RunCommand({ "check", "--list", "--json" }).out);
    EXPECT_EQ(list.at(0).at("id"), "TYM-FILE-0001");
    EXPECT_FALSE(list.at(0).at("retired"));
}

} // namespace
