// `tympan crop`, `tympan stream`, and what the subcommands say of bad line work.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/refusals.h"

#include <tympan/tympan.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;

// ---- crop

struct CropCase {
    const char* name;
    const char* options;
    std::uint32_t left, right, top, bottom; // kept, from 1
};

constexpr CropCase kCropCases[] = {
    { "columns", "--left 11 --right 70", 11, 70, 1, 30 },
    { "a corner", "--left 50 --top 20", 50, 90, 20, 30 },
    { "a pixel", "--left 33 --right 33 --top 30 --bottom 30", 33, 33, 30, 30 },
};

TEST(Crop, KeepsTheRectangle)
{
    const LwPicture picture = RandomLw(90, 30, LwRuns::mixed);
    const CtPicture plates = PlatesOf(AsLoaded(picture));
    const LwFolder folder(picture);
    for (const CropCase& one : kCropCases) {
        SCOPED_TRACE(one.name);
        const Outcome outcome = RunWords("crop @a.lw @crop.lw " + std::string(one.options), folder);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const std::uint32_t width = one.right - one.left + 1, height = one.bottom - one.top + 1;
        std::ostringstream told;
        told << (folder / "crop.lw") << ": " << width << " x " << height << " pixels, columns "
             << one.left << " to " << one.right << ", rows " << one.top << " to " << one.bottom
             << '\n';
        EXPECT_EQ(outcome.out, told.str());

        EXPECT_EQ(RunWords("rows @crop.lw -o @k.raw --separation black", folder).status, 0);
        std::string expected;
        for (std::uint32_t row = one.top - 1; row < one.bottom; ++row)
            expected += plates.Row(row, 3).substr(one.left - 1, width);
        EXPECT_EQ(ReadFile(folder / "k.raw"), expected);
        const bool isTiny = std::min(width, height) < 10;
        EXPECT_EQ(outcome.err.find("can't hold so small") != std::string::npos, isTiny);
        const std::string info = RunWords("info @crop.lw", folder).out;
        EXPECT_EQ(info.find("  100 pixels per inch\n") == std::string::npos, isTiny);
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
    { "with runs of length 0", LwRuns::hollow, 4096, 300, 1, 0, 255, false },
    { "with gaps that complete it", LwRuns::hollow, 1000, 400, 3, 548, 255, false },
    { "of several bands", LwRuns::dense, 4096, 2500, 3, 0, 255, false },
    { "of one row", LwRuns::sparse, 5, 1, 1, 0, 255, false },
};

// The stream of magenta and the offsets, a line each, by one call of the library.
void MakeStream(const std::string& path, const StreamCase& one, std::string& bytes,
                std::string& offsets)
{
    const std::unique_ptr<LWFileInterface> lineWork(create_lw_file_object(path.c_str(), true));
    ASSERT_TRUE(lineWork->ObjectStatus());
    bytes.resize(lineWork->GetLWBufferSize(0, one.height - 1, one.copies, one.gap, true));
    std::vector<unsigned long> places(one.height);
    auto* const start = reinterpret_cast<unsigned char*>(bytes.data());
    unsigned char* end = start;
    unsigned long* endPlace = places.data();
    ASSERT_EQ(lineWork->GetLWPictureRows(end, 0, one.height - 1, endPlace, 0, Magenta, one.gap,
                                         one.copies, static_cast<unsigned char>(one.white), 0,
                                         !one.lengthFirst),
              one.height);
    bytes.resize(static_cast<std::size_t>(end - start));
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
            const Outcome outcome = RunWords(words.str(), folder);
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
    ASSERT_EQ(RunWords("stream @a.lw -o @runs --separation cyan", folder).status, 0);
    std::string expected = { 0, 0, '\xFF', 96 };
    for (int run = 0; run < 16; ++run)
        expected += { 50, '\xFA' };
    expected += std::string(2, '\0');
    EXPECT_EQ(ReadFile(folder / "runs"), expected);
    EXPECT_EQ(folder.Entries(), 2U);
}

// ---- refusals

// Opening looks at neither the last row nor the colours that rows name.
constexpr RefusalCase kRefusals[] = {
    { "crop @a.lw @b.lw --left 9 --right 8", 2, "10 x 20 pixels" },
    { "crop @a.lw @b.lw --top 9 --bottom 8", 2, "10 x 20 pixels" },
    { "crop @a.lw @b.lw --right 11", 2, "10 x 20 pixels" },
    { "crop @a.lw @b.lw --top 21", 2, "10 x 20 pixels" },
    { "crop @a.lw @b.lw --left 0", 2, "--left" },
    { "crop @a.lw @a.lw", 2, "is the input" },
    { "crop @a.ct @b.lw", 1, "only line work (LW) can be cropped" },
    { "crop @a.lw", 2, "OUT" },
    { "stream @a.lw -o @b --separation 0 --copies 0", 2, "--copies" },
    { "stream @a.lw -o @b --separation 0 --copies 2147483647", 2, "--copies" },
    { "stream @a.lw -o @b --separation 0 --copies 3 --gap 2147483647", 2, "--gap" },
    { "stream @a.lw -o @b --separation 0 --copies 200000000", 2, "--copies" },
    { "stream @a.lw -o @b --separation 0 --white 256", 2, "--white" },
    { "stream @a.lw -o @b", 2, "--separation" },
    { "stream @a.lw -o @b --separation 0 --offsets @./b", 2, "a file of its own" },
    { "stream @a.lw -o @b --separation 0 --offsets @a.lw", 2, "is the input" },
    { "stream @a.ct -o @b --separation 0", 1, "only line work (LW)" },
    { "stream @one.lw -o @b --separation 3", 1, "has no separation black" },
    { "preview @long.lw -o @b.png", 1, "row 19 of 20: " },
    { "preview @long.lw -o @b.png --separation 0", 1, "(code 90025)" },
    { "rows @long.lw -o @b.raw --separation 0 --rows 5:", 1, "row 19 of 20: " },
    { "rows @long.lw -o @b.raw --separation 0 --resolution 200", 1, "row 19 of 20: " },
    { "export @long.lw -o @b.tif", 1, "tympan check" },
    { "crop @long.lw @b.lw --right 5", 1, "row 19 of 20: " },
    { "stream @long.lw -o @b --separation 0 --offsets @c", 1, "row 19 of 20: " },
    { "preview @cut.lw -o @b.png", 1, "row 19 of 20: " },
    { "rows @cut.lw -o @b.raw --separation 0", 1, "row 19 of 20: " },
    { "crop @cut.lw @b.lw", 1, "row 19 of 20: " },
    { "stream @cut.lw -o @b --separation 0", 1, "row 19 of 20: " },
    { "preview @index.lw -o @b.png", 1, "row 7 of 20: " },
    { "rows @index.lw -o @b.raw --separation 0", 1, "(code 90020)" },
    { "export @index.lw -o @b.tif", 1, "row 7 of 20: " },
    { "stream @index.lw -o @b --separation 0", 1, "row 7 of 20: " },
    { "rows @half.lw -o @b.raw --separation 0", 1, "ends too early (code 90001)" },
    { "rows @short.lw -o @b.raw --separation 0", 1, "don't add up to the width" },
};

TEST(LineWork, WrongUsageAndBadRowsAreToldAndLeaveNothing)
{
    const LwPicture good = RandomLw(10, 20);
    const LwFolder folder(good);
    const auto write = [&](const char* name, const LwPicture& picture, std::size_t cut = 0) {
        const std::string file(AsText(picture.Bytes()));
        WriteFile(folder / name, file.substr(0, file.size() - cut));
    };
    LwPicture one = good, tooLong = good, noColour = good, tooShort = good;
    one.mask = 1;
    tooLong.rows[19].back().length += 3;
    noColour.rows[7][0].index = 21;
    tooShort.rows[9] = { { 1, 9 }, { 1, 2 } };
    write("one.lw", one);
    write("long.lw", tooLong);
    write("index.lw", noColour);
    write("short.lw", tooShort);
    write("cut.lw", good, 3);
    write("half.lw", good, 200);
    WriteFile(folder / "a.ct", RandomCt(10, 20).File());
    ExpectRefused(kRefusals, folder);
    for (const char* held :
         { "rows @cut.lw -o @b.raw --separation 0 --rows 0:19", "crop @cut.lw @b.lw --bottom 19" })
        EXPECT_EQ(RunWords(held, folder).status, 0) << held;
}

} // namespace
