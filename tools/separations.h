// The names of separations, as options and messages have them.
#pragma once

#include <tympan/tympan.h>

#include <string>
#include <vector>

namespace tympan::tool {

/// The type of an option that takes a separation, as the help and the completions know it.
inline constexpr char kSeparationType[] = "SEPARATION";

/// "cyan" to "black"; "separation N" for what is none of the four.
std::string NameOf(ColorSeparationType separation);

/// The same, but of a TIFF the name that its file has for the sample.
std::string NameOf(const BasePictureIF& picture, ColorSeparationType separation);

/// A separation by name, in any case, or by its number from 0.
/// \throws UsageFailure for anything else.
ColorSeparationType ParseSeparation(const std::string& text);

/// The separations of a picture in the order of its slots. A JPEG has black when it is grey, and the
/// first three, of which red, green and blue are the inverse, when it is RGB. A TIFF has the numbers of its
/// samples.
std::vector<ColorSeparationType> SeparationsOf(const BasePictureIF& picture);

/// "cyan, magenta, yellow, black".
std::string NamesOf(const BasePictureIF& picture);

/// \throws FileFailure, naming those it has, when the picture doesn't have the separation.
void RequireSeparation(const std::string& path, const BasePictureIF& picture,
                       ColorSeparationType separation);

/// A separation that the picture has, by what the person calls it: of a TIFF by the name that its file
/// has for the sample, in any case, or by its number; of other formats as `ParseSeparation`.
/// \throws UsageFailure as `ParseSeparation`; FileFailure, naming those it has.
ColorSeparationType SeparationNamed(const std::string& path, const BasePictureIF& picture,
                                    const std::string& text);

} // namespace tympan::tool
