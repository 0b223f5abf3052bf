// The check of page files, for the format's row.
#pragma once

#include "core/format.h"

namespace tympan {

FormatCheck PageFileCheck();

} // namespace tympan
