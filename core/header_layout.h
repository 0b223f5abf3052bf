// Where the fields of the common header stand, from the start of the file.
#pragma once

#include <cstddef>

namespace tympan {

struct HeaderPlace {
    std::size_t offset = 0;
    std::size_t width = 0; // bytes
};

inline constexpr HeaderPlace kHeaderNlwMark{ 2, 1 };
inline constexpr HeaderPlace kHeaderFileType{ 80, 2 };
inline constexpr HeaderPlace kHeaderUnitsCode{ 1024, 1 };
inline constexpr HeaderPlace kHeaderSeparations{ 1025, 3 }; // count, a reserved byte, mask
inline constexpr HeaderPlace kHeaderHeight{ 1028, 14 };
inline constexpr HeaderPlace kHeaderWidth{ 1042, 14 };
inline constexpr HeaderPlace kHeaderHeightInPixels{ 1056, 12 };
inline constexpr HeaderPlace kHeaderWidthInPixels{ 1068, 12 };
inline constexpr std::size_t kHeaderEnd = 1080;

inline constexpr unsigned char kInchesCode = 1;
inline constexpr unsigned char kMillimetresCode = 0; // as every other value but that of inches
inline constexpr double kInchesPerMillimetre = 0.03937007874015748;

} // namespace tympan
