// The check of JPEG files and their indexes.
#pragma once

#include "core/format.h"

namespace tympan {

FormatCheck JpegFileCheck();

} // namespace tympan
