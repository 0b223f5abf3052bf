// What of a picture's header is told to a person or a program, whatever the format.
#pragma once

#include "standard_output.h"

#include <tympan/tympan.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

/// What a TIFF/IT file's object is, "CT" or "LW"; null for other formats.
const char* TiffItKindOf(const BasePictureIF& picture);
/// The kind of a TIFF or a TIFF/IT file; nothing for other formats.
std::optional<std::string> KindOf(const BasePictureIF& picture);

/// Pixels per inch; nothing when the axes differ or the file tells none.
std::optional<double> ResolutionOfBoth(const BasePictureIF& picture);

/// \name Inches
/// Those of the record, or by the resolution where the format has no others. Not finite when unknown.
/// @{
double HeightOf(const BasePictureIF& picture);
double WidthOf(const BasePictureIF& picture);
/// @}

/// Adds sizes, resolutions and separations.
void AddGeometry(const BasePictureIF& picture, Json& object);

/// What a person is told: names, or none for a further line of the same, and values.
using Lines = std::vector<std::pair<std::string, std::string>>;

/// A number of at most so many decimals; "unknown" when it isn't finite.
std::string NumberText(double number, int decimals);
std::string Times(const std::string& width, const std::string& height);
/// As "300 x 200 pixels".
std::string PixelsText(const BasePictureIF& picture);

} // namespace tympan::tool
