#include "separations.h"

#include "failure.h"

#include <tympan/inspect.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <optional>
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

const TiffFileInterface* TiffOf(const BasePictureIF& picture)
{
    return dynamic_cast<const TiffFileInterface*>(&picture);
}

std::vector<std::string> ChannelsOf(const BasePictureIF& picture)
{
    const std::optional<TiffDetails> details = TiffDetailsOf(picture);
    return details ? details->channels : std::vector<std::string>{};
}

[[noreturn]] void RefuseSeparation(const std::string& path, const BasePictureIF& picture,
                                   const std::string& name)
{
    throw FileFailure(path, "has no separation " + name, std::nullopt,
                      "It has: " + NamesOf(picture) + ".");
}

// The name goes before the number, for an ink may be called by a number.
ColorSeparationType ChannelNamed(const std::string& path, const BasePictureIF& picture,
                                 const std::string& text)
{
    const std::vector<std::string> channels = ChannelsOf(picture);
    const std::string wanted = InLowerCase(text);
    for (std::size_t number = 0; number < channels.size(); ++number)
        if (wanted == InLowerCase(channels[number]))
            return static_cast<ColorSeparationType>(number);
    for (std::size_t number = 0; number < channels.size(); ++number)
        if (wanted == std::to_string(number))
            return static_cast<ColorSeparationType>(number);
    RefuseSeparation(path, picture, text);
}

} // namespace

std::string NameOf(ColorSeparationType separation)
{
    const auto number = static_cast<std::size_t>(separation);
    return number < kNames.size() ? std::string(kNames[number])
                                  : "separation " + std::to_string(separation);
}

std::string NameOf(const BasePictureIF& picture, ColorSeparationType separation)
{
    const std::vector<std::string> channels = ChannelsOf(picture);
    const auto number = static_cast<std::size_t>(separation);
    return number < channels.size() ? channels[number] : NameOf(separation);
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
    if (const TiffFileInterface* const tiff = TiffOf(picture)) {
        std::vector<ColorSeparationType> samples(ChannelsOf(*tiff).size());
        std::generate(samples.begin(), samples.end(), [number = 0]() mutable {
            return static_cast<ColorSeparationType>(number++);
        });
        return samples;
    }
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

std::string NamesOf(const BasePictureIF& picture)
{
    std::string names;
    for (const ColorSeparationType separation : SeparationsOf(picture))
        names += (names.empty() ? "" : ", ") + NameOf(picture, separation);
    return names;
}

void RequireSeparation(const std::string& path, const BasePictureIF& picture,
                       ColorSeparationType separation)
{
    const std::vector<ColorSeparationType> present = SeparationsOf(picture);
    if (std::find(present.begin(), present.end(), separation) == present.end())
        RefuseSeparation(path, picture, NameOf(separation));
}

ColorSeparationType SeparationNamed(const std::string& path, const BasePictureIF& picture,
                                    const std::string& text)
{
    if (TiffOf(picture) != nullptr)
        return ChannelNamed(path, picture, text);
    const ColorSeparationType separation = ParseSeparation(text);
    RequireSeparation(path, picture, separation);
    return separation;
}

} // namespace tympan::tool
