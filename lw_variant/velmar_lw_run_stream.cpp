// The rows of a whole file as one stream of colour indexes, and the room that it takes.
#include "core/failure_guard.h"
#include "core/whole_numbers.h"
#include "lw/lw_failures.h"
#include "lw/placed_rows.h"
#include "lw/run_reader.h"
#include "lw_variant/velmar_lw_file.h"

#include <cstdint>
#include <span>

namespace {

using tympan::Caught;
using tympan::FailureRow;

constexpr FailureRow kStreamFailures[] = {
    { Caught::FileCorrupted, tympan::code::kLwCorrupted, nullptr },
    { Caught::Anything, tympan::code::kLwUnexpected, tympan::kLwNotExtracted },
};

std::uint64_t RowsFrom(unsigned int firstRow, unsigned int lastRow)
{
    return firstRow > lastRow ? 0 : std::uint64_t{ lastRow } - firstRow + 1;
}

} // namespace

/// Calls `work(reader, row)` for as many rows as there are from `firstRow` to `lastRow`, from the file's
/// first row on. Their places needn't be known.
template <typename Work>
void VelmarLWFileInterface::ForFirstRows(unsigned int firstRow, unsigned int lastRow, Work&& work)
{
    const std::uint64_t rows = RowsFrom(firstRow, lastRow);
    tympan::RunReader reader(FileHandle(), *block_, LwFirstRowPosition(),
                             rows == 0 ? LwFirstRowPosition() : EndOf(rows - 1));
    for (std::uint64_t row = 0; row < rows; ++row)
        work(reader, row);
}

unsigned long VelmarLWFileInterface::GetLWPictureRows(
    unsigned char*& buffer, unsigned int firstRow, unsigned int lastRow, unsigned long*& rowOffsets,
    unsigned long baseOffset, const ColorSeparationType&, unsigned long whiteGap,
    unsigned int copies, unsigned char white, unsigned long, bool colorFirst)
{
    tympan::PlacedRows rows{ Width(),  buffer, rowOffsets, baseOffset,
                             whiteGap, copies, white,      tympan::OrderOf(colorFirst) };
    tympan::Guarded(Failures(), kStreamFailures, [&] {
        PlaceRows(
            rows, [&](auto&& place) { ForFirstRows(firstRow, lastRow, place); },
            [&](std::span<const tympan::Run> runs, std::uint8_t*& out, tympan::RunReader&) {
                tympan::CopyRuns(runs, rows.order, out);
            });
    });
    return static_cast<unsigned long>(rows.written);
}

unsigned long VelmarLWFileInterface::CompleteLineTo4096(unsigned char*& buffer,
                                                        unsigned long whiteGap, unsigned int copies,
                                                        unsigned char white, unsigned long,
                                                        bool colorFirst)
{
    const auto completion = static_cast<unsigned long>(CompletionOf(copies, whiteGap));
    return LWFileInterface::AddWhiteColsGap(completion, buffer, white, !colorFirst);
}

bool VelmarLWFileInterface::CanAddMarkers(unsigned long)
{
    return true;
}

unsigned long VelmarLWFileInterface::GetLWBufferSize(unsigned int firstRow, unsigned int lastRow,
                                                     unsigned int copies, unsigned long whiteGap,
                                                     bool complete)
{
    unsigned long size = 0;
    tympan::Guarded(Failures(), tympan::kLwSizeFailures, [&] {
        // Nothing is read of rows of width 0, so that nothing else would end a count of them.
        constexpr std::uint64_t kLeastRow = tympan::kLwDelimiters * tympan::kLwDelimiterBytes;
        if (Width().toReach == 0 &&
            RowsFrom(firstRow, lastRow) > FileHandle().GetLength() / kLeastRow)
            tympan::ThrowCouldNotRead();
        size = SizeOfRows(copies, BytesBesideRuns(copies, whiteGap, complete),
                          [&](auto&& measure) { ForFirstRows(firstRow, lastRow, measure); });
        if (LwPictureParameters* const record = GetLwPictureParams())
            record->LwFileSize(size);
    });
    return size;
}

unsigned long VelmarLWFileInterface::GetLWBufferSize()
{
    const LwPictureParameters* const record = GetLwPictureParams();
    if (record == nullptr)
        return 0;
    const double lastRow = record->HeightInPixels() - 1.0;
    if (lastRow > -1.0)
        GetLWBufferSize(0, tympan::CutToWhole<unsigned int>(lastRow), 1, 0, false);
    else
        Failures().Leave(tympan::kLwSizeFailures[0]);
    return record->LwFileSize();
}
