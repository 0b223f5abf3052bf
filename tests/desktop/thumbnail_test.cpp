// `tympan thumbnail`, against previews of the same size, and as file managers call it.
#include "support/page_samples.h"
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/endless_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <span>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

// A picture of a folder as a subcommand shows it.
PngPicture ShownBy(const std::string& words, int status, const TemporaryFolder& folder)
{
    const Outcome outcome = RunWords(words, folder);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    return ReadPng(folder / "shown.png");
}

void ExpectAsPreviewed(const std::string& file, const std::string& size, int previewStatus,
                       const TemporaryFolder& folder)
{
    const PngPicture preview =
        ShownBy("preview @" + file + " -o @shown.png --fit " + size, previewStatus, folder);
    const PngPicture thumbnail =
        ShownBy("thumbnail @" + file + " @shown.png --size " + size, 0, folder);
    EXPECT_EQ(thumbnail.width, preview.width);
    EXPECT_EQ(thumbnail.height, preview.height);
    EXPECT_EQ(thumbnail.samples, preview.samples);
}

// None has more than four rows for each pixel of its thumbnail: all are read.
TEST(Thumbnail, IsThePreviewOfItsSize)
{
    const struct {
        std::uint32_t width, height;
        const char* size;
    } cases[] = {
        { 100, 30, "25" }, { 30, 100, "26" }, { 20, 10, "256" }, { 300, 3, "10" }, { 1, 1, "1" },
    };
    for (const auto& [width, height, size] : cases) {
        SCOPED_TRACE(std::to_string(width) + " into " + size);
        ExpectAsPreviewed("a.ct", size, 0, CtFolder(RandomCt(width, height)));
        ExpectAsPreviewed("a.lw", size, 0, LwFolder(RandomLw(width, height)));
    }
}

TEST(Thumbnail, OfManyRowsShowsThoseOfItsPlace)
{
    constexpr std::uint32_t kHeight = 4000;
    CtPicture picture = RandomCt(3, kHeight, 1);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i)
        picture.bytes[i] = static_cast<std::uint8_t>(i / 3 * 255 / (kHeight - 1));
    const CtFolder folder(picture);
    const PngPicture all = ShownBy("preview @a.ct -o @shown.png --fit 20", 0, folder);
    const PngPicture some = ShownBy("thumbnail @a.ct @shown.png --size 20", 0, folder);
    ASSERT_EQ(some.samples.size(), all.samples.size());
    for (std::size_t i = 0; i < all.samples.size(); ++i)
        EXPECT_NEAR(some.samples[i], all.samples[i], 1) << i;
}

TEST(Thumbnail, OfAHugePictureLooksAtSomeRowsOrIsRefused)
{
    const TemporaryFolder folder;
    WriteEndlessCt(folder / "huge.ct");
    const RefusalCase large[] = { { "thumbnail @huge.ct @a.png --size 4096", 1, "too large" } };
    ExpectRefused(large, folder);
    const PngPicture small = ShownBy("thumbnail @huge.ct @shown.png", 0, folder);
    EXPECT_EQ(small.width, 256U);
    EXPECT_EQ(small.height, 256U);
}

TEST(Thumbnail, OfAFileThatIsNoGoodIsNotWritten)
{
    const TemporaryFolder folder;
    const std::string picture = RandomCt(8, 6).File();
    WriteFile(folder / "cut.ct", picture.substr(0, picture.size() - 1));
    WriteFile(folder / "empty.ct", RandomCt(0, 0).File());
    LwPicture lineWork = RandomLw(8, 6);
    lineWork.rows[2].pop_back();
    folder.File("bad.lw", lineWork.Bytes());
    WriteFile(folder / "text", "no picture");
    const std::vector<unsigned char> page = PageSample{}.Bytes();
    folder.File("cut.pg", std::span(page).first(1030));
    const RefusalCase cases[] = {
        { "thumbnail @cut.ct @a.png", 1, "row 5" },
        { "thumbnail @empty.ct @a.png", 1, "no pixels" },
        { "thumbnail @bad.lw @a.png", 1, "bad.lw" },
        { "thumbnail @text @a.png", 1, "text" },
        { "thumbnail @cut.pg @a.png", 1, "cut.pg" },
        { "thumbnail @none.ct @a.png", 1, "none.ct" },
        { "thumbnail @cut.ct @a.png --size 0", 2, "--size" },
        { "thumbnail @cut.ct @a.png --size 4097", 2, "--size" },
    };
    ExpectRefused(cases, folder);
}

// A preview tells of the box in a picture's place by its status; to a file manager it is no failure.
TEST(Thumbnail, OfAPageShowsItsPicturesOrBoxes)
{
    const CtFolder folder(RandomCt(50, 50));
    folder.File("page.pg", PageSample{ .entries = { { .path = "a.ct" } } }.Bytes());
    folder.File("alone.pg", PageSample{ .entries = { { .path = "gone.ct" } } }.Bytes());
    ExpectAsPreviewed("page.pg", "128", 0, folder);
    ExpectAsPreviewed("alone.pg", "128", 1, folder);
}

// The line of the thumbnailer file with its places filled.
std::string ExecLine(const std::string& input, const std::string& output, const std::string& size)
{
    std::smatch line;
    const std::string entry = ReadFile(TYMPAN_DESKTOP "/tympan.thumbnailer");
    EXPECT_TRUE(std::regex_search(entry, line, std::regex("\nExec=(.*)\n"))) << entry;
    const auto fill = [](const std::string& text, const char* place, const std::string& value) {
        return std::regex_replace(text, std::regex(place), value);
    };
    return fill(fill(fill(line[1], "%i", input), "%o", output), "%s", size);
}

// File managers make the output before, under a name of their own.
TEST(Thumbnail, IsMadeByTheThumbnailersLine)
{
    const CtFolder folder(RandomCt(300, 200));
    WriteFile(folder / "output", "");
    const std::string path =
        "PATH=" + std::filesystem::path(CommandPath()).parent_path().string() + ":/usr/bin:/bin";
    const Outcome outcome = RunProgram(
        "env", { path, "sh", "-c", ExecLine(folder / "a.ct", folder / "output", "128") });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    const PngPicture png = ReadPng(folder / "output");
    EXPECT_EQ(png.width, 128U);
    EXPECT_EQ(png.height, 85U);
}

} // namespace
} // namespace tympan::test
