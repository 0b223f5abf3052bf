// Stretches of one colour, stored in pieces that vectors store evenly.
#pragma once

#include "core/pixel_colour.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tympan {

inline constexpr std::size_t kBytesOfPixel = 3; // blue, green, red

/// Some pixels of one colour.
class ColourPattern {
  public:
    static constexpr std::size_t kPixels = 16;

    ColourPattern() = default; ///< black
    explicit ColourPattern(ScreenColour colour)
    {
        for (std::size_t i = 0; i < bytes_.size(); i += kBytesOfPixel) {
            bytes_[i] = colour.blue;
            bytes_[i + 1] = colour.green;
            bytes_[i + 2] = colour.red;
        }
    }

    /// Stores a stretch in whole patterns.
    /// \param to has room for `pixels` made a multiple of kPixels; what is stored too much, the next
    ///     stretch stores over
    void Store(std::uint8_t* to, std::size_t pixels) const
    {
        for (std::size_t stored = 0; stored < pixels * kBytesOfPixel; stored += bytes_.size())
            std::memcpy(to + stored, bytes_.data(), bytes_.size());
    }

  private:
    std::array<std::uint8_t, kPixels * kBytesOfPixel> bytes_{};
};

} // namespace tympan
