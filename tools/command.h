// The command and its subcommands. Each of these declares its options and sets a callback that does the
// work and throws when it can't; what is thrown decides the exit status.
#pragma once

#include "options.h"

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
void DeclareInfo(const Options& command);
void DeclarePreview(const Options& command);
void DeclareRows(const Options& command);
void DeclareImport(const Options& command);
void DeclareExport(const Options& command);
void DeclareCheck(const Options& command);
void DeclareCrop(const Options& command);
void DeclareStream(const Options& command);
void DeclareIndex(const Options& command);
void DeclarePage(const Options& command);
void DeclareSample(const Options& command);
void DeclareInk(const Options& command);
void DeclarePalette(const Options& command);
void DeclareReport(const Options& command);
void DeclareHash(const Options& command);
void DeclareDiff(const Options& command);
void DeclareThumbnail(const Options& command);
/// @}

/// Declares the command with all its subcommands. An App serves for one parse.
void DeclareCommand(CLI::App& app);
/// Those declared, in their order.
std::vector<CLI::App*> Subcommands(CLI::App& app);

} // namespace tympan::tool
