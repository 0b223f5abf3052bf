// A file of bytes, written from its start on.
#pragma once

#include "output_file.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tympan::tool {

/// All fail with a FileFailure of the output.
class PlainFile {
  public:
    explicit PlainFile(const OutputFile& output);

    void Write(std::span<const std::uint8_t> bytes);
    void Write(std::string_view text);
    /// Writes over the first bytes of the file. Nothing can be written behind it.
    void WriteAtStart(std::span<const std::uint8_t> bytes);
    /// Writes what is left and closes the file.
    void Finish();

  private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void Put(const void* bytes, std::size_t count);

    std::string path_;
    std::unique_ptr<std::FILE, CloseFile> file_;
};

} // namespace tympan::tool
