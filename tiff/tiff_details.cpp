// What a person wants to know of a TIFF beside its record: names, unit, colours.
#include "tiff/tiff_details.h"

#include "platform/tiff_library.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_kind.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace tympan {

namespace {

constexpr double kCentimetresOfInch = 2.54;
constexpr std::uint16_t kMostByte = 255;
constexpr std::uint16_t kAnything = 0; // as the kind of an extra sample; the others are alpha

constexpr std::string_view kRgb[] = { "Red", "Green", "Blue" };
constexpr std::string_view kYCbCr[] = { "Y", "Cb", "Cr" };
constexpr std::string_view kGray[] = { "Gray" };
constexpr std::string_view kIndex[] = { "Index" };
constexpr std::string_view kInks[] = { "Cyan", "Magenta", "Yellow", "Black" };

// Of the samples in front; those behind are inks by their number.
std::span<const std::string_view> NamesOf(const TiffFileParam& record)
{
    switch (record.ColorSet()) {
    case RgbColorSet: return kRgb;
    case YCbCrColorSet: return kYCbCr;
    case BilevelColorSet:
    case InverseGrayColorSet: return kGray;
    case GrayColorSet:
        if (record.Photometric() == photometric::kPalette)
            return kIndex;
        return kGray;
    case CmykColorSet:
    case FiveColorSet:
    case SixColorSet:
    case SevenColorSet:
    case EightColorSet: return kInks;
    case NoColorSet: break;
    }
    return {};
}

std::vector<std::string> ChannelsOf(const TiffFileParam& record, const TiffInfo& info)
{
    std::vector<std::string> names = info.inkNames;
    if (names.empty()) {
        const auto usual = NamesOf(record);
        names.assign(usual.begin(), usual.end());
    }
    names.resize(static_cast<std::size_t>(record.ColorSeparation()));
    const std::string other = record.Photometric() == photometric::kSeparated ? "Ink " : "Channel ";
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::size_t behind = names.size() - i; // this one and those to come
        const std::size_t extras = info.extraSamples.size();
        const bool isAlpha = behind <= extras && info.extraSamples[extras - behind] != kAnything;
        if (names[i].empty())
            names[i] = (isAlpha ? "Alpha " : other) + std::to_string(i + 1);
    }
    return names;
}

// Some programs write the bytes of a colour as they are, instead of times 257.
std::vector<std::array<std::uint8_t, 3>> PaletteOf(const TiffInfo& info)
{
    const bool isOfBytes =
        std::all_of(info.colourMap.begin(), info.colourMap.end(), [](const auto& colour) {
            return *std::max_element(colour.begin(), colour.end()) <= kMostByte;
        });
    const unsigned int shift = isOfBytes ? 0 : 8;
    std::vector<std::array<std::uint8_t, 3>> palette;
    for (const auto& [red, green, blue] : info.colourMap)
        palette.push_back({ static_cast<std::uint8_t>(red >> shift),
                            static_cast<std::uint8_t>(green >> shift),
                            static_cast<std::uint8_t>(blue >> shift) });
    return palette;
}

double InchesFactor(std::uint16_t unit)
{
    switch (unit) {
    case TiffInfo::kInch: return 1.0;
    case TiffInfo::kCentimetre: return kCentimetresOfInch;
    default: return 0.0;
    }
}

} // namespace

struct TiffDetailsAccess {
    static tiff* OpenIn(const TiffFileInterface& picture) { return picture.tiff_.get(); }
};

std::optional<TiffDetails> TiffDetailsOf(const BasePictureIF& picture)
{
    const auto* const file = dynamic_cast<const TiffFileInterface*>(&picture);
    tiff* const open = file == nullptr ? nullptr : TiffDetailsAccess::OpenIn(*file);
    if (open == nullptr)
        return std::nullopt;
    const TiffInfo info = TiffInfoOf(open);
    const TiffFileParam& record = *file->GetPictureParams();
    TiffDetails details;
    details.channels = ChannelsOf(record, info);
    details.perInch = InchesFactor(info.resolutionUnit);
    if (record.Photometric() == photometric::kPalette)
        details.palette = PaletteOf(info);
    return details;
}

} // namespace tympan
