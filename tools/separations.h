// The names of separations, as options and messages have them.
#pragma once

#include <tympan/tympan.h>

#include <string>
#include <vector>

namespace tympan::tool {

/// "cyan" to "black"; "separation N" for what is none of the four.
std::string NameOf(ColorSeparationType separation);

/// A separation by name, in any case, or by its number from 0.
/// \throws UsageFailure for anything else.
ColorSeparationType ParseSeparation(const std::string& text);

/// The separations of a picture in the order of its slots. A JPEG has black when it is grey, and the
/// first three, of which red, green and blue are the inverse, when it is RGB.
std::vector<ColorSeparationType> SeparationsOf(const BasePictureIF& picture);

/// "cyan, magenta, yellow, black".
std::string NamesOf(const std::vector<ColorSeparationType>& separations);

/// \throws FileFailure, naming those it has, when the picture doesn't have the separation.
void RequireSeparation(const std::string& path, const BasePictureIF& picture,
                       ColorSeparationType separation);

} // namespace tympan::tool
