// What the manual and the completions of shells need to know of the command.
#pragma once

#include <string>
#include <vector>

namespace tympan::tool {

/// What a shell can propose for a value.
enum class ValueKind {
    None, ///< there is no value, or nothing to propose
    File,
    Folder,
    Choice,
};

/// Of an option or an argument.
struct OptionFacts {
    std::vector<std::string> names; ///< as "-o" and "--output"; of an argument its name alone
    bool isArgument;                ///< stands without a name
    bool isRequired;
    bool repeats;
    std::string value; ///< what stands for it in the help, as "FILE"; empty for a flag
    ValueKind kind;
    std::vector<std::string> choices; ///< of a ValueKind::Choice
    std::string help;
    std::string conditions; ///< sentences on what it needs and what its default is; may be empty
};

/// Of the whole command or of a subcommand.
struct CommandFacts {
    std::string name; ///< as "info"
    std::string page; ///< its manual page without the section, as "tympan-info"
    std::string description;
    std::string footer;
    std::vector<OptionFacts> options; ///< those that the help lists, in its order: arguments first
    std::vector<CommandFacts> subcommands;
};

/// The command as it is declared.
CommandFacts FactsOfCommand();

} // namespace tympan::tool
