// The memory that the library promises to stay below, for each format.
#pragma once

#include <cstddef>

namespace tympan::test {

/// What one object, or one check, may hold. docs/promises.md says what it is that grows.
struct Held {
    std::size_t factor;     ///< of the file's size
    std::size_t claims = 1; ///< how many buffers go by a header's word, up to 16 MiB each

    constexpr std::size_t Most(std::size_t fileBytes) const
    {
        constexpr std::size_t kObject = 64U << 10U, kClaim = 16U << 20U;
        return kObject + claims * kClaim + factor * fileBytes;
    }
};

inline constexpr Held kHeldByCt{ 1 };
inline constexpr Held kHeldByLw{ 2 };
inline constexpr Held kHeldByJpeg{ 2 };
inline constexpr Held kHeldByPage{ 4 };
inline constexpr Held kHeldByTiff{ 64, 3 }; // a row, a strip, a tile
inline constexpr Held kHeldByTiffIt{ 16 };

} // namespace tympan::test
