// The text below a subcommand's options in the help, taken apart for the manual.
#pragma once

#include <string>
#include <vector>

namespace tympan::tool {

struct FooterSection {
    std::string title; ///< as "EXAMPLES"; empty for the description in front of all titles
    std::vector<std::string> lines;
};

/// The sections of a footer. A line such as "Example:" or "Exit status:" begins one.
std::vector<FooterSection> SectionsOf(const std::string& footer);

} // namespace tympan::tool
