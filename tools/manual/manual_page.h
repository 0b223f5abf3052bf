// The manual pages, as roff.
#pragma once

#include "manual/command_facts.h"

#include <string>

namespace tympan::tool {

/// The page of the whole command.
std::string CommandPage(const CommandFacts& root);

/// The page of a subcommand.
std::string SubcommandPage(const CommandFacts& root, const CommandFacts& subcommand);

} // namespace tympan::tool
