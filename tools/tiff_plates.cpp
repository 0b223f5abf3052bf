#include "tiff_plates.h"

#include "separation_bands.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tympan::tool {

namespace {

using Plate = std::span<const std::uint8_t>;
using Colour = std::array<std::uint8_t, 3>; // red, green and blue

constexpr std::size_t kInksShown = 4;

bool HasPalette(const TiffFileInterface& tiff)
{
    constexpr unsigned long kPalette = 3;
    const TiffFileParam& record = *tiff.GetPictureParams();
    return record.ColorSet() == GrayColorSet && record.Photometric() == kPalette;
}

bool IsOfInks(ColorSetType set)
{
    return set >= CmykColorSet && set <= EightColorSet;
}

// Calls `colour(pixel)` for each pixel and stores what it gives.
template <typename ColourOf>
void PutColours(std::span<std::uint8_t> rgb, const ColourOf& colourOf)
{
    auto place = rgb.begin();
    for (std::size_t x = 0; place != rgb.end(); ++x) {
        const Colour colour = colourOf(x);
        place = std::copy(colour.begin(), colour.end(), place);
    }
}

Colour InkColour(const std::array<Plate, kInksShown>& plates, std::size_t x)
{
    const std::array<unsigned char, kInksShown> pixel{ plates[0][x], plates[1][x], plates[2][x],
                                                       plates[3][x] };
    const unsigned long packed = PictureFileInterface::CalculatePixelAsRGB(pixel.data());
    return { static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8U),
             static_cast<std::uint8_t>(packed >> 16U) };
}

// By the usual coefficients, in 65536ths.
Colour FromYCbCr(int luma, int blueness, int redness)
{
    constexpr int kOne = 1 << 16;
    constexpr int kMiddle = 128;
    const auto sample = [&](int blueFactor, int redFactor) {
        const int scaled = luma * kOne + blueFactor * (blueness - kMiddle) +
                           redFactor * (redness - kMiddle) + kOne / 2;
        return static_cast<std::uint8_t>(std::clamp(scaled, 0, 255 * kOne) / kOne);
    };
    return { sample(0, 91881), sample(-22554, -46802), sample(116130, 0) };
}

} // namespace

std::string TiffKindName(const TiffFileInterface& tiff)
{
    const ColorSetType set = tiff.GetPictureParams()->ColorSet();
    switch (set) {
    case CmykColorSet: return "CMYK";
    case FiveColorSet:
    case SixColorSet:
    case SevenColorSet:
    case EightColorSet: return std::to_string(static_cast<int>(set)) + " inks";
    case GrayColorSet: return HasPalette(tiff) ? "palette" : "grey";
    case BilevelColorSet: return "bilevel";
    case RgbColorSet: return "RGB";
    case YCbCrColorSet: return "YCbCr";
    case InverseGrayColorSet: return "inverse grey";
    case NoColorSet: break;
    }
    return "unknown";
}

bool IsOfInks(const TiffFileInterface& tiff)
{
    return IsOfInks(tiff.GetPictureParams()->ColorSet());
}

TiffPlates::TiffPlates(const Picture& picture) : picture_(picture)
{
    const TiffFileInterface& tiff = *picture.AsTiff();
    isTurned_ = IsOfInks(tiff) || tiff.GetPictureParams()->ColorSet() == InverseGrayColorSet;
    if (!tiff.IsTiff1Bit())
        return;
    spreader_.emplace(1, LevelScale::WhiteIsZero);
    packed_.resize(tiff.GetPictureParams()->RowSize());
}

void TiffPlates::Read(std::uint32_t row, ColorSeparationType separation,
                      std::span<std::uint8_t> plate)
{
    if (spreader_) {
        ReadStored(row, separation, packed_);
        spreader_->Spread(packed_, plate);
        return;
    }
    ReadStored(row, separation, plate);
    if (isTurned_)
        std::transform(plate.begin(), plate.end(), plate.begin(),
                       [](std::uint8_t sample) { return static_cast<std::uint8_t>(255 - sample); });
}

void TiffPlates::ReadStored(std::uint32_t row, ColorSeparationType separation,
                            std::span<std::uint8_t> bytes) const
{
    constexpr double kAsStored = 1.0;
    if (picture_.AsTiff()->GetPictureRow(bytes.data(), row, separation, kAsStored, kAsStored,
                                         static_cast<unsigned long>(bytes.size())) != 1)
        throw RowFailure(picture_, row);
}

TiffColours::TiffColours(const Picture& picture)
    : set_(picture.AsTiff()->GetPictureParams()->ColorSet())
{
    constexpr std::size_t kBytes = 256;
    if (!HasPalette(*picture.AsTiff()))
        return;
    palette_ = TiffDetailsOf(picture.Object()).value_or(TiffDetails{}).palette;
    palette_.resize(kBytes);
}

std::vector<ColorSeparationType> TiffColours::Separations() const
{
    if (IsOfInks(set_))
        return { Cyan, Magenta, Yellow, Black };
    if (set_ == RgbColorSet || set_ == YCbCrColorSet)
        return { Cyan, Magenta, Yellow };
    return { Cyan };
}

bool TiffColours::IsGrey() const
{
    return Separations().size() == 1 && palette_.empty();
}

void TiffColours::Show(SeparationBands& bands, std::uint32_t row, std::span<std::uint8_t> rgb) const
{
    std::array<Plate, kInksShown> plates;
    for (std::size_t i = 0; i < Separations().size(); ++i)
        plates[i] = bands.Row(row, i);
    if (IsOfInks(set_))
        PutColours(rgb, [&](std::size_t x) { return InkColour(plates, x); });
    else if (set_ == YCbCrColorSet)
        PutColours(rgb, [&](std::size_t x) {
            return FromYCbCr(plates[0][x], plates[1][x], plates[2][x]);
        });
    else if (!palette_.empty())
        PutColours(rgb, [&](std::size_t x) { return palette_[plates[0][x]]; });
    else
        PutColours(rgb, [&](std::size_t x) {
            return set_ == RgbColorSet ? Colour{ plates[0][x], plates[1][x], plates[2][x] }
                                       : Colour{ plates[0][x], plates[0][x], plates[0][x] };
        });
}

} // namespace tympan::tool
