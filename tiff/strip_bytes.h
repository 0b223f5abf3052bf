// The bytes of a TIFF/IT strip, read in blocks from its start on.
#pragma once

#include "core/block_size.h"
#include "platform/file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan {

/// A place in a file that moves on over what is taken.
class StripBytes {
  public:
    static constexpr std::size_t kMostAhead = std::min<std::size_t>(kBlockBytes, 64U << 10U);

    /// \param blockBytes what is read at a time, up to `kMostAhead`
    StripBytes(CFile& file, std::uint64_t position, std::size_t blockBytes = kMostAhead)
        : file_(file), end_(position), block_(blockBytes)
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
    void Refill()
    {
        std::copy(block_.begin() + static_cast<std::ptrdiff_t>(next_),
                  block_.begin() + static_cast<std::ptrdiff_t>(held_), block_.begin());
        held_ -= next_;
        next_ = 0;
        file_.Seek(static_cast<LONGLONG>(end_), CFile::begin);
        const std::size_t count =
            file_.Read(block_.data() + held_, static_cast<UINT>(block_.size() - held_));
        held_ += count;
        end_ += count;
    }

    CFile& file_;
    std::uint64_t end_; // in the file, behind what is held
    std::vector<std::uint8_t> block_;
    std::size_t next_ = 0; // in the block
    std::size_t held_ = 0;
};

} // namespace tympan
