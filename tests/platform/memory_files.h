// Files to put under CFile in tests of any folder: in memory, and watched ones that fail on demand.
#pragma once

#include "platform/file_system.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
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

    /// Does the work on the bytes of an open file; other numbers are refused.
    template <typename Work>
    IoResult With(int file, Work work) noexcept;

    std::map<std::string, Contained> files_;
    std::map<int, Contained> open_;
    int next_ = 1'000'000; // no number of the system's comes near
};

enum class FileOperation { open, readAt, writeAt, size, flush, truncate, close, remove, rename };
inline constexpr std::size_t kFileOperations = 9;

enum class Failing { once, fromThereOn };

/// Passes everything on to other files, counts it, and fails the operation of a number when it is
/// told to.
class WatchedFileSystem : public FileSystem {
  public:
    explicit WatchedFileSystem(FileSystem& inner) : inner_(inner) {}

    std::size_t Count(FileOperation operation) const { return At(operation).count; }
    /// The bytes that were asked for.
    std::size_t ByteCount(FileOperation operation) const { return At(operation).bytes; }

    /// Fails the operation of a number, counted from 1 and from now on among all or among those of
    /// one kind, by an `errno` value; a close is carried out all the same. 0: nothing fails.
    void FailAny(std::size_t number, int error, Failing failing = Failing::once);
    void Fail(FileOperation operation, std::size_t number, int error);
    /// Whether anything has failed since.
    bool HasFailed() const { return hasFailed_; }

    IoResult Open(const char* path, OpenMode mode) noexcept override
    {
        return Passed(Op::open, 0, [&] { return inner_.Open(path, mode); });
    }
    IoResult ReadAt(int file, std::span<std::byte> bytes, std::int64_t position) noexcept override
    {
        return Passed(Op::readAt, bytes.size(),
                      [&] { return inner_.ReadAt(file, bytes, position); });
    }
    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override
    {
        return Passed(Op::writeAt, bytes.size(),
                      [&] { return inner_.WriteAt(file, bytes, position); });
    }
    IoResult Size(int file) noexcept override
    {
        return Passed(Op::size, 0, [&] { return inner_.Size(file); });
    }
    IoResult Flush(int file) noexcept override
    {
        return Passed(Op::flush, 0, [&] { return inner_.Flush(file); });
    }
    IoResult Truncate(int file, std::int64_t length) noexcept override
    {
        return Passed(Op::truncate, 0, [&] { return inner_.Truncate(file, length); });
    }
    IoResult Close(int file) noexcept override
    {
        return Passed(Op::close, 0, [&] { return inner_.Close(file); });
    }
    IoResult Remove(const char* path) noexcept override
    {
        return Passed(Op::remove, 0, [&] { return inner_.Remove(path); });
    }
    IoResult Rename(const char* from, const char* to) noexcept override
    {
        return Passed(Op::rename, 0, [&] { return inner_.Rename(from, to); });
    }

  private:
    using Op = FileOperation;
    struct Tally {
        std::size_t count = 0, bytes = 0;
    };

    const Tally& At(Op operation) const { return tallies_[static_cast<std::size_t>(operation)]; }
    bool IsToFail(Op operation) noexcept;

    template <typename Work>
    IoResult Passed(Op operation, std::size_t bytes, Work work) noexcept
    {
        Tally& tally = tallies_[static_cast<std::size_t>(operation)];
        tally = { tally.count + 1, tally.bytes + bytes };
        const bool fails = IsToFail(operation);
        if (!fails || operation == Op::close) {
            const IoResult result = work();
            if (!fails)
                return result;
        }
        return IoResult::Failed(error_);
    }

    FileSystem& inner_;
    std::array<Tally, kFileOperations> tallies_{};
    std::optional<Op> operation_; // none: any
    std::size_t number_ = 0;      // 0: nothing fails
    std::size_t seen_ = 0;
    int error_ = 0;
    Failing failing_ = Failing::once;
    bool hasFailed_ = false;
};

} // namespace tympan::test
