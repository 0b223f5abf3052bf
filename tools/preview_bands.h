// A bitmap in memory that pictures draw a part of themselves on.
#pragma once

#include <tympan/tympan.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace tympan::tool {

/// A bitmap of 24 bits a pixel with a context, for some rows of some columns.
class PreviewBand {
  public:
    /// \throws std::bad_alloc when there is no memory.
    PreviewBand(std::uint32_t columns, std::uint32_t rows);

    /// The memory that such a bitmap takes.
    static std::uint64_t BytesOf(std::uint32_t columns, std::uint32_t rows);

    /// Makes all of it white, for a picture that doesn't draw all its pixels.
    void FillWithPaper();
    /// Moves the context so that the picture's pixel (column, row) falls on the first of the
    /// bitmap.
    void MoveTo(std::uint32_t column, std::uint32_t row);
    CDC& Context() { return context_; }
    /// Blue, green and red of each pixel of a row of the bitmap.
    std::span<const std::uint8_t> Row(std::uint32_t row) const;

  private:
    struct DeleteBitmap {
        void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
    };

    std::uint32_t columns_;
    std::uint32_t rows_;
    std::size_t rowBytes_;
    void* bits_ = nullptr;
    std::unique_ptr<HBITMAP_, DeleteBitmap> bitmap_;
    CDC context_; // goes before the bitmap that is selected into it
};

/// A part of a picture.
struct PictureArea {
    std::uint32_t firstRow = 0;
    std::uint32_t endRow = 0;
    std::uint32_t width = 0;
};

/// Draws rows from `firstRow` to `lastRow`, both included, on a context.
using DrawRows = std::function<void(std::uint32_t firstRow, std::uint32_t lastRow, CDC& context)>;
/// Takes blue, green and red of the pixels of a row from a column on.
using TakePixels = std::function<void(std::uint32_t row, std::uint32_t firstColumn,
                                      std::span<const std::uint8_t> pixels)>;

/// Draws an area through one band of a few MiB, whatever the area's size. Rows come from the top
/// down, the pixels of each from left to right.
void DrawInBands(const PictureArea& area, const DrawRows& draw, const TakePixels& take);

} // namespace tympan::tool
