// A JPEG and its side file in memory.
#pragma once

#include "jpeg/jpeg_file.h"
#include "platform/memory_files.h"
#include "support/jpeg_samples.h"

#include <memory>
#include <string>
#include <string_view>

namespace tympan::test {

/// Puts files in the place of the system's while it lives. At its end none may be open.
class JpegFiles {
  public:
    explicit JpegFiles(const JpegSample& sample = {}) : sample_(sample)
    {
        Put("pic.jpg", sample.Stream());
        Put("pic.bin", sample.SideFile());
    }

    void Put(const std::string& path, const JpegSample::Bytes& bytes)
    {
        memory_.Put(path,
                    std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    JpegSample::Bytes Get(const std::string& path) const
    {
        const std::string text = memory_.Text(path);
        return { text.begin(), text.end() };
    }
    static std::unique_ptr<JpegFileInterface> Open(const char* path = "pic.jpg")
    {
        return std::unique_ptr<JpegFileInterface>(create_jpeg_file_object(path, true));
    }
    /// The bytes of blocks, one behind the other.
    JpegSample::Bytes Bands(const std::vector<unsigned int>& numbers) const
    {
        JpegSample::Bytes bytes;
        for (const unsigned int number : numbers)
            JpegSample::Append(bytes, sample_.Band(number));
        return bytes;
    }
    WatchedFileSystem& Watched() { return watched_; }
    MemoryFileSystem& Memory() { return memory_; }

  private:
    JpegSample sample_;
    MemoryFileSystem memory_;
    WatchedFileSystem watched_{ memory_ };
    ScopedFileSystem scoped_{ watched_ };
};

} // namespace tympan::test
