// The manual pages: one for each subcommand, sound roff, and what they tell is what the help tells.
#include "tools/command_runner.h"
#include "tools/help_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

std::string PathOf(const std::string& subcommand)
{
    return TYMPAN_MANUAL "/man1/tympan" + (subcommand.empty() ? "" : "-" + subcommand) + ".1";
}

// The subcommands, and an empty name for the whole command.
std::vector<std::string> AllPages()
{
    std::vector<std::string> pages = HelpedSubcommands();
    pages.emplace_back();
    return pages;
}

bool HasGroff()
{
    return RunProgram("groff", { "--version" }).status == 0;
}

std::vector<std::string> ShownLines(const std::string& subcommand)
{
    return LinesOf(
        RunProgram("groff", { "-man", "-Tascii", "-P-cbou", "-rLL=200n", PathOf(subcommand) }).out);
}

// The names that begin the entries of a section.
Names EntriesOf(const std::vector<std::string>& lines, const std::string& section)
{
    constexpr std::size_t kBlanks = 7;
    Names names;
    for (auto line = std::find(lines.begin(), lines.end(), section) + 1; line < lines.end();
         ++line) {
        if (!line->empty() && line->front() != ' ')
            break;
        names.merge(NamesInLine(*line, kBlanks));
    }
    return names;
}

Names Both(Names one, Names other)
{
    one.merge(other);
    return one;
}

TEST(Manual, HasAPageForEachSubcommandAndNoOther)
{
    Names wanted;
    for (const std::string& page : AllPages())
        wanted.insert(PathOf(page));
    Names written;
    for (const auto& entry : std::filesystem::directory_iterator(TYMPAN_MANUAL "/man1"))
        written.insert(entry.path().string());
    EXPECT_EQ(written, wanted);
}

TEST(Manual, PagesAreSoundRoff)
{
    if (!HasGroff())
        GTEST_SKIP() << "groff isn't installed";
    for (const std::string& page : AllPages()) {
        const Outcome outcome =
            RunProgram("groff", { "-man", "-Tutf8", "-ww", "-z", PathOf(page) });
        EXPECT_EQ(outcome.status, 0) << page;
        EXPECT_EQ(outcome.err, "") << page;
    }
}

TEST(Manual, PagesListWhatTheHelpLists)
{
    if (!HasGroff())
        GTEST_SKIP() << "groff isn't installed";
    for (const std::string& page : AllPages())
        EXPECT_EQ(EntriesOf(ShownLines(page), "OPTIONS"),
                  Both(HelpedArguments(page), HelpedOptions(page)))
            << page;
    const std::vector<std::string> subcommands = HelpedSubcommands();
    EXPECT_EQ(EntriesOf(ShownLines(""), "SUBCOMMANDS"),
              Names(subcommands.begin(), subcommands.end()));
}

TEST(Manual, PagesHaveAllTheirSections)
{
    if (!HasGroff())
        GTEST_SKIP() << "groff isn't installed";
    for (const std::string& page : AllPages()) {
        const std::vector<std::string> lines = ShownLines(page);
        for (const char* const section : { "NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES",
                                           "EXIT STATUS", "SEE ALSO" })
            EXPECT_EQ(std::count(lines.begin(), lines.end(), section), 1)
                << section << " of " << page;
    }
}

} // namespace
} // namespace tympan::test
