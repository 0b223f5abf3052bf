// The page that pictures are laid on, and the windows that some of them show through.
#pragma once

#include "page_geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// A pixel of a container: how much of it is open, up to 255; what the open part adds to its blue, green
/// and red, and what the rest adds.
inline constexpr std::size_t kWindowChannels = 7;
using WindowPixel = std::array<std::uint8_t, kWindowChannels>;

/// The pixels of a container in a box of the page; nothing is open at first.
class WindowMask {
  public:
    explicit WindowMask(const PixelBox& box);

    WindowPixel& At(std::uint32_t column, std::uint32_t row)
    {
        return pixels_[PlaceOf(column, row)];
    }
    const WindowPixel& At(std::uint32_t column, std::uint32_t row) const
    {
        return pixels_[PlaceOf(column, row)];
    }

  private:
    std::size_t PlaceOf(std::uint32_t column, std::uint32_t row) const
    {
        return static_cast<std::size_t>((row - box_.top) * box_.Width() + (column - box_.left));
    }

    PixelBox box_;
    std::vector<WindowPixel> pixels_;
};

/// White paper, and what is laid on it.
class PageCanvas {
  public:
    /// The memory that a page takes at most while pictures are laid on it: itself, a window as large
    /// as it, and a turned picture that covers it, its corners included.
    static std::uint64_t MostBytesOf(PixelSize size);

    explicit PageCanvas(PixelSize size);

    /// Lays a pixel of a layer with 3 or 6 bytes a pixel on one of the page.
    /// \param share how much of the page's pixel it covers, up to 255
    void Lay(std::uint32_t column, std::uint32_t row, std::span<const std::uint8_t> pixel,
             unsigned int share);
    /// The same for what shows through a window. Where the container is what the page shows, the pixel
    /// takes the place of the open part alone, so that no edge keeps some of its colour.
    void LayThrough(const WindowPixel& window, std::uint32_t column, std::uint32_t row,
                    std::span<const std::uint8_t> pixel, unsigned int share);

    /// Blue, green and red of each pixel.
    std::span<const std::uint8_t> Row(std::uint32_t row) const;

  private:
    std::span<std::uint8_t> PixelAt(std::uint32_t column, std::uint32_t row);

    PixelSize size_;
    std::vector<std::uint8_t> pixels_;
};

} // namespace tympan::tool
