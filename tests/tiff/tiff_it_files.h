// TIFF/IT files in memory.
#pragma once

#include "platform/memory_files.h"
#include "support/tiff_it_samples.h"

#include <string_view>

namespace tympan::test {

/// Puts one file, "pic", in the place of the system's files while it lives.
class OneFile {
  public:
    explicit OneFile(const std::vector<unsigned char>& bytes) { Put(bytes); }
    void Put(const std::vector<unsigned char>& bytes)
    {
        memory_.Put("pic",
                    std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    WatchedFileSystem& Watched() { return watched_; }
    const MemoryFileSystem& Memory() const { return memory_; }

  private:
    MemoryFileSystem memory_;
    WatchedFileSystem watched_{ memory_ };
    ScopedFileSystem scoped_{ watched_ };
};

} // namespace tympan::test
