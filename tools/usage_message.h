// What a command line that can't be read is answered.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tympan::tool {

/// What is wrong with it. A word that nothing is called by goes before all else, with what it may have
/// been meant for: what CLI11 tells is often no more than what follows from the slip.
/// \param app the command after the parse that failed
std::string UsageMessage(CLI::App& app, const CLI::Error& failure);

/// That no subcommand was given, and which there are.
std::string MissingSubcommandMessage(CLI::App& app);

/// What tells more about the usage: of the subcommand where there is one.
std::string UsageAdvice(const CLI::App& app);

} // namespace tympan::tool
