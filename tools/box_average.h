// Makes pictures, or parts of them, of another size: smaller by averaging, larger by repeating.
#pragma once

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

/// Pixels from `first` up to and without `end`.
struct PixelRange {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

/// One side of a picture that becomes `targets` pixels long, and the part of these that is wanted.
struct ScaledSide {
    std::uint32_t sources = 0; ///< pixels of the picture, at least 1
    std::int64_t targets = 0;  ///< at least 1, at most 2^52
    std::int64_t first = 0;    ///< wanted from here
    std::int64_t end = 0;      ///< up to and without this

    /// All of the targets.
    static ScaledSide Whole(std::uint32_t sources, std::uint32_t targets)
    {
        return { sources, targets, 0, targets };
    }

    /// The source pixels that a target pixel stands for. Of fewer targets than sources, target t of
    /// n stands for the sources from t * sources / n up to and without (t + 1) * sources / n, cut to
    /// whole numbers, so that each source counts once; of more, for the one under its middle.
    PixelRange BoxOf(std::int64_t target) const;
    /// Those that the wanted targets stand for; there must be some.
    PixelRange Sources() const { return { BoxOf(first).first, BoxOf(end - 1).end }; }
};

/// Each target pixel is the mean of the box of source pixels that it stands for, rounded half up,
/// channel by channel. Memory is one row of the target.
class BoxAverage {
  public:
    /// Takes a finished row of wanted pixels.
    using TakeRow = std::function<void(std::span<const std::uint8_t> pixels)>;

    /// \param channels bytes of a pixel: 1 (a plate), 3, 6 or 7
    BoxAverage(const ScaledSide& across, const ScaledSide& down, std::size_t channels,
               TakeRow takeRow);

    /// Adds pixels of a source row: rows in order, and in a row from left to right. What no wanted
    /// pixel stands for may be left out.
    void Add(std::uint32_t row, std::uint32_t firstColumn, std::span<const std::uint8_t> pixels);

  private:
    template <std::size_t kChannels>
    void AddPixels(std::uint32_t firstColumn, std::span<const std::uint8_t> pixels);
    void GiveRows(std::uint32_t lastRow);
    void Divide();

    ScaledSide down_;
    std::size_t channels_;
    TakeRow takeRow_;
    std::vector<PixelRange> boxes_; // of the wanted columns
    std::size_t column_ = 0;        // the first that is not complete yet
    std::int64_t targetRow_;
    PixelRange rowBox_;     // of the target row
    std::uint32_t nextRow_; // of the source
    std::vector<std::uint64_t> sums_;
    std::vector<std::uint8_t> row_;
};

} // namespace tympan::tool
