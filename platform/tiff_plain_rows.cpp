#include "platform/tiff_plain_rows.h"

#include <algorithm>

namespace tympan {

namespace {

struct Rows {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

// The rows that a file has within a window.
class Strips {
  public:
    Strips(TIFF* open, const TiffLayout& layout, Rows window, std::uint64_t fileLength)
        : open_(open), layout_(layout), window_(window), fileLength_(fileLength)
    {}

    std::uint64_t Position(std::uint32_t strip) const { return TIFFGetStrileOffset(open_, strip); }

    Rows RowsOf(std::uint32_t strip) const
    {
        const std::uint32_t first = strip * layout_.blockLength;
        const std::uint64_t held = BytesOf(strip) / layout_.RowBytes();
        const std::uint64_t end =
            std::min(first + held, std::uint64_t{ layout_.EndOfBlock(first) });
        return { first, std::min(static_cast<std::uint32_t>(end), window_.end) };
    }

    // Whether the next strip goes on where this one ends.
    bool GoesOnBehind(std::uint32_t strip) const
    {
        const Rows rows = RowsOf(strip);
        return rows.end == layout_.EndOfBlock(rows.first) &&
               Position(strip) + (rows.end - rows.first) * layout_.RowBytes() ==
                   Position(strip + 1);
    }

  private:
    std::uint64_t BytesOf(std::uint32_t strip) const
    {
        const std::uint64_t position = Position(strip);
        return position > fileLength_
                   ? 0
                   : std::min(TIFFGetStrileByteCount(open_, strip), fileLength_ - position);
    }

    TIFF* open_;
    const TiffLayout& layout_;
    Rows window_;
    std::uint64_t fileLength_;
};

Rows WindowAround(const TiffLayout& layout, std::uint32_t row, std::uint64_t most)
{
    const std::uint64_t count = std::max(most / layout.RowBytes(), std::uint64_t{ 1 });
    const auto first = static_cast<std::uint32_t>(row - row % count);
    const auto end = std::min(first + count, std::uint64_t{ layout.length });
    return { first, static_cast<std::uint32_t>(end) };
}

} // namespace

std::optional<PlainStretch> PlainStretchAround(TIFF* open, const TiffLayout& layout,
                                               std::uint32_t row, std::uint64_t most,
                                               std::uint64_t fileLength)
{
    const Rows window = WindowAround(layout, row, most);
    const Strips strips(open, layout, window, fileLength);
    std::uint32_t begin = row / layout.blockLength;
    std::uint32_t last = begin;
    if (row >= strips.RowsOf(begin).end)
        return std::nullopt;
    while (strips.RowsOf(begin).first > window.first && strips.GoesOnBehind(begin - 1))
        --begin;
    while (strips.RowsOf(last).end < window.end && strips.GoesOnBehind(last))
        ++last;
    const std::uint32_t firstOfStrip = strips.RowsOf(begin).first;
    const std::uint32_t first = std::max(firstOfStrip, window.first);
    return PlainStretch{ first, strips.RowsOf(last).end - first,
                         strips.Position(begin) + (first - firstOfStrip) * layout.RowBytes() };
}

} // namespace tympan
