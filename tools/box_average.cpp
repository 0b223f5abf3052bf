#include "box_average.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tympan::tool {

namespace {

std::uint32_t Scaled(std::uint32_t side, std::uint32_t longest, std::uint32_t longer)
{
    const std::uint64_t scaled = (std::uint64_t{ side } * longest + longer / 2) / longer;
    return static_cast<std::uint32_t>(std::max<std::uint64_t>(scaled, 1));
}

std::vector<PixelRange> BoxesOf(const ScaledSide& side)
{
    std::vector<PixelRange> boxes;
    boxes.reserve(static_cast<std::size_t>(side.end - side.first));
    for (std::int64_t target = side.first; target < side.end; ++target)
        boxes.push_back(side.BoxOf(target));
    return boxes;
}

} // namespace

PixelSize Fitted(PixelSize size, std::uint32_t longest)
{
    const std::uint32_t longer = std::max(size.width, size.height);
    if (longer <= longest)
        return size;
    return { Scaled(size.width, longest, longer), Scaled(size.height, longest, longer) };
}

PixelRange ScaledSide::BoxOf(std::int64_t target) const
{
    if (targets <= sources) {
        const auto place = [&](std::int64_t edge) {
            return static_cast<std::uint32_t>(edge * sources / targets);
        };
        return { place(target), place(target + 1) };
    }
    const double middle =
        (static_cast<double>(target) + 0.5) * sources / static_cast<double>(targets);
    const std::uint32_t nearest = std::min(static_cast<std::uint32_t>(middle), sources - 1);
    return { nearest, nearest + 1 };
}

BoxAverage::BoxAverage(const ScaledSide& across, const ScaledSide& down, std::size_t channels,
                       TakeRow takeRow)
    : down_(down), channels_(channels), takeRow_(std::move(takeRow)), boxes_(BoxesOf(across)),
      targetRow_(down.first), rowBox_(down.BoxOf(down.first)), nextRow_(rowBox_.first),
      sums_(boxes_.size() * channels), row_(boxes_.size() * channels)
{}

void BoxAverage::Add(std::uint32_t row, std::uint32_t firstColumn,
                     std::span<const std::uint8_t> pixels)
{
    if (row < nextRow_ || targetRow_ == down_.end)
        return;
    switch (channels_) {
    case 1: AddPixels<1>(firstColumn, pixels); break;
    case 3: AddPixels<3>(firstColumn, pixels); break;
    case 6: AddPixels<6>(firstColumn, pixels); break;
    default: AddPixels<7>(firstColumn, pixels); break;
    }
    if (column_ < boxes_.size())
        return;
    column_ = 0;
    nextRow_ = row + 1;
    if (nextRow_ == rowBox_.end)
        GiveRows(row);
}

template <std::size_t kChannels>
void BoxAverage::AddPixels(std::uint32_t firstColumn, std::span<const std::uint8_t> pixels)
{
    const auto end = static_cast<std::uint32_t>(firstColumn + pixels.size() / kChannels);
    for (; column_ < boxes_.size() && boxes_[column_].first < end; ++column_) {
        const std::uint32_t from = std::max(boxes_[column_].first, firstColumn);
        const std::uint32_t to = std::min(boxes_[column_].end, end);
        const std::uint8_t* pixel = pixels.data() + std::size_t{ from - firstColumn } * kChannels;
        std::array<std::uint64_t, kChannels> sums{};
        for (std::uint32_t column = from; column < to; ++column, pixel += kChannels)
            for (std::size_t channel = 0; channel < kChannels; ++channel)
                sums[channel] += pixel[channel];
        for (std::size_t channel = 0; channel < kChannels; ++channel)
            sums_[column_ * kChannels + channel] += sums[channel];
        if (to < boxes_[column_].end)
            return;
    }
}

// The target row that is complete, and those that stand for the same source row.
void BoxAverage::GiveRows(std::uint32_t lastRow)
{
    Divide();
    std::fill(sums_.begin(), sums_.end(), 0);
    do {
        takeRow_(row_);
        if (++targetRow_ == down_.end)
            return;
        rowBox_ = down_.BoxOf(targetRow_);
    } while (rowBox_.first <= lastRow);
    nextRow_ = rowBox_.first;
}

void BoxAverage::Divide()
{
    const std::uint64_t rows = rowBox_.end - rowBox_.first;
    for (std::size_t column = 0; column < boxes_.size(); ++column) {
        const std::uint64_t pixels = rows * (boxes_[column].end - boxes_[column].first);
        for (std::size_t i = column * channels_; i < (column + 1) * channels_; ++i)
            row_[i] = static_cast<std::uint8_t>((sums_[i] + pixels / 2) / pixels);
    }
}

} // namespace tympan::tool
