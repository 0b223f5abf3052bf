// What a person wants to know of a TIFF beside its record: names, unit, colours.
#include "tiff/tiff_details.h"

#include "platform/tiff_library.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_kind.h"

#include <algorithm>
#include <string>

namespace tympan {

namespace {

constexpr double kCentimetresOfInch = 2.54;
constexpr std::uint16_t kAnything = 0; // as the kind of an extra sample; the others are alpha

// Of the samples in front; those behind are inks by their number.
std::vector<std::string> NamesOf(const TiffFileParam& record)
{
    switch (record.ColorSet()) {
    case RgbColorSet: return { "Red", "Green", "Blue" };
    case YCbCrColorSet: return { "Y", "Cb", "Cr" };
    case BilevelColorSet:
    case InverseGrayColorSet: return { "Gray" };
    case GrayColorSet: return { record.Photometric() == photometric::kPalette ? "Index" : "Gray" };
    case CmykColorSet:
    case FiveColorSet:
    case SixColorSet:
    case SevenColorSet:
    case EightColorSet: return { "Cyan", "Magenta", "Yellow", "Black" };
    case NoColorSet: return {};
    }
    return {};
}

std::vector<std::string> ChannelsOf(const TiffFileParam& record, const TiffInfo& info)
{
    std::vector<std::string> names = info.inkNames.empty() ? NamesOf(record) : info.inkNames;
    const auto samples = static_cast<std::size_t>(record.ColorSeparation());
    names.resize(std::min(names.size(), samples));
    const std::size_t extras = std::min(info.extraSamples.size(), samples - names.size());
    const std::string other = record.Photometric() == photometric::kSeparated ? "Ink " : "Channel ";
    while (names.size() < samples) {
        const std::size_t behind = samples - names.size(); // this one and those to come
        const bool isAlpha =
            behind <= extras && info.extraSamples[info.extraSamples.size() - behind] != kAnything;
        names.push_back((isAlpha ? "Alpha " : other) + std::to_string(names.size() + 1));
    }
    return names;
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

std::optional<TiffDetails> TiffDetailsOf(const BasePictureIF& picture)
{
    const auto* const file = dynamic_cast<const TiffFileInterface*>(&picture);
    if (file == nullptr || file->tiff_ == nullptr)
        return std::nullopt;
    const TiffInfo info = TiffInfoOf(file->tiff_.get());
    const TiffFileParam& record = *file->GetPictureParams();
    TiffDetails details;
    details.channels = ChannelsOf(record, info);
    details.perInch = InchesFactor(info.resolutionUnit);
    if (record.Photometric() == photometric::kPalette)
        for (const auto& [red, green, blue] : info.colourMap)
            details.palette.push_back({ static_cast<std::uint8_t>(red >> 8U),
                                        static_cast<std::uint8_t>(green >> 8U),
                                        static_cast<std::uint8_t>(blue >> 8U) });
    return details;
}

} // namespace tympan
