// A file read in blocks, for readers that take a few bytes at a time.
#pragma once

#include "platform/file.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tympan {

/// Stands in the place of a file that is open for reading, with a position of its own, and reads
/// that one a block at a time. When it goes, the file stands where it stood.
///
/// It is never open by itself: it has no path and no number. It expects a file that doesn't change
/// meanwhile, and a place inside the range of positions.
class BlockFile final : public CFile {
  public:
    /// Nothing is read yet.
    BlockFile(CFile& file, std::size_t blockBytes);
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;
    ~BlockFile() override;

    UINT Read(void* buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetPosition() const override { return position_; }
    ULONGLONG GetLength() const override { return file_.GetLength(); }

  private:
    std::size_t CopyHeld(unsigned char* target, std::size_t count);
    bool IsAtEnd() const;
    void Refill();

    CFile& file_;
    std::size_t blockBytes_;
    std::uint64_t position_ = 0;
    std::uint64_t blockStart_ = 0;
    std::vector<unsigned char> block_;
    bool blockIsLast_ = false; // the file ended in it
};

} // namespace tympan
