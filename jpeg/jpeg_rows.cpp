// Bands of rows, copied byte for byte out of the stream.
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "jpeg/block_walk.h"
#include "jpeg/jpeg_file.h"
#include "jpeg/side_file.h"
#include "platform/claims.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace {

using tympan::Caught;
using tympan::FailureRow;

constexpr FailureRow kFetchFailures[] = {
    { Caught::File, tympan::code::kFileFailed, nullptr },
    { Caught::OutOfRange, tympan::code::kBlockOutsideIndex, nullptr },
    { Caught::Memory, tympan::code::kFileFailed, nullptr }, // for the failure object itself
};

constexpr FailureRow kObjectFailures[] = {
    { Caught::File, tympan::code::kFileFailed, nullptr },
    { Caught::OutOfRange, tympan::code::kBlockOutsideIndex, nullptr },
    { Caught::MemoryAlloc, tympan::code::kFileFailed, nullptr },
    { Caught::IllegalSize, tympan::code::kIllegalSize, nullptr },
    { Caught::Memory, tympan::code::kFileFailed, nullptr },
};

constexpr FailureRow kOffsetFailures[] = {
    { Caught::OutOfRange, tympan::code::kBlockOutsideIndex, nullptr },
    { Caught::Memory, tympan::code::kFileFailed, nullptr },
};

// Whether a buffer may be as large as the blocks of a file say.
bool MayHold(unsigned long size, const CFile& file)
{
    return size <= std::numeric_limits<unsigned int>::max() &&
           (tympan::MayClaim(size, 0) || tympan::MayClaim(size, file.GetLength()));
}

} // namespace

// Where blocks are stored, and how far that has come.
struct JpegFileInterface::Fetch {
    unsigned char* buffer = nullptr;
    std::uint64_t size = 0; // bytes
    unsigned long* offsets = nullptr;
    unsigned int& lastBlock;
    std::uint64_t stored = 0;
};

void PictureRowsData::Load(const JpegCompBlocksInfo& blocks, CFile& file, unsigned int firstBlock,
                           unsigned int lastBlock, bool wrap)
{
    CompressedBlocksRange range{};
    blocks.GetBlocksRange(firstBlock, lastBlock, false, wrap, range);
    const unsigned long size = blocks.GetBlocksSize(range);
    if (!MayHold(size, file))
        throw new MemoryAllocException;
    AllocateBuffers(static_cast<unsigned int>(size), range.Count);
    TraceStatus(blocks.TraceStatus());
    if (TraceStatus() != 0)
        return;
    tympan::ForEachBlock(blocks, range, [&](std::uint32_t, const CompressedLine& line) {
        file.Seek(line.StartOffset, CFile::begin);
        Load(file, tympan::SizeOf(line));
        DataBlocks(DataBlocks() + 1);
    });
}

PictureRowsData* JpegFileInterface::GetPictureRow(const ColorSeparationType& separation,
                                                  unsigned int row, double, double)
{
    return GetPictureRows(separation, row, row, false);
}

PictureRowsData* JpegFileInterface::GetPictureRows(const ColorSeparationType&,
                                                   unsigned int firstRow, unsigned int lastRow,
                                                   bool wrap)
{
    std::unique_ptr<PictureRowsData> rows(new (std::nothrow) PictureRowsData);
    if (rows == nullptr)
        throw new MemoryAllocException;
    const bool isLoaded = tympan::Guarded(Failures(), kObjectFailures, [&] {
        rows->Load(compressedBlocksInfo_, FileHandle(), firstRow / tympan::kRowsOfBlock,
                   lastRow / tympan::kRowsOfBlock, wrap);
    });
    return isLoaded ? rows.release() : nullptr;
}

unsigned long JpegFileInterface::GetPictureRow(unsigned char* buffer, unsigned int row,
                                               ColorSeparationType separation, double, double,
                                               unsigned long bufferSize)
{
    unsigned int lastBlock = 0;
    return GetPictureRows(buffer, row, row, lastBlock, nullptr, separation, bufferSize, false);
}

bool JpegFileInterface::IsValidParameters(unsigned char* buffer, unsigned int firstRow,
                                          unsigned int lastRow, unsigned long* offsets,
                                          ColorSeparationType separation, unsigned long bufferSize,
                                          bool wrap)
{
    if (separation >= NoSeparation)
        throw new IllegalSeparationException;
    if (buffer == nullptr || bufferSize == 0)
        return false;
    const bool isRangeWithOffsets = firstRow < lastRow && offsets != nullptr;
    const bool isRowWithout = firstRow == lastRow && offsets == nullptr;
    return isRangeWithOffsets || isRowWithout || wrap;
}

unsigned long JpegFileInterface::GetPictureRows(unsigned char* buffer, unsigned int firstRow,
                                                unsigned int lastRow, unsigned int& rowsInfo,
                                                unsigned long* offsets,
                                                ColorSeparationType separation,
                                                unsigned long bufferSize, bool wrap)
{
    if (!IsValidParameters(buffer, firstRow, lastRow, offsets, separation, bufferSize, wrap))
        return 0;
    CompressedBlocksRange range{};
    compressedBlocksInfo_.GetBlocksRange(firstRow, lastRow, true, wrap, range);
    Fetch fetch{ buffer, bufferSize, offsets, rowsInfo };
    FetchBlocks(range, fetch);
    return static_cast<unsigned long>(fetch.stored);
}

void JpegFileInterface::FetchBlocks(const CompressedBlocksRange& range, Fetch& fetch)
{
    const bool cameBack = tympan::Guarded(Failures(), kFetchFailures, [&] {
        tympan::ForEachBlock(compressedBlocksInfo_, range,
                             [&](std::uint32_t number, const CompressedLine& line) {
                                 FetchBlock(line, fetch);
                                 fetch.lastBlock = number;
                             });
        if (fetch.offsets != nullptr)
            *fetch.offsets = 0;
    });
    if (!cameBack && TraceStatus() == tympan::code::kFileFailed)
        fetch.stored = 0;
}

void JpegFileInterface::FetchBlock(const CompressedLine& line, Fetch& fetch)
{
    FileHandle().Seek(line.StartOffset, CFile::begin);
    const std::uint32_t size = tympan::SizeOf(line);
    if (size > fetch.size - fetch.stored)
        throw new ReadFileException(tympan::kGivenBufferTooSmall);
    if (FileHandle().Read(fetch.buffer + fetch.stored, size) < size)
        throw new ReadFileException(tympan::kUnexpectedEndOfFile);
    if (fetch.offsets != nullptr)
        *fetch.offsets++ = static_cast<unsigned long>(fetch.stored);
    fetch.stored += size;
}

bool JpegFileInterface::GetCompressedBlocksOffsetInfo(unsigned int firstRow, unsigned int lastRow,
                                                      unsigned long& startOffset,
                                                      unsigned long& endOffset)
{
    return tympan::Guarded(Failures(), kOffsetFailures, [&] {
        CompressedBlocksRange range{};
        CompressedLine first{};
        CompressedLine last{};
        compressedBlocksInfo_.GetBlocksRange(firstRow, lastRow, true, false, range);
        compressedBlocksInfo_.GetBlock(range.First, first);
        compressedBlocksInfo_.GetBlock(range.Last, last);
        startOffset = first.StartOffset;
        endOffset = last.EndOffset;
    });
}

unsigned int JpegFileInterface::GetOriginalPictureRow(unsigned char*, unsigned int)
{
    return 0;
}

void JpegFileInterface::Display(unsigned long firstRow, unsigned long lastRow, CDC&)
{
    constexpr unsigned long kLastRow = std::numeric_limits<unsigned int>::max();
    if (firstRow >= lastRow)
        return;
    CompressedBlocksRange range{};
    compressedBlocksInfo_.GetBlocksRange(static_cast<unsigned int>(std::min(firstRow, kLastRow)),
                                         static_cast<unsigned int>(std::min(lastRow, kLastRow)),
                                         true, false, range);
    const std::size_t bytes = LimitToScratch(range);
    std::vector<unsigned char> data(bytes);
    std::vector<unsigned long> offsets(bytes != 0 ? std::size_t{ range.Count } + 1 : 0);
    unsigned int lastBlock = 0;
    Fetch fetch{ data.data(), bytes, bytes != 0 ? offsets.data() : nullptr, lastBlock };
    FetchBlocks(range, fetch);
}

// Shortens a range to the blocks that the scratch memory of a display takes, with one that isn't in
// the index behind them, if they reach it. The bytes of those that are.
std::size_t JpegFileInterface::LimitToScratch(CompressedBlocksRange& range) const
{
    constexpr std::size_t kBytes = 1'000'000;
    constexpr std::uint32_t kOffsets = 10'000; // with the closing one
    const auto blocks = compressedBlocksInfo_.Blocks();
    std::size_t bytes = 0;
    std::uint32_t taken = 0;
    for (; taken < std::min(range.Count, kOffsets - 1); ++taken) {
        const std::uint64_t number = std::uint64_t{ range.First } + taken;
        if (number >= blocks.size()) {
            ++taken;
            break;
        }
        const CompressedLine& line = blocks[static_cast<std::size_t>(number)];
        const bool hasSize = tympan::HasSize(line);
        if (!hasSize || tympan::SizeOf(line) > kBytes - bytes)
            break;
        bytes += tympan::SizeOf(line);
    }
    range.Count = taken;
    return bytes;
}
