// A TIFF file of libtiff, open, with what libtiff has to say about it kept instead of printed.
#pragma once

#include "failure.h"

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tympan::tool {

/// The most bytes that one of a file can stand for, in the usual compressions.
inline constexpr std::uint64_t kMostForTiffByte = 1032;

/// Owns an open TIFF file. Warnings are dropped; the first error's text is kept for `Fail`.
class TiffFile {
  public:
    /// \param mode as TIFFOpen has it: "r", "w", "w8"
    /// \param shownPath the name for messages
    /// \throws FileFailure when the file can't be opened.
    TiffFile(const std::string& path, const char* mode, std::string shownPath);
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;
    ~TiffFile();

    TIFF* Handle() const { return handle_; }
    /// Throws a FileFailure of `whatHappened`, with libtiff's words behind it when it had any.
    [[noreturn]] void Fail(const std::string& whatHappened) const;
    /// Writes what is left and closes the file.
    /// \throws FileFailure when that failed, or when libtiff has complained about anything before.
    void CloseWritten();
    /// Throws the failure of a write: what the system says, if `errno` has been 0 before the call.
    [[noreturn]] void FailWriting() const;

  private:
    static int KeepError(TIFF* handle, void* self, const char* module, const char* format,
                         va_list arguments);

    std::string shownPath_;
    std::string firstError_;
    TIFF* handle_ = nullptr;
};

/// What libtiff calls a compression, by its number in a file; empty for one that it doesn't know.
std::string CompressionName(unsigned long number);

/// The names of the four inks that are marked as those of the process.
const std::vector<std::string>& CmykInks();

} // namespace tympan::tool
