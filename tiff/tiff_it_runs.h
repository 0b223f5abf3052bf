// The runs of TIFF/IT line work are found here and nowhere else.
//
//   2 bytes ahead, then runs; 4 bytes behind each row
//   run: colour number, length 1 to 255; or colour number, 0, length in two bytes, the high one first
#pragma once

#include "tiff/strip_bytes.h"
#include "tiff/tiff_it_layout.h"

#include <optional>

namespace tympan {

/// A run with its place in the picture.
struct PlacedRun {
    std::uint8_t colour;
    std::uint32_t length;
    std::uint64_t row;
    std::uint64_t column; ///< of its first pixel
    std::uint64_t offset; ///< in the file
};

/// Where the pixels of a run end, and how many of them the next row has.
struct RunReach {
    std::uint64_t end;    ///< column behind those of its own row
    std::uint64_t behind; ///< pixels of the next row
    bool passes;          ///< the row's end

    RunReach(const PlacedRun& run, std::uint64_t width)
        : end(run.column + run.length), behind(0), passes(end > width)
    {
        if (passes) {
            behind = end - width;
            end = width;
        }
    }
};

struct RunBytes {
    std::uint8_t colour;
    std::uint32_t length;
};

/// Nothing where the file ends.
inline std::optional<RunBytes> TakeRun(StripBytes& bytes)
{
    constexpr std::size_t kShort = 2;
    constexpr std::size_t kLong = 4;
    const auto ahead = bytes.Ahead(kLong);
    const std::size_t size = ahead.size() >= kShort && ahead[1] == 0 ? kLong : kShort;
    if (ahead.size() < size) {
        bytes.Pass(ahead.size());
        return std::nullopt;
    }
    const RunBytes run{ ahead[0],
                        size == kShort ? ahead[1] : std::uint32_t{ ahead[2] } << 8U | ahead[3] };
    bytes.Pass(size);
    return run;
}

enum class RunsEnd { WholePicture, EndOfFile };

/// Gives the runs of a strip to `use(run)` until the picture is whole or the file ends.
/// \param column of the first run; of the run that ended the strip when it returns
template <typename Use>
RunsEnd ForEachRun(StripBytes& bytes, std::uint64_t width, std::uint64_t height,
                   std::uint64_t& column, Use&& use)
{
    for (std::uint64_t row = 0;;) {
        const std::uint64_t offset = bytes.Position();
        const std::optional<RunBytes> run = TakeRun(bytes);
        if (!run)
            return RunsEnd::EndOfFile;
        const PlacedRun placed{ run->colour, run->length, row, column, offset };
        use(placed);
        const RunReach reach(placed, width);
        std::uint64_t end = reach.end;
        if (reach.passes) {
            if (++row >= height)
                return RunsEnd::WholePicture;
            bytes.Skip(kLwRowEnd);
            end = reach.behind;
        }
        if (row >= height)
            return RunsEnd::WholePicture;
        if (end == width) {
            if (++row >= height)
                return RunsEnd::WholePicture;
            if (bytes.Drop(kLwRowEnd) < kLwRowEnd)
                return RunsEnd::EndOfFile;
            end = 0;
        }
        column = end;
    }
}

} // namespace tympan
