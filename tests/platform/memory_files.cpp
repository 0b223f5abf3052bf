#include "platform/memory_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <numeric>
#include <utility>

namespace tympan::test {

namespace {

constexpr std::int64_t kLargestFile = std::int64_t{ 1 } << 30;

// A copy whose block is as long as its bytes.
Bytes Exact(const Bytes& bytes)
{
    return { bytes.begin(), bytes.end() };
}

} // namespace

Bytes TextBytes(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return { bytes.begin(), bytes.end() };
}

void MemoryFileSystem::Put(const std::string& path, const Bytes& contents)
{
    files_[path] = std::make_shared<Bytes>(Exact(contents));
}

Bytes MemoryFileSystem::Contents(const std::string& path) const
{
    const auto found = files_.find(path);
    return found == files_.end() ? Bytes{} : *found->second;
}

std::string MemoryFileSystem::Text(const std::string& path) const
{
    std::string text;
    for (const std::byte byte : Contents(path))
        text += static_cast<char>(byte);
    return text;
}

MemoryFileSystem::OpenFile* MemoryFileSystem::Find(int file)
{
    const auto found = open_.find(file);
    return found == open_.end() ? nullptr : &found->second;
}

IoResult MemoryFileSystem::Open(const char* path, OpenMode mode) noexcept
{
    if (!mode.create && !files_.contains(path))
        return IoResult::Failed(ENOENT);
    Contained& bytes = files_[path];
    if (!bytes)
        bytes = std::make_shared<Bytes>();
    if (mode.create)
        bytes->clear();
    open_.insert({ next_, { bytes, mode.access } });
    return { next_++, 0 };
}

IoResult MemoryFileSystem::ReadAt(int file, std::span<std::byte> buffer,
                                  std::int64_t position) noexcept
{
    const OpenFile* open = Find(file);
    if (!open || open->access == Access::write)
        return IoResult::Failed(EBADF);
    const std::span<const std::byte> bytes(*open->bytes);
    const auto left = bytes.subspan(std::min(static_cast<std::size_t>(position), bytes.size()));
    const auto taken = left.first(std::min(left.size(), buffer.size()));
    std::copy(taken.begin(), taken.end(), buffer.begin());
    return { std::ssize(taken), 0 };
}

IoResult MemoryFileSystem::WriteAt(int file, std::span<const std::byte> bytes,
                                   std::int64_t position) noexcept
{
    const OpenFile* open = Find(file);
    if (!open || open->access == Access::read)
        return IoResult::Failed(EBADF);
    if (position > kLargestFile || std::ssize(bytes) > kLargestFile - position)
        return IoResult::Failed(EFBIG);
    const std::size_t start = static_cast<std::size_t>(position);
    if (!bytes.empty())
        open->bytes->resize(std::max(open->bytes->size(), start + bytes.size()));
    std::copy(bytes.begin(), bytes.end(), open->bytes->begin() + (bytes.empty() ? 0 : position));
    return { std::ssize(bytes), 0 };
}

IoResult MemoryFileSystem::Size(int file) noexcept
{
    const OpenFile* open = Find(file);
    return open ? IoResult{ std::ssize(*open->bytes), 0 } : IoResult::Failed(EBADF);
}

IoResult MemoryFileSystem::Flush(int file) noexcept
{
    return Find(file) ? IoResult{} : IoResult::Failed(EBADF);
}

IoResult MemoryFileSystem::Truncate(int file, std::int64_t length) noexcept
{
    const OpenFile* open = Find(file);
    if (!open || open->access == Access::read)
        return IoResult::Failed(EBADF);
    if (length > kLargestFile)
        return IoResult::Failed(EFBIG);
    open->bytes->resize(static_cast<std::size_t>(length));
    return {};
}

IoResult MemoryFileSystem::Close(int file) noexcept
{
    const OpenFile* open = Find(file);
    if (!open)
        return IoResult::Failed(EBADF);
    *open->bytes = Exact(*open->bytes);
    open_.erase(file);
    return {};
}

IoResult MemoryFileSystem::Remove(const char* path) noexcept
{
    return files_.erase(path) != 0 ? IoResult{} : IoResult::Failed(ENOENT);
}

IoResult MemoryFileSystem::Rename(const char* oldPath, const char* newPath) noexcept
{
    if (files_.contains(newPath))
        return IoResult::Failed(EEXIST);
    auto moved = files_.extract(oldPath);
    if (moved.empty())
        return IoResult::Failed(ENOENT);
    moved.key() = newPath;
    files_.insert(std::move(moved));
    return {};
}

template <typename Work>
IoResult ForwardingFileSystem::Passed(FileOperation operation, std::size_t bytes,
                                      Work work) noexcept
{
    const int error = Before(operation, bytes);
    if (error == 0)
        return work(inner_);
    if (operation == FileOperation::close)
        work(inner_);
    return IoResult::Failed(error);
}

IoResult ForwardingFileSystem::Open(const char* path, OpenMode mode) noexcept
{
    return Passed(FileOperation::open, 0, [&](FileSystem& to) { return to.Open(path, mode); });
}

IoResult ForwardingFileSystem::ReadAt(int file, std::span<std::byte> buffer,
                                      std::int64_t position) noexcept
{
    return Passed(FileOperation::readAt, buffer.size(),
                  [&](FileSystem& to) { return to.ReadAt(file, buffer, position); });
}

IoResult ForwardingFileSystem::WriteAt(int file, std::span<const std::byte> bytes,
                                       std::int64_t position) noexcept
{
    return Passed(FileOperation::writeAt, bytes.size(),
                  [&](FileSystem& to) { return to.WriteAt(file, bytes, position); });
}

IoResult ForwardingFileSystem::Size(int file) noexcept
{
    return Passed(FileOperation::size, 0, [&](FileSystem& to) { return to.Size(file); });
}

IoResult ForwardingFileSystem::Flush(int file) noexcept
{
    return Passed(FileOperation::flush, 0, [&](FileSystem& to) { return to.Flush(file); });
}

IoResult ForwardingFileSystem::Truncate(int file, std::int64_t length) noexcept
{
    return Passed(FileOperation::truncate, 0,
                  [&](FileSystem& to) { return to.Truncate(file, length); });
}

IoResult ForwardingFileSystem::Close(int file) noexcept
{
    return Passed(FileOperation::close, 0, [&](FileSystem& to) { return to.Close(file); });
}

IoResult ForwardingFileSystem::Remove(const char* path) noexcept
{
    return Passed(FileOperation::remove, 0, [&](FileSystem& to) { return to.Remove(path); });
}

IoResult ForwardingFileSystem::Rename(const char* oldPath, const char* newPath) noexcept
{
    return Passed(FileOperation::rename, 0,
                  [&](FileSystem& to) { return to.Rename(oldPath, newPath); });
}

std::size_t CountingFileSystem::CountAll() const
{
    return std::accumulate(tallies_.begin(), tallies_.end(), std::size_t{ 0 },
                           [](std::size_t sum, const Tally& tally) { return sum + tally.count; });
}

int CountingFileSystem::Before(FileOperation operation, std::size_t bytes) noexcept
{
    Tally& tally = tallies_[static_cast<std::size_t>(operation)];
    ++tally.count;
    tally.bytes += bytes;
    return 0;
}

void FailingFileSystem::FailAny(std::size_t number, int error, Failing failing)
{
    operation_.reset();
    number_ = number;
    seen_ = 0;
    error_ = error;
    failing_ = failing;
    hasFailed_ = false;
}

void FailingFileSystem::Fail(FileOperation operation, std::size_t number, int error,
                             Failing failing)
{
    FailAny(number, error, failing);
    operation_ = operation;
}

int FailingFileSystem::Before(FileOperation operation, std::size_t) noexcept
{
    if (number_ == 0 || operation_.value_or(operation) != operation)
        return 0;
    ++seen_;
    if (seen_ < number_ || (seen_ > number_ && failing_ == Failing::once))
        return 0;
    hasFailed_ = true;
    return error_;
}

} // namespace tympan::test
