// `tympan crop`, `tympan stream`, and what the subcommands say of bad line work.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"

#include <tympan/tympan.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

// The words, those that begin with @ as files of the folder.
std::vector<std::string> Arguments(const char* words, const TemporaryFolder& folder)
{
    std::vector<std::string> arguments;
    std::istringstream in(words);
    for (std::string word; in >> word;)
        arguments.push_back(word[0] == '@' ? folder / word.substr(1) : word);
    return arguments;
}

// ---- crop

struct CropCase {
    const char* name;
    const char* options;
    std::uint32_t left, right, top, bottom; // kept, from 1
};

constexpr CropCase kCropCases[] = {
    { "all", "", 1, 90, 1, 30 },
    { "columns", "--left 11 --right 70", 11, 70, 1, 30 },
    { "rows", "--top 4 --bottom 9", 1, 90, 4, 9 },
    { "a corner", "--left 50 --top 20", 50, 90, 20, 30 },
    { "the other corner", "--right 50 --bottom 20", 1, 50, 1, 20 },
    { "a pixel", "--left 33 --right 33 --top 30 --bottom 30", 33, 33, 30, 30 },
};

TEST(Crop, KeepsTheRectangle)
{
    const LwPicture picture = RandomLw(90, 30, LwRuns::mixed);
    const CtPicture plates = PlatesOf(AsLoaded(picture));
    const LwFolder folder(picture);
    for (const CropCase& one : kCropCases) {
        SCOPED_TRACE(one.name);
        const Outcome outcome = RunCommand(
            Arguments(("crop @a.lw @crop.lw " + std::string(one.options)).c_str(), folder));
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        std::ostringstream told;
        told << (folder / "crop.lw") << ": " << one.right - one.left + 1 << " x "
             << one.bottom - one.top + 1 << " pixels, columns " << one.left << " to " << one.right
             << ", rows " << one.top << " to " << one.bottom << '\n';
        EXPECT_EQ(outcome.out, told.str());

        ASSERT_EQ(
            RunCommand(Arguments("rows @crop.lw -o @k.raw --separation black", folder)).status, 0);
        std::string expected;
        for (std::uint32_t row = one.top - 1; row < one.bottom; ++row)
            expected += plates.Row(row, 3).substr(one.left - 1, one.right - one.left + 1);
        EXPECT_EQ(ReadFile(folder / "k.raw"), expected);
        const bool isTiny = std::min(one.right - one.left, one.bottom - one.top) + 1 < 10;
        EXPECT_EQ(outcome.err.find("can't hold so small") != std::string::npos, isTiny);
        EXPECT_EQ(RunCommand({ "info", folder / "crop.lw" }).out.find("  100 pixels per inch\n") ==
                      std::string::npos,
                  isTiny);
    }
}

// ---- stream

struct StreamCase {
    const char* name;
    LwRuns kind;
    std::uint32_t width, height;
    unsigned int copies;
    unsigned long gap;
    unsigned int white;
    bool lengthFirst;
};

// Those of a width that needs no completion, and runs of length 0 or several copies, are the ones
// whose runs hang on what stands before them.
constexpr StreamCase kStreamCases[] = {
    { "completed", LwRuns::mixed, 1000, 200, 1, 0, 255, false },
    { "length first, with gaps", LwRuns::mixed, 1000, 200, 3, 300, 7, true },
    { "of the width of a record", LwRuns::mixed, 4096, 500, 1, 0, 255, false },
    { "with runs of length 0", LwRuns::hollow, 4096, 300, 1, 0, 255, false },
    { "with runs of length 0, and again", LwRuns::hollow, 4096, 301, 1, 0, 255, true },
    { "with gaps that complete it", LwRuns::hollow, 1000, 400, 3, 548, 255, false },
    { "of several bands", LwRuns::dense, 4096, 2500, 3, 0, 255, false },
    { "of one row", LwRuns::sparse, 5, 1, 1, 0, 255, false },
};

// The stream of magenta and the offsets, a line each, by one call of the library.
void MakeStream(const std::string& path, const StreamCase& one, std::string& bytes,
                std::string& offsets)
{
    const std::unique_ptr<LWFileInterface> lineWork(create_lw_file_object(path.c_str(), true));
    ASSERT_TRUE(lineWork != nullptr && lineWork->ObjectStatus());
    bytes.resize(lineWork->GetLWBufferSize(0, one.height - 1, one.copies, one.gap, true));
    std::vector<unsigned long> places(one.height);
    auto* end = reinterpret_cast<unsigned char*>(bytes.data());
    unsigned long* endPlace = places.data();
    ASSERT_EQ(lineWork->GetLWPictureRows(end, 0, one.height - 1, endPlace, 0, Magenta, one.gap,
                                         one.copies, static_cast<unsigned char>(one.white), 0,
                                         !one.lengthFirst),
              one.height);
    bytes.resize(static_cast<std::size_t>(end - reinterpret_cast<unsigned char*>(bytes.data())));
    for (const unsigned long place : places)
        offsets += std::to_string(place) + '\n';
}

TEST(Stream, IsTheLibrarysInBandsToo)
{
    for (const StreamCase& one : kStreamCases) {
        SCOPED_TRACE(one.name);
        for (const std::uint32_t seed : { 1U, 2U, 3U }) {
            const LwFolder folder(RandomLw(one.width, one.height, one.kind, seed));
            std::ostringstream words;
            words << "stream @a.lw -o @runs --offsets @offsets --separation magenta --copies "
                  << one.copies << " --gap " << one.gap << " --white " << one.white
                  << (one.lengthFirst ? " --length-first" : "");
            const Outcome outcome = RunCommand(Arguments(words.str().c_str(), folder));
            ASSERT_EQ(outcome.status, 0) << outcome.err;
            std::string bytes, offsets;
            MakeStream(folder / "a.lw", one, bytes, offsets);
            EXPECT_TRUE(ReadFile(folder / "runs") == bytes) << "seed " << seed;
            EXPECT_TRUE(ReadFile(folder / "offsets") == offsets) << "seed " << seed;
        }
    }
}

TEST(Stream, HasDefaults)
{
    const LwFolder folder(LwPicture{ .width = 4000, .rows = { LwRow(16, { 2, 250 }) } });
    ASSERT_EQ(RunCommand(Arguments("stream @a.lw -o @runs --separation cyan", folder)).status, 0);
    std::string expected = { 0, 0, '\xFF', 96 };
    for (int run = 0; run < 16; ++run)
        expected += { 50, '\xFA' };
    expected += std::string(2, '\0');
    EXPECT_EQ(ReadFile(folder / "runs"), expected);
    EXPECT_EQ(folder.Entries(), 2U);
}

// ---- refusals

struct RefusalCase {
    const char* name;
    const char* arguments;
    int status;
    const char* told; // on standard error
};

void ExpectRefusals(std::span<const RefusalCase> cases, const TemporaryFolder& folder)
{
    const std::size_t entries = folder.Entries();
    for (const RefusalCase& one : cases) {
        SCOPED_TRACE(one.name);
        const Outcome outcome = RunCommand(Arguments(one.arguments, folder));
        EXPECT_EQ(outcome.status, one.status) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.told));
        EXPECT_THAT(outcome.err, testing::StartsWith("tympan: "));
        EXPECT_EQ(folder.Entries(), entries) << "something was left behind";
    }
}

constexpr RefusalCase kUsage[] = {
    { "right before left", "crop @a.lw @b.lw --left 9 --right 8", 2, "10 x 20 pixels" },
    { "bottom before top", "crop @a.lw @b.lw --top 9 --bottom 8", 2, "10 x 20 pixels" },
    { "right outside", "crop @a.lw @b.lw --right 11", 2, "10 x 20 pixels" },
    { "top outside", "crop @a.lw @b.lw --top 21", 2, "10 x 20 pixels" },
    { "columns count from 1", "crop @a.lw @b.lw --left 0", 2, "--left" },
    { "crop over the input", "crop @a.lw @a.lw", 2, "is the input" },
    { "crop of a CT", "crop @a.ct @b.lw", 1, "only line work (LW) can be cropped" },
    { "crop without an output", "crop @a.lw", 2, "OUT" },
    { "no copies", "stream @a.lw -o @b --separation 0 --copies 0", 2, "--copies" },
    { "rows too wide", "stream @a.lw -o @b --separation 0 --copies 2147483647", 2, "--copies" },
    { "gaps too wide", "stream @a.lw -o @b --separation 0 --copies 3 --gap 2147483647", 2,
      "--gap" },
    { "rows that take too much", "stream @a.lw -o @b --separation 0 --copies 200000000", 2,
      "--copies" },
    { "white that is none", "stream @a.lw -o @b --separation 0 --white 256", 2, "--white" },
    { "no separation", "stream @a.lw -o @b", 2, "--separation" },
    { "one name for both outputs", "stream @a.lw -o @b --separation 0 --offsets @./b", 2,
      "a file of their own" },
    { "offsets over the input", "stream @a.lw -o @b --separation 0 --offsets @a.lw", 2,
      "is the input" },
    { "stream of a CT", "stream @a.ct -o @b --separation 0", 1, "only line work (LW)" },
    { "separation that is not there", "stream @one.lw -o @b --separation 3", 1,
      "has no separation black" },
};

TEST(LineWork, WrongUsageIsTold)
{
    LwPicture picture = RandomLw(10, 20);
    const LwFolder folder(picture);
    picture.mask = 1;
    WriteFile(folder / "one.lw", std::string(AsText(picture.Bytes())));
    WriteFile(folder / "a.ct", RandomCt(10, 20).File());
    ExpectRefusals(kUsage, folder);
}

// Opening looks at neither the last row nor the colours that rows name.
constexpr RefusalCase kBadRows[] = {
    { "preview of a long row", "preview @long.lw -o @b.png", 1, "row 19 of 20: " },
    { "plate of a long row", "preview @long.lw -o @b.png --separation 0", 1, "(code 90025)" },
    { "rows", "rows @long.lw -o @b.raw --separation 0 --rows 5:", 1, "row 19 of 20: " },
    { "rows enlarged", "rows @long.lw -o @b.raw --separation 0 --resolution 200", 1,
      "row 19 of 20: " },
    { "export", "export @long.lw -o @b.tif", 1, "tympan check" },
    { "crop", "crop @long.lw @b.lw --right 5", 1, "row 19 of 20: " },
    { "stream", "stream @long.lw -o @b --separation 0 --offsets @c", 1, "row 19 of 20: " },
    { "preview of a cut row", "preview @cut.lw -o @b.png", 1, "row 19 of 20: " },
    { "rows of a cut row", "rows @cut.lw -o @b.raw --separation 0", 1, "row 19 of 20: " },
    { "crop of a cut row", "crop @cut.lw @b.lw", 1, "row 19 of 20: " },
    { "stream of a cut row", "stream @cut.lw -o @b --separation 0", 1, "row 19 of 20: " },
    { "preview of a colour that is none", "preview @index.lw -o @b.png", 1, "row 7 of 20: " },
    { "rows of a colour that is none", "rows @index.lw -o @b.raw --separation 0", 1,
      "(code 90020)" },
    { "export of a colour that is none", "export @index.lw -o @b.tif", 1, "row 7 of 20: " },
    { "stream of a colour that is none", "stream @index.lw -o @b --separation 0", 1,
      "row 7 of 20: " },
    { "opening of a row that is cut", "rows @half.lw -o @b.raw --separation 0", 1,
      "ends too early (code 90001)" },
    { "opening of a row that is short", "rows @short.lw -o @b.raw --separation 0", 1,
      "don't add up to the width" },
};

TEST(LineWork, BadRowsAreNamedAndLeaveNothing)
{
    const LwPicture good = RandomLw(10, 20);
    const LwFolder folder(good);
    const auto write = [&](const char* name, const LwPicture& picture, std::size_t cut = 0) {
        const std::string file(AsText(picture.Bytes()));
        WriteFile(folder / name, file.substr(0, file.size() - cut));
    };
    LwPicture bad = good;
    bad.rows[19].back().length += 3;
    write("long.lw", bad);
    write("cut.lw", good, 3);
    write("half.lw", good, 200);
    bad = good;
    bad.rows[7][0].index = 21;
    write("index.lw", bad);
    bad = good;
    bad.rows[9] = { { 1, 9 }, { 1, 2 } };
    write("short.lw", bad);
    ExpectRefusals(kBadRows, folder);
    const Outcome held = RunCommand({ "rows", folder / "cut.lw", "-o", folder / "b.raw",
                                      "--separation", "0", "--rows", "0:19" });
    EXPECT_EQ(held.status, 0) << held.err;
    EXPECT_EQ(RunCommand({ "crop", folder / "cut.lw", folder / "b.lw", "--bottom", "19" }).status,
              0);
}

} // namespace
