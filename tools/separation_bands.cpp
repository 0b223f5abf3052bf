#include "separation_bands.h"

#include "separations.h"

#include <algorithm>
#include <utility>

namespace tympan::tool {

namespace {

constexpr std::size_t kBandBytes = 4U << 20U;

// Whether the rows were read. They stand one behind the other in `bytes`.
bool Read(const Picture& picture, RowRange rows, ColorSeparationType separation,
          std::span<std::uint8_t> bytes)
{
    unsigned int rowsInfo = 0;
    const unsigned long read =
        picture.Rows().GetPictureRows(bytes.data(), rows.first, rows.end, rowsInfo, nullptr,
                                      separation, static_cast<unsigned long>(bytes.size()), false);
    return read == std::uint64_t{ rows.Count() } * picture.Width();
}

// The places of separations among those that a picture has.
std::vector<std::size_t> PlacesOf(const Picture& picture,
                                  const std::vector<ColorSeparationType>& separations)
{
    const std::vector<ColorSeparationType> all = SeparationsOf(picture.Object());
    std::vector<std::size_t> places(separations.size());
    std::transform(separations.begin(), separations.end(), places.begin(), [&](auto separation) {
        return static_cast<std::size_t>(std::find(all.begin(), all.end(), separation) -
                                        all.begin());
    });
    return places;
}

} // namespace

SeparationBands::SeparationBands(const Picture& picture,
                                 std::vector<ColorSeparationType> separations, RowRange rows)
    : picture_(picture), separations_(std::move(separations)), rows_(rows),
      samples_(PlacesOf(picture, separations_)),
      bandRows_(std::clamp<std::size_t>(
          kBandBytes / std::max<std::size_t>(picture.Width() * separations_.size(), 1), 1,
          rows.Count())),
      planes_(separations_.size(), std::vector<std::uint8_t>(picture.Width() * bandRows_)), band_{
          rows.first, rows.first
      }
{
    if (picture.AsJpeg() != nullptr)
        jpeg_.emplace(picture, rows);
    if (picture.AsTiff() != nullptr)
        tiff_.emplace(picture);
}

std::span<const std::uint8_t> SeparationBands::Row(std::uint32_t row, std::size_t separation)
{
    if (row >= band_.end)
        ReadBand(row);
    return PlaceOf(row, separation);
}

std::span<std::uint8_t> SeparationBands::PlaceOf(std::uint32_t row, std::size_t separation)
{
    const std::size_t width = picture_.Width();
    return std::span(planes_[separation]).subspan((row - band_.first) * width, width);
}

void SeparationBands::ReadBand(std::uint32_t firstRow)
{
    constexpr std::uint8_t kNoInk = 255;
    band_ = { firstRow,
              static_cast<std::uint32_t>(std::min<std::size_t>(firstRow + bandRows_, rows_.end)) };
    if (jpeg_) {
        Decode(*jpeg_);
        return;
    }
    if (tiff_) {
        ReadPlates(*tiff_);
        return;
    }
    for (std::size_t i = 0; i < separations_.size(); ++i) {
        std::fill(planes_[i].begin(), planes_[i].end(), kNoInk);
        if (!Read(picture_, band_, separations_[i], planes_[i]))
            throw RowsFailure(picture_, band_);
    }
}

void SeparationBands::Decode(JpegBands& jpeg)
{
    const std::size_t width = picture_.Width();
    const std::size_t components = jpeg.Components();
    for (std::uint32_t row = band_.first; row < band_.end; ++row) {
        const std::span<const std::uint8_t> pixels = jpeg.Row(row);
        for (std::size_t i = 0; i < planes_.size(); ++i) {
            std::uint8_t* const plate = planes_[i].data() + (row - band_.first) * width;
            for (std::size_t x = 0; x < width; ++x)
                plate[x] = pixels[x * components + samples_[i]];
        }
    }
}

// Row by row, for the library keeps the rows that it has decoded together, not those of a whole band.
void SeparationBands::ReadPlates(TiffPlates& tiff)
{
    for (std::uint32_t row = band_.first; row < band_.end; ++row)
        for (std::size_t i = 0; i < separations_.size(); ++i)
            tiff.Read(row, separations_[i], PlaceOf(row, i));
}

FileFailure RowsFailure(const Picture& picture, RowRange rows)
{
    const ColorSeparationType separation = SeparationsOf(picture.Object()).front();
    std::vector<std::uint8_t> bytes(picture.Width());
    for (std::uint32_t row = rows.first; row < rows.end; ++row)
        if (!Read(picture, { row, row + 1 }, separation, bytes))
            return RowFailure(picture, row);
    return picture.Failure();
}

FileFailure RowFailure(const Picture& picture, std::uint32_t row)
{
    const FileFailure failure = picture.Failure();
    return { failure.File(),
             "row " + std::to_string(row) + " of " + std::to_string(picture.Height()) + ": " +
                 failure.WhatHappened(),
             failure.Code(), failure.Advice() };
}

} // namespace tympan::tool
