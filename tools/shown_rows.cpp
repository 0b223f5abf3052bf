#include "shown_rows.h"

#include "jpeg_bands.h"
#include "separation_bands.h"
#include "tiff_plates.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kChannels = std::tuple_size_v<BgrColour>;

GiveRows Composite(const Picture& picture, RowRange rows)
{
    const auto draw = [&picture](std::uint32_t first, std::uint32_t last, CDC& context) {
        picture.Object().Display(first, last, context);
        if (picture.Object().TraceStatus() != 0)
            throw RowsFailure(picture, { first, last + 1 });
    };
    return [=, &picture](const TakePixels& take) {
        DrawInBands({ rows.first, rows.end, picture.Width() }, draw, take);
    };
}

// Blue, green and red of the pixels of a JPEG.
void ShowDecoded(std::span<const std::uint8_t> row, std::size_t components,
                 std::span<std::uint8_t> bgr)
{
    auto place = bgr.begin();
    for (auto pixel = row.begin(); pixel != row.end();
         pixel += static_cast<std::ptrdiff_t>(components), place += kChannels) {
        if (components == 1)
            std::fill_n(place, kChannels, *pixel);
        else if (components == kChannels)
            std::reverse_copy(pixel, pixel + kChannels, place);
        else
            std::copy_n(BgrOf(PictureFileInterface::CalculatePixelAsRGB(&*pixel)).begin(),
                        kChannels, place);
    }
}

// A JPEG as it is decoded.
GiveRows Decoded(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        JpegBands bands(picture, rows);
        std::vector<std::uint8_t> pixels(picture.Width() * kChannels);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            ShowDecoded(bands.Row(row), bands.Components(), pixels);
            take(row, 0, pixels);
        }
    };
}

GiveRows Coloured(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        const TiffColours colours(picture);
        SeparationBands bands(picture, colours.Separations(), rows);
        std::vector<std::uint8_t> pixels(picture.Width() * kChannels);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            colours.Show(bands, row, pixels);
            for (std::size_t pixel = 0; pixel < pixels.size(); pixel += kChannels)
                std::swap(pixels[pixel], pixels[pixel + 2]);
            take(row, 0, pixels);
        }
    };
}

// A TIFF/IT picture, which is drawn from its first row on, whichever are wanted: on a bitmap of all
// of them.
GiveRows DrawnWhole(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        PreviewBand whole(picture.Width(), rows.Count());
        whole.FillWithPaper();
        whole.MoveTo(0, rows.first);
        picture.Object().Display(0, rows.end - 1, whole.Context());
        picture.RequireNoFailure();
        for (std::uint32_t row = rows.first; row < rows.end; ++row)
            take(row, 0, whole.Row(row - rows.first));
    };
}

// Whether nearly all of a huge picture is missing: a damaged header can claim more rows than anybody
// wants to see as paper.
bool IsHopeless(RowRange rows, std::uint32_t missing)
{
    constexpr std::uint32_t kMostMissing = 100000;
    constexpr std::uint32_t kLeastShare = 1000; // a thousandth
    return missing < rows.end && rows.end - missing > kMostMissing &&
           (missing - rows.first) < rows.Count() / kLeastShare;
}

} // namespace

BgrColour BgrOf(unsigned long packed)
{
    return { static_cast<std::uint8_t>(packed >> 16U), static_cast<std::uint8_t>(packed >> 8U),
             static_cast<std::uint8_t>(packed) };
}

GiveRows ShownRows(const Picture& picture, RowRange rows)
{
    if (picture.AsTiff() != nullptr)
        return Coloured(picture, rows);
    if (picture.IsTiffIt())
        return DrawnWhole(picture, rows);
    if (picture.AsJpeg() != nullptr)
        return Decoded(picture, rows);
    return HeldToItsRows(picture, Composite(picture, rows));
}

GiveRows HeldToItsRows(const Picture& picture, GiveRows give)
{
    return [&picture, give = std::move(give)](const TakePixels& take) {
        const std::optional<std::uint32_t> before = FirstMissingRow(picture);
        give(take);
        const std::optional<std::uint32_t> now = FirstMissingRow(picture);
        if (now && now != before)
            throw MissingRowFailure(picture.Path(), *now, picture.Height());
    };
}

void RequireMemory(const Picture& picture, RowRange rows, std::uint64_t most,
                   const std::string& advice)
{
    const std::uint64_t bytes = PreviewBand::BytesOf(picture.Width(), rows.Count());
    if (picture.IsTiffIt() && bytes > most)
        throw FileFailure(picture.Path(),
                          "is drawn as a whole, which takes " + std::to_string(bytes) +
                              " bytes of memory",
                          {}, advice);
}

std::optional<FileFailure> ShortfallOf(const Picture& picture, RowRange rows)
{
    const std::optional<std::uint32_t> missing = FirstMissingRow(picture);
    if (!missing || *missing >= rows.end)
        return std::nullopt;
    FileFailure failure = MissingRowFailure(picture.Path(), *missing, picture.Height());
    if (*missing <= rows.first || IsHopeless(rows, *missing))
        throw FileFailure(std::move(failure));
    return failure;
}

} // namespace tympan::tool
