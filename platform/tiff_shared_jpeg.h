// JPEG in which pixels share chroma, decoded to the very samples that the file holds.
#pragma once

#include "platform/tiff_layout.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// What the picture has of a strip or tile, in pixels.
struct BlockArea {
    std::uint32_t width = 0;
    std::uint32_t length = 0;
};

/// Decodes a strip or tile to lines of clumps, each of `layout.BlockLineBytes()`. libtiff takes all
/// of them for tiles of another size from then on, and tells no number of a strip or tile any more.
/// \param layout one that `isSharedJpeg`.
/// \param lines as many as the layout says.
/// \return false when it can't be decoded, or has another size than the picture needs.
bool DecodeSharedJpeg(TiffSource& source, const TiffLayout& layout, std::uint32_t block,
                      BlockArea area, std::span<std::byte> lines);

} // namespace tympan
