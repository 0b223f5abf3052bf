// The subcommands, as main knows them. Each declares its options and sets a callback that does the
// work and throws when it can't; what is thrown decides the exit status.
#pragma once

#include <CLI/CLI.hpp>

namespace tympan::tool {

/// What the command tells the program that ran it.
enum class ExitStatus {
    Fine = 0,
    FileFailed = 1, ///< a FileFailure, or FailuresReported
    WrongUsage = 2, ///< a UsageFailure, or options that can't be read
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

} // namespace tympan::tool
