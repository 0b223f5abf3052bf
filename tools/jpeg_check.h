// What the command checks of a JPEG beyond the library's own check, which never decodes.
#pragma once

#include <tympan/check.h>

#include <functional>
#include <string>

namespace tympan::tool {

/// A band that isn't one.
inline constexpr CheckRule kBandRule{
    "TYM-BAND-0001",
    Severity::Error,
    "A band of a JPEG can't be decoded",
    "The index gives the bytes of each 8 rows. These are damaged, aren't those of 8 rows, or can't "
    "be decoded with the tables of the file's head.",
    "Make the side file anew with \"tympan index\"; if that doesn't help, get another copy of the "
    "file.",
};

/// Decodes each band whose block stands in the file, and gives those that can't be to `tell`. A file
/// that can't be opened is left to the library's check.
void CheckJpegBands(const std::string& path, const std::function<void(const Finding&)>& tell);

} // namespace tympan::tool
