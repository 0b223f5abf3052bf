// The command and its subcommands. Each of these declares its options and sets a callback that does the
// work and throws when it can't; what is thrown decides the exit status.
#pragma once

#include <CLI/CLI.hpp>

#include <vector>

namespace tympan::tool {

/// What the command tells the program that ran it.
enum class ExitStatus {
    Fine = 0,
    FileFailed = 1, ///< a FileFailure, or FailuresReported
    WrongUsage = 2, ///< a UsageFailure, or options that can't be read
    /// \name Of `diff`, which tells as other programs that compare do
    /// @{
    PicturesDiffer = 1,
    NotCompared = 2,
    /// @}
};

/// Thrown when all has been told already and only the exit status is left to give.
struct EndWith {
    ExitStatus status;
};

/// \name The subcommands
/// Each declares the options of the one that it is given.
/// @{
void DeclareInfo(CLI::App& command);
void DeclarePreview(CLI::App& command);
void DeclareRows(CLI::App& command);
void DeclareImport(CLI::App& command);
void DeclareExport(CLI::App& command);
void DeclareCheck(CLI::App& command);
void DeclareCrop(CLI::App& command);
void DeclareStream(CLI::App& command);
void DeclareIndex(CLI::App& command);
void DeclarePage(CLI::App& command);
void DeclareSample(CLI::App& command);
void DeclareInk(CLI::App& command);
void DeclarePalette(CLI::App& command);
void DeclareReport(CLI::App& command);
void DeclareHash(CLI::App& command);
void DeclareDiff(CLI::App& command);
void DeclareThumbnail(CLI::App& command);
/// @}

/// Declares the command with all its subcommands. An App serves for one parse.
void DeclareCommand(CLI::App& app);
/// Those declared, in their order.
std::vector<CLI::App*> Subcommands(CLI::App& app);

} // namespace tympan::tool
