// Rows of an LW file as pixels of one separation, and single rows as they stand.
#include "core/resampling.h"
#include "core/whole_numbers.h"
#include "lw/ink_values.h"
#include "lw/lw_failures.h"
#include "lw/lw_file.h"
#include "lw/row_range.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <cmath>

namespace {

using tympan::Caught;
using tympan::FailureRow;
using tympan::RunOrder;
using tympan::RunStretch;
using tympan::StoreRun;

constexpr FailureRow kSingleRowFailures[] = {
    { Caught::File, tympan::code::kFileFailed, nullptr },
    { Caught::Anything, tympan::code::kLwUnexpected, tympan::kLwNotExtracted },
};
constexpr FailureRow kBadStart{ Caught::Anything, tympan::code::kLwRowDelimiter,
                                "LWInterface:\n Error Illegal line format, aborting" };
constexpr FailureRow kBadEnd{ Caught::Anything, tympan::code::kLwRowDelimiter,
                              "LWInterface:\nIllegal line format , aborting!" };

bool IsUsable(double ratio)
{
    return std::isfinite(ratio) && ratio > 0.0;
}

} // namespace

unsigned char LWFileInterface::GetColorValue(int index, const ColorSeparationType& separation)
{
    const LwPictureParameters& record = LwRecord();
    tympan::RequireSeparation(separation);
    tympan::RequireColour(index, record.TableColorsNumber());
    return record.GetColor(static_cast<unsigned char>(index - 1), separation);
}

PictureRowsData* LWFileInterface::GetPictureRow(const ColorSeparationType&, unsigned int, double,
                                                double)
{
    return nullptr;
}

PictureRowsData* LWFileInterface::GetPictureRows(const ColorSeparationType&, unsigned int,
                                                 unsigned int, bool)
{
    return nullptr;
}

unsigned long LWFileInterface::GetPictureRow(unsigned char* buffer, unsigned int row,
                                             ColorSeparationType separation,
                                             double scanAxisResolution, double xScanAxisResolution,
                                             unsigned long)
{
    const double horizontal = scanAxisResolution / ResolutionOnScanAxis();
    const double vertical = xScanAxisResolution / ResolutionOnXScanAxis();
    std::uint64_t pixels = 0;
    bool isWhole = false;
    const bool cameBack = tympan::Guarded(Failures(), kSingleRowFailures, [&] {
        const auto outputWidth = tympan::RoundedLength(horizontal * DecodedWidth());
        if (!IsUsable(horizontal) || !IsUsable(vertical) || !outputWidth)
            throw new OutOfRangeException;
        isWhole = DecodeRow(tympan::CutToWhole<std::uint64_t>(row / vertical), separation, pixels);
        if (isWhole && *outputWidth != 0)
            tympan::Resample(CurrRowBuffer(), DecodedWidth(), horizontal, buffer, *outputWidth);
    });
    const bool tellsHowFar = cameBack ? isWhole : TraceStatus() == tympan::code::kFileFailed;
    return tellsHowFar ? static_cast<unsigned long>(pixels) : 0;
}

// Into the row buffer. `pixels` is how far it came. Of a delimiter only the first byte is looked at.
bool LWFileInterface::DecodeRow(std::uint64_t row, ColorSeparationType separation,
                                std::uint64_t& pixels)
{
    if (static_cast<std::uint32_t>(PlaceOf(row)) == 0)
        return false;
    const std::uint32_t width = DecodedWidth();
    if (!RowBufferHolds(width))
        throw new MemoryAllocException;
    tympan::RunReader reader = ReaderOf(row, row + 1);
    if (reader.TakeOne().index != 0) {
        Failures().Leave(kBadStart);
        return false;
    }
    const tympan::InkValues inks(LwRecord(), separation);
    reader.TakeRow(width, [&](const RunStretch& stretch) {
        inks.Expand(stretch, { CurrRowBuffer() + pixels, static_cast<std::size_t>(width - pixels) },
                    reader);
        pixels += stretch.pixels;
    });
    if (reader.TakeOne().index != 0) {
        Failures().Leave(kBadEnd);
        return false;
    }
    return true;
}

std::uint32_t LWFileInterface::DecodedWidth() const
{
    return tympan::CutToWhole<std::uint32_t>(LwRecord().WidthInPixels());
}

unsigned long LWFileInterface::GetPictureRows(unsigned char* buffer, unsigned int firstRow,
                                              unsigned int lastRow, unsigned int& rowsInfo,
                                              unsigned long* offsets,
                                              ColorSeparationType separation, unsigned long, bool)
{
    unsigned char* out = buffer;
    rowsInfo = 0;
    const bool cameBack = tympan::Guarded(Failures(), tympan::kLwRowFailures, [&] {
        DecodeRows(out, firstRow, lastRow, rowsInfo, offsets, separation);
    });
    if (!cameBack && TraceStatus() == tympan::code::kLwCorrupted)
        rowsInfo = 0;
    const bool tellsHowFar = cameBack || TraceStatus() == tympan::code::kFileFailed;
    return tellsHowFar ? static_cast<unsigned long>(out - buffer) : 0;
}

void LWFileInterface::DecodeRows(unsigned char*& out, unsigned int firstRow, unsigned int endRow,
                                 unsigned int& rowsDone, unsigned long* offsets,
                                 ColorSeparationType separation)
{
    const tympan::InkValues inks(LwRecord(), separation);
    const unsigned char* const start = out;
    const tympan::RowWidth width = Width();
    ForEachRow(firstRow, endRow, [&](tympan::RunReader& reader, std::uint64_t row) {
        if (offsets != nullptr)
            offsets[row - firstRow] = static_cast<unsigned long>(out - start);
        std::uint64_t left = width.toReach;
        reader.TakeDelimiter();
        const std::uint64_t pixels = reader.TakeRow(width.toReach, [&](const RunStretch& stretch) {
            out = inks.Expand(stretch, { out, static_cast<std::size_t>(left) }, reader);
            left -= std::min(left, stretch.pixels);
        });
        reader.TakeDelimiter();
        width.Require(pixels);
        ++rowsDone;
    });
}

unsigned long LWFileInterface::GetBufferSize(unsigned int firstRow, unsigned int lastRow, bool wrap)
{
    const LwPictureParameters& record = LwRecord();
    const auto height = tympan::CutToWhole<unsigned int>(record.HeightInPixels());
    const double rows = GetRowsNumber(firstRow, lastRow, height, wrap);
    return tympan::CutToWhole<unsigned long>(rows * record.WidthInPixels());
}

unsigned int LWFileInterface::GetOriginalPictureRow(unsigned char* buffer, unsigned int row,
                                                    bool lengthFirst)
{
    std::uint64_t runs = 0;
    const bool cameBack = tympan::Guarded(Failures(), tympan::kLwRowFailures, [&] {
        const tympan::RowWidth width = Width();
        tympan::RunReader reader = ReaderOf(row, std::uint64_t{ row } + 1);
        reader.TakeDelimiter();
        const RunOrder order = lengthFirst ? RunOrder::LengthFirst : RunOrder::ColourFirst;
        std::uint8_t* out = StoreRun(0, 0, order, buffer);
        const std::uint64_t pixels = reader.TakeRow(width.toReach, [&](const RunStretch& stretch) {
            tympan::CopyRuns(stretch.runs, order, out);
            runs += stretch.runs.size();
        });
        reader.TakeDelimiter();
        StoreRun(0, 0, order, out);
        width.Require(pixels);
    });
    return cameBack ? static_cast<unsigned int>(runs) : 0;
}
