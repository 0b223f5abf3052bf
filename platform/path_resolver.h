// The path resolver: stands in for the platform's drive mappings.
#pragma once

#include "platform/export.h"
#include "platform/text.h"

#include <functional>

namespace tympan {

/// Gives the system's path for a path that a client has named.
using PathResolver = std::function<CString(const CString&)>;

/// Sets the one resolver that every opening, removing and renaming of a file asks, on any thread;
/// an empty function takes it away. None is set at the start, and paths are then taken as they are.
/// A path for which the resolver throws counts as one of a file that is not there.
TYMPAN_API void SetPathResolver(PathResolver resolver);

} // namespace tympan
