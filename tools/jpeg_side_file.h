// The side file in which the library keeps the index of a JPEG file.
#pragma once

#include <string>

namespace tympan::tool {

/// Where the library looks for the side file of a JPEG.
std::string JpegSideFilePath(const std::string& jpegPath);

/// Other formats have side files of the same name.
/// \throws FileFailure when there is a file of that path that holds no JPEG's index.
void RequireNoOtherSideFile(const std::string& sidePath);

} // namespace tympan::tool
