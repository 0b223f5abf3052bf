// The placing run stream and its size: what every row goes through, whatever the bytes that stand for
// the colours of its runs, and however the rows are found.
#pragma once

#include "core/failures.h"
#include "core/whole_numbers.h"
#include "lw/ink_forms.h"
#include "lw/lw_file.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

namespace tympan {

/// A placing stream in the making: where it is written, and what the caller asked for.
struct PlacedRows {
    RowWidth width{ 0.0 };
    unsigned char*& buffer;
    unsigned long*& rowOffsets;
    unsigned long baseOffset = 0;
    unsigned long whiteGap = 0;
    unsigned int copies = 1;
    unsigned char white = 0;
    RunOrder order = RunOrder::ColourFirst;
    bool isExact = false;      // no row needs completion, so last runs may be divided
    std::uint64_t written = 0; // but for the start delimiter of the row in hand
};

/// How many runs have pixels.
inline std::uint64_t RunsWithPixels(std::span<const Run> runs)
{
    return static_cast<std::uint64_t>(
        std::count_if(runs.begin(), runs.end(), [](Run run) { return run.length != 0; }));
}

inline RunOrder OrderOf(bool colorFirst)
{
    return colorFirst ? RunOrder::ColourFirst : RunOrder::LengthFirst;
}

/// A size that its type holds. \throws OutOfRangeException* for one that it doesn't.
inline std::uint64_t Required(std::optional<std::uint64_t> size)
{
    if (!size)
        throw new OutOfRangeException;
    return *size;
}

/// Stores the runs that end an exact row, whose last becomes two where the records before it are even.
template <typename Store>
void PlaceExactEnd(PlacedRows& rows, std::uint64_t& records, std::span<const Run> runs,
                   Store&& store)
{
    const auto before = runs.first(runs.size() - 1);
    store(before, rows.buffer);
    records += RunsWithPixels(before);
    unsigned char* const length = rows.buffer + (rows.order == RunOrder::ColourFirst ? 1 : 0);
    store(runs.last(1), rows.buffer);
    if (records % 2 == 0) {
        // Its colour has been looked up, so that it can't be refused in a place of its own.
        const Run one{ runs.back().index, 1 };
        --*length;
        store(std::span(&one, 1), rows.buffer);
        rows.written += sizeof(Run);
        ++records;
    }
    ++records;
}

/// Stores one copy of the row that the reader stands at, and tells its pixels. `records` counts those
/// of an exact row.
template <typename Store>
std::uint64_t PlaceCopy(RunReader& reader, PlacedRows& rows, std::uint64_t& records, Store&& store)
{
    std::uint64_t left = rows.width.toReach;
    return reader.TakeRow(left, [&](const RunStretch& stretch) {
        rows.written += stretch.runs.size_bytes();
        if (!rows.isExact) {
            store(stretch.runs, rows.buffer);
        } else if (stretch.pixels == left) {
            PlaceExactEnd(rows, records, stretch.runs, store);
        } else {
            store(stretch.runs, rows.buffer);
            records += RunsWithPixels(stretch.runs);
        }
        left -= std::min(left, stretch.pixels);
    });
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
    for (unsigned int copy = 0; copy < rows.copies; ++copy) {
        if (copy != 0)
            reader.GoTo(runsAt);
        pixels = tympan::PlaceCopy(reader, rows, records, store);
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

/// Appends rows to the stream. `forRows(work)` calls `work(reader, row)` for each of them, with a reader
/// that stands at the row; `store(runs, out, reader)` stores runs of the reader's last stretch at `out`,
/// which moves on. \throws OutOfRangeException* for no copy at all, and what the two throw.
template <typename ForRows, typename Store>
void LWFileInterface::PlaceRows(tympan::PlacedRows& rows, ForRows&& forRows, Store&& store)
{
    if (rows.copies == 0)
        throw new OutOfRangeException;
    rows.isExact = CompletionOf(rows.copies, rows.whiteGap) == 0;
    forRows([&](tympan::RunReader& reader, std::uint64_t) {
        PlaceRow(reader, rows, [&](std::span<const tympan::Run> runs, std::uint8_t*& out) {
            store(runs, out, reader);
        });
    });
}

/// The room that rows take in the stream, each with `bytesBeside` in addition to its copies.
/// \throws OutOfRangeException* for no copy at all and a size that its type can't hold, and what
///   `forRows` throws.
template <typename ForRows>
unsigned long LWFileInterface::SizeOfRows(unsigned int copies, std::uint64_t bytesBeside,
                                          ForRows&& forRows) const
{
    using tympan::Required;
    if (copies == 0)
        throw new OutOfRangeException;
    const tympan::RowWidth width = Width();
    std::uint64_t total = 0;
    forRows([&](tympan::RunReader& reader, std::uint64_t) {
        std::uint64_t bytes = 0;
        reader.TakeRow(width.toReach, [&](const tympan::RunStretch& stretch) {
            bytes += stretch.runs.size_bytes();
        });
        if (bytes == 0) // a width of 0: nothing was passed over
            bytes = 2 * tympan::kLwDelimiterBytes;
        bytes = Required(tympan::Product(copies, bytes));
        total = Required(tympan::Sum(total, Required(tympan::Sum(bytes, bytesBeside))));
    });
    total = Required(tympan::Sum(total, 2 * tympan::kLwDelimiterBytes));
    if (total > std::numeric_limits<unsigned long>::max())
        throw new OutOfRangeException;
    return static_cast<unsigned long>(total);
}
