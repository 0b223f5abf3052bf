// Whole numbers out of doubles and products of sizes, without a cast out of range and without a
// wrap.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

namespace tympan {

/// `value` cut towards zero and held to the range of `Whole`; 0 for what is not a number.
template <typename Whole>
constexpr Whole CutToWhole(double value)
{
    static_assert(std::is_integral_v<Whole>);
    constexpr Whole lowest = std::numeric_limits<Whole>::lowest();
    constexpr Whole highest = std::numeric_limits<Whole>::max();
    if (!(value > static_cast<double>(lowest)))
        return value <= static_cast<double>(lowest) ? lowest : Whole{ 0 };
    if (value >= static_cast<double>(highest))
        return highest;
    return static_cast<Whole>(value);
}

/// The product, or nothing when 64 bits don't hold it.
constexpr std::optional<std::uint64_t> Product(std::uint64_t left, std::uint64_t right)
{
    const bool bothAreSmall = ((left | right) >> 32U) == 0; // which spares nearly all the division
    if (!bothAreSmall && left != 0 && right > std::numeric_limits<std::uint64_t>::max() / left)
        return std::nullopt;
    return left * right;
}

/// The sum, or nothing when 64 bits don't hold it.
constexpr std::optional<std::uint64_t> Sum(std::uint64_t left, std::uint64_t right)
{
    if (right > std::numeric_limits<std::uint64_t>::max() - left)
        return std::nullopt;
    return left + right;
}

} // namespace tympan
