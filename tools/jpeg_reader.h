// A JPEG file that libjpeg reads.
#pragma once

#include "jpeg_messages.h"
#include "picture_source.h"

#include <string>

namespace tympan::tool {

/// The file, open, and libjpeg's object on it.
class JpegReader {
  public:
    /// \throws FileFailure when the file can't be opened.
    explicit JpegReader(const std::string& path) : path_(path), stream_(OpenStream(path))
    {
        jpeg_.err = messages_.Manager();
        Do([this] {
            jpeg_create_decompress(&jpeg_);
            jpeg_stdio_src(&jpeg_, stream_.get());
        });
    }

    const std::string& Path() const { return path_; }
    jpeg_decompress_struct& Jpeg() { return jpeg_; }
    JpegMessages& Messages() { return messages_; }
    /// Where libjpeg reads; its buffer is ahead of it.
    std::FILE* File() { return stream_.get(); }

    /// Makes calls of libjpeg as `JpegMessages::Do`.
    /// \throws FileFailure when one fails.
    template <typename Calls>
    void Do(const Calls& calls)
    {
        if (!messages_.Do(calls))
            throw UnreadableJpeg(path_, messages_);
    }

  private:
    std::string path_;
    Stream stream_;
    JpegMessages messages_;
    JpegDecoder jpeg_;
};

} // namespace tympan::tool
