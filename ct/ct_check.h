// The check of CT files, for the format's row.
#pragma once

#include "core/format.h"

namespace tympan {

FormatCheck CtFileCheck();

} // namespace tympan
