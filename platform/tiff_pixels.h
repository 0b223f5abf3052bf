// The samples of decoded pixels, brought to their places in a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// Copies one of samples of some bits each, packed from the highest bit on, or bytes in the
/// machine's order.
void CopySample(std::span<const std::byte> from, std::uint64_t fromIndex, std::span<std::byte> to,
                std::uint64_t toIndex, std::uint16_t bits);

/// Where samples go in a row: to every `step`th place from `first` on.
struct SamplePlaces {
    std::uint64_t first = 0;
    std::uint64_t step = 1;
};

void CopySamples(std::span<const std::byte> from, std::uint64_t count, std::span<std::byte> to,
                 SamplePlaces places, std::uint16_t bits);

/// The stored YCbCr of pixels that a JPEG decoder has made RGB of: the inverse of its sums.
void MakeYCbCr(std::span<std::byte> pixels);

} // namespace tympan
