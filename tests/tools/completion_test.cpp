// The completions of bash and zsh, by the shells themselves.
#include "tools/command_runner.h"
#include "tools/help_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

constexpr char kBashScript[] = TYMPAN_MANUAL "/bash/tympan";
constexpr char kZshScript[] = TYMPAN_MANUAL "/zsh/_tympan";

// What bash proposes for the last word. "=" is a word of its own, as readline parts them.
Names BashProposes(std::vector<std::string> words, const TemporaryFolder& folder)
{
    const std::string kComplete = R"(cd "$0" && source "$1" && shift && COMP_WORDS=("$@") &&
        COMP_CWORD=$(($# - 1)) && _tympan && printf '%s\n' "${COMPREPLY[@]}")";
    words.insert(words.begin(), { "--norc", "-c", kComplete, folder / "", kBashScript });
    const Outcome outcome = RunProgram("bash", words);
    EXPECT_EQ(outcome.err, "");
    Names proposed;
    for (const std::string& line : LinesOf(outcome.out))
        if (!line.empty())
            proposed.insert(line);
    return proposed;
}

struct CompletionCase {
    const char* name;
    std::vector<std::string> words;
    Names proposed;
};

const CompletionCase kCompletionCases[] = {
    { "a subcommand", { "prev" }, { "preview" } },
    { "an option of the command", { "--ver" }, { "--version" } },
    { "an option of a subcommand", { "info", "--js" }, { "--json" } },
    { "another subcommand's option", { "info", "--gra" }, {} },
    { "a format", { "rows", "--format", "t" }, { "tif", "tiff" } },
    { "a format behind =", { "info", "--as", "=", "tif" }, { "tiff", "tiffit" } },
    { "all formats behind =", { "rows", "--format", "=" }, { "pgm", "png", "tif", "tiff", "raw" } },
    { "a separation", { "rows", "--separation", "m" }, { "magenta" } },
    { "a number", { "rows", "--resolution", "3" }, {} },
    { "a form of one's own", { "rows", "--rows", "p" }, {} },
    { "an output", { "preview", "-o", "p" }, { "pictures", "photo of a cat.ct" } },
    { "a file", { "info", "p" }, { "pictures", "photo of a cat.ct" } },
    { "a file behind a flag", { "info", "--json", "ph" }, { "photo of a cat.ct" } },
    { "a folder", { "sample", "p" }, { "pictures" } },
    { "a folder of an option", { "info", "--root", "p" }, { "pictures" } },
};

TEST(Completion, BashProposesWhatGoesThere)
{
    const TemporaryFolder folder;
    WriteFile(folder / "photo of a cat.ct", "");
    std::filesystem::create_directory(folder / "pictures");
    for (const CompletionCase& one : kCompletionCases) {
        std::vector<std::string> words = one.words;
        words.insert(words.begin(), "tympan");
        EXPECT_EQ(BashProposes(words, folder), one.proposed) << one.name;
    }
}

TEST(Completion, BashProposesAllThatTheHelpLists)
{
    const TemporaryFolder folder;
    const std::vector<std::string> subcommands = HelpedSubcommands();
    EXPECT_EQ(BashProposes({ "tympan", "" }, folder),
              Names(subcommands.begin(), subcommands.end()));
    EXPECT_EQ(BashProposes({ "tympan", "-" }, folder), HelpedOptions(""));
    for (const std::string& subcommand : subcommands)
        EXPECT_EQ(BashProposes({ "tympan", subcommand, "-" }, folder), HelpedOptions(subcommand))
            << subcommand;
}

bool HasZsh()
{
    return RunProgram("zsh", { "--version" }).status == 0;
}

// What the script hands to zsh's own functions, an option or argument a line; these take the first call
// for the one of a command line with this subcommand.
std::string ZshArguments(const std::string& subcommand)
{
    const std::string kPrint = R"(
        _arguments() { print -rl -- "$@"; [[ -z $state ]] && state=argument line=($subcommand) }
        subcommand=$1 && source $0)";
    return RunProgram("zsh", { "-fc", kPrint, kZshScript, subcommand }).out;
}

TEST(Completion, ZshGetsAllThatTheHelpLists)
{
    if (!HasZsh())
        GTEST_SKIP() << "zsh isn't installed";
    for (const std::string& subcommand : HelpedSubcommands()) {
        const std::string arguments = ZshArguments(subcommand);
        for (const std::string& option : HelpedOptions(subcommand))
            EXPECT_THAT(arguments, testing::ContainsRegex("[)*]" + option + "[=+]?\\["))
                << subcommand;
    }
    EXPECT_THAT(ZshArguments("rows"), testing::HasSubstr(":(cyan magenta yellow black)\n"));
    EXPECT_THAT(ZshArguments("info"), testing::HasSubstr(":_files -/\n"));
}

TEST(Completion, ScriptsAreSoundToTheirShells)
{
    EXPECT_EQ(RunProgram("bash", { "-n", kBashScript }).err, "");
    if (!HasZsh())
        GTEST_SKIP() << "zsh isn't installed";
    EXPECT_EQ(RunProgram("zsh", { "-n", kZshScript }).err, "");
}

} // namespace
} // namespace tympan::test
