// Pixels of four inks side by side to screen colours. The forms for the processor's vectors give the
// same as the plain one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// Stores the screen colour of each pixel as blue, green, red. A pixel has the four bytes C, M, Y, K,
/// 0 for no ink. `bgr` holds 3 bytes for each.
void InksToBgr(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr);
/// The plain form: pixel by pixel, by the rule of `CalculatePixelAsRGB3`.
void InksToBgrPlain(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr);

using InksToBgrForm = void (*)(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr);

/// One set of the processor's instructions at the work.
struct InkColourForm {
    const char* name;
    InksToBgrForm toBgr;
};

/// The forms that the processor that runs this has, the fastest first.
std::span<const InkColourForm> InkColourForms();

} // namespace tympan
