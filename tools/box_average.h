// Makes pictures smaller by averaging.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tympan::tool {

struct PixelSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size whose longer side is at most `longest`, the shorter in proportion, rounded and at least
/// 1. Never larger than `size`.
PixelSize Fitted(PixelSize size, std::uint32_t longest);

/// Each target pixel is the mean of a box of whole source pixels, rounded half up: target column t
/// of w stands for the source columns from t * W / w up to and without (t + 1) * W / w, cut to
/// whole numbers, and rows alike. So each source pixel counts once. Memory is one row of the
/// target.
class BoxAverage {
  public:
    /// Takes a finished row of blue, green and red.
    using TakeRow = std::function<void(std::span<const std::uint8_t> bgr)>;

    /// `target` is in no direction larger than `source`.
    BoxAverage(PixelSize source, PixelSize target, TakeRow takeRow);

    /// Adds pixels of a source row: rows in order from 0, and in a row from left to right.
    void Add(std::uint32_t row, std::uint32_t firstColumn, std::span<const std::uint8_t> bgr);

  private:
    static constexpr std::size_t kChannels = 3;

    std::uint32_t ColumnEnd() const;
    void FinishRow();

    PixelSize source_;
    PixelSize target_;
    TakeRow takeRow_;
    std::uint32_t targetRow_ = 0;
    std::uint32_t targetColumn_ = 0;
    std::uint32_t boxTop_ = 0;
    std::vector<std::array<std::uint64_t, kChannels>> sums_;
    std::vector<std::uint8_t> row_;
};

} // namespace tympan::tool
