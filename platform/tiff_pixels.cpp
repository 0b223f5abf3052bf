#include "platform/tiff_pixels.h"

#include <cstring>

namespace tympan {

void CopyAnySample(std::span<const std::byte> from, std::uint64_t fromIndex,
                   std::span<std::byte> to, std::uint64_t toIndex, std::uint16_t bits)
{
    if (bits % 8 == 0) {
        const std::size_t bytes = bits / 8U;
        std::memcpy(&to[toIndex * bytes], &from[fromIndex * bytes], bytes);
        return;
    }
    constexpr std::byte kHighest{ 0x80 };
    for (std::uint64_t i = 0; i != bits; ++i) {
        const std::uint64_t source = fromIndex * bits + i;
        const std::uint64_t target = toIndex * bits + i;
        const bool isSet = (from[source / 8] & (kHighest >> (source % 8))) != std::byte{ 0 };
        to[target / 8] &= ~(kHighest >> (target % 8));
        to[target / 8] |= isSet ? kHighest >> (target % 8) : std::byte{ 0 };
    }
}

void CopySamples(std::span<const std::byte> from, std::uint64_t count, std::span<std::byte> to,
                 SamplePlaces places, std::uint16_t bits)
{
    if (places.step == 1 && (places.first * bits) % 8 == 0 && (count * bits) % 8 == 0) {
        std::memcpy(&to[places.first * bits / 8], from.data(), count * bits / 8);
        return;
    }
    for (std::uint64_t i = 0; i != count; ++i)
        CopySample(from, i, to, places.first + i * places.step, bits);
}

} // namespace tympan
