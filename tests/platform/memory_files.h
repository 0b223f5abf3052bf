// Files to put under CFile in tests of any folder: in memory, counted, and failing on demand.
#pragma once

#include "platform/file_system.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::test {

using Bytes = std::vector<std::byte>;

/// The bytes of a text.
Bytes TextBytes(std::string_view text);

/// Files in memory. A file that is put or closed fills its heap block to the last byte, so that the
/// address sanitizer sees what reaches over its end.
class MemoryFileSystem : public FileSystem {
  public:
    void Put(const std::string& path, const Bytes& contents);
    void Put(const std::string& path, std::string_view contents) { Put(path, TextBytes(contents)); }
    bool Exists(const std::string& path) const { return files_.contains(path); }
    /// The bytes of a file, none for one that is not there.
    Bytes Contents(const std::string& path) const;
    std::string Text(const std::string& path) const;
    /// How many files are open: 0 at the end of a tidy test.
    std::size_t OpenCount() const { return open_.size(); }

    IoResult Open(const char* path, OpenMode mode) noexcept override;
    IoResult ReadAt(int file, std::span<std::byte> buffer, std::int64_t position) noexcept override;
    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override;
    IoResult Size(int file) noexcept override;
    IoResult Flush(int file) noexcept override;
    IoResult Truncate(int file, std::int64_t length) noexcept override;
    IoResult Close(int file) noexcept override;
    IoResult Remove(const char* path) noexcept override;
    IoResult Rename(const char* oldPath, const char* newPath) noexcept override;

  private:
    using Contained = std::shared_ptr<Bytes>;
    struct OpenFile {
        Contained bytes;
        Access access;
    };

    OpenFile* Find(int file);

    std::map<std::string, Contained> files_;
    std::map<int, OpenFile> open_;
    int next_ = 1'000'000; // no number of the system's comes near
};

enum class FileOperation { open, readAt, writeAt, size, flush, truncate, close, remove, rename };
inline constexpr std::size_t kFileOperations = 9;

/// Passes everything on to other files, and tells a hook of it before.
class ForwardingFileSystem : public FileSystem {
  public:
    explicit ForwardingFileSystem(FileSystem& inner) : inner_(inner) {}

    IoResult Open(const char* path, OpenMode mode) noexcept override;
    IoResult ReadAt(int file, std::span<std::byte> buffer, std::int64_t position) noexcept override;
    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override;
    IoResult Size(int file) noexcept override;
    IoResult Flush(int file) noexcept override;
    IoResult Truncate(int file, std::int64_t length) noexcept override;
    IoResult Close(int file) noexcept override;
    IoResult Remove(const char* path) noexcept override;
    IoResult Rename(const char* oldPath, const char* newPath) noexcept override;

  protected:
    /// Called before an operation, with the bytes that it asks for. An `errno` value but 0 is its
    /// result instead; only a close is carried out all the same.
    virtual int Before(FileOperation operation, std::size_t bytes) noexcept = 0;

  private:
    template <typename Work>
    IoResult Passed(FileOperation operation, std::size_t bytes, Work work) noexcept;

    FileSystem& inner_;
};

/// Counts the operations, and the bytes that were asked for.
class CountingFileSystem : public ForwardingFileSystem {
  public:
    using ForwardingFileSystem::ForwardingFileSystem;

    std::size_t Count(FileOperation operation) const { return At(operation).count; }
    std::size_t ByteCount(FileOperation operation) const { return At(operation).bytes; }
    std::size_t CountAll() const;
    void Reset() { tallies_ = {}; }

  protected:
    int Before(FileOperation operation, std::size_t bytes) noexcept override;

  private:
    struct Tally {
        std::size_t count = 0;
        std::size_t bytes = 0;
    };

    const Tally& At(FileOperation operation) const
    {
        return tallies_[static_cast<std::size_t>(operation)];
    }

    std::array<Tally, kFileOperations> tallies_{};
};

enum class Failing { once, fromThereOn };

/// Fails the operation of a number, counted from 1 among those of one kind or among all.
class FailingFileSystem : public ForwardingFileSystem {
  public:
    using ForwardingFileSystem::ForwardingFileSystem;

    /// Counting starts anew.
    void FailAny(std::size_t number, int error, Failing failing = Failing::once);
    void Fail(FileOperation operation, std::size_t number, int error,
              Failing failing = Failing::once);
    /// Whether anything has failed since.
    bool HasFailed() const { return hasFailed_; }

  protected:
    int Before(FileOperation operation, std::size_t bytes) noexcept override;

  private:
    std::optional<FileOperation> operation_; // none: any
    std::size_t number_ = 0;                 // 0: nothing fails
    std::size_t seen_ = 0;
    int error_ = 0;
    Failing failing_ = Failing::once;
    bool hasFailed_ = false;
};

} // namespace tympan::test
