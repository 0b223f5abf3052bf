// The completions of shells, as scripts for them.
#pragma once

#include "manual/command_facts.h"

#include <string>

namespace tympan::tool {

/// Subcommands, options, and values of a fixed set; files or folders where an option or an argument
/// takes one.
std::string BashCompletion(const CommandFacts& root);
std::string ZshCompletion(const CommandFacts& root);

} // namespace tympan::tool
