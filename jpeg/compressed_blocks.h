// The index of a JPEG file: where in the file each band of 8 rows stands. It lives in a side file
// with the picture's name and the extension ".bin".
#pragma once

#include "core/failure_trace.h"
#include "platform/file.h"
#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

class PictureParameters;

/// A block: the bytes of one band of 8 rows in the entropy-coded data. Block n holds the rows 8n to
/// 8n + 7.
struct CompressedLine {
    std::uint32_t StartOffset; ///< file position of the first byte
    std::uint32_t EndOffset;   ///< file position of the last byte
};

/// A walk over the index, from one block to another.
struct CompressedBlocksRange {
    std::uint32_t First; ///< number of the first block
    std::uint32_t Last;  ///< number of the last block
    std::uint32_t Count; ///< blocks to walk
    std::uint32_t Total; ///< blocks in the index when the range was made
};

namespace tympan {

/// The allocator of arrays that are to be read into: what it makes has no value yet.
template <typename Value>
struct UnsetAllocator : std::allocator<Value> {
    /// Leaves the memory as it is.
    template <typename Other>
    void construct(Other* place) noexcept
    {
        ::new (static_cast<void*>(place)) Other;
    }
};

} // namespace tympan

/// The index, read from its side file or collected to be written there. Its operations are those of
/// `JpegFileInterface`; a client gets no index of its own.
class JpegCompBlocksInfo {
  public:
    /// Empty and closed.
    JpegCompBlocksInfo() = default;
    JpegCompBlocksInfo(const JpegCompBlocksInfo&) = delete;
    JpegCompBlocksInfo& operator=(const JpegCompBlocksInfo&) = delete;
    /// Closes. An index that can't be written leaves a side file of 0 bytes, and nothing is thrown.
    virtual ~JpegCompBlocksInfo();

    /// Appends a block. \throws std::bad_alloc, std::length_error.
    virtual void StoreBlock(const CompressedLine& line);

    /// \param line receives the block, or 0 in both fields.
    /// \throws OutOfRangeException* for a block that isn't in the index.
    virtual void GetBlock(unsigned int index, CompressedLine& line) const;

    /// Opens the side file of a picture: reads all of it in one piece, or creates and empties it.
    /// What was open is closed before, as by `Close`. A rest that makes no whole block is dropped,
    /// and what a short file doesn't hold is 0.
    /// \throws OpenFileException* with the side file's name, also for an output picture that has
    ///   that name itself; FileNameParser::StripExtensionFailed by value; CFileException*;
    ///   std::bad_alloc. The index is then closed and empty.
    virtual void Open(const CString& fileName, bool inputFile);

    /// Writes an index that was opened for output, in one piece, closes the side file and empties
    /// the index. Nothing when none is open.
    /// \throws CFileException* of an index that couldn't be written; its side file has 0 bytes, if
    ///   that much is possible.
    virtual void Close();

    /// Takes the sizes in units and their factor over.
    virtual void StoreParams(const PictureParameters& parameters);

    /// Makes the range from `first` to `last`, both included: numbers of rows, or of blocks.
    /// \throws OutOfRangeException* for a first block above the last without `wrap`.
    virtual void GetBlocksRange(unsigned int first, unsigned int last, bool rowsGiven, bool wrap,
                                CompressedBlocksRange& range) const;

    /// The bytes of all blocks of a range. 0, and 90062 in `TraceStatus`, for a block that isn't in
    /// the index.
    /// \throws ReadFileException* for a block that has no size.
    virtual unsigned long GetBlocksSize(const CompressedBlocksRange& range) const;

    /// 0 until a look-up failed.
    unsigned long TraceStatus() const { return trace_.Status(); }
    /// Factor from the side file's units to inches, as it was read.
    double FileSizeUnitsFactor() const { return fileSizeUnitsFactor_; }
    /// @{
    /// In inches, once read; the reference holds as long as the index.
    const double& HeightInUnits() const { return sizeInUnits_.first; }
    const double& WidthInUnits() const { return sizeInUnits_.second; }
    /// @}
    /// A number of the side file that is handed on as it stands; 0 in one that this library wrote.
    std::uint32_t McuNumber() const { return mcuNumber_; }

    /// Whether the side file is open.
    bool IsOpen() const { return sideFile_.m_hFile != CFile::hFileNull; }
    /// All blocks, until the next `StoreBlock`, `Open` or `Close`.
    std::span<const CompressedLine> Blocks() const;

  private:
    using Lines = std::vector<CompressedLine, tympan::UnsetAllocator<CompressedLine>>;

    void Read();
    void ReadOrClose();
    void TakeHead();
    void Write(Lines& image);

    mutable tympan::FailureTrace trace_;
    bool inputFile_ = false;
    CString sideFileName_;
    CFile sideFile_;
    double fileSizeUnitsFactor_ = 0.0;
    std::pair<double, double> sizeInUnits_{ 0.0, 0.0 }; // height, width
    std::uint32_t mcuNumber_ = 0;
    Lines
        image_; // the side file as it stands: records that take the place of its head, then blocks
};
