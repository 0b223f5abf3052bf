// Rows of a CT file: read as stored or enlarged, and written.
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/resampling.h"
#include "core/whole_numbers.h"
#include "ct/ct_file.h"
#include "ct/ct_layout.h"

#include <cmath>

namespace {

using tympan::Caught;
using tympan::FailureRow;

constexpr FailureRow kRowFailures[] = {
    { Caught::File, tympan::code::kFileFailed, nullptr },
    { Caught::Anything, tympan::code::kCtUnexpected, nullptr },
};

constexpr FailureRow kRequestRefused{
    Caught::Anything, tympan::code::kCtRequestRefused,
    "Picture File:\nOutput Res requested smaller than Input Res.\n"
};
constexpr FailureRow kRangeRefused{
    Caught::Anything, tympan::code::kCtRowRange,
    "Picture File :\nLast line must be greater than first line.\n"
};
constexpr FailureRow kBufferRefused{ Caught::Anything, tympan::code::kCtBufferTooSmall,
                                     "Picture File:\nGiven buffer is too small.\n" };

// A size of 0.0 makes resolutions, and so ratios, that are no numbers.
bool Enlarges(double ratio)
{
    return std::isfinite(ratio) && ratio >= 1.0;
}

std::uint64_t Holds(const unsigned char* buffer, unsigned long bufferSize)
{
    return buffer != nullptr ? bufferSize : 0;
}

} // namespace

unsigned long CtFileInterface::RowPosition(unsigned int row, ColorSeparationType separation)
{
    return static_cast<unsigned long>(Layout().PositionOf(row, separation).value_or(0));
}

PictureRowsData* CtFileInterface::GetPictureRow(const ColorSeparationType&, unsigned int, double,
                                                double)
{
    return nullptr;
}

PictureRowsData* CtFileInterface::GetPictureRows(const ColorSeparationType&, unsigned int,
                                                 unsigned int, bool)
{
    return nullptr;
}

unsigned long CtFileInterface::GetPictureRow(unsigned char* buffer, unsigned int row,
                                             ColorSeparationType separation,
                                             double scanAxisResolution, double xScanAxisResolution,
                                             unsigned long bufferSize)
{
    unsigned long stored = 0;
    tympan::Guarded(Failures(), kRowFailures, [&] {
        stored = ReadRow(buffer, row, separation, scanAxisResolution / ResolutionOnScanAxis(),
                         xScanAxisResolution / ResolutionOnXScanAxis(), bufferSize);
    });
    return stored;
}

unsigned long CtFileInterface::ReadRow(unsigned char* buffer, unsigned int row,
                                       ColorSeparationType separation, double horizontal,
                                       double vertical, unsigned long bufferSize)
{
    const tympan::CtLayout layout = Layout();
    const std::uint32_t width = layout.width;
    const auto outputWidth = tympan::RoundedLength(horizontal * width);
    if (!IsPictureFileOpen() || !Enlarges(horizontal) || !Enlarges(vertical) || !outputWidth ||
        Holds(buffer, bufferSize) < *outputWidth || !RowBufferHolds(width)) {
        Failures().Leave(kRequestRefused);
        return 0;
    }
    const auto fileRow = static_cast<unsigned int>(row / vertical);
    const auto position = layout.PositionOf(fileRow, separation);
    if (!position)
        return 0;

    // Nothing reaches the caller's buffer of a row that isn't whole, so only one that is goes there
    // directly.
    const bool isWhole = *position + width <= heldAtOpening_;
    unsigned char* const target = horizontal == 1.0 && isWhole ? buffer : CurrRowBuffer();
    FileHandle().Seek(static_cast<LONGLONG>(*position), CFile::begin);
    if (FileHandle().Read(target, width) < width)
        return 0;
    if (target != buffer)
        tympan::Resample(target, width, horizontal, buffer, *outputWidth);
    return static_cast<unsigned long>(*outputWidth);
}

unsigned long CtFileInterface::GetPictureRows(unsigned char* buffer, unsigned int firstRow,
                                              unsigned int lastRow, unsigned int&,
                                              unsigned long* offsets,
                                              ColorSeparationType separation,
                                              unsigned long bufferSize, bool)
{
    unsigned long stored = 0;
    tympan::Guarded(Failures(), kRowFailures, [&] {
        stored = ReadRows(buffer, firstRow, lastRow, offsets, separation, bufferSize);
    });
    return stored;
}

unsigned long CtFileInterface::ReadRows(unsigned char* buffer, unsigned int firstRow,
                                        unsigned int lastRow, unsigned long* offsets,
                                        ColorSeparationType separation, unsigned long bufferSize)
{
    if (lastRow <= firstRow) {
        Failures().Leave(kRangeRefused);
        return 0;
    }
    const tympan::CtLayout layout = Layout();
    const auto rowLength = tympan::RoundedLength(PictureParams()->WidthInPixels());
    const std::uint32_t rows = lastRow - firstRow;
    const auto wanted = rowLength ? tympan::Product(rows, *rowLength) : std::nullopt;
    if (!wanted || Holds(buffer, bufferSize) < *wanted) {
        Failures().Leave(kBufferRefused);
        return 0;
    }
    for (std::uint32_t i = 0; i < rows; ++i) {
        const std::uint64_t offset = i * *rowLength;
        if (offsets != nullptr)
            offsets[i] = static_cast<unsigned long>(offset);
        const auto position = layout.PositionOf(std::uint64_t{ firstRow } + i, separation);
        if (!position || layout.width == 0)
            continue;
        FileHandle().Seek(static_cast<LONGLONG>(*position), CFile::begin);
        FileHandle().Read(buffer + offset, layout.width);
    }
    return static_cast<unsigned long>(std::uint64_t{ rows } * layout.width);
}

void CtFileInterface::SavePictureRow(const unsigned char* const data, unsigned int row,
                                     ColorSeparationType separation, unsigned long)
{
    const unsigned long position = RowPosition(row, separation);
    if (position == 0)
        return;
    FileHandle().Seek(static_cast<LONGLONG>(position), CFile::begin);
    FileHandle().Write(data, Layout().width);
}
