// From rows of few bits a pixel, as bilevel and palette pictures have them, to a byte for each.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// What becomes of a number of few bits: itself, or its place on the scale from black as 0 to white
/// as 255, where it counts from black or from white.
enum class LevelScale { Numbers, BlackIsZero, WhiteIsZero };

class BitSpreader {
  public:
    /// \param bits 1, 2, 4 or 8
    BitSpreader(unsigned int bits, LevelScale scale);

    /// \param packed numbers, the first in the high bits; as many as `row` has bytes, or more
    void Spread(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row) const;

  private:
    using Group = std::array<std::uint8_t, 8>; // the pixels of a packed byte

    template <std::size_t kPixels>
    void SpreadGroups(std::span<const std::uint8_t> packed, std::span<std::uint8_t> row) const;

    unsigned int bits_;
    std::vector<Group> groups_; // for each packed byte
};

} // namespace tympan::tool
