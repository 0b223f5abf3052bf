// The walk over a range of blocks that rows, sizes and objects share.
#pragma once

#include "core/failures.h"
#include "jpeg/compressed_blocks.h"

#include <cstdint>

namespace tympan {

/// Gives `take(number, line)` each block of a range. One whose first block is above the last runs
/// over the end of the index; any other ends there. No block is taken twice.
/// \throws OutOfRangeException* at a block that isn't in the index, and what `take` throws.
template <typename Take>
void ForEachBlock(const JpegCompBlocksInfo& blocks, const CompressedBlocksRange& range, Take&& take)
{
    const bool runsOver = range.Last < range.First && range.Total != 0;
    std::uint32_t number = range.First;
    for (std::uint32_t taken = 0; taken < range.Count; ++taken) {
        CompressedLine line{};
        blocks.GetBlock(number, line);
        if (runsOver && taken >= range.Total)
            throw new OutOfRangeException;
        take(number, line);
        ++number;
        if (runsOver)
            number %= range.Total;
    }
}

} // namespace tympan
