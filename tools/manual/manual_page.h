// The manual pages, as roff.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tympan::tool {

/// The name of a page, without its section: "tympan" or "tympan-info".
std::string PageName(const CLI::App& app);

/// The page of the whole command.
std::string CommandPage(CLI::App& root);

/// The page of a subcommand.
std::string SubcommandPage(const CLI::App& root, const CLI::App& subcommand);

} // namespace tympan::tool
