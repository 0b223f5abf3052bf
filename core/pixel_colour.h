// The arithmetic from plates to screen colours: the rule for one pixel, and its forms for
// stretches.
#pragma once

#include "core/picture_parameters.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tympan {

/// Red, green and blue of a pixel.
struct ScreenColour {
    std::uint8_t red, green, blue;

    /// As 0x00BBGGRR.
    constexpr unsigned long Packed() const
    {
        return static_cast<unsigned long>(red | green << 8 | blue << 16);
    }
    static constexpr ScreenColour Of(unsigned long packed)
    {
        return { static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8U),
                 static_cast<std::uint8_t>(packed >> 16U) };
    }
};

inline constexpr std::uint8_t kNoInk = 255; // as a plate's byte

/// What each of 256 plate bytes becomes.
using ByteTable = std::array<std::uint8_t, 256>;
/// The table that changes nothing.
ByteTable UnchangedBytes();

/// The four plates of a stretch of pixels, each `count` bytes, 255 for no ink.
struct Plates {
    std::array<const std::uint8_t*, 4> plate;
    std::size_t count;
};

/// Stores the screen colour of each pixel as blue, green, red. `bgr` holds 3 bytes for each. The
/// form is chosen by the processor; all give the same bytes.
void PlatesToBgr(const Plates& plates, std::uint8_t* bgr);
/// The same past the processor's caches: for a bitmap that they don't hold, and that nobody looks
/// at at once.
void PlatesToBgrStreamed(const Plates& plates, std::uint8_t* bgr);
/// The plain form: pixel by pixel, by the rule of `CalculatePixelAsRGB`.
void PlatesToBgrPlain(const Plates& plates, std::uint8_t* bgr);

/// The tints of one plate: what each of its bytes looks like by itself.
class TintTable {
  public:
    explicit TintTable(ColorSeparationType separation);
    /// Stores the tint of each byte as blue, green, red.
    void ToBgr(const std::uint8_t* plate, std::size_t count, std::uint8_t* bgr) const;

  private:
    std::array<ScreenColour, 256> tints_{};
};

} // namespace tympan
