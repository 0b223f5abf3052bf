// The segment is a text of six bytes, then a small TIFF: byte order, 42, the place of a directory
// whose entries have 12 bytes (tag, type, count, value or its place). Places count from the byte
// order on.
#include "exif.h"

#include "picture_source.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tympan::tool {

namespace {

constexpr std::string_view kMark("Exif\0\0", 6);
constexpr std::size_t kEntryBytes = 12;

enum Tag : std::uint32_t {
    kOrientation = 0x0112,
    kXResolution = 0x011A,
    kYResolution = 0x011B,
    kResolutionUnit = 0x0128,
};
constexpr std::uint32_t kCentimetres = 3;

// Numbers at places of the small TIFF; 0 for a place outside of it.
class Reader {
  public:
    explicit Reader(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), bigEnd_(!bytes.empty() && bytes[0] == 'M')
    {}

    std::uint32_t Number(std::size_t place, std::size_t width) const
    {
        if (place > bytes_.size() || bytes_.size() - place < width)
            return 0;
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < width; ++i)
            number = number << 8U | bytes_[place + (bigEnd_ ? i : width - 1 - i)];
        return number;
    }

    /// Two numbers, at the place that stands at `entry`'s value.
    std::optional<double> Fraction(std::size_t entry) const
    {
        const std::size_t place = Number(entry + 8, 4);
        const std::uint32_t below = Number(place + 4, 4);
        return below == 0 ? std::nullopt : std::optional(1.0 * Number(place, 4) / below);
    }

  private:
    std::span<const std::uint8_t> bytes_;
    bool bigEnd_;
};

void TakeEntry(const Reader& reader, std::size_t entry, ExifFields& fields)
{
    switch (reader.Number(entry, 2)) {
    case kOrientation: fields.orientation = reader.Number(entry + 8, 2); break;
    case kXResolution: fields.resolutionX = reader.Fraction(entry); break;
    case kYResolution: fields.resolutionY = reader.Fraction(entry); break;
    case kResolutionUnit:
        if (reader.Number(entry + 8, 2) == kCentimetres)
            fields.inchesPerUnit = kInchesPerCentimetre;
        break;
    default: break;
    }
}

} // namespace

ExifFields ReadExif(std::span<const std::uint8_t> segment)
{
    ExifFields fields;
    if (segment.size() < kMark.size() || !std::equal(kMark.begin(), kMark.end(), segment.begin()))
        return fields;
    const Reader reader(segment.subspan(kMark.size()));
    const std::size_t directory = reader.Number(4, 4);
    const std::size_t entries = reader.Number(directory, 2);
    for (std::size_t i = 0; i < entries; ++i)
        TakeEntry(reader, directory + 2 + i * kEntryBytes, fields);
    return fields;
}

} // namespace tympan::tool
