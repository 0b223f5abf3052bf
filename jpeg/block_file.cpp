#include "jpeg/block_file.h"

#include "core/failure_guard.h"

#include <algorithm>

namespace tympan {

namespace {

constexpr FailureRow kFileFailures[] = { { Caught::File, 0, nullptr } };

} // namespace

BlockFile::BlockFile(CFile& file, std::size_t blockBytes) : file_(file), blockBytes_(blockBytes) {}

// A file that can't be moved is one that was closed, and that has been told.
BlockFile::~BlockFile()
{
    Guarded(NoTrace(), kFileFailures,
            [&] { file_.Seek(static_cast<LONGLONG>(position_), CFile::begin); });
}

UINT BlockFile::Read(void* buffer, UINT count)
{
    auto* const target = static_cast<unsigned char*>(buffer);
    std::size_t done = CopyHeld(target, count);
    while (done < count && !IsAtEnd()) {
        Refill();
        done += CopyHeld(target + done, count - done);
    }
    return static_cast<UINT>(done);
}

ULONGLONG BlockFile::Seek(LONGLONG offset, UINT from)
{
    const std::uint64_t start = from == begin ? 0 : from == current ? position_ : GetLength();
    position_ = start + static_cast<std::uint64_t>(offset);
    return position_;
}

std::size_t BlockFile::CopyHeld(unsigned char* target, std::size_t count)
{
    if (position_ < blockStart_ || position_ - blockStart_ >= block_.size())
        return 0;
    const auto from = static_cast<std::size_t>(position_ - blockStart_);
    const std::size_t taken = std::min(count, block_.size() - from);
    std::copy_n(block_.begin() + static_cast<std::ptrdiff_t>(from), taken, target);
    position_ += taken;
    return taken;
}

bool BlockFile::IsAtEnd() const
{
    return blockIsLast_ && position_ >= blockStart_ + block_.size();
}

void BlockFile::Refill()
{
    blockIsLast_ = false;
    block_.resize(blockBytes_);
    file_.Seek(static_cast<LONGLONG>(position_), CFile::begin);
    const std::size_t count = file_.Read(block_.data(), static_cast<UINT>(block_.size()));
    blockIsLast_ = count < block_.size();
    block_.resize(count);
    blockStart_ = position_;
}

} // namespace tympan
