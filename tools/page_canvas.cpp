#include "page_canvas.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tympan::tool {

namespace {

constexpr std::size_t kChannels = 3;
constexpr unsigned int kAll = 255;

// A channel of a layer's pixel, and how much of it isn't clear.
struct Channel {
    unsigned int value, cover;
};

Channel LayerChannel(std::span<const std::uint8_t> pixel, std::size_t channel)
{
    return { pixel[channel], pixel.size() > kChannels ? pixel[kChannels + channel] : kAll };
}

// A channel of the page on which another is laid, by 255 parts of `share` and of `open`, in place of
// `replaced`, which counts in parts of 255.
std::uint8_t Laid(unsigned int below, Channel laid, unsigned int share, unsigned int open,
                  unsigned int replaced)
{
    constexpr std::int64_t kScale = std::int64_t{ kAll } * kAll * kAll;
    const std::int64_t sum = below * kScale + std::int64_t{ laid.value } * share * open * kAll -
                             std::int64_t{ laid.cover } * share * replaced;
    return static_cast<std::uint8_t>(
        std::clamp<std::int64_t>((sum + kScale / 2) / kScale, 0, kAll));
}

// Whether nothing was laid on a container, or on nothing that can be seen.
bool ShowsContainer(std::span<const std::uint8_t> place, const WindowPixel& window)
{
    constexpr int kRounding = 2;
    for (std::size_t channel = 0; channel < kChannels; ++channel)
        if (std::abs(place[channel] - window[1 + channel] - window[1 + kChannels + channel]) >
            kRounding)
            return false;
    return true;
}

} // namespace

WindowMask::WindowMask(const PixelBox& box)
    : box_(box), pixels_(static_cast<std::size_t>(box.Width() * box.Height()))
{}

std::uint64_t PageCanvas::MostBytesOf(PixelSize size)
{
    constexpr std::uint64_t kTurnedBytes = kWindowChannels; // of a pixel at most
    const std::uint64_t pixels = std::uint64_t{ size.width } * size.height;
    const std::uint64_t sides = std::uint64_t{ size.width } + size.height;
    if (sides > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::uint64_t>::max();
    return pixels * (kChannels + kWindowChannels) + sides * sides / 2 * kTurnedBytes;
}

PageCanvas::PageCanvas(PixelSize size)
    : size_(size), pixels_(std::size_t{ size.width } * size.height * kChannels, kAll)
{}

std::span<std::uint8_t> PageCanvas::PixelAt(std::uint32_t column, std::uint32_t row)
{
    return std::span(pixels_).subspan((std::size_t{ row } * size_.width + column) * kChannels,
                                      kChannels);
}

void PageCanvas::Lay(std::uint32_t column, std::uint32_t row, std::span<const std::uint8_t> pixel,
                     unsigned int share)
{
    const std::span<std::uint8_t> place = PixelAt(column, row);
    for (std::size_t channel = 0; channel < kChannels; ++channel)
        place[channel] =
            Laid(place[channel], LayerChannel(pixel, channel), share, kAll, place[channel] * kAll);
}

void PageCanvas::LayThrough(const WindowPixel& window, std::uint32_t column, std::uint32_t row,
                            std::span<const std::uint8_t> pixel, unsigned int share)
{
    const unsigned int open = window[0];
    const std::span<std::uint8_t> place = PixelAt(column, row);
    const bool isOnTop = ShowsContainer(place, window);
    for (std::size_t channel = 0; channel < kChannels; ++channel)
        place[channel] = Laid(place[channel], LayerChannel(pixel, channel), share, open,
                              isOnTop ? window[1 + channel] * kAll : place[channel] * open);
}

std::span<const std::uint8_t> PageCanvas::Row(std::uint32_t row) const
{
    const std::size_t bytes = std::size_t{ size_.width } * kChannels;
    return std::span(pixels_).subspan(row * bytes, bytes);
}

} // namespace tympan::tool
