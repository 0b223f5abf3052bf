#include "bit_spreader.h"

#include <algorithm>
#include <cstring>

namespace tympan::tool {

namespace {

std::uint8_t ByteFor(unsigned int number, unsigned int bits, LevelScale scale)
{
    const unsigned int most = (1U << bits) - 1U;
    const unsigned int level = scale == LevelScale::WhiteIsZero ? most - number : number;
    return static_cast<std::uint8_t>(scale == LevelScale::Numbers ? number : level * 255U / most);
}

} // namespace

BitSpreader::BitSpreader(unsigned int bits, LevelScale scale) : bits_(bits), groups_(256)
{
    const unsigned int most = (1U << bits) - 1U;
    for (unsigned int packed = 0; packed < groups_.size(); ++packed)
        for (unsigned int pixel = 0; pixel < 8U / bits; ++pixel)
            groups_[packed][pixel] =
                ByteFor(packed >> (8U - bits * (pixel + 1U)) & most, bits, scale);
}

void BitSpreader::Spread(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row) const
{
    switch (bits_) {
    case 1: return SpreadGroups<8>(packed, row);
    case 2: return SpreadGroups<4>(packed, row);
    case 4: return SpreadGroups<2>(packed, row);
    default: return SpreadGroups<1>(packed, row);
    }
}

template <std::size_t kPixels>
void BitSpreader::SpreadGroups(std::span<const std::uint8_t> packed,
                               std::span<std::uint8_t> row) const
{
    const std::size_t whole = row.size() / kPixels;
    for (std::size_t i = 0; i < whole; ++i)
        std::memcpy(&row[i * kPixels], groups_[packed[i]].data(), kPixels);
    const std::size_t left = row.size() % kPixels;
    if (left != 0)
        std::copy_n(groups_[packed[whole]].begin(), left, &row[whole * kPixels]);
}

} // namespace tympan::tool
