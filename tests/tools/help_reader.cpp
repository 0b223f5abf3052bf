#include "tools/help_reader.h"

#include "tools/command_runner.h"

#include <sstream>

namespace tympan::test {

namespace {

constexpr std::size_t kBlanks = 2;

// The lines below a heading, up to an empty one.
std::vector<std::string> Listed(const std::string& subcommand, const std::string& heading)
{
    std::vector<std::string> arguments;
    if (!subcommand.empty())
        arguments.push_back(subcommand);
    arguments.emplace_back("--help");
    std::vector<std::string> listed;
    bool isBelow = false;
    for (const std::string& line : LinesOf(RunCommand(arguments).out)) {
        if (isBelow && line.empty())
            break;
        if (isBelow)
            listed.push_back(line);
        isBelow = isBelow || line == heading;
    }
    return listed;
}

Names AllNames(const std::vector<std::string>& lines)
{
    Names all;
    for (const std::string& line : lines)
        all.merge(NamesInLine(line, kBlanks));
    return all;
}

} // namespace

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

Names NamesInLine(const std::string& line, std::size_t blanks)
{
    if (line.find_first_not_of(' ') != blanks)
        return {};
    Names names;
    std::istringstream in(line);
    for (std::string word; in >> word;) {
        const std::size_t comma = word.find(','); // none or one follows: "-o,--output" or "-o,"
        names.insert(word.substr(0, comma));
        if (comma != std::string::npos && comma + 1 < word.size())
            names.insert(word.substr(comma + 1));
        if (comma == std::string::npos || comma + 1 < word.size())
            break;
    }
    return names;
}

std::vector<std::string> HelpedSubcommands()
{
    std::vector<std::string> names;
    for (const std::string& line : Listed("", "Subcommands:"))
        names.push_back(*NamesInLine(line, kBlanks).begin());
    return names;
}

Names HelpedOptions(const std::string& subcommand)
{
    return AllNames(Listed(subcommand, "Options:"));
}

Names HelpedArguments(const std::string& subcommand)
{
    return AllNames(Listed(subcommand, "Positionals:"));
}

} // namespace tympan::test
