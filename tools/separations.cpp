#include "separations.h"

#include "failure.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>

namespace tympan::tool {

namespace {

constexpr std::array<std::string_view, 4> kNames{ "cyan", "magenta", "yellow", "black" };

std::string InLowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return text;
}

} // namespace

std::string NameOf(ColorSeparationType separation)
{
    const auto number = static_cast<std::size_t>(separation);
    return number < kNames.size() ? std::string(kNames[number])
                                  : "separation " + std::to_string(separation);
}

ColorSeparationType ParseSeparation(const std::string& text)
{
    const std::string wanted = InLowerCase(text);
    for (std::size_t number = 0; number < kNames.size(); ++number)
        if (wanted == kNames[number] || wanted == std::to_string(number))
            return static_cast<ColorSeparationType>(number);
    throw UsageFailure("--separation " + text +
                       ": a separation is cyan, magenta, yellow, black or its number, 0 to 3");
}

std::vector<ColorSeparationType> SeparationsOf(const BasePictureIF& picture)
{
    const unsigned int count =
        std::min(picture.FileNumberOfSeparations(), PictureParameters::kSlots);
    const bool isJpeg = dynamic_cast<const JpegFileInterface*>(&picture) != nullptr;
    if (isJpeg && count == 1)
        return { Black };
    std::vector<ColorSeparationType> separations;
    for (unsigned int slot = 0; slot < count; ++slot) // of a JPEG's slots only the first is filled
        separations.push_back(isJpeg ? BasePictureIF::AvailableSeps(slot)
                                     : picture.FileSeparation(slot));
    return separations;
}

std::string NamesOf(const std::vector<ColorSeparationType>& separations)
{
    std::string names;
    for (const ColorSeparationType separation : separations)
        names += (names.empty() ? "" : ", ") + NameOf(separation);
    return names;
}

void RequireSeparation(const std::string& path, const BasePictureIF& picture,
                       ColorSeparationType separation)
{
    const std::vector<ColorSeparationType> present = SeparationsOf(picture);
    if (std::find(present.begin(), present.end(), separation) == present.end())
        throw FileFailure(path, "has no separation " + NameOf(separation), std::nullopt,
                          "It has: " + NamesOf(present) + ".");
}

} // namespace tympan::tool
