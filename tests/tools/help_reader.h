// What `--help` lists, for tests that hold the manual and the completions against it.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace tympan::test {

using Names = std::set<std::string>;

/// Those that `tympan --help` lists, in its order.
std::vector<std::string> HelpedSubcommands();

/// The names of the options that a subcommand's help lists; of the whole command for an empty one.
Names HelpedOptions(const std::string& subcommand);

/// The names of its arguments, as "FILE".
Names HelpedArguments(const std::string& subcommand);

/// The names at the start of a line that begins with so many blanks: "-o, --output FILE" has two.
/// None for a line that begins otherwise.
Names NamesInLine(const std::string& line, std::size_t blanks);

std::vector<std::string> LinesOf(const std::string& text);

} // namespace tympan::test
