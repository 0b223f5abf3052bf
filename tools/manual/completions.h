// The completions of shells, as scripts for them.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tympan::tool {

/// Subcommands, options, and values of a fixed set; files or folders where an option or an argument
/// takes one.
std::string BashCompletion(CLI::App& root);
std::string ZshCompletion(CLI::App& root);

} // namespace tympan::tool
