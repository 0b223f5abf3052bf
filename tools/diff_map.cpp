#include "diff_map.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>

namespace tympan::tool {

namespace {

constexpr RgbColour kPaper{ 255, 255, 255 };
constexpr RgbColour kLettering{ 60, 60, 72 };

// Of differences from 1, 2, 4 and so on to 128: the small ones are the ones that are hard to see
// otherwise.
constexpr std::array<RgbColour, 8> kColours{ {
    { 255, 200, 0 },
    { 255, 150, 0 },
    { 255, 95, 0 },
    { 236, 40, 40 },
    { 205, 20, 113 },
    { 150, 20, 150 },
    { 85, 20, 150 },
    { 24, 15, 62 },
} };

RgbColour ColourOf(std::uint8_t difference)
{
    return kColours[std::bit_width(difference) - 1U];
}

// So light that no colour is mistaken.
RgbColour Faint(std::uint8_t grey)
{
    constexpr int kLightening = 4;
    const auto level = static_cast<std::uint8_t>(255 - (255 - grey) / kLightening);
    return { level, level, level };
}

// The mean of the separations, pixel by pixel.
void PutGreys(CanonicalPicture& picture, std::uint32_t row, std::span<std::uint8_t> greys)
{
    const std::size_t count = std::max<std::size_t>(picture.Names().size(), 1);
    std::vector<std::uint32_t> sums(greys.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::span<const std::uint8_t> plate = picture.Row(row, i);
        std::transform(plate.begin(), plate.end(), sums.begin(), sums.begin(),
                       [](std::uint8_t sample, std::uint32_t sum) { return sum + sample; });
    }
    std::transform(sums.begin(), sums.end(), greys.begin(),
                   [=](std::uint32_t sum) { return static_cast<std::uint8_t>(sum / count); });
}

std::vector<PixelRange> BoxesOf(const ScaledSide& side)
{
    std::vector<PixelRange> boxes;
    for (std::int64_t target = side.first; target < side.end; ++target)
        boxes.push_back(side.BoxOf(target));
    return boxes;
}

// A box of each colour, and below it the least difference that has it.
RgbImage Legend(const HeatMapLayout& layout)
{
    RgbImage image(layout.width, layout.legendHeight, kPaper);
    const std::uint32_t unit = layout.unit;
    const auto boxWidth =
        static_cast<std::uint32_t>((layout.width - 2 * layout.margin) / kColours.size());
    for (std::uint32_t i = 0; i < kColours.size(); ++i) {
        const std::uint32_t left = layout.margin + i * boxWidth;
        for (std::uint32_t row = unit; row < 2 * unit + unit / 2; ++row)
            for (std::uint32_t column = left; column < left + boxWidth; ++column)
                image.Lay(column, row, kColours[i]);
        const std::string least = std::to_string(1U << i);
        DrawText(image, least, left + (boxWidth - TextWidth(least, unit)) / 2, 3.2 * unit, unit,
                 kLettering);
    }
    return image;
}

void WriteBlank(PngFile& png, const HeatMapLayout& layout, std::uint32_t rows)
{
    const RgbImage blank(layout.width, 1, kPaper);
    for (std::uint32_t row = 0; row < rows; ++row)
        png.Write(blank.Row(0));
}

} // namespace

DiffMap::DiffMap(const OutputFile& output, PixelSize picture, PixelSize map)
    : layout_(HeatMapForm{ picture, map }),
      png_(output, { layout_.width, layout_.height, 0.0, 0.0 }, PngColour::Rgb),
      boxes_(BoxesOf(ScaledSide::Whole(picture.width, map.width))), greatest_(map.width),
      greys_(ScaledSide::Whole(picture.width, map.width),
             ScaledSide::Whole(picture.height, map.height), 1,
             [this](auto greys) { WriteMapRow(greys); }),
      greyRow_(picture.width)
{
    WriteBlank(png_, layout_, layout_.margin);
}

void DiffMap::Add(CanonicalPicture& shown, std::uint32_t row,
                  std::span<const std::uint8_t> differences)
{
    for (std::size_t x = 0; x < boxes_.size(); ++x)
        for (std::uint32_t column = boxes_[x].first; column < boxes_[x].end; ++column)
            greatest_[x] = std::max(greatest_[x], differences[column]);
    PutGreys(shown, row, greyRow_);
    greys_.Add(row, 0,
               greyRow_); // writes a row of the map when this is the last that it stands for
}

void DiffMap::WriteMapRow(std::span<const std::uint8_t> greys)
{
    RgbImage row(layout_.width, 1, kPaper);
    for (std::size_t x = 0; x < greys.size(); ++x)
        row.Lay(static_cast<std::int64_t>(layout_.left + x), 0,
                greatest_[x] != 0 ? ColourOf(greatest_[x]) : Faint(greys[x]));
    png_.Write(row.Row(0));
    std::fill(greatest_.begin(), greatest_.end(), std::uint8_t{ 0 });
}

void DiffMap::Finish()
{
    WriteBlank(png_, layout_, 1);
    const RgbImage legend = Legend(layout_);
    for (std::uint32_t row = 0; row < layout_.legendHeight; ++row)
        png_.Write(legend.Row(row));
    png_.Finish();
}

} // namespace tympan::tool
