// The side file in which the library keeps the index of a JPEG file.
#pragma once

#include "output_file.h"

#include <cstddef>
#include <string>

namespace tympan::tool {

/// Where the library looks for the side file of a JPEG.
std::string JpegSideFilePath(const std::string& jpegPath);

/// Other formats have side files of the same name.
/// \throws FileFailure when there is a file of that path that holds no JPEG's index.
void RequireNoOtherSideFile(const std::string& sidePath);

/// The library leaves an index that it can't write empty, and doesn't say why.
/// \param bands of the picture, at most
/// \throws FileFailure of the side file, with the system's reason if writing as much tells it.
void RequireWritten(const OutputFile& side, std::size_t bands);

} // namespace tympan::tool
