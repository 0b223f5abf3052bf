// Bounds what is drawn of files in which many strips count as the whole picture, each over the one
// before: the work stays in proportion to the file's length and to the pixels asked for.
#pragma once

#include "core/failures.h"
#include "core/whole_numbers.h"
#include "tiff/strip_bytes.h"
#include "tiff/tiff_it_parser.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tympan {

/// The strips of continuous tone that show at last: from the last one on that has a whole row, since
/// that covers all before it, and no more than the last 16.
inline std::span<const StripInfo> StripsOnTop(std::span<const StripInfo> strips, double height,
                                              std::uint64_t rowBytes, std::uint64_t fileLength)
{
    constexpr int kMost = 16;
    std::size_t first = strips.size();
    for (int drawn = 0; first != 0 && drawn != kMost;) {
        const StripInfo& strip = strips[--first];
        if (strip.RowsPerStrip < height)
            continue;
        ++drawn;
        if (rowBytes <= fileLength && strip.Offset <= fileLength - rowBytes)
            break;
    }
    return strips.subspan(first);
}

/// The bytes of runs that the strips of line work may take together. Each takes a block at least, since
/// that much is read for it.
class RunAllowance {
  public:
    explicit RunAllowance(std::uint64_t fileLength)
        : left_(Product(fileLength + StripBytes::kMostAhead, kMost).value_or(fileLength))
    {}

    /// \throws FileCorruptedException* when less is left.
    void Take(std::uint64_t runBytes)
    {
        const std::uint64_t taken = std::max<std::uint64_t>(runBytes, StripBytes::kMostAhead);
        if (taken > left_)
            throw new FileCorruptedException("Too many strips!");
        left_ -= taken;
    }

  private:
    static constexpr std::uint64_t kMost = 64; // for each byte of the file, and blocks in any file

    std::uint64_t left_;
};

} // namespace tympan
