// The bytes of a TIFF/IT strip, read in blocks from its start on.
#pragma once

#include "core/block_size.h"
#include "platform/file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace tympan {

/// A place in a file that moves on over what is taken.
class StripBytes {
  public:
    static constexpr std::size_t kMostAhead = std::min<std::size_t>(kBlockBytes, 64U << 10U);

    /// \param blockBytes what is read at a time
    StripBytes(CFile& file, std::uint64_t position, std::size_t blockBytes = kMostAhead)
        : file_(file), end_(position), room_(blockBytes), block_(blockBytes + kCacheLine)
    {}

    /// The bytes ahead: as many as wanted or more; fewer only where the file ends. They hold until the
    /// next call. \param wanted up to the block. \throws CFileException*.
    std::span<const std::uint8_t> Ahead(std::size_t wanted)
    {
        if (held_ - next_ < wanted)
            Refill();
        return { block_.data() + next_, held_ - next_ };
    }
    /// Moves on over bytes that were ahead.
    void Pass(std::size_t count) { next_ += count; }
    /// Moves on, also beyond the file's end.
    void Skip(std::uint64_t count)
    {
        if (count <= held_ - next_)
            return Pass(static_cast<std::size_t>(count));
        end_ = Position() + count;
        held_ = next_ = 0;
    }
    /// Takes up to `count` bytes, as a read would. \return how many there were.
    std::size_t Drop(std::size_t count)
    {
        const std::size_t there = std::min(count, Ahead(count).size());
        Pass(there);
        return there;
    }
    /// In the file, of the byte ahead.
    std::uint64_t Position() const { return end_ - (held_ - next_); }

  private:
    static constexpr std::size_t kCacheLine = 64;

    void Refill()
    {
        const std::size_t kept = held_ - next_;
        const std::size_t start = PlaceInLine(kept);
        std::memmove(block_.data() + start, block_.data() + next_, kept);
        next_ = start;
        held_ = start + kept;
        file_.Seek(static_cast<LONGLONG>(end_), CFile::begin);
        const std::size_t count =
            file_.Read(block_.data() + held_, static_cast<UINT>(room_ - kept));
        held_ += count;
        end_ += count;
    }

    // Where the bytes kept go, so that those read behind them lie in the lines of the processor's
    // cache as they do in the file's pages. The system may need twice the time to copy them otherwise.
    std::size_t PlaceInLine(std::size_t kept) const
    {
        const auto behindKept = reinterpret_cast<std::uintptr_t>(block_.data()) + kept;
        return static_cast<std::size_t>((end_ - behindKept) % kCacheLine);
    }

    CFile& file_;
    std::uint64_t end_; // in the file, behind what is held
    std::size_t room_;  // for what is ahead
    std::vector<std::uint8_t> block_;
    std::size_t next_ = 0; // in the block
    std::size_t held_ = 0;
};

} // namespace tympan
