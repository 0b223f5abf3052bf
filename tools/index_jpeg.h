// The part of `tympan index` that makes the side file of a JPEG.
#pragma once

#include <string>

namespace tympan::tool {

/// Finds the bands of 8 rows in a JPEG file and writes their places to its side file, which takes its
/// name when it is whole. The JPEG is only read.
/// \throws FileFailure, which names what differs, when the file hasn't the form that the library reads
///   or there is a side file of another kind; UsageFailure when the JPEG itself has that name.
void IndexJpeg(const std::string& path);

} // namespace tympan::tool
