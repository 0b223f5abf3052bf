// `tympan sample`: the job that it makes is sound, and its files show what they were made of.
#include "tools/command_runner.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

constexpr std::uint32_t kHeight = 40;

struct DrawingCase {
    const char* name;
    std::uint32_t width;
    int png;                            // colour type
    std::vector<std::uint32_t> palette; // of an indexed one
    std::uint16_t paper, line, area;    // numbers of the samples
    const char* verdict;                // on the page
    unsigned int window;                // the index of the colour that shows the photograph
};
constexpr int kPalettePng = PNG_COLOR_TYPE_PALETTE, kGreyPng = PNG_COLOR_TYPE_GRAY;
const DrawingCase kDrawings[] = {
    { "colours: through the broadest area, not the paper",
      60,
      kPalettePng,
      { 0xFFFFFF, 0x000000, 0xE0B080 },
      0,
      1,
      2,
      "valid",
      3 },
    { "black on paper: through the paper", 60, kGreyPng, {}, 255, 0, 255, "valid", 255 },
    { "rows that pass 16 bits, of a height that no header holds",
      70001,
      kPalettePng,
      { 0x102030, 0xFFFFFF, 0x00FF00 },
      1,
      2,
      0,
      "valid with remarks",
      3 },
};

// A frame of paper around a field, with a line at every other column of its upper half.
Samples Drawn(const DrawingCase& drawing)
{
    Samples samples{ drawing.width, kHeight, 1, {} };
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < drawing.width; ++x) {
            const bool isField = y >= 8 && y < kHeight - 8 && x >= 8 && x < 42;
            const bool isLine = y < 30 && x % 2 == 0;
            samples.numbers.push_back(!isField ? drawing.paper
                                      : isLine ? drawing.line
                                               : drawing.area);
        }
    return samples;
}

Samples Photograph()
{
    Samples samples{ 90, 60, 3, {} };
    for (std::uint32_t y = 0; y < samples.height; ++y)
        for (std::uint32_t x = 0; x < samples.width; ++x)
            for (const std::uint32_t colour : { 2 * x, 4 * y, x + y })
                samples.numbers.push_back(static_cast<std::uint16_t>(colour));
    return samples;
}

// A job, in a folder that has another name than when it was made.
struct Job : TemporaryFolder {
    explicit Job(const DrawingCase& drawing)
    {
        WriteJpeg(*this / "photo.jpg", Photograph(), {});
        WritePng(*this / "drawing.png", Drawn(drawing),
                 { .as = drawing.png, .palette = drawing.palette });
        made = RunWords("sample @made --photo @photo.jpg --line-work @drawing.png", *this);
        std::filesystem::rename(*this / "made", *this / "job");
    }

    std::string In(const char* name) const { return *this / "job/" + name; }

    Outcome made;
};

TEST(Sample, IsSoundWhereverItStands)
{
    for (const DrawingCase& drawing : kDrawings) {
        SCOPED_TRACE(drawing.name);
        const Job job(drawing);
        ASSERT_EQ(job.made.status, 0) << job.made.err;
        EXPECT_THAT(job.made.out, HasSubstr("tympan preview "));
        const Outcome checked =
            RunCommand({ "check", "--json", job.In("photograph.ct"), job.In("print.jpg"),
                         job.In("plates.tif"), job.In("drawing.lw"), job.In("page.pg") });
        for (const ordered_json& file : ParsedJson(checked.out))
            EXPECT_EQ(file.at("verdict"), file.at("format") == "Page" ? drawing.verdict : "valid")
                << file;
        const Outcome it = RunCommand(
            { "check", "--as", "tiffit", job.In("photograph-it.tif"), job.In("drawing-it.tif") });
        EXPECT_THAT(it.out, HasSubstr("photograph-it.tif: TIFF/IT, valid\n"));
        EXPECT_THAT(it.out, HasSubstr("drawing-it.tif: TIFF/IT, valid\n"));
    }
}

TEST(Sample, PagePlacesOnePictureTurnedAndOneInTheDrawing)
{
    for (const DrawingCase& drawing : kDrawings) {
        SCOPED_TRACE(drawing.name);
        const Job job(drawing);
        const Outcome outcome = RunCommand({ "info", "--json", job.In("page.pg") });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const ordered_json page = ParsedJson(outcome.out).at(0);
        const auto& entries = page.at("entries");
        ASSERT_EQ(entries.size(), 5U);
        const char* const paths[] = { "photograph.ct", "drawing.lw", "photograph.ct", "plates.tif",
                                      "print.jpg" };
        for (std::size_t i = 0; i < entries.size(); ++i)
            EXPECT_EQ(entries[i].at("path"), paths[i]);
        EXPECT_EQ(entries[2].at("container"), 1);
        EXPECT_EQ(entries[2].at("colors"), ordered_json({ drawing.window }));
        EXPECT_EQ(entries[3].at("rotation"), 0.0);
        EXPECT_NE(entries[4].at("rotation"), 0.0);
        EXPECT_GT(page.at("width_in"), page.at("height_in"));
    }
}

// What a picture looks like.
std::vector<std::uint8_t> Shown(const Job& job, const char* name, const char* format)
{
    const Outcome outcome =
        RunCommand({ "preview", "--as", format, job.In(name), "-o", job / "a.png" });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return ReadPng(job / "a.png").samples;
}

TEST(Sample, TiffItShowsWhatItWasMadeOf)
{
    for (const DrawingCase& drawing : kDrawings) {
        SCOPED_TRACE(drawing.name);
        const Job job(drawing);
        EXPECT_TRUE(Shown(job, "photograph.ct", "ct") == Shown(job, "photograph-it.tif", "tiffit"));
        EXPECT_TRUE(Shown(job, "drawing.lw", "lw") == Shown(job, "drawing-it.tif", "tiffit"));
    }
}

TEST(Sample, WhatCantBeMadeIsRefused)
{
    const Job job(kDrawings[0]);
    const RefusalCase cases[] = {
        { "sample @job --photo @job/print.jpg --line-work @drawing.png", 2, "give another DIR" },
        { "sample @photo.jpg --photo @photo.jpg --line-work @drawing.png", 1, "photo.jpg" },
        { "sample @job --photo @none.jpg --line-work @drawing.png", 1, "none.jpg" },
        { "sample @job --photo @photo.jpg --line-work @photo.jpg", 1, "more than 255 colours" },
    };
    ExpectRefused(cases, job);
}

} // namespace
} // namespace tympan::test
