#include "canonical_picture.h"

#include "names.h"
#include "separations.h"

#include <algorithm>
#include <numeric>

namespace tympan::tool {

namespace {

const std::vector<std::string>& RedGreenBlue()
{
    static const std::vector<std::string> kNames{ "red", "green", "blue" };
    return kNames;
}

Picture OpenWhole(const std::string& path, const std::string& asFormat)
{
    Picture picture = OpenPicture(path, asFormat);
    Guard(path, [&] {
        picture.Rows(); // refuses a file without them
        RequirePixels(picture);
        RequireRows(picture, picture.Height());
    });
    return picture;
}

std::optional<TiffColours> PaletteOf(const Picture& picture)
{
    if (picture.AsTiff() == nullptr)
        return std::nullopt;
    TiffColours colours(picture);
    const bool hasPalette = colours.Separations().size() == 1 && !colours.IsGrey();
    return hasPalette ? std::optional(std::move(colours)) : std::nullopt;
}

// ASCII letters alone: what other letters become would go by the machine's language.
std::string CanonicalName(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return Shown(name);
}

// In the order of the file.
std::vector<std::string> CanonicalNames(const Picture& picture, bool hasPalette)
{
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    if (hasPalette || (picture.AsJpeg() != nullptr && separations.size() == 3))
        return RedGreenBlue();
    if (separations.size() == 1) // formats don't agree on what the plate of a grey picture is
        return { "single" };
    std::vector<std::string> names(separations.size());
    std::transform(separations.begin(), separations.end(), names.begin(), [&](auto separation) {
        return CanonicalName(NameOf(picture.Object(), separation));
    });
    return names;
}

// Where the names stand that are first, second and so on by their bytes.
std::vector<std::size_t> PlacesInOrder(const std::vector<std::string>& names)
{
    std::vector<std::size_t> places(names.size());
    std::iota(places.begin(), places.end(), std::size_t{ 0 });
    std::stable_sort(places.begin(), places.end(),
                     [&](std::size_t one, std::size_t other) { return names[one] < names[other]; });
    return places;
}

} // namespace

CanonicalPicture::CanonicalPicture(const std::string& path, const std::string& asFormat)
    : picture_(OpenWhole(path, asFormat)), palette_(PaletteOf(picture_)),
      names_(CanonicalNames(picture_, palette_.has_value())), places_(PlacesInOrder(names_)),
      bands_(picture_, SeparationsOf(picture_.Object()), { 0, picture_.Height() })
{
    std::stable_sort(names_.begin(), names_.end());
    if (palette_) {
        plate_.resize(Width());
        rgb_.resize(Width() * RedGreenBlue().size());
    }
}

std::span<const std::uint8_t> CanonicalPicture::Row(std::uint32_t row, std::size_t separation)
{
    const std::size_t place = places_[separation];
    return Guard(Path(), [&] { return palette_ ? ColourRow(row, place) : bands_.Row(row, place); });
}

std::span<const std::uint8_t> CanonicalPicture::ColourRow(std::uint32_t row, std::size_t colour)
{
    palette_->Show(bands_, row, rgb_);
    for (std::size_t x = 0; x < plate_.size(); ++x)
        plate_[x] = rgb_[x * RedGreenBlue().size() + colour];
    return plate_;
}

void CanonicalPicture::RequireStillWhole() const
{
    Guard(Path(), [&] { RequireRows(picture_, picture_.Height()); });
}

} // namespace tympan::tool
