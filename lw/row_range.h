// The loop over a range of rows that decoding, run streams and display share.
#pragma once

#include "core/failures.h"
#include "lw/lw_file.h"
#include "lw/run_reader.h"

#include <utility>

/// Calls `work(reader, row)` for the rows from `firstRow` up to and without `endRow`, which the reader
/// passes one after the other. An empty range seeks, if its first row has a place.
/// \throws OutOfRangeException* at a row that has no place, and what `work` throws.
template <typename Work>
void LWFileInterface::ForEachRow(std::uint64_t firstRow, std::uint64_t endRow, Work&& work)
{
    if (firstRow >= endRow && PlaceOf(firstRow) == 0)
        return;
    tympan::RunReader reader = ReaderOf(firstRow, endRow);
    for (std::uint64_t row = firstRow; row < endRow; ++row) {
        if (PlaceOf(row) == 0)
            throw new OutOfRangeException;
        work(reader, row);
    }
}
