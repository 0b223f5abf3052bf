// `tympan palette`: the colours of line work made by hand.
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tympan::test {
namespace {

using testing::HasSubstr;

// The third colour is never used, the fourth is the second again, and the fifth is it but for being
// transparent in black. Runs of length 0 hold nothing, whatever they name.
LwPicture FiveColours()
{
    return { .width = 10,
             .height = 2,
             .colours = { { { 255, 255, 255, 255 } },
                          { { 0, 204, 255, 51 } },
                          { { 1, 2, 3, 4 } },
                          { { 0, 204, 255, 51 } },
                          { { 0, 204, 255, 51 }, 0x10 } },
             .rows = { { { 1, 5 }, { 3, 0 }, { 2, 5 } }, { { 4, 2 }, { 1, 7 }, { 5, 1 } } } };
}

TEST(Palette, TellsInksUseAndColoursThatAreTheSame)
{
    const LwFolder folder(FiveColours());
    const Outcome outcome = RunWords("palette @a.lw --json", folder);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    ordered_json told = ParsedJson(outcome.out);
    EXPECT_EQ(told.at("file"), folder / "a.lw");
    told.erase("file");
    EXPECT_EQ(told, ParsedJson(R"({
      "separations": ["cyan", "magenta", "yellow", "black"],
      "pixels": 20,
      "colors": [
        { "index": 1, "inks": [0, 0, 0, 0], "runs": 2, "pixels": 12, "same_as": null },
        { "index": 2, "inks": [255, 51, 0, 204], "runs": 1, "pixels": 5, "same_as": null },
        { "index": 3, "inks": [254, 253, 252, 251], "runs": 0, "pixels": 0, "same_as": null },
        { "index": 4, "inks": [255, 51, 0, 204], "runs": 1, "pixels": 2, "same_as": 2 },
        { "index": 5, "inks": [255, 51, 0, null], "runs": 1, "pixels": 1, "same_as": null }
      ]
    })"));
}

TEST(Palette, IsCsvForOtherPrograms)
{
    const LwFolder folder(FiveColours());
    EXPECT_EQ(RunWords("palette @a.lw --csv", folder).out,
              "index,cyan,magenta,yellow,black,runs,pixels,same_as\r\n"
              "1,0,0,0,0,2,12,\r\n"
              "2,255,51,0,204,1,5,\r\n"
              "3,254,253,252,251,0,0,\r\n"
              "4,255,51,0,204,1,2,2\r\n"
              "5,255,51,0,transparent,1,1,\r\n");
}

TEST(Palette, IsATableForAPerson)
{
    const LwFolder folder(FiveColours());
    const std::string text = RunWords("palette @a.lw", folder).out;
    EXPECT_THAT(
        text, HasSubstr("2      100.00 %  20.00 %   0.00 %      80.00 %     1       5  25.00 %\n"));
    EXPECT_THAT(text, HasSubstr("98.43 %     0       0   0.00 %  unused\n"));
    EXPECT_THAT(text, HasSubstr("10.00 %  same as 2\n"));
    EXPECT_THAT(text, HasSubstr("transparent     1       1   5.00 %\n"));
}

TEST(Palette, IsThatOfLineWorkAlone)
{
    const CtFolder folder(RandomCt(4, 4));
    LwPicture bad = FiveColours();
    bad.rows[1][0].index = 6;
    const std::string bytes(AsText(bad.Bytes()));
    WriteFile(folder / "bad.lw", bytes);
    const RefusalCase cases[] = {
        { "palette @a.ct", 2, "only line work (LW)" },
        { "palette @bad.lw", 1, "row 1 has a colour that its table hasn't" },
        { "palette @bad.lw --json --csv", 2, "--json" },
        { "palette @none.lw", 1, "none.lw" },
    };
    ExpectRefused(cases, folder);
}

} // namespace
} // namespace tympan::test
