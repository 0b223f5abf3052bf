// The numbers of TIFF files that the library knows pictures by.
#pragma once

#include "tiff/tiff_file.h"

#include <cstdint>

namespace tympan {

namespace photometric {
inline constexpr std::uint16_t kWhiteIsZero = 0;
inline constexpr std::uint16_t kBlackIsZero = 1;
inline constexpr std::uint16_t kRgb = 2;
inline constexpr std::uint16_t kPalette = 3;
inline constexpr std::uint16_t kSeparated = 5;
inline constexpr std::uint16_t kYCbCr = 6;
} // namespace photometric

/// The kind of picture that these numbers make; `NoColorSet` for one that isn't known.
ColorSetType KindOf(std::uint16_t bits, std::uint16_t samples, std::uint16_t photometric);

} // namespace tympan
