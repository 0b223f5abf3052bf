// What `tympan info` tells of a file, for the subcommands that go by it.
#pragma once

#include "page_paths.h"
#include "standard_output.h"

#include <string>

namespace tympan::tool {

/// The object that `tympan info --json` writes of a file; `error` stands in it when the file
/// failed.
/// \param asFormat a value of `--as`
/// \throws UsageFailure for a format that this build doesn't read.
Json InfoOf(const std::string& file, const std::string& asFormat, const PathOptions& paths);

} // namespace tympan::tool
