// Draws the rows of a placed picture where they fall on a page: scaled, turned and cut.
#pragma once

#include "page_geometry.h"
#include "row_range.h"
#include "shown_rows.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tympan::tool {

/// A picture as rows of pixels with so many bytes each: 3 for blue, green and red; 6 for these, where
/// they are clear 0, and how much of each is not clear; or the 7 of a window.
struct LayerRows {
    PixelSize size;
    std::size_t channels = 3;
    std::function<GiveRows(RowRange rows)> rows;
};

/// Takes a pixel of the page: the bytes of one of the layer's, and how much of the page's it covers,
/// up to 255.
using PutPixel = std::function<void(std::uint32_t column, std::uint32_t row,
                                    const std::uint8_t* pixel, unsigned int share)>;

/// Gives all pixels of the page that the picture covers, inside of `clip`, which lies on the page.
/// Only the rows that these show are read, in bands; of a picture that isn't turned by right angles
/// what they show is held, at the size that they show it in or its own.
void DrawLayer(const LayerRows& layer, const PicturePlace& place, const PixelBox& clip,
               const PutPixel& put);

/// Takes a pixel of the page, the place on the picture that its middle shows, and how much of it the
/// picture covers, from 1 to 255.
using TakeCovered = std::function<void(std::uint32_t column, std::uint32_t row,
                                       const PicturePoint& point, unsigned int share)>;

/// Gives the pixels of a box of the page that a picture covers, which may be of any size.
void ForEachCovered(const PicturePlace& place, const PixelBox& shown, const TakeCovered& take);

} // namespace tympan::tool
