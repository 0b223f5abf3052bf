// The checks of TIFF and of TIFF/IT files.
#pragma once

#include "core/format.h"

namespace tympan {

FormatCheck TiffFileCheck();
/// Of a format that no path is asked for: `CheckFile` takes it by name, or when no other accepts.
FormatCheck TiffItFileCheck();

} // namespace tympan
