// Holds the sizes that a header claims against the file that makes the claim.
#pragma once

#include <cstdint>

namespace tympan {

/// What is allocated on a header's word alone, in bytes.
inline constexpr std::uint64_t kFreeClaim = 16U << 20U;

/// Whether a file of `fileLength` bytes may ask for `claim` bytes of memory.
constexpr bool MayClaim(std::uint64_t claim, std::uint64_t fileLength)
{
    return claim <= kFreeClaim || claim <= fileLength;
}

} // namespace tympan
