// How a row comes to another resolution: by repeating or dropping its pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tympan {

/// A length in pixels, which are bytes, rounded to a whole number; nothing for one that no memory
/// can hold, or that is not a number.
std::optional<std::uint64_t> RoundedLength(double length);

/// Fills `output` from a row of `width` pixels, not 0: the position in the row grows by the same step,
/// 1 by the ratio, for each pixel of the output, and the pixel to its left is taken.
void Resample(const unsigned char* row, std::uint64_t width, double ratio, unsigned char* output,
              std::uint64_t outputWidth);

} // namespace tympan
