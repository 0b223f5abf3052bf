// Drawing by whole stretches, and what drawing code asks about contexts and bitmaps. A stretch
// comes out as a SetPixel for each of its points would, at the price of one look-up of the handle.
#pragma once

#include "platform/gdi.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// The points that a context doesn't clip, in the coordinates that SetPixel takes; right and bottom
/// are not included. Empty when nothing can be drawn.
struct DrawableArea {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;
};

/// The drawable area of a context. It lies within the coordinates that an int can hold.
DrawableArea DrawableAreaOf(HDC dc);

/// Draws pixels, three bytes (B, G, R) each, at (x, y), (x + 1, y) and so on. A piece of a pixel at
/// the end is left alone.
void SetPixelSpan(HDC dc, std::int64_t x, std::int64_t y, std::span<const std::uint8_t> bgr);

/// Draws `count` pixels of one colour at (x, y), (x + 1, y) and so on.
void FillPixelSpan(HDC dc, std::int64_t x, std::int64_t y, std::uint64_t count, COLORREF colour);

/// Whether the handle names a bitmap that has not been deleted.
bool IsLiveBitmap(HBITMAP bitmap);

/// The bytes of a bitmap's pixel memory, padding included; 0 for a stale handle.
std::size_t BitmapBytes(HBITMAP bitmap);

} // namespace tympan
