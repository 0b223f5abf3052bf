#include "platform/tiff_pixels.h"

#include <algorithm>
#include <cstring>

namespace tympan {

void CopySample(std::span<const std::byte> from, std::uint64_t fromIndex, std::span<std::byte> to,
                std::uint64_t toIndex, std::uint16_t bits)
{
    if (bits == 8) {
        to[toIndex] = from[fromIndex];
        return;
    }
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

void MakeYCbCr(std::span<std::byte> pixels)
{
    // In parts of 65536.
    constexpr int kSums[3][3] = { { 19595, 38470, 7471 },
                                  { -11059, -21709, 32768 },
                                  { 32768, -27439, -5329 } };
    constexpr int kHalf = 1 << 15;
    constexpr int kNoColour[3] = { 0, 128, 128 };
    for (; pixels.size() >= 3; pixels = pixels.subspan(3)) {
        const int rgb[3] = { std::to_integer<int>(pixels[0]), std::to_integer<int>(pixels[1]),
                             std::to_integer<int>(pixels[2]) };
        for (std::size_t i = 0; i != 3; ++i) {
            const int sum = kSums[i][0] * rgb[0] + kSums[i][1] * rgb[1] + kSums[i][2] * rgb[2];
            pixels[i] =
                static_cast<std::byte>(std::clamp(((sum + kHalf) >> 16) + kNoColour[i], 0, 255));
        }
    }
}

} // namespace tympan
