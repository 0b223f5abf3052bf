// What all subcommands have in common: exit statuses, messages, and outputs that are whole or none.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/endless_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

struct StatusCase {
    const char* name;
    const char* arguments; // IN is a good picture, OUT a folder, PNG and RAW outputs in it
    int status;
    const char* told; // on standard error
};

const StatusCase kStatusCases[] = {
    { "no subcommand", "", 2, "--help" },
    { "unknown subcommand", "show IN", 2, "show" },
    { "unknown option", "info IN --all", 2, "--all" },
    { "no file", "info", 2, "FILE" },
    { "good file", "info IN", 0, "" },
    { "no such file", "info OUT/none", 1, "No such file" },
    { "a device is no picture", "info /dev/zero", 1, "not a plain file" },
    { "format that no build has", "info IN --as gif", 2, "gif" },
    { "rows of a page", "rows IN RAW --as page --separation cyan", 1, "gives no rows" },
    { "no output", "preview IN", 2, "--output" },
    { "preview of another kind", "preview IN -o OUT/a.gif", 2, ".png" },
    { "ending in capitals", "preview IN -o OUT/a.PNG", 0, "" },
    { "grey without a separation", "preview IN PNG --gray", 2, "--separation" },
    { "separation of no name", "preview IN PNG --separation red", 2, "red" },
    { "separation number 4", "rows IN RAW --separation 4", 2, "0 to 3" },
    { "no separation", "rows IN RAW", 2, "--separation" },
    { "rows of another kind", "rows IN -o OUT/a.bmp --separation 0", 2, ".pgm, .png, .tif" },
    { "rows beyond the height", "preview IN PNG --rows 3:21", 2, "20 rows" },
    { "no rows", "preview IN PNG --rows 3:3", 2, "3:3" },
    { "rows without a colon", "preview IN PNG --rows 3", 2, "0:20" },
    { "rows that are no numbers", "preview IN PNG --rows 1:2x", 2, "1:2x" },
    { "rows beyond 32 bits", "preview IN PNG --rows 0:4294967297", 2, "20 rows" },
    { "fit of nothing", "preview IN PNG --fit 0", 2, "fit" },
    { "enlargement beyond all sense", "rows IN RAW --separation 0 --resolution 1e300", 2,
      "--resolution" },
    { "resolution that is no number", "rows IN RAW --separation 0 --resolution nan", 2,
      "--resolution" },
    { "folder that isn't there", "preview IN -o OUT/none/a.png", 1, "folder must exist" },
    { "output over the input", "rows IN -o OUT/./a.ct --separation 0", 2, ".raw" },
    { "help", "--help", 0, "" },
    { "help of a subcommand", "preview --help", 0, "" },
};

std::vector<std::string> Arguments(const char* words, const TemporaryFolder& folder)
{
    std::vector<std::string> arguments;
    std::istringstream in(words);
    for (std::string word; in >> word;) {
        if (word == "PNG" || word == "RAW")
            arguments.insert(arguments.end(),
                             { "-o", folder / (word == "PNG" ? "a.png" : "a.raw") });
        else if (word == "IN")
            arguments.push_back(folder / "a.ct");
        else
            arguments.push_back(word.rfind("OUT/", 0) == 0 ? folder / word.substr(4) : word);
    }
    return arguments;
}

TEST(Frame, StatusIsTheRightOne)
{
    for (const StatusCase& one : kStatusCases) {
        SCOPED_TRACE(one.name);
        const CtFolder folder(RandomCt(10, 20));
        const Outcome outcome = RunCommand(Arguments(one.arguments, folder));
        EXPECT_EQ(outcome.status, one.status) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.told));
        if (outcome.status != 0) {
            EXPECT_EQ(folder.Entries(), 1U) << "something was left behind";
            EXPECT_THAT(outcome.err, testing::StartsWith("tympan: "));
        }
    }
}

TEST(Frame, HelpShowsExamplesAndVersion)
{
    EXPECT_THAT(RunCommand({ "--help" }).out, HasSubstr("tympan import photo.jpg -o photo.ct"));
    for (const char* const subcommand :
         { "info", "preview", "rows", "import", "export", "crop", "stream" })
        EXPECT_THAT(RunCommand({ subcommand, "--help" }).out,
                    HasSubstr("tympan " + std::string(subcommand) + " "));
    EXPECT_THAT(RunCommand({ "--version" }).out, testing::MatchesRegex("tympan [0-9.]+\n"));
}

TEST(Frame, MessagesShowNamesSafely)
{
    const Outcome outcome = RunCommand({ "info", "none\xFF\x1B[31m\xC3\xA4%" });
    EXPECT_EQ(outcome.err, "tympan: none%FF%1B[31m\xC3\xA4%25: No such file or directory\n");
}

TEST(Frame, OutputIsNeverTheInput)
{
    const TemporaryFolder folder;
    const std::string picture = RandomCt(10, 20).File();
    WriteFile(folder / "a.png", picture); // a CT file may have any name
    std::filesystem::create_hard_link(folder / "a.png", folder / "hard.png");
    std::filesystem::create_symlink("a.png", folder / "soft.png");
    for (const char* const output : { "a.png", "hard.png", "soft.png" }) {
        const Outcome outcome = RunCommand({ "preview", folder / "a.png", "-o", folder / output });
        EXPECT_EQ(outcome.status, 2) << output;
        EXPECT_THAT(outcome.err, HasSubstr("is the input"));
        EXPECT_EQ(ReadFile(folder / "a.png"), picture);
    }
}

TEST(Frame, OutputReplacesAFileBehindALinkAndNothingElse)
{
    const CtFolder folder(RandomCt(10, 20));
    WriteFile(folder / "old.png", "old");
    std::filesystem::create_symlink("old.png", folder / "link.png");
    ASSERT_EQ(RunCommand({ "preview", folder / "a.ct", "-o", folder / "link.png" }).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_THAT(ReadFile(folder / "old.png"), HasSubstr("PNG"));

    std::filesystem::create_directory(folder / "folder.png");
    std::filesystem::create_symlink("/dev/full", folder / "device.png");
    std::filesystem::create_symlink("none.png", folder / "dangling.png");
    for (const char* const output : { "folder.png", "device.png", "dangling.png" })
        EXPECT_EQ(RunCommand({ "preview", folder / "a.ct", "-o", folder / output }).status, 1)
            << output;
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "device.png"));
    EXPECT_EQ(folder.Entries(), 6U);
}

TEST(Frame, LongNamesCanBeWritten)
{
    const CtFolder folder(RandomCt(10, 20));
    const std::string output = folder / (std::string(251, 'n') + ".png");
    EXPECT_EQ(RunCommand({ "preview", folder / "a.ct", "-o", output }).status, 0);
    EXPECT_TRUE(std::filesystem::exists(output));
}

TEST(Frame, FailedWriteLeavesTheOldOutput)
{
    const CtFolder folder(RandomCt(300, 300));
    for (const char* const ending : { ".png", ".tif", ".pgm", ".raw" }) {
        const std::string output = folder / (std::string("old") + ending);
        WriteFile(output, "old");
        const Outcome outcome = RunCommand(
            { "rows", folder / "a.ct", "--separation", "cyan", "-o", output }, { 0, 4096 });
        EXPECT_EQ(outcome.status, 1) << ending;
        EXPECT_THAT(outcome.err, HasSubstr(output + ": ")) << ending;
        EXPECT_EQ(ReadFile(output), "old") << ending;
    }
    EXPECT_EQ(folder.Entries(), 5U);
}

TEST(Frame, FullStandardOutputIsAFailure)
{
    const CtFolder folder(RandomCt(10, 20));
    const Outcome outcome =
        RunProgram("sh", { "-c", R"("$0" info "$1" > /dev/full)", CommandPath(), folder / "a.ct" });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("No space left"));
}

TEST(Frame, EndingSignalsLeaveNothingBehind)
{
    const TemporaryFolder folder;
    WriteEndlessCt(folder / "a.ct");
    for (const int signal : { SIGINT, SIGTERM, SIGHUP }) {
        RunningCommand running({ "preview", folder / "a.ct", "-o", folder / "a.png" });
        ASSERT_TRUE(WaitForEntries(folder, 2)) << "no output was begun";
        running.Signal(signal);
        EXPECT_EQ(running.Wait().status, -signal);
        EXPECT_EQ(folder.Entries(), 1U);
    }
}

TEST(Frame, EndingSignalsLeaveNeitherOfTwoOutputs)
{
    const LwFolder folder(RandomLw(2000, 500));
    RunningCommand running({ "stream", folder / "a.lw", "-o", folder / "runs", "--separation", "0",
                             "--offsets", folder / "offsets", "--copies", "1000" });
    ASSERT_TRUE(WaitForEntries(folder, 3)) << "no output was begun";
    running.Signal(SIGTERM);
    EXPECT_EQ(running.Wait().status, -SIGTERM);
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST(Frame, KilledRunLeavesNoOutputOfThatName)
{
    const TemporaryFolder folder;
    WriteEndlessCt(folder / "a.ct");
    WriteFile(folder / "a.png", "old");
    RunningCommand running({ "preview", folder / "a.ct", "-o", folder / "a.png" });
    ASSERT_TRUE(WaitForEntries(folder, 3)) << "no output was begun";
    running.Signal(SIGKILL);
    EXPECT_EQ(running.Wait().status, -SIGKILL);
    EXPECT_EQ(ReadFile(folder / "a.png"), "old");
}

TEST(Frame, AFileThatFailsStopsNoOther)
{
    const CtFolder folder(RandomCt(4, 4));
    for (const auto& [subcommand, key] :
         { std::pair("info", "width"), std::pair("check", "verdict"), std::pair("ink", "total_ink"),
           std::pair("hash", "sha256") }) {
        SCOPED_TRACE(subcommand);
        const Outcome outcome =
            RunWords(subcommand + std::string(" --json @none.ct @a.ct @none.lw @a.ct"), folder);
        EXPECT_EQ(outcome.status, 1);
        const ordered_json told = ParsedJson(outcome.out);
        ASSERT_EQ(told.size(), 4U);
        EXPECT_EQ(told[3], told[1]);
        for (const std::size_t file : { 0U, 2U })
            EXPECT_TRUE(told[file].contains("error") || told[file].at(key) == "undetermined")
                << told;
        EXPECT_TRUE(told[1].contains(key) && !told[1].contains("error")) << told;
    }
}

} // namespace
