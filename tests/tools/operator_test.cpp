// What the command is like to work with: slips of the keyboard, --quiet, outputs in a pipe, Ctrl-C.
#include "support/temporary_folder.h"
#include "tools/ct_pictures.h"
#include "tools/endless_pictures.h"
#include "tools/help_reader.h"
#include "tools/lw_pictures.h"
#include "tools/refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

TEST(Usage, SlipsAreAnsweredByWhatWasMeant)
{
    const CtFolder folder(RandomCt(10, 20));
    const RefusalCase kSlips[] = {
        { "prewiew @a.ct -o @a.png", 2, "no subcommand prewiew; did you mean preview?" },
        { "ifno @a.ct", 2, "did you mean info?" },
        { "prev @a.ct", 2, "did you mean preview?" },
        { "brew @a.ct", 2, "no subcommand brew; there are info, check, preview" },
        { "info @a.ct --jsno", 2, "no option --jsno; did you mean --json?" },
        { "preview @a.ct --otput @a.png", 2, "did you mean --output?" },
        { "rows @a.ct --separatoin=cyan", 2, "no option --separatoin; did you mean --separation?" },
        { "info @a.ct --sideways", 2, "no option --sideways\n" },
        { "--verison", 2, "did you mean --version?" },
        { "preview @a.ct", 2, "`tympan preview --help`" },
        { "rows @a.ct -o", 2, "FILE missing" },
    };
    ExpectRefused(kSlips, folder);
}

TEST(Quiet, IsKnownToEachSubcommand)
{
    for (const std::string& subcommand : HelpedSubcommands())
        EXPECT_EQ(HelpedOptions(subcommand).count("--quiet"), 1U) << subcommand;
}

TEST(Quiet, TellsFailuresOnly)
{
    const LwFolder folder(RandomLw(600, 600));
    const std::string crop = "crop @a.lw @b.lw --right 1";
    EXPECT_THAT(RunWords(crop, folder).err, HasSubstr("resolution"));
    EXPECT_THAT(RunWords(crop, folder).out, HasSubstr("columns 1 to 1"));
    const Outcome quiet = RunWords(crop + " --quiet", folder);
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err + quiet.out, "");
    const Outcome failed = RunWords("crop @none.lw @b.lw -q", folder);
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.err, HasSubstr("No such file"));
}

// Runs the command in a shell, its words with "%" for the command itself, in a folder for temporary
// files that must be as empty afterwards as before.
Outcome RunInPipe(const std::string& words, const TemporaryFolder& folder)
{
    std::string script = "cd \"$1\"; ";
    for (const char letter : words)
        script += letter == '%' ? "\"$0\"" : std::string(1, letter);
    const TemporaryFolder waiting;
    Outcome outcome = RunProgram("env", { "--default-signal=PIPE", "TMPDIR=" + waiting / "", "sh",
                                          "-c", script, CommandPath(), folder / "" });
    EXPECT_EQ(waiting.Entries(), 0U) << words;
    return outcome;
}

TEST(StandardOutput, GetsWhatAFileGets)
{
    const CtFolder pictures(RandomCt(30, 20));
    WriteFile(pictures / "a.lw", ReadFile(LwFolder(RandomLw(30, 20)) / "a.lw"));
    for (const std::string words :
         { "preview a.ct", "export a.ct", "stream a.lw --separation cyan --offsets offsets",
           "rows a.ct --separation cyan --format png", "rows a.ct --separation cyan --format tif",
           "rows a.ct --separation cyan --format raw" }) {
        const std::string ending = words.find("export") == 0 ? "out.tif" : "out.png";
        EXPECT_EQ(
            RunInPipe(std::string("% ").append(words).append(" -o ").append(ending), pictures).err,
            "")
            << words;
        const Outcome piped = RunInPipe("% " + words + " -o -", pictures);
        EXPECT_EQ(piped.status, 0) << words;
        EXPECT_EQ(piped.err, "") << words;
        EXPECT_TRUE(piped.out == ReadFile(pictures / ending)) << words;
    }
}

TEST(StandardOutput, IsRefusedWhereItDoesNotServe)
{
    const LwFolder folder(RandomLw(30, 20));
    const RefusalCase kRefused[] = {
        { "rows @a.lw --separation cyan -o -", 2, "--format" },
        { "crop @a.lw - --left 2", 2, "the name of a file" },
        { "stream @a.lw --separation cyan -o @runs --offsets -", 2, "the name of a file" },
        { "stream @a.lw --separation cyan -o - --offsets -", 2, "file of its own" },
        { "preview - -o @a.png", 1, "No such file" },
    };
    ExpectRefused(kRefused, folder);
    EXPECT_THAT(RunOnTerminal({ "preview", folder / "a.lw", "-o", "-" }),
                HasSubstr("standard output is a terminal"));
}

TEST(StandardOutput, GetsNothingOfAnOutputThatFails)
{
    const LwFolder folder(RandomLw(300, 200), 50); // the last row is cut
    const Outcome outcome = RunInPipe("% preview a.lw -o -", folder);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(RunInPipe("% rows a.lw --separation 0 -o - --format raw", folder).out, "");
}

TEST(StandardOutput, ThatIsFullOrClosedIsAFailure)
{
    const CtFolder folder(RandomCt(600, 600)); // more than a pipe holds
    const std::string words = "% rows a.ct --separation 0 --format raw -o -";
    const Outcome full = RunInPipe(words + " > /dev/full", folder);
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.err, HasSubstr("standard output: No space left"));
    EXPECT_EQ(RunInPipe("{ " + words + "; echo $? >&2; } | head -c 1 > /dev/null", folder).err,
              std::to_string(128 + SIGPIPE) + "\n");
}

TEST(Terminal, CtrlCLeavesNothingBehind)
{
    const TemporaryFolder folder;
    WriteEndlessCt(folder / "a.ct");
    const std::string program = CommandPath(), picture = folder / "a.ct", output = folder / "a.png";
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(process, 0);
    if (process == 0) {
        execl(program.c_str(), "tympan", "preview", picture.c_str(), "-o", output.c_str(), nullptr);
        _exit(127);
    }
    EXPECT_TRUE(WaitForEntries(folder, 2)) << "no output was begun";
    EXPECT_EQ(write(terminal, "\003", 1), 1);
    std::array<char, 4096> sent{};
    while (read(terminal, sent.data(), sent.size()) > 0) {
    }
    int status = 0;
    waitpid(process, &status, 0);
    close(terminal);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_EQ(folder.Entries(), 1U);
}

} // namespace
} // namespace tympan::test
