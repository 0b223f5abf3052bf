// The placing run stream: what every row of it goes through, whatever the bytes that stand for the
// colours of its runs.
#pragma once

#include "core/failures.h"
#include "lw/ink_values.h"
#include "lw/lw_file.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tympan {

/// A placing stream in the making: where it is written, and what the caller asked for.
struct PlacedRows {
    RowWidth width;
    unsigned char*& buffer;
    unsigned long*& rowOffsets;
    unsigned long baseOffset;
    unsigned long whiteGap;
    unsigned int copies;
    unsigned char white;
    RunOrder order;
    bool isExact = false;      // no row needs completion, so last runs may be divided
    std::uint64_t written = 0; // but for the start delimiter of the row in hand
};

/// How many runs have pixels.
inline std::uint64_t RunsWithPixels(std::span<const Run> runs)
{
    return static_cast<std::uint64_t>(
        std::count_if(runs.begin(), runs.end(), [](Run run) { return run.length != 0; }));
}

} // namespace tympan

/// Appends the next row to the stream. `store(runs, out)` stores runs at `out`, which moves on. In an
/// exact row, a copy's last run becomes two where the records before it are even.
template <typename Store>
void LWFileInterface::PlaceRow(tympan::RunReader& reader, tympan::PlacedRows& rows, Store&& store)
{
    const bool colorFirst = rows.order == tympan::RunOrder::ColourFirst;
    *rows.rowOffsets++ = static_cast<unsigned long>(rows.baseOffset + rows.written);
    reader.TakeDelimiter();
    const std::uint64_t runsAt = reader.Position();
    rows.buffer = tympan::StoreRun(0, 0, rows.order, rows.buffer);
    rows.written +=
        CompleteLineTo4096(rows.buffer, rows.whiteGap, rows.copies, rows.white, 0, colorFirst);
    std::uint64_t records = rows.written / sizeof(tympan::Run);
    std::uint64_t pixels = 0;

    const auto placeExact = [&](std::span<const tympan::Run> runs) {
        const auto before = runs.first(runs.size() - 1);
        store(before, rows.buffer);
        records += tympan::RunsWithPixels(before);
        unsigned char* const length = rows.buffer + (colorFirst ? 1 : 0);
        store(runs.last(1), rows.buffer);
        if (records % 2 == 0) {
            // Its colour has been looked up, so that it can't be refused in a place of its own.
            const tympan::Run one{ runs.back().index, 1 };
            --*length;
            store(std::span(&one, 1), rows.buffer);
            rows.written += sizeof(tympan::Run);
            ++records;
        }
        ++records;
    };

    for (unsigned int copy = 0; copy < rows.copies; ++copy) {
        if (copy != 0)
            reader.GoTo(runsAt);
        std::uint64_t left = rows.width.toReach;
        pixels = reader.TakeRow(left, [&](const tympan::RunStretch& stretch) {
            rows.written += stretch.runs.size_bytes();
            if (!rows.isExact) {
                store(stretch.runs, rows.buffer);
            } else if (stretch.pixels == left) {
                placeExact(stretch.runs);
            } else {
                store(stretch.runs, rows.buffer);
                records += tympan::RunsWithPixels(stretch.runs);
            }
            left -= std::min(left, stretch.pixels);
        });
        if (copy + 1 < rows.copies) {
            const unsigned long gap =
                AddWhiteColsGap(rows.whiteGap, rows.buffer, rows.white, !colorFirst);
            rows.written += gap;
            records += gap / sizeof(tympan::Run);
        }
    }
    rows.width.Require(pixels);
    reader.TakeDelimiter();
    rows.buffer = tympan::StoreRun(0, 0, rows.order, rows.buffer);
    rows.written += 2 * tympan::kLwDelimiterBytes;
}
