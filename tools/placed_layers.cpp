#include "placed_layers.h"

#include "page_canvas.h"
#include "separation_bands.h"
#include "separations.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::uint8_t kNoInk = 255;
constexpr std::uint8_t kAll = 255;
constexpr std::size_t kShownChannels = 3;
// The inks of blue, green and red.
constexpr std::array<ColorSeparationType, kShownChannels> kInks{ Yellow, Magenta, Cyan };

// What the pixels of each colour become, by the number that rows name it by.
template <std::size_t kChannels>
using PixelTable = std::array<std::array<std::uint8_t, kChannels>, 256>;

LwPictureParameters& ColoursOf(const Picture& lineWork)
{
    return dynamic_cast<LwPictureParameters&>(*lineWork.Object().PictureParams());
}

// The rows as colour numbers are those of a separation that has them for ink values.
template <std::size_t kChannels>
GiveRows RowsBy(const Picture& lineWork, const PixelTable<kChannels>& table, RowRange rows)
{
    return [&lineWork, table, rows](const TakePixels& take) {
        LwPictureParameters& colours = ColoursOf(lineWork);
        for (unsigned int row = 0; row < colours.TableColorsNumber(); ++row)
            colours.SetColor(Cyan, static_cast<unsigned char>(row),
                             static_cast<unsigned char>(row + 1));
        SeparationBands bands(lineWork, { Cyan }, rows);
        std::vector<std::uint8_t> pixels(lineWork.Width() * kChannels);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            auto pixel = pixels.begin();
            for (const std::uint8_t colour : bands.Row(row, 0))
                pixel = std::copy(table[colour].begin(), table[colour].end(), pixel);
            take(row, 0, pixels);
        }
    };
}

template <std::size_t kChannels>
LayerRows LayerBy(const Picture& lineWork, const PixelTable<kChannels>& table)
{
    return { { lineWork.Width(), lineWork.Height() }, kChannels, [&lineWork, table](RowRange rows) {
                return RowsBy(lineWork, table, rows);
            } };
}

// What of a row of the colour table is transparent, by blue, green and red.
std::array<bool, kShownChannels> ClearChannels(const Picture& lineWork, unsigned char row)
{
    const LwPictureParameters& colours = ColoursOf(lineWork);
    const auto separations = SeparationsOf(lineWork.Object());
    const auto isClear = [&](ColorSeparationType separation) {
        return colours.IsColorTransparent(row, separation);
    };
    const bool isAllClear = std::all_of(separations.begin(), separations.end(), isClear);
    std::array<bool, kShownChannels> clear{};
    std::transform(kInks.begin(), kInks.end(), clear.begin(), [&](ColorSeparationType ink) {
        return isAllClear || (colours.SeparationExists(ink) && isClear(ink));
    });
    return clear;
}

BgrColour ColourOf(const Picture& lineWork, unsigned char row)
{
    const LwPictureParameters& colours = ColoursOf(lineWork);
    std::array<unsigned char, PictureParameters::kSlots> inks{};
    inks.fill(kNoInk);
    for (const ColorSeparationType separation : SeparationsOf(lineWork.Object()))
        if (!colours.IsColorTransparent(row, separation))
            inks.at(static_cast<std::size_t>(separation)) = colours.GetColor(row, separation);
    return BgrOf(PictureFileInterface::CalculatePixelAsRGB(inks.data()));
}

// Where a colour is clear, all that is left of its own is the shade of its black.
std::array<std::uint8_t, 2 * kShownChannels> ClearColour(const Picture& lineWork, unsigned char row)
{
    const BgrColour colour = ColourOf(lineWork, row);
    const auto clear = ClearChannels(lineWork, row);
    std::array<std::uint8_t, 2 * kShownChannels> pixel{};
    for (std::size_t channel = 0; channel < kShownChannels; ++channel) {
        pixel[channel] = clear[channel] ? std::uint8_t{ 0 } : colour[channel];
        pixel[kShownChannels + channel] =
            clear[channel] ? static_cast<std::uint8_t>(kAll - colour[channel]) : kAll;
    }
    return pixel;
}

PixelTable<2 * kShownChannels> ClearColours(const Picture& lineWork)
{
    PixelTable<2 * kShownChannels> table{};
    for (unsigned int row = 0; row < ColoursOf(lineWork).TableColorsNumber(); ++row)
        table[row + 1] = ClearColour(lineWork, static_cast<unsigned char>(row));
    return table;
}

} // namespace

LayerRows LayerOf(const Picture& picture)
{
    if (picture.AsLw() != nullptr)
        return LayerBy(picture, ClearColours(picture));
    return { { picture.Width(), picture.Height() }, kShownChannels, [&picture](RowRange rows) {
                return ShownRows(picture, rows);
            } };
}

LayerRows WindowOf(const Picture& lineWork, std::span<const std::uint8_t> colours)
{
    const auto shown = ClearColours(lineWork);
    PixelTable<kWindowChannels> table{};
    for (std::size_t colour = 0; colour < table.size(); ++colour)
        std::copy_n(shown[colour].begin(), kShownChannels,
                    table[colour].begin() + 1 + kShownChannels);
    for (const std::uint8_t colour : colours) {
        table[colour] = { kAll };
        std::copy_n(shown[colour].begin(), kShownChannels, table[colour].begin() + 1);
    }
    return LayerBy(lineWork, table);
}

} // namespace tympan::tool
