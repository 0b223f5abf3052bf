// The seam under CFile through which all bytes come in and go out: the system's files, or what a
// test puts in their place.
#pragma once

#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tympan {

/// What an operation of the seam gives: a whole number, or the `errno` value that tells why not.
struct IoResult {
    std::int64_t value = 0;
    int error = 0;

    static IoResult Failed(int error) noexcept { return { 0, error }; }
    explicit operator bool() const noexcept { return error == 0; }
};

enum class Access { read, write, readWrite };
enum class Sharing { all, readersOnly };

struct OpenMode {
    Access access = Access::read;
    bool create = false;            ///< make the file, or empty the one that is there
    Sharing sharing = Sharing::all; ///< what other programs may do meanwhile, on Windows
};

/// The operations on files, by small whole numbers and by position. Nothing is thrown. An operation
/// whose result has no use for a number gives 0.
class FileSystem {
  public:
    FileSystem() noexcept = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    /// Gives the open file's number, 0 or above. Never waits for another program: what is to be
    /// read must be a plain file, what is only to be written a plain file or a device.
    virtual IoResult Open(const char* path, OpenMode mode) noexcept = 0;
    /// Gives the count of bytes read, less than the buffer holds only at the end of the file.
    virtual IoResult ReadAt(int file, std::span<std::byte> buffer,
                            std::int64_t position) noexcept = 0;
    /// Writes all of `bytes`, or fails.
    virtual IoResult WriteAt(int file, std::span<const std::byte> bytes,
                             std::int64_t position) noexcept = 0;
    /// Gives the file's length in bytes.
    virtual IoResult Size(int file) noexcept = 0;
    /// Brings what was written to the disk.
    virtual IoResult Flush(int file) noexcept = 0;
    virtual IoResult Truncate(int file, std::int64_t length) noexcept = 0;
    /// The number is free again even when this fails.
    virtual IoResult Close(int file) noexcept = 0;
    virtual IoResult Remove(const char* path) noexcept = 0;
    /// Fails with EEXIST when there is a file of the new name.
    virtual IoResult Rename(const char* oldPath, const char* newPath) noexcept = 0;
};

/// The files of the system that the program runs on.
FileSystem& SystemFiles() noexcept;

/// The files in use: the system's, or those of the innermost living ScopedFileSystem.
FileSystem& CurrentFileSystem() noexcept;

/// Puts other files in the place of the system's while it lives, for all threads. Files opened
/// meanwhile are to be closed before it ends, since their numbers mean nothing to the others.
class ScopedFileSystem {
  public:
    explicit ScopedFileSystem(FileSystem& files) noexcept;
    ScopedFileSystem(const ScopedFileSystem&) = delete;
    ScopedFileSystem& operator=(const ScopedFileSystem&) = delete;
    ~ScopedFileSystem();

  private:
    FileSystem* previous_;
};

/// What the path resolver makes of a path; nothing when it throws.
std::optional<CString> ResolvePath(const CString& path);

} // namespace tympan
