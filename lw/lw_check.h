// The check of LW files, for the format's row.
#pragma once

#include "core/format.h"

namespace tympan {

FormatCheck LwFileCheck();

} // namespace tympan
