// The buffers of a PictureRowsData. The operation that fills them from an index is in jpeg/.
#include "core/rows_buffer.h"

#include "core/failure_guard.h"
#include "core/failures.h"
#include "platform/file.h"

#include <cstdint>

namespace {

constexpr tympan::FailureRow kNoMemory[] = { { tympan::Caught::Memory, 0, nullptr } };

template <typename Item>
std::shared_ptr<Item[]> NewBuffer(unsigned int size, const char* name)
{
    if (size == 0)
        throw new IllegalSizeException(name);
    std::shared_ptr<Item[]> buffer;
    if (!tympan::Guarded(tympan::NoTrace(), kNoMemory, [&] { buffer.reset(new Item[size]); }))
        throw new MemoryAllocException;
    return buffer;
}

template <typename Item>
void TakeOver(std::shared_ptr<Item[]>& buffer, Item* items)
{
    if (buffer.get() != items)
        buffer.reset(items);
}

} // namespace

PictureRowsData::~PictureRowsData() = default;

void PictureRowsData::Data(unsigned char* data)
{
    TakeOver(data_, data);
}

void PictureRowsData::RowsOffsets(unsigned int* offsets)
{
    TakeOver(rowsOffsets_, offsets);
}

void PictureRowsData::AllocateDataBuffer(unsigned int size)
{
    data_ = NewBuffer<unsigned char>(size, "Data");
    dataBufferSize_ = size;
}

void PictureRowsData::AllocateRowsOffsetsBuffer(unsigned int entries)
{
    rowsOffsets_ = NewBuffer<unsigned int>(entries, "Rows Offsets");
    rowsOffsetsBufferSize_ = entries;
}

void PictureRowsData::AllocateBuffers(unsigned int size, unsigned int entries)
{
    AllocateDataBuffer(size);
    AllocateRowsOffsetsBuffer(entries);
}

void PictureRowsData::ReleaseDataBuffer()
{
    if (data_ == nullptr)
        return;
    data_.reset();
    dataSize_ = 0;
    dataBufferSize_ = 0;
}

void PictureRowsData::ReleaseRowsOffsetsBuffer()
{
    if (rowsOffsets_ == nullptr)
        return;
    rowsOffsets_.reset();
    rowsOffsetsSize_ = 0;
    rowsOffsetsBufferSize_ = 0;
}

void PictureRowsData::ReleaseBuffers()
{
    ReleaseDataBuffer();
    ReleaseRowsOffsetsBuffer();
}

void PictureRowsData::AddOffset(unsigned int offset)
{
    if (rowsOffsetsSize_ >= rowsOffsetsBufferSize_)
        throw BufferSizeException("'Rows Offsets'");
    rowsOffsets_[rowsOffsetsSize_++] = offset;
}

void PictureRowsData::Load(CFile& file, unsigned int size)
{
    if (std::uint64_t{ dataSize_ } + size > dataBufferSize_)
        throw BufferSizeException("'Data'");
    if (file.Read(data_.get() + dataSize_, size) < size)
        throw new ReadFileException(tympan::kUnexpectedEndOfFile);
    AddOffset(dataSize_);
    dataSize_ += size;
}
