// The plates of a picture side by side, for the page that `tympan sample` makes.
#pragma once

#include "box_average.h"
#include "output_file.h"
#include "picture.h"

namespace tympan::tool {

/// The size of the TIFF for a picture of four plates.
PixelSize SizeOfPlates(PixelSize picture);

/// Writes a CMYK TIFF that shows each plate small and in its own ink.
/// \param picture one of the four inks
/// \param resolution pixels per inch
/// \throws FileFailure when it can't be read or the TIFF can't be written.
void WritePlatesSideBySide(const Picture& picture, double resolution, const OutputFile& output);

} // namespace tympan::tool
