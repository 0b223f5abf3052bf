#include "core/row_access.h"

#include "core/failure_guard.h"
#include "core/failures.h"
#include "platform/claims.h"

#include <algorithm>
#include <new>

namespace {

constexpr tympan::FailureRow kFileFailures[] = { { tympan::Caught::File, 0, nullptr } };

// A file that can't tell its length allows what any file may claim.
bool FileAllows(unsigned int size, CFile& file)
{
    if (tympan::MayClaim(size, 0))
        return true;
    std::uint64_t length = 0;
    tympan::Guarded(tympan::NoTrace(), kFileFailures, [&] { length = file.GetLength(); });
    return tympan::MayClaim(size, length);
}

} // namespace

PictureFileInterface::~PictureFileInterface()
{
    // Who wants to know whether an output was closed well closes it before.
    tympan::Guarded(tympan::NoTrace(), kFileFailures, [&] { BasePictureIF::ClosePictureFile(); });
}

void PictureFileInterface::StorePictureParams(const PictureParameters* const record)
{
    if (PictureParams() != nullptr && record != nullptr)
        *PictureParams() = *record;
}

void PictureFileInterface::StorePictureParams(const PictureFileInterface* const other)
{
    if (other != nullptr)
        PictureFileInterface::StorePictureParams(other->PictureParams());
}

unsigned long PictureFileInterface::GetBufferSize(unsigned int, unsigned int, bool)
{
    return 0;
}

unsigned int PictureFileInterface::GetRowsNumber(unsigned int firstRow, unsigned int lastRow,
                                                 unsigned int rowsTotal, bool wrap)
{
    if (std::max(firstRow, lastRow) >= rowsTotal)
        throw IllegalRowsException();
    if (firstRow <= lastRow)
        return lastRow - firstRow + 1;
    if (!wrap)
        throw IllegalRowsException();
    return lastRow - firstRow + rowsTotal + 1;
}

bool PictureFileInterface::AllocateRowBuffer(unsigned int size)
{
    ReleaseRowBuffer();
    if (IsPictureFileOpen() && IsPictureInputFile() && !FileAllows(size, FileHandle()))
        return false;
    rowBuffer_.reset(new (std::nothrow) unsigned char[size]());
    rowBufferSize_ = rowBuffer_ != nullptr ? size : 0;
    return rowBuffer_ != nullptr;
}

void PictureFileInterface::ReleaseRowBuffer()
{
    rowBuffer_.reset();
    rowBufferSize_ = 0;
}

void PictureFileInterface::CurrRowBuffer(unsigned char* buffer)
{
    static_cast<void>(rowBuffer_.release());
    rowBuffer_.reset(buffer);
    rowBufferSize_ = PictureParams() != nullptr ? PictureParams()->RowSize() : 0;
}

bool PictureFileInterface::RowBufferHolds(unsigned int size)
{
    if (rowBuffer_ != nullptr && rowBufferSize_ >= size)
        return true;
    return (rowBuffer_ != nullptr || IsPictureFileOpen()) && AllocateRowBuffer(size);
}
