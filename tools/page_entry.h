// What is wrong with an entry of a page file, for a person.
#pragma once

#include "page_paths.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <string>

namespace tympan::tool {

/// Why an entry isn't taken; empty for one that is.
std::string ProblemOf(const PageEntryReading& reading, const PagePaths& paths);

} // namespace tympan::tool
