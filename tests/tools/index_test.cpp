// `tympan index` on line work, what `info` says of side files, and `stream --indexes`.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

// ---- the stream

// The pixels of a row of a stream, which begins at `at`, by the table of what stands for each index.
std::string PixelsOf(const std::string& stream, std::size_t at, std::size_t width,
                     const std::string& lut, bool lengthFirst)
{
    std::string pixels;
    for (at += 2; pixels.size() < width; at += 2) {
        const auto length = static_cast<unsigned char>(stream.at(at + (lengthFirst ? 0 : 1)));
        const auto index = static_cast<unsigned char>(stream.at(at + (lengthFirst ? 1 : 0)));
        pixels.append(length, length != 0 ? lut.at(index - std::size_t{ 1 }) : '\0');
    }
    EXPECT_EQ(stream.substr(at, 2), std::string(2, '\0'));
    return pixels;
}

struct StreamCase {
    const char* options;
    std::uint32_t width;
    std::size_t completion; // pixels in front
    std::size_t copies, gap;
    bool lengthFirst, onPaper;
};

constexpr StreamCase kStreams[] = {
    { "--white 3", 1000, 3096, 1, 0, false, false },
    { "--white 3 --length-first --copies 3 --gap 548", 1000, 0, 3, 548, true, false },
    { "--white 3 --transparent-as-paper --max-memory 1MiB", 4096, 0, 1, 0, false, true },
};

TEST(IndexStream, GivesEachSeparationByItsTable)
{
    constexpr std::size_t kHeight = 40;
    for (const StreamCase& one : kStreams) {
        SCOPED_TRACE(one.options);
        const LwPicture picture = RandomLw(one.width, kHeight, LwRuns::hollow);
        const LwPicture shown = one.onPaper ? OnPaper(picture) : AsLoaded(picture);
        const CtPicture plates = PlatesOf(shown);
        const LwFolder folder(picture);
        const Outcome outcome =
            RunWords("stream @a.lw -o @runs --indexes --lut @lut --offsets @places " +
                         std::string(one.options),
                     folder);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const std::string stream = ReadFile(folder / "runs"), lut = ReadFile(folder / "lut");
        const std::size_t colours = picture.colours.size();
        ASSERT_EQ(lut.size(), 4 * colours);
        for (std::uint32_t separation = 0; separation < 4; ++separation) {
            const std::string inks = lut.substr(separation * colours, colours);
            const char white = static_cast<char>(shown.colours[2].inks[separation]);
            std::istringstream places(ReadFile(folder / "places"));
            for (std::uint32_t row = 0; row < kHeight; ++row) {
                std::string expected(one.completion, white);
                for (std::size_t copy = 0; copy < one.copies; ++copy)
                    expected += (copy != 0 ? std::string(one.gap, white) : "") +
                                plates.Row(row, separation);
                std::size_t at = 0;
                places >> at;
                ASSERT_EQ(PixelsOf(stream, at, expected.size(), inks, one.lengthFirst), expected)
                    << "row " << row << " of separation " << separation;
            }
        }
    }
}

TEST(IndexStream, TakesTheFirstColourWithoutInkForWhite)
{
    LwPicture picture{ .width = 4095, .rows = { LwRow(16, { 1, 255 }) } };
    picture.rows[0].push_back({ 2, 15 });
    picture.colours.push_back({ { 255, 255, 255, 255 } });
    picture.colours.push_back({ { 255, 255, 255, 255 } });
    const LwFolder folder(picture);
    ASSERT_EQ(RunWords("stream @a.lw -o @runs --indexes", folder).status, 0);
    EXPECT_EQ(ReadFile(folder / "runs").substr(2, 2), "\3\1");
}

// ---- the side file

std::string IndexOf(const TemporaryFolder& folder)
{
    const Outcome outcome = RunWords("info --json @a.lw", folder);
    return ParsedJson(outcome.out).at(0).at("index").get<std::string>();
}

TEST(Index, KeepsTheSizeOfTheStreamInAHundredBytes)
{
    const LwPicture picture = RandomLw(300, 50);
    const LwFolder folder(picture);
    EXPECT_EQ(IndexOf(folder), "none");
    ASSERT_EQ(RunWords("index @a.lw", folder).err, "");
    std::string expected = std::to_string(picture.Bytes().size() - picture.Start() + 2);
    expected.resize(100, '\0');
    EXPECT_EQ(ReadFile(folder / "a.bin"), expected);
    EXPECT_EQ(IndexOf(folder), "ok");
    EXPECT_EQ(folder.Entries(), 2U);
    EXPECT_THAT(RunWords("info @a.lw", folder).out, HasSubstr("  Index         ok\n"));

    WriteFile(folder / "a.lw", ReadFile(folder / "a.lw") + "more");
    EXPECT_EQ(IndexOf(folder), "stale");
    const Outcome again = RunWords("index @a.lw", folder);
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.err, HasSubstr("don't fill the file to its end"));
    WriteFile(folder / "a.bin", "");
    EXPECT_EQ(IndexOf(folder), "stale");
    WriteFile(folder / "a.bin", std::string(300, '\1'));
    EXPECT_EQ(IndexOf(folder), "none") << "another picture's";
}

constexpr RefusalCase kRefusals[] = {
    { "index @long.lw", 1, "(code 90025)" },
    { "index @half.lw", 1, "(code 90001)" },
    { "index @last.lw", 1, "the rows are not sound (code 90001)" },
    { "index @a.ct", 1, "a CT picture has no side file" },
    { "index @jpeg.lw", 1, "jpeg.bin: is no side file of line work" },
    { "index @noending", 1, "no ending" },
    { "index @picture.bin", 2, "is the input" },
    { "index @missing.lw @long.lw", 1, "missing.lw: " },
    { "index", 2, "FILE" },
    { "stream @a.lw -o @b --indexes --separation 0", 2, "--separation" },
    { "stream @a.lw -o @b --separation 0 --lut @c", 2, "--lut" },
    { "stream @a.lw -o @b --indexes", 2, "--white: no colour of" },
    { "stream @a.lw -o @b --indexes --white 0", 2, "1 to 20" },
    { "stream @a.lw -o @b --indexes --white 21", 2, "1 to 20" },
    { "stream @a.lw -o @b --indexes --white 1 --max-memory 10", 1, "--max-memory" },
    { "stream @a.lw -o @b --indexes --white 1 --max-memory lots", 2, "--max-memory" },
    { "stream @a.lw -o @b --indexes --white 1 --lut @b", 2, "a file of its own" },
    { "stream @last.lw -o @b --indexes --white 1 --lut @c", 1, "the rows can't be read" },
};

TEST(Index, WrongUsageAndBadRowsAreToldAndLeaveNothing)
{
    const LwPicture good = RandomLw(10, 20);
    LwPicture tooLong = good;
    tooLong.rows[9].back().length += 3;
    const LwFolder folder(good);
    const std::string file(AsText(good.Bytes()));
    for (const char* name : { "jpeg.lw", "noending", "picture.bin" })
        WriteFile(folder / name, file);
    WriteFile(folder / "long.lw", std::string(AsText(tooLong.Bytes())));
    WriteFile(folder / "half.lw", file.substr(0, file.size() - 200));
    WriteFile(folder / "last.lw", file.substr(0, file.size() - 5));
    WriteFile(folder / "jpeg.bin", std::string(264, '\1'));
    WriteFile(folder / "a.ct", RandomCt(10, 20).File());
    ExpectRefused(kRefusals, folder);
    EXPECT_EQ(ReadFile(folder / "picture.bin"), file);
}

} // namespace
