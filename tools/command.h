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

void AddInfo(CLI::App& app);
void AddPreview(CLI::App& app);
void AddRows(CLI::App& app);
void AddImport(CLI::App& app);
void AddExport(CLI::App& app);
void AddCheck(CLI::App& app);
void AddCrop(CLI::App& app);
void AddStream(CLI::App& app);
void AddIndex(CLI::App& app);
void AddPage(CLI::App& app);
void AddSample(CLI::App& app);
void AddInk(CLI::App& app);
void AddPalette(CLI::App& app);
void AddReport(CLI::App& app);
void AddHash(CLI::App& app);
void AddDiff(CLI::App& app);
void AddThumbnail(CLI::App& app);

/// Declares the command with all its subcommands. An App serves for one parse.
void DeclareCommand(CLI::App& app);
/// Those declared, in their order.
std::vector<CLI::App*> Subcommands(CLI::App& app);

} // namespace tympan::tool
