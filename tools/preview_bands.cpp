#include "preview_bands.h"

#include <algorithm>
#include <new>

namespace tympan::tool {

namespace {

constexpr std::uint32_t kBytesPerPixel = 3;
constexpr std::uint32_t kBandPixels = (4U << 20U) / kBytesPerPixel;

} // namespace

PreviewBand::PreviewBand(std::uint32_t columns, std::uint32_t rows)
    : columns_(columns), rows_(rows), rowBytes_(static_cast<std::size_t>(BytesOf(columns, 1)))
{
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = static_cast<LONG>(columns);
    info.bmiHeader.biHeight = -static_cast<LONG>(rows);
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = kBytesPerPixel * 8;
    info.bmiHeader.biCompression = BI_RGB;
    bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits_, nullptr, 0));
    if (bitmap_ == nullptr || context_.Attach(CreateCompatibleDC(nullptr)) == FALSE)
        throw std::bad_alloc();
    SelectObject(context_.GetSafeHdc(), bitmap_.get());
}

std::uint64_t PreviewBand::BytesOf(std::uint32_t columns, std::uint32_t rows)
{
    return (std::uint64_t{ columns } * kBytesPerPixel + 3) / 4 * 4 * rows;
}

void PreviewBand::FillWithPaper()
{
    constexpr std::uint8_t kWhite = 255;
    std::fill_n(static_cast<std::uint8_t*>(bits_), rowBytes_ * rows_, kWhite);
}

void PreviewBand::MoveTo(std::uint32_t column, std::uint32_t row)
{
    SetViewportOrgEx(context_.GetSafeHdc(), -static_cast<int>(column), -static_cast<int>(row),
                     nullptr);
}

std::span<const std::uint8_t> PreviewBand::Row(std::uint32_t row) const
{
    const auto* const bits = static_cast<const std::uint8_t*>(bits_);
    return { bits + row * rowBytes_, std::size_t{ columns_ } * kBytesPerPixel };
}

void DrawInBands(const PictureArea& area, const DrawRows& draw, const TakePixels& take)
{
    // Columns are cut only where a single row is more than a band, so rows stay in order, and no
    // picture of a real size is read more than once.
    const std::uint32_t columns = std::min(area.width, kBandPixels);
    const std::uint32_t rows = std::min(kBandPixels / columns, area.endRow - area.firstRow);
    PreviewBand band(columns, rows);
    for (std::uint32_t row = area.firstRow; row < area.endRow;) {
        const std::uint32_t bandRows = std::min(rows, area.endRow - row);
        for (std::uint32_t column = 0; column < area.width;) {
            const std::uint32_t bandColumns = std::min(columns, area.width - column);
            band.MoveTo(column, row);
            draw(row, row + bandRows - 1, band.Context());
            for (std::uint32_t i = 0; i < bandRows; ++i)
                take(row + i, column,
                     band.Row(i).first(std::size_t{ bandColumns } * kBytesPerPixel));
            column += bandColumns;
        }
        row += bandRows;
    }
}

} // namespace tympan::tool
