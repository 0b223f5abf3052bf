// The samples of decoded pixels, brought to their places in a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// Copies one of samples of some bits each, packed from the highest bit on, or bytes in the
/// machine's order.
void CopyAnySample(std::span<const std::byte> from, std::uint64_t fromIndex,
                   std::span<std::byte> to, std::uint64_t toIndex, std::uint16_t bits);

/// The same, fast for those of 8 bits.
inline void CopySample(std::span<const std::byte> from, std::uint64_t fromIndex,
                       std::span<std::byte> to, std::uint64_t toIndex, std::uint16_t bits)
{
    if (bits == 8)
        to[toIndex] = from[fromIndex];
    else
        CopyAnySample(from, fromIndex, to, toIndex, bits);
}

/// Where samples go in a row: to every `step`th place from `first` on.
struct SamplePlaces {
    std::uint64_t first = 0;
    std::uint64_t step = 1;
};

void CopySamples(std::span<const std::byte> from, std::uint64_t count, std::span<std::byte> to,
                 SamplePlaces places, std::uint16_t bits);

} // namespace tympan
