// How the samples of a TIFF lie in its file, as the directory tells it, and what of that is
// refused.
#pragma once

#include "platform/tiff_source.h"

#include <cstdint>
#include <span>

namespace tympan {

/// How many pixels share a sample of chroma.
struct ChromaSharing {
    std::uint16_t across = 1;
    std::uint16_t down = 1;

    bool operator==(const ChromaSharing&) const = default;
};

/// What decides how samples lie in the file. A block is a strip or a tile.
struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t length = 0;
    std::uint16_t samples = 0;
    std::uint16_t bits = 0;
    std::uint16_t planes = 1; ///< 1: a pixel's samples lie side by side; else a plane for each
    bool isTiled = false;
    bool isJbig = false;
    bool decodesWhole = false; ///< by blocks, never line by line
    bool isExact = false;      ///< decoding fills a block or fails, nothing is left from before
    bool isPlain = false;      ///< rows stand in the file as they are given
    bool isSharedJpeg = false; ///< JPEG in which pixels share chroma
    ChromaSharing chroma;
    std::uint32_t blockWidth = 0;
    std::uint32_t blockLength = 0;

    bool operator==(const TiffLayout&) const = default;

    bool SharesChroma() const { return chroma.across != 1 || chroma.down != 1; }
    std::uint16_t PlaneSamples() const { return planes == 1 ? samples : std::uint16_t{ 1 }; }

    // Neither can wrap: a width has 32 bits, a count of samples and one of bits 16 each.
    std::uint64_t BytesOf(std::uint64_t sampleCount) const { return (sampleCount * bits + 7) / 8; }
    std::uint64_t RowBytes() const { return BytesOf(std::uint64_t{ width } * samples); }
    /// A line of one plane across the picture.
    std::uint64_t LineBytes() const { return BytesOf(std::uint64_t{ width } * PlaneSamples()); }

    /// A clump is the pixels that share chroma: their luma, then the two samples of chroma.
    std::uint32_t ClumpSamples() const { return std::uint32_t{ chroma.across } * chroma.down + 2U; }
    std::uint64_t ClumpsAcross() const
    {
        return (std::uint64_t{ blockWidth } + chroma.across - 1) / chroma.across;
    }
    /// The least width of a tile whose row, as libtiff counts it, has room for a line of clumps.
    std::uint64_t JpegTileWidth() const;
    /// What lies side by side in a decoded block, and how often.
    std::uint64_t BlockLineBytes() const;
    std::uint64_t BlockLines() const
    {
        return (std::uint64_t{ blockLength } + chroma.down - 1) / chroma.down;
    }

    std::uint32_t FirstRowOfBlock(std::uint32_t row) const { return row - row % blockLength; }
    /// The row behind the block that has `row`.
    std::uint32_t EndOfBlock(std::uint32_t row) const
    {
        const std::uint32_t first = FirstRowOfBlock(row);
        return length - first < blockLength ? length : first + blockLength;
    }
};

TiffLayout ReadLayout(TIFF* open, const tiff& record);

/// Whether libtiff writes into a buffer what the layout says that it does.
bool AgreesWithLibtiff(TIFF* open, const TiffLayout& layout);

/// Why rows of the layout can't be read, null when they can.
const char* WhyRefused(TIFF* open, const TiffLayout& layout, std::uint64_t fileLength);

/// Whether a piece that is decoded at one go may be so large.
/// \param expansion how many times as long as the file it may be.
bool MayClaimWhole(std::uint64_t claim, std::uint64_t fileLength,
                   std::uint64_t expansion = kMostExpansion);

} // namespace tympan
