// Holds the sizes that a header claims against the file that makes the claim.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace tympan {

/// What is allocated on a header's word alone, in bytes.
inline constexpr std::uint64_t kFreeClaim = 16U << 20U;

/// What memory can hold at all. A size up to it goes into a `std::size_t` of 32 bits as it is.
inline constexpr std::uint64_t kAddressable = std::numeric_limits<std::ptrdiff_t>::max();

/// Whether a file of `fileLength` bytes may ask for `claim` bytes of memory.
constexpr bool MayClaim(std::uint64_t claim, std::uint64_t fileLength)
{
    return claim <= kFreeClaim || (claim <= fileLength && claim <= kAddressable);
}

} // namespace tympan
