#include "page_layer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <vector>

namespace tympan::tool {

namespace {

constexpr unsigned int kAll = 255;
constexpr std::size_t kMostChannels = 7;

// A part of a layer at its size on the page.
void GiveScaled(const LayerRows& layer, const ScaledSide& across, const ScaledSide& down,
                const BoxAverage::TakeRow& take)
{
    BoxAverage average(across, down, layer.channels, take);
    const PixelRange rows = down.Sources();
    layer.rows({ rows.first, rows.end })(
        [&](std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels) {
            average.Add(row, column, pixels);
        });
}

// The way through a box of the page's pixels that follows a picture's rows.
class QuarterTurnedBox {
  public:
    QuarterTurnedBox(const PixelBox& box, int quarterTurns) : box_(box), quarterTurns_(quarterTurns)
    {}

    std::int64_t Across() const { return IsUpright() ? box_.Width() : box_.Height(); }
    std::int64_t Down() const { return IsUpright() ? box_.Height() : box_.Width(); }

    struct Pixel {
        std::int64_t column, row;
    };
    /// Of the picture's pixel at the size of the box.
    Pixel At(std::int64_t across, std::int64_t down) const
    {
        switch (quarterTurns_) {
        case 0: return { box_.left + across, box_.top + down };
        case 1: return { box_.left + down, box_.bottom - 1 - across };
        case 2: return { box_.right - 1 - across, box_.bottom - 1 - down };
        default: return { box_.right - 1 - down, box_.top + across };
        }
    }

    /// The picture's pixels that fall on a part of the box.
    PixelBox Showing(const PixelBox& part) const
    {
        switch (quarterTurns_) {
        case 0:
            return { part.left - box_.left, part.top - box_.top, part.right - box_.left,
                     part.bottom - box_.top };
        case 1:
            return { box_.bottom - part.bottom, part.left - box_.left, box_.bottom - part.top,
                     part.right - box_.left };
        case 2:
            return { box_.right - part.right, box_.bottom - part.bottom, box_.right - part.left,
                     box_.bottom - part.top };
        default:
            return { part.top - box_.top, box_.right - part.right, part.bottom - box_.top,
                     box_.right - part.left };
        }
    }

  private:
    bool IsUpright() const { return quarterTurns_ % 2 == 0; }

    PixelBox box_;
    int quarterTurns_;
};

void DrawQuarterTurned(const LayerRows& layer, const QuarterTurnedBox& box, const PixelBox& shown,
                       const PutPixel& put)
{
    const PixelBox wanted = box.Showing(shown);
    std::int64_t down = wanted.top;
    GiveScaled(layer, { layer.size.width, box.Across(), wanted.left, wanted.right },
               { layer.size.height, box.Down(), wanted.top, wanted.bottom },
               [&](std::span<const std::uint8_t> pixels) {
                   const std::uint8_t* pixel = pixels.data();
                   for (std::int64_t across = wanted.left; across < wanted.right; ++across) {
                       const auto [column, row] = box.At(across, down);
                       put(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row),
                           pixel, kAll);
                       pixel += layer.channels;
                   }
                   ++down;
               });
}

// The number itself where it lies between the two; the lower one of what is no number.
double Cut(double number, double lowest, double highest)
{
    return number > lowest ? std::min(number, highest) : lowest;
}

// What lies between two places of a side that is so many pixels long on the page, at that size but
// never enlarged, with a pixel more at both ends to go over to.
ScaledSide SideBetween(double from, double to, double length, std::uint32_t sources)
{
    const double targets = Cut(std::round(length), 1.0, sources);
    const double first = Cut(std::floor(from * targets) - 1.0, 0.0, targets - 1.0);
    const double end = Cut(std::ceil(to * targets) + 1.0, first + 1.0, targets);
    return { sources, static_cast<std::int64_t>(targets), static_cast<std::int64_t>(first),
             static_cast<std::int64_t>(end) };
}

// The part of a layer that a box of the page shows, held to be looked at between its pixels.
class HeldLayer {
  public:
    HeldLayer(const LayerRows& layer, const PicturePlace& place, const PixelBox& shown)
        : channels_(layer.channels)
    {
        std::array<PicturePoint, 4> corners;
        std::size_t corner = 0;
        for (const std::int64_t x : { shown.left, shown.right })
            for (const std::int64_t y : { shown.top, shown.bottom })
                corners[corner++] = place.PointAt(static_cast<double>(x), static_cast<double>(y));
        const auto [left, right] = std::minmax_element(
            corners.begin(), corners.end(),
            [](const auto& one, const auto& other) { return one.across < other.across; });
        const auto [top, bottom] = std::minmax_element(
            corners.begin(), corners.end(),
            [](const auto& one, const auto& other) { return one.down < other.down; });
        across_ = SideBetween(left->across, right->across, place.Across(), layer.size.width);
        down_ = SideBetween(top->down, bottom->down, place.Down(), layer.size.height);
        pixels_.reserve(
            static_cast<std::size_t>((across_.end - across_.first) * (down_.end - down_.first)) *
            channels_);
        GiveScaled(layer, across_, down_, [this](std::span<const std::uint8_t> pixels) {
            pixels_.insert(pixels_.end(), pixels.begin(), pixels.end());
        });
    }

    /// The pixel at a place, of the four around it.
    std::array<std::uint8_t, kMostChannels> At(const PicturePoint& point) const
    {
        const Between column = BetweenOn(across_, point.across);
        const Between row = BetweenOn(down_, point.down);
        std::array<std::uint8_t, kMostChannels> pixel{};
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            const auto along = [&](std::size_t heldRow) {
                const double first = Byte(column.first, heldRow, channel);
                return first + column.share * (Byte(column.second, heldRow, channel) - first);
            };
            const double upper = along(row.first);
            pixel[channel] = static_cast<std::uint8_t>(
                std::lround(upper + row.share * (along(row.second) - upper)));
        }
        return pixel;
    }

  private:
    // Two neighbours, and how near the second one is.
    struct Between {
        std::size_t first, second;
        double share;
    };

    static Between BetweenOn(const ScaledSide& side, double place)
    {
        const auto last = static_cast<double>(side.end - side.first - 1);
        const double at =
            Cut(place * static_cast<double>(side.targets) - 0.5 - static_cast<double>(side.first),
                0.0, last);
        const auto first = static_cast<std::size_t>(at);
        return { first, std::min(first + 1, static_cast<std::size_t>(last)),
                 at - static_cast<double>(first) };
    }

    double Byte(std::size_t column, std::size_t row, std::size_t channel) const
    {
        const auto width = static_cast<std::size_t>(across_.end - across_.first);
        return pixels_[(row * width + column) * channels_ + channel];
    }

    std::size_t channels_;
    ScaledSide across_;
    ScaledSide down_;
    std::vector<std::uint8_t> pixels_;
};

void DrawTurned(const LayerRows& layer, const PicturePlace& place, const PixelBox& shown,
                const PutPixel& put)
{
    const HeldLayer held(layer, place, shown);
    ForEachCovered(place, shown,
                   [&](std::uint32_t column, std::uint32_t row, const PicturePoint& point,
                       unsigned int share) { put(column, row, held.At(point).data(), share); });
}

} // namespace

void ForEachCovered(const PicturePlace& place, const PixelBox& shown, const TakeCovered& take)
{
    for (std::int64_t row = shown.top; row < shown.bottom; ++row)
        for (std::int64_t column = shown.left; column < shown.right; ++column) {
            const PicturePoint point =
                place.PointAt(static_cast<double>(column) + 0.5, static_cast<double>(row) + 0.5);
            const auto share = static_cast<unsigned int>(std::lround(place.ShareAt(point) * kAll));
            if (share != 0)
                take(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row), point,
                     share);
        }
}

void DrawLayer(const LayerRows& layer, const PicturePlace& place, const PixelBox& clip,
               const PutPixel& put)
{
    const PixelBox shown = Common(place.Box(), clip);
    if (shown.IsEmpty())
        return;
    if (place.QuarterTurns())
        DrawQuarterTurned(layer, { place.Box(), *place.QuarterTurns() }, shown, put);
    else
        DrawTurned(layer, place, shown, put);
}

} // namespace tympan::tool
