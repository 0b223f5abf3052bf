#include "box_average.h"

#include <algorithm>
#include <utility>

namespace tympan::tool {

namespace {

std::uint32_t Scaled(std::uint32_t side, std::uint32_t longest, std::uint32_t longer)
{
    const std::uint64_t scaled = (std::uint64_t{ side } * longest + longer / 2) / longer;
    return static_cast<std::uint32_t>(std::max<std::uint64_t>(scaled, 1));
}

// Where the boxes of the first `count` of `targets` pixels end.
std::uint32_t BoxEnd(std::uint32_t count, std::uint32_t sources, std::uint32_t targets)
{
    return static_cast<std::uint32_t>(std::uint64_t{ count } * sources / targets);
}

} // namespace

PixelSize Fitted(PixelSize size, std::uint32_t longest)
{
    const std::uint32_t longer = std::max(size.width, size.height);
    if (longer <= longest)
        return size;
    return { Scaled(size.width, longest, longer), Scaled(size.height, longest, longer) };
}

BoxAverage::BoxAverage(PixelSize source, PixelSize target, TakeRow takeRow)
    : source_(source), target_(target), takeRow_(std::move(takeRow)), sums_(target.width),
      row_(std::size_t{ target.width } * kChannels)
{}

std::uint32_t BoxAverage::ColumnEnd() const
{
    return BoxEnd(targetColumn_ + 1, source_.width, target_.width);
}

void BoxAverage::Add(std::uint32_t row, std::uint32_t firstColumn,
                     std::span<const std::uint8_t> bgr)
{
    const std::uint32_t end = firstColumn + static_cast<std::uint32_t>(bgr.size() / kChannels);
    const std::uint8_t* pixel = bgr.data();
    for (std::uint32_t column = firstColumn; column < end;) {
        const std::uint32_t boxEnd = ColumnEnd();
        std::array<std::uint64_t, kChannels> sums{};
        for (; column < std::min(boxEnd, end); ++column, pixel += kChannels)
            for (std::size_t channel = 0; channel < kChannels; ++channel)
                sums[channel] += pixel[channel];
        for (std::size_t channel = 0; channel < kChannels; ++channel)
            sums_[targetColumn_][channel] += sums[channel];
        if (column == boxEnd)
            ++targetColumn_;
    }
    if (end < source_.width)
        return;
    targetColumn_ = 0;
    if (row + 1 == BoxEnd(targetRow_ + 1, source_.height, target_.height))
        FinishRow();
}

void BoxAverage::FinishRow()
{
    const std::uint32_t boxBottom = BoxEnd(targetRow_ + 1, source_.height, target_.height);
    for (std::uint32_t column = 0; column < target_.width; ++column) {
        const std::uint32_t boxWidth = BoxEnd(column + 1, source_.width, target_.width) -
                                       BoxEnd(column, source_.width, target_.width);
        const std::uint64_t pixels = std::uint64_t{ boxWidth } * (boxBottom - boxTop_);
        for (std::size_t channel = 0; channel < kChannels; ++channel)
            row_[column * kChannels + channel] =
                static_cast<std::uint8_t>((sums_[column][channel] + pixels / 2) / pixels);
    }
    std::fill(sums_.begin(), sums_.end(), std::array<std::uint64_t, kChannels>{});
    boxTop_ = boxBottom;
    ++targetRow_;
    takeRow_(row_);
}

} // namespace tympan::tool
