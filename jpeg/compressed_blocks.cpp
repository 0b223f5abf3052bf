// The index: its side file is held in memory as it stands, head and all, so that one read brings it
// and one write puts it down.
#include "jpeg/compressed_blocks.h"

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/picture_parameters.h"
#include "core/whole_or_empty.h"
#include "jpeg/block_walk.h"
#include "jpeg/jpeg_layout.h"
#include "jpeg/side_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t kHeadRecords = tympan::kSideBlocks / sizeof(CompressedLine);
static_assert(kHeadRecords * sizeof(CompressedLine) == tympan::kSideBlocks);

// What one call brings: the blocks of as many rows as there are numbers for, but for the last 256.
constexpr std::size_t kMostRecords = std::numeric_limits<UINT>::max() / sizeof(CompressedLine);

constexpr tympan::FailureRow kAnyFailure[] = { { tympan::Caught::Anything, 0, nullptr } };
constexpr tympan::FailureRow kSizeFailures[] = {
    { tympan::Caught::OutOfRange, tympan::code::kBlockOutsideIndex, nullptr },
};

constexpr UINT kInput = CFile::modeRead | CFile::shareDenyWrite | CFile::typeBinary;
constexpr UINT kOutput = CFile::modeCreate | CFile::modeWrite | CFile::typeBinary;

} // namespace

JpegCompBlocksInfo::~JpegCompBlocksInfo()
{
    tympan::Guarded(tympan::NoTrace(), kAnyFailure, [&] { JpegCompBlocksInfo::Close(); });
}

std::span<const CompressedLine> JpegCompBlocksInfo::Blocks() const
{
    return std::span(image_).subspan(std::min(image_.size(), kHeadRecords));
}

void JpegCompBlocksInfo::StoreBlock(const CompressedLine& line)
{
    if (image_.size() >= kMostRecords)
        throw std::length_error("JpegCompBlocksInfo");
    const CompressedLine stored = line; // which may stand in the array that grows
    if (image_.empty())
        image_.resize(kHeadRecords);
    image_.push_back(stored);
}

void JpegCompBlocksInfo::GetBlock(unsigned int index, CompressedLine& line) const
{
    line = { 0, 0 };
    const auto blocks = Blocks();
    if (index >= blocks.size())
        throw new OutOfRangeException;
    line = blocks[index];
}

// ---- the side file

void JpegCompBlocksInfo::Open(const CString& fileName, bool inputFile)
{
    Close();
    Lines().swap(image_);
    inputFile_ = inputFile;
    sideFileName_ = tympan::SideFileName(fileName);
    const bool isPicture = !inputFile && sideFileName_ == fileName; // which it would empty
    if (isPicture || sideFile_.Open(sideFileName_, inputFile ? kInput : kOutput) == FALSE)
        throw new OpenFileException(sideFileName_);
    if (inputFile)
        ReadOrClose();
}

// A side file that couldn't be read whole gives no index.
void JpegCompBlocksInfo::ReadOrClose()
{
    struct Undo {
        JpegCompBlocksInfo* index;
        ~Undo()
        {
            if (index != nullptr)
                tympan::Guarded(tympan::NoTrace(), kAnyFailure, [&] { index->Close(); });
        }
    } undo{ this };
    Read();
    undo.index = nullptr;
}

void JpegCompBlocksInfo::Read()
{
    const std::uint64_t length = sideFile_.GetLength();
    const std::uint64_t records = length / sizeof(CompressedLine);
    image_.resize(
        static_cast<std::size_t>(std::clamp<std::uint64_t>(records, kHeadRecords, kMostRecords)));
    std::memset(image_.data(), 0, tympan::kSideBlocks);
    const std::size_t count =
        sideFile_.Read(image_.data(), static_cast<UINT>(image_.size() * sizeof(CompressedLine)));
    image_.resize(std::max(count / sizeof(CompressedLine), kHeadRecords));
    TakeHead();
    if constexpr (std::endian::native != std::endian::little)
        std::transform(image_.begin(), image_.end(), image_.begin(), tympan::InFileOrder);
}

void JpegCompBlocksInfo::TakeHead()
{
    tympan::SideHeadBytes bytes;
    std::memcpy(bytes.data(), image_.data(), bytes.size());
    const tympan::SideFileHead head = tympan::ReadSideHead(bytes);
    fileSizeUnitsFactor_ = head.factor;
    sizeInUnits_ = { head.height, head.width };
    mcuNumber_ = head.mcuNumber;
}

void JpegCompBlocksInfo::Close()
{
    if (!IsOpen())
        return;
    Lines image = std::exchange(image_, {}); // released on every way out
    if (inputFile_) {
        tympan::Guarded(tympan::NoTrace(), kAnyFailure, [&] { sideFile_.Close(); });
        return;
    }
    tympan::WholeOrEmpty keeper(sideFile_, sideFileName_);
    Write(image);
    sideFile_.Close();
    keeper.IsWhole();
}

// Without blocks, the file ends behind the sizes.
void JpegCompBlocksInfo::Write(Lines& image)
{
    std::array<unsigned char, tympan::kSideBlocks> head{};
    tympan::WriteSideHead({ fileSizeUnitsFactor_, sizeInUnits_.first, sizeInUnits_.second, 0 },
                          std::span(head).first<tympan::kSideWritten>());
    if (image.size() <= kHeadRecords) {
        sideFile_.Write(head.data(), static_cast<UINT>(tympan::kSideWritten));
        return;
    }
    if constexpr (std::endian::native != std::endian::little)
        std::transform(image.begin(), image.end(), image.begin(), tympan::InFileOrder);
    std::memcpy(image.data(), head.data(), head.size());
    sideFile_.Write(image.data(), static_cast<UINT>(image.size() * sizeof(CompressedLine)));
}

void JpegCompBlocksInfo::StoreParams(const PictureParameters& parameters)
{
    fileSizeUnitsFactor_ = parameters.FileSizeUnitsFactor();
    sizeInUnits_ = parameters.SizeInUnits();
}

// ---- ranges

// A count is held to its type. It is 1 at least, so that a walk meets a first block that isn't
// there.
void JpegCompBlocksInfo::GetBlocksRange(unsigned int first, unsigned int last, bool rowsGiven,
                                        bool wrap, CompressedBlocksRange& range) const
{
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max();
    const std::uint32_t rowsOfNumber = rowsGiven ? tympan::kRowsOfBlock : 1;
    range.First = first / rowsOfNumber;
    range.Last = last / rowsOfNumber;
    const bool runsOver = range.Last < range.First;
    if (runsOver && !wrap)
        throw new OutOfRangeException;
    const auto blocks = static_cast<std::int64_t>(Blocks().size());
    const std::int64_t count =
        std::int64_t{ range.Last } - range.First + 1 + (runsOver ? blocks : 0);
    range.Count = static_cast<std::uint32_t>(std::clamp<std::int64_t>(count, 1, kMost));
    range.Total = static_cast<std::uint32_t>(blocks);
}

unsigned long JpegCompBlocksInfo::GetBlocksSize(const CompressedBlocksRange& range) const
{
    constexpr std::uint64_t kMost = std::numeric_limits<unsigned long>::max();
    std::uint64_t size = 0;
    const bool isWhole = tympan::Guarded(trace_, kSizeFailures, [&] {
        tympan::ForEachBlock(*this, range, [&](std::uint32_t, const CompressedLine& line) {
            size += tympan::SizeOf(line);
        });
    });
    return isWhole ? static_cast<unsigned long>(std::min(size, kMost)) : 0;
}
