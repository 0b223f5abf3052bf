// `tympan report`: the data and the images of its page. The page itself is tested in a browser, by
// scripts/report-test.
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace tympan::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

// Grey values that a JPEG keeps: they change slowly, and in each plate otherwise.
CtPicture SmoothCt(std::uint32_t width, std::uint32_t height)
{
    CtPicture picture = RandomCt(width, height);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        const std::size_t column = i % width;
        const std::size_t plate = i / width % 4;
        picture.bytes[i] = static_cast<std::uint8_t>(40 * plate + 100 * column / width);
    }
    return picture;
}

// The folder jobs: a picture of each kind that matters here, and what isn't one.
struct JobsFolder : TemporaryFolder {
    JobsFolder()
    {
        fs::create_directories(*this / "jobs/inner");
        WriteFile(*this / "jobs/a.ct", picture.File());
        WriteFile(*this / "jobs/cut.ct", picture.File().substr(0, 200'000));
        fs::copy_file(LwFolder(RandomLw(300, 40)) / "a.lw", *this / "jobs/inner/b.lw");
        for (const char* const name : { "notes.txt", ".hidden.ct", "inner/b.pdf" })
            WriteFile(*this / ("jobs/" + std::string(name)), "Nothing to see.");
        WriteFile(*this / "jobs/bad.tif", "Nothing to see.");
    }
    CtPicture picture = SmoothCt(640, 480);
};

ordered_json DataOf(const std::string& report)
{
    const std::string text = ReadFile(report + "/assets/data.js");
    const std::string start = "const reportData = ";
    EXPECT_EQ(text.substr(0, start.size()), start);
    EXPECT_EQ(text.substr(text.size() - 2), ";\n");
    return ParsedJson(text.substr(start.size(), text.size() - start.size() - 2));
}

ordered_json ReportOn(const TemporaryFolder& folder, const std::string& words)
{
    const Outcome outcome = RunWords("report " + words, folder);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return DataOf(folder / "out");
}

std::vector<std::string> FilesOf(const ordered_json& data)
{
    std::vector<std::string> files;
    for (const ordered_json& entry : data.at("pictures"))
        files.push_back(entry.at("file"));
    return files;
}

TEST(Report, TellsOfEachPictureAndLeavesOutWhatIsNone)
{
    const JobsFolder folder;
    const ordered_json data = ReportOn(folder, "@jobs -o @out --title Jobs");
    EXPECT_EQ(data.at("title"), "Jobs");
    EXPECT_THAT(FilesOf(data), ElementsAre("a.ct", "bad.tif", "cut.ct", "inner/b.lw"));
    EXPECT_EQ(data.at("left_out"), 2);
    const ordered_json &whole = data["pictures"][0], &bad = data["pictures"][1],
                       &cut = data["pictures"][2];
    EXPECT_EQ(whole.at("verdict"), "valid");
    EXPECT_EQ(whole.at("width"), 640);
    EXPECT_FALSE(whole.contains("problem"));
    EXPECT_EQ(bad.at("verdict"), "undetermined");
    EXPECT_TRUE(bad.at("shown").is_null());
    EXPECT_NE(bad.at("problem").at("advice"), "");
    EXPECT_EQ(cut.at("verdict"), "invalid");
    EXPECT_EQ(cut.at("findings").at(0).at("severity"), "error");
    EXPECT_THAT(cut.at("problem").at("error").get<std::string>(),
                HasSubstr("first that is missing"));
    EXPECT_FALSE(cut.at("shown").is_null()) << "what is there is shown";
    EXPECT_EQ(data["pictures"][3].at("format"), "LW");
}

TEST(Report, DrawsThePictureAndItsSeparations)
{
    const JobsFolder folder;
    const ordered_json entry = ReportOn(folder, "@jobs/a.ct -o @out").at("pictures").at(0);
    const Samples thumb =
        ReadJpeg(folder / "out/" + entry.at("thumb").at("file").get<std::string>());
    EXPECT_EQ(thumb.width, 320U);
    EXPECT_EQ(thumb.height, 240U);
    ASSERT_EQ(entry.at("plates").size(), 4U);
    for (std::uint32_t plate = 0; plate < 4; ++plate) {
        const ordered_json& told = entry["plates"][plate];
        SCOPED_TRACE(told.dump());
        Samples drawn =
            ReadJpeg(folder / "out/" + told.at("picture").at("file").get<std::string>());
        ASSERT_EQ(drawn.perPixel, 1U);
        for (const std::uint32_t column : { 3U, 320U, 630U })
            EXPECT_NEAR(drawn.At(column, 100, 0), folder.picture.At(column, 100, plate), 3);
    }
    EXPECT_EQ(entry["plates"][3].at("tint"), "black");
}

TEST(Report, MeasuresInk)
{
    const JobsFolder folder;
    const ordered_json ink =
        ReportOn(folder, "@jobs/a.ct -o @out --limit 200").at("pictures").at(0).at("ink");
    const auto& bytes = folder.picture.bytes;
    const double paper = std::accumulate(bytes.begin(), bytes.end(), 0.0) /
                         (255.0 * static_cast<double>(bytes.size()));
    double coverage = 0.0;
    for (const ordered_json& separation : ink.at("separations"))
        coverage += separation.at("coverage").get<double>();
    EXPECT_NEAR(coverage / 4, 100.0 * (1.0 - paper), 1e-9);
    EXPECT_EQ(ink.at("total").at("limit"), 200);
    EXPECT_NEAR(ink.at("total").at("greatest"), 100.0 * (4 * 255 - 240) / 255, 1e-9);
    EXPECT_EQ(ink.at("total").at("pixels_over"), 436 * 480)
        << "780 - 4 * (100 * column / 640) is more than 510 up to column 435";
}

TEST(Report, TellsWhereAPageHasItsPictures)
{
    const JobsFolder folder;
    ASSERT_EQ(RunWords("page @jobs/p.pg --size 8x4 --resolution 50 --place @jobs/a.ct@1,1,3,2,90 "
                       "--place @jobs/inner/b.lw@5,1",
                       folder)
                  .status,
              0);
    const ordered_json data = ReportOn(folder, "@jobs -o @out");
    const ordered_json& page = data.at("pictures").back();
    ASSERT_EQ(page.at("file"), "p.pg");
    EXPECT_FALSE(page.at("shown").is_null());
    const ordered_json& entries = page.at("entries");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].at("entry"), data["pictures"][0].at("id"));
    // A quarter counterclockwise: the picture's upper left corner is the lower left one.
    const std::vector<std::vector<double>> corners = entries[0].at("outline");
    ASSERT_EQ(corners.size(), 4U);
    EXPECT_THAT(corners[0],
                ElementsAre(testing::DoubleNear(1, 1e-9), testing::DoubleNear(4, 1e-9)));
    EXPECT_THAT(corners[2],
                ElementsAre(testing::DoubleNear(3, 1e-9), testing::DoubleNear(1, 1e-9)));
}

TEST(Report, TakesAnyNameAsText)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "jobs");
    const std::string picture = RandomCt(8, 8).File();
    for (const char* const name : { "<!--<b>.ct", "\"\\\n.ct", "\xC3\xA9.ct", "\xE9.ct" })
        WriteFile(folder / ("jobs/" + std::string(name)), picture);
    const ordered_json data = ReportOn(folder, "@jobs -o @out");
    EXPECT_THAT(FilesOf(data), testing::UnorderedElementsAre("<!--<b>.ct", "\"\\\n.ct",
                                                             "\xC3\xA9.ct", "\xEF\xBF\xBD.ct"));
    EXPECT_EQ(data["pictures"].back().at("file_raw"), "%E9.ct");
    const std::string text = ReadFile(folder / "out/assets/data.js");
    EXPECT_THAT(text, testing::Each(testing::Lt('\x7F'))) << "it must not depend on an encoding";
}

// ---- where it goes

constexpr RefusalCase kRefusals[] = {
    { "report @jobs -o @jobs", 1, "not an earlier report" },
    { "report @jobs -o @jobs/a.ct", 1, "is not a folder" },
    { "report @jobs -o @none/out", 1, "No such file" },
    { "report @jobs -o -", 2, "a report is a folder" },
    { "report @jobs -o @out --limit 801", 2, "--limit" },
    { "report -o @out", 2, "DIR is required" },
};

TEST(Report, RefusesWhatItCannotWriteTo)
{
    const JobsFolder folder;
    ExpectRefused(kRefusals, folder);
}

TEST(Report, TakesThePlaceOfAnEarlierOneAndOfNothingElse)
{
    const JobsFolder folder;
    fs::create_directory(folder / "out");
    ReportOn(folder, "@jobs -o @out");
    fs::remove_all(folder / "jobs/inner");
    const ordered_json again = ReportOn(folder, "@jobs @out -o @out/");
    EXPECT_EQ(again.at("pictures").size(), 3U) << "a report is no part of another";
    WriteFile(folder / "out/mine.txt", "mine");
    const Outcome outcome = RunWords("report @jobs -o @out", folder);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("holds \"mine.txt\""));
    EXPECT_EQ(folder.Entries(), 2U) << "something was left behind";
}

TEST(Report, LeavesNothingWhenItCannotBeWritten)
{
    const JobsFolder folder;
    const Outcome outcome =
        RunCommand({ "report", folder / "jobs", "-o", folder / "out" }, { 0, 9000 });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("out: File too large"));
    EXPECT_EQ(folder.Entries(), 1U);
}

std::vector<std::string> ImagesIn(const fs::path& folder)
{
    std::vector<std::string> images;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".jpg")
            images.push_back(entry.path());
    return images;
}

TEST(Report, LeavesTheEarlierOneWhenItIsInterrupted)
{
    const JobsFolder folder;
    ReportOn(folder, "@jobs -o @out");
    const std::vector<std::string> before = ImagesIn(folder.Path());
    const std::string pipe = folder / "jobs/pipe"; // who opens it waits for ever
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    RunningCommand running({ "report", folder / "jobs/a.ct", pipe, "-o", folder / "out" });
    for (int tries = 0; tries < 1000 && ImagesIn(folder.Path()).size() < before.size() + 6; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(ImagesIn(folder.Path()).size(), before.size() + 6);
    running.Signal(SIGTERM);
    EXPECT_EQ(running.Wait().status, -SIGTERM);
    EXPECT_EQ(folder.Entries(), 2U) << "something was left behind";
    EXPECT_EQ(ImagesIn(folder.Path()), before);
}

} // namespace
} // namespace tympan::test
