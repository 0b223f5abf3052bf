#include "ct/ct_layout.h"

#include <cstring>

namespace tympan {

std::optional<std::uint64_t> CtLayout::Position(std::uint64_t row, unsigned int slot) const
{
    const auto rowsBefore = Product(separations, row);
    const auto linesBefore = rowsBefore ? Sum(*rowsBefore, slot) : std::nullopt;
    const auto distance = linesBefore ? Product(*linesBefore, Stride()) : std::nullopt;
    const auto position = distance ? Sum(*distance, kCtFirstRow) : std::nullopt;
    // As wide as the interface's positions are, which have 32 bits on some machines.
    constexpr std::uint64_t kLastPosition = std::min<std::uint64_t>(
        std::numeric_limits<LONGLONG>::max(), std::numeric_limits<unsigned long>::max());
    if (!position || *position > kLastPosition - width)
        return std::nullopt;
    return position;
}

std::optional<unsigned int> CtLayout::SlotOf(ColorSeparationType separation) const
{
    const unsigned int slot = record->SlotOf(separation);
    return slot == PictureParameters::kSlots ? std::nullopt : std::optional(slot);
}

std::optional<std::uint64_t> CtLayout::PositionOf(std::uint64_t row,
                                                  ColorSeparationType separation) const
{
    const auto slot = SlotOf(separation);
    return slot ? Position(row, *slot) : std::nullopt;
}

void LeaveBehindRow(CFile& file, const CtLayout& layout,
                    std::span<const ColorSeparationType> separations, std::uint64_t row)
{
    std::optional<std::uint64_t> last;
    for (const ColorSeparationType separation : separations)
        if (const auto position = layout.PositionOf(row, separation))
            last = position;
    if (!last)
        return;
    const std::uint64_t length = file.GetLength();
    const std::uint64_t behind = length > *last ? length - *last : 0;
    file.Seek(static_cast<LONGLONG>(*last + std::min<std::uint64_t>(behind, layout.width)),
              CFile::begin);
}

CtBands::CtBands(CFile& file, const CtLayout& layout, std::span<const ColorSeparationType> wanted,
                 std::span<const ByteTable> corrections)
    : file_(file), layout_(layout), wanted_(std::min(wanted.size(), slots_.size())),
      corrections_(corrections.begin(), corrections.end())
{
    for (std::size_t i = 0; i < wanted_; ++i)
        slots_[i] = layout.SlotOf(wanted[i]);
    const std::size_t stretch = std::min<std::size_t>(layout.width, kStretch);
    bytes_.resize(RowsAreNarrow() ? kBandBytes : stretch * wanted_);
    noInk_.assign(stretch, kNoInk);
}

// One read of whole rows costs no more than it gives only when most of what is read is wanted.
bool CtBands::RowsAreNarrow() const
{
    const auto held = std::count_if(slots_.begin(), slots_.begin() + static_cast<int>(wanted_),
                                    [](const auto& slot) { return slot.has_value(); });
    return layout_.width <= kStretch && held > 0 &&
           layout_.separations == static_cast<std::uint32_t>(held) &&
           layout_.separations * layout_.Stride() <= kBandBytes;
}

void CtBands::ReadBand(std::uint64_t row, std::uint64_t rows)
{
    const std::uint64_t bytes = rows * layout_.separations * layout_.Stride();
    const std::size_t held =
        ReadOrNoInk(layout_.Position(row, 0), bytes_.data(), static_cast<std::size_t>(bytes));
    if (!corrections_.empty())
        CorrectBand(rows, held);
}

void CtBands::CorrectBand(std::uint64_t rows, std::size_t held)
{
    const auto stride = static_cast<std::size_t>(layout_.Stride());
    for (std::uint64_t row = 0; row < rows; ++row)
        for (std::size_t i = 0; i < wanted_; ++i) {
            const std::size_t line = static_cast<std::size_t>(row) * layout_.separations +
                                     slots_[i].value_or(layout_.separations);
            const std::size_t at = line * stride;
            if (slots_[i] && at < held)
                Correct(i, bytes_.data() + at, std::min<std::size_t>(held - at, layout_.width));
        }
}

void CtBands::Correct(std::size_t i, std::uint8_t* bytes, std::size_t count) const
{
    const ByteTable& table = corrections_[i];
    std::transform(bytes, bytes + count, bytes, [&](std::uint8_t byte) { return table[byte]; });
}

Plates CtBands::BandRow(std::uint64_t rowInBand, const CtArea& area) const
{
    const std::size_t stride = static_cast<std::size_t>(layout_.Stride());
    const std::uint8_t* const row = bytes_.data() + rowInBand * layout_.separations * stride;
    Plates plates{ {}, area.endColumn - area.firstColumn };
    for (std::size_t i = 0; i < wanted_; ++i)
        plates.plate[i] = slots_[i] ? row + *slots_[i] * stride + area.firstColumn : noInk_.data();
    return plates;
}

Plates CtBands::ReadStretch(std::uint64_t row, std::size_t column, std::size_t count)
{
    Plates plates{ {}, count };
    for (std::size_t i = 0; i < wanted_; ++i) {
        plates.plate[i] = noInk_.data();
        const auto position = slots_[i] ? layout_.Position(row, *slots_[i]) : std::nullopt;
        if (!position)
            continue;
        std::uint8_t* const bytes = bytes_.data() + i * count;
        const std::size_t held = ReadOrNoInk(*position + column, bytes, count);
        if (!corrections_.empty())
            Correct(i, bytes, held);
        plates.plate[i] = bytes;
    }
    return plates;
}

std::size_t CtBands::ReadOrNoInk(std::optional<std::uint64_t> position, std::uint8_t* bytes,
                                 std::size_t count)
{
    std::size_t held = 0;
    if (position) {
        file_.Seek(static_cast<LONGLONG>(*position), CFile::begin);
        held = file_.Read(bytes, static_cast<UINT>(count));
    }
    std::memset(bytes + held, kNoInk, count - held);
    return held;
}

} // namespace tympan
