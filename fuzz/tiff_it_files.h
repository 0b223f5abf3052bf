// TIFF/IT files for the script of calls. The samples that they are made of stand in the source: a
// function there has the name of what makes CT files.
#pragma once

#include <vector>

namespace tympan::fuzz {

/// Of 4 by 3 pixels.
std::vector<unsigned char> ContinuousToneFile();
/// Of 4 pixels in a row.
std::vector<unsigned char> LineWorkFile();

} // namespace tympan::fuzz
