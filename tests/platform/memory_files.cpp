#include "platform/memory_files.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tympan::test {

namespace {

constexpr std::int64_t kLargestFile = std::int64_t{ 1 } << 30;

} // namespace

Bytes TextBytes(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return { bytes.begin(), bytes.end() };
}

void MemoryFileSystem::Put(const std::string& path, const Bytes& contents)
{
    files_[path] = std::make_shared<Bytes>(contents.begin(), contents.end());
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

template <typename Work>
IoResult MemoryFileSystem::With(int file, Work work) noexcept
{
    const auto found = open_.find(file);
    return found == open_.end() ? IoResult::Failed(EBADF) : work(*found->second);
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
    open_.insert({ next_, bytes });
    return { next_++, 0 };
}

IoResult MemoryFileSystem::ReadAt(int file, std::span<std::byte> buffer,
                                  std::int64_t position) noexcept
{
    return With(file, [&](const Bytes& bytes) -> IoResult {
        const std::size_t start = std::min(static_cast<std::size_t>(position), bytes.size());
        const auto taken =
            std::span(bytes).subspan(start).first(std::min(bytes.size() - start, buffer.size()));
        std::copy(taken.begin(), taken.end(), buffer.begin());
        return { std::ssize(taken), 0 };
    });
}

IoResult MemoryFileSystem::WriteAt(int file, std::span<const std::byte> from,
                                   std::int64_t position) noexcept
{
    return With(file, [&](Bytes& bytes) -> IoResult {
        if (position > kLargestFile || std::ssize(from) > kLargestFile - position)
            return IoResult::Failed(EFBIG);
        const std::size_t end = static_cast<std::size_t>(position) + from.size();
        if (!from.empty())
            bytes.resize(std::max(bytes.size(), end));
        std::copy(from.begin(), from.end(), bytes.begin() + (from.empty() ? 0 : position));
        return { std::ssize(from), 0 };
    });
}

IoResult MemoryFileSystem::Size(int file) noexcept
{
    return With(file, [](const Bytes& bytes) { return IoResult{ std::ssize(bytes), 0 }; });
}

IoResult MemoryFileSystem::Flush(int file) noexcept
{
    return With(file, [](const Bytes&) { return IoResult{}; });
}

IoResult MemoryFileSystem::Truncate(int file, std::int64_t length) noexcept
{
    return With(file, [&](Bytes& bytes) {
        if (length > kLargestFile)
            return IoResult::Failed(EFBIG);
        bytes.resize(static_cast<std::size_t>(length));
        return IoResult{};
    });
}

IoResult MemoryFileSystem::Close(int file) noexcept
{
    return With(file, [&](Bytes& bytes) {
        bytes = Bytes(bytes.begin(), bytes.end()); // a block as long as the bytes
        open_.erase(file);
        return IoResult{};
    });
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

void WatchedFileSystem::FailAny(std::size_t number, int error, Failing failing)
{
    operation_.reset();
    number_ = number;
    seen_ = 0;
    error_ = error;
    failing_ = failing;
    hasFailed_ = false;
}

void WatchedFileSystem::Fail(FileOperation operation, std::size_t number, int error)
{
    FailAny(number, error);
    operation_ = operation;
}

bool WatchedFileSystem::IsToFail(FileOperation operation) noexcept
{
    if (number_ == 0 || operation_.value_or(operation) != operation)
        return false;
    ++seen_;
    if (seen_ < number_ || (seen_ > number_ && failing_ == Failing::once))
        return false;
    return hasFailed_ = true;
}

} // namespace tympan::test
