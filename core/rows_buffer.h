// A block of bytes with a list of places in it: what the object forms of the row operations give.
#pragma once

#include "platform/export.h"

#include <memory>

class CFile;
class JpegCompBlocksInfo;

/// The compressed blocks of a range of rows, taken out of a file once and kept by themselves: the
/// object outlives the picture object that made it.
///
/// A copy shares both buffers with its source; the last of those that share one frees it.
class TYMPAN_API PictureRowsData {
  public:
    /// Without blocks and buffers.
    PictureRowsData() = default;
    /// @{
    /// Shares both buffers with the source.
    PictureRowsData(const PictureRowsData&) = default;
    PictureRowsData& operator=(const PictureRowsData&) = default;
    /// @}
    /// Gives up the object's share in its buffers.
    virtual ~PictureRowsData();

    /// The bytes, or null; they hold as long as one of the objects that share them.
    unsigned char* Data() const { return data_.get(); }
    /// Bytes of `Data` that are filled.
    unsigned int DataSize() const { return dataSize_; }
    /// Bytes that `Data` has room for. What isn't filled has no defined content.
    unsigned int DataBufferSize() const { return dataBufferSize_; }
    /// How many blocks were loaded.
    unsigned int DataBlocks() const { return dataBlocks_; }
    /// The place in `Data` of each block that was loaded, in ascending order; null without any
    /// room.
    unsigned int* RowsOffsets() const { return rowsOffsets_.get(); }
    /// Entries of `RowsOffsets` that are filled.
    unsigned int RowsOffsetsSize() const { return rowsOffsetsSize_; }
    /// Entries that `RowsOffsets` has room for.
    unsigned int RowsOffsetsBufferSize() const { return rowsOffsetsBufferSize_; }

    /// @{
    /// The failure code of the index that the blocks were looked up in: 0 or 90062. When it isn't
    /// 0, no block was loaded.
    unsigned long TraceStatus() const { return traceStatus_; }
    void TraceStatus(unsigned long status) { traceStatus_ = status; }
    /// @}

    /// Fills a fresh object with the blocks from `firstBlock` to `lastBlock`, both included; with
    /// `wrap`, a first one above the last runs over the end of the index and on from its beginning.
    /// \throws OutOfRangeException* for a first block above the last without `wrap`;
    ///   IllegalSizeException* ("Data") when a block isn't in the index; MemoryAllocException* for
    ///   a buffer that can't be had, or is above 16 MiB and longer than the file;
    ///   ReadFileException* for a block that ends before it starts or that the file doesn't hold
    ///   whole; CFileException*.
    virtual void Load(const JpegCompBlocksInfo& blocks, CFile& file, unsigned int firstBlock,
                      unsigned int lastBlock, bool wrap);

  protected:
    /// Takes over an array made with `new[]`, in place of this object's share in the one before.
    void Data(unsigned char* data);
    /// As `Data`.
    void RowsOffsets(unsigned int* offsets);
    /// @{
    /// Sets what the public one of the name tells; no buffer changes.
    void DataSize(unsigned int bytes) { dataSize_ = bytes; }
    void DataBufferSize(unsigned int bytes) { dataBufferSize_ = bytes; }
    void DataBlocks(unsigned int blocks) { dataBlocks_ = blocks; }
    void RowsOffsetsSize(unsigned int entries) { rowsOffsetsSize_ = entries; }
    void RowsOffsetsBufferSize(unsigned int entries) { rowsOffsetsBufferSize_ = entries; }
    /// @}

    /// Makes a new buffer of that many bytes, in place of this object's share in the one before.
    /// \throws IllegalSizeException* ("Data") for 0 bytes; MemoryAllocException*.
    void AllocateDataBuffer(unsigned int size);
    /// The same for the offsets.
    /// \throws IllegalSizeException* ("Rows Offsets") for 0 entries; MemoryAllocException*.
    void AllocateRowsOffsetsBuffer(unsigned int entries);
    /// Both, the data first. \throws as they do.
    void AllocateBuffers(unsigned int size, unsigned int entries);

    /// @{
    /// Gives up this object's share in the buffer or both, and sets its sizes to 0.
    void ReleaseDataBuffer();
    void ReleaseRowsOffsetsBuffer();
    void ReleaseBuffers();
    /// @}

    /// Appends an offset.
    /// \throws BufferSizeException by value ("'Rows Offsets'") when there is no room for it.
    void AddOffset(unsigned int offset);

    /// Appends a block of `size` bytes from the file's position, and its offset.
    /// \throws BufferSizeException by value ("'Data'"), with nothing read, when there is no room;
    ///   ReadFileException* when the file has fewer bytes; CFileException*.
    void Load(CFile& file, unsigned int size);

  private:
    std::shared_ptr<unsigned char[]> data_;
    unsigned int dataBufferSize_ = 0;
    unsigned int dataSize_ = 0;
    unsigned int dataBlocks_ = 0;
    std::shared_ptr<unsigned int[]> rowsOffsets_;
    unsigned int rowsOffsetsBufferSize_ = 0;
    unsigned int rowsOffsetsSize_ = 0;
    unsigned long traceStatus_ = 0;
};
