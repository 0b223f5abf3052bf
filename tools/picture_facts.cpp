#include "picture_facts.h"

#include "names.h"
#include "picture.h"
#include "separations.h"
#include "tiff_file.h"
#include "tiff_plates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tympan::tool {

namespace {

// Not a number without a resolution.
double InInches(unsigned long pixels, double resolution)
{
    return std::isfinite(resolution) && resolution > 0.0 ? static_cast<double>(pixels) / resolution
                                                         : std::numeric_limits<double>::quiet_NaN();
}

// Whether the record has inches. Others have them only by their resolutions.
bool TellsInches(const BasePictureIF& picture)
{
    return dynamic_cast<const JpegFileInterface*>(&picture) == nullptr && !KindOf(picture);
}

Json SeparationNames(const BasePictureIF& picture)
{
    Json names = Json::array();
    for (const ColorSeparationType separation : SeparationsOf(picture))
        names.push_back(WithReplacements(NameOf(picture, separation)));
    return names;
}

} // namespace

const char* TiffItKindOf(const BasePictureIF& picture)
{
    if (dynamic_cast<const TiffItCtP1Interface*>(&picture) != nullptr)
        return "CT";
    return dynamic_cast<const TiffItLwP1Interface*>(&picture) != nullptr ? "LW" : nullptr;
}

std::optional<std::string> KindOf(const BasePictureIF& picture)
{
    if (const auto* const tiff = dynamic_cast<const TiffFileInterface*>(&picture))
        return TiffKindName(*tiff);
    const char* const kind = TiffItKindOf(picture);
    return kind != nullptr ? std::optional<std::string>(kind) : std::nullopt;
}

std::optional<double> ResolutionOfBoth(const BasePictureIF& picture)
{
    const AxisResolution axes = AxisResolutionOf(picture);
    const double resolution =
        KindOf(picture) ? std::max(axes.alongWidth, axes.alongHeight) : picture.FileResolution();
    if (picture.FileResolution() < 0.0 || !std::isfinite(resolution))
        return std::nullopt;
    return resolution;
}

double HeightOf(const BasePictureIF& picture)
{
    if (TellsInches(picture))
        return picture.FileHeightInUnits();
    return InInches(picture.FileHeightInPixels(), AxisResolutionOf(picture).alongHeight);
}

double WidthOf(const BasePictureIF& picture)
{
    if (TellsInches(picture))
        return picture.FileWidthInUnits();
    return InInches(picture.FileWidthInPixels(), AxisResolutionOf(picture).alongWidth);
}

void AddGeometry(const BasePictureIF& picture, Json& object)
{
    const AxisResolution resolution = AxisResolutionOf(picture);
    object["width"] = picture.FileWidthInPixels();
    object["height"] = picture.FileHeightInPixels();
    object["width_in"] = NumberOrNull(WidthOf(picture));
    object["height_in"] = NumberOrNull(HeightOf(picture));
    object["resolution"] = NumberOrNull(ResolutionOfBoth(picture));
    object["resolution_x"] = NumberOrNull(resolution.alongWidth);
    object["resolution_y"] = NumberOrNull(resolution.alongHeight);
    object["separations"] = SeparationNames(picture);
}

std::string NumberText(double number, int decimals)
{
    if (!std::isfinite(number))
        return "unknown";
    std::array<char, 400> text{}; // for the largest of numbers
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    std::string result(text.data());
    if (result.find('.') != std::string::npos) {
        result.erase(result.find_last_not_of('0') + 1);
        if (result.back() == '.')
            result.pop_back();
    }
    return result;
}

std::string Times(const std::string& width, const std::string& height)
{
    return width + " x " + height;
}

std::string PixelsText(const BasePictureIF& picture)
{
    return Times(std::to_string(picture.FileWidthInPixels()),
                 std::to_string(picture.FileHeightInPixels())) +
           " pixels";
}

} // namespace tympan::tool
