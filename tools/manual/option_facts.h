// What the manual and the completions of shells need to know of an option or an argument.
#pragma once

#include <CLI/CLI.hpp>

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

/// Those that the help lists, in its order: arguments first.
std::vector<OptionFacts> OptionsOf(const CLI::App& app);

} // namespace tympan::tool
