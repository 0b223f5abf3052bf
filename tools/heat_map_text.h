// Draws the numbers of a heat map's legend, in letters of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tympan::tool {

using RgbColour = std::array<std::uint8_t, 3>; ///< red, green and blue

/// A colour between two others.
/// \param share of `to`, from 0.0 to 1.0
RgbColour Between(const RgbColour& from, const RgbColour& to, double share);

/// A picture in memory that is drawn on.
class RgbImage {
  public:
    RgbImage(std::uint32_t width, std::uint32_t height, const RgbColour& paper);

    std::uint32_t Width() const { return width_; }
    std::uint32_t Height() const { return height_; }
    /// Lays a colour on a pixel; nothing outside of the image.
    /// \param share how much of the pixel it covers, from 0.0 to 1.0
    void Lay(std::int64_t column, std::int64_t row, const RgbColour& colour, double share = 1.0);
    /// Red, green and blue of each pixel.
    std::span<const std::uint8_t> Row(std::uint32_t row) const;

  private:
    std::uint32_t width_;
    std::uint32_t height_;
    std::vector<std::uint8_t> samples_;
};

/// How wide a text is in letters of this height. It may have digits, blanks, `%` and `>`.
double TextWidth(std::string_view text, double height);

/// Draws a text whose first letter begins at `left` and whose letters stand between `top` and `top` +
/// `height`; all in pixels.
void DrawText(RgbImage& image, std::string_view text, double left, double top, double height,
              const RgbColour& colour);

} // namespace tympan::tool
