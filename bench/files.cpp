#include "bench/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace tympan::bench {

std::vector<std::uint8_t> TouchedMemory(std::size_t size)
{
    return std::vector<std::uint8_t>(size, 1);
}

RawFile::RawFile(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    Require(file_ >= 0, "the picture can't be opened");
}

RawFile::~RawFile()
{
    close(file_);
}

void RawFile::ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const
{
    const ssize_t held = pread(file_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    Require(held == static_cast<ssize_t>(bytes.size()), "the picture can't be read");
}

void RawFile::ReadThrough(std::uint64_t size, std::span<std::uint8_t> block,
                          const std::function<void(std::span<const std::uint8_t>)>& use) const
{
    for (std::uint64_t position = 0; position < size; position += block.size()) {
        const auto part = block.first(std::min<std::uint64_t>(block.size(), size - position));
        ReadAt(position, part);
        if (use)
            use(part);
    }
}

std::uint64_t RawFile::Length() const
{
    struct stat told {};
    Require(fstat(file_, &told) == 0, "the picture has no length");
    return static_cast<std::uint64_t>(told.st_size);
}

void RawFile::DropPages() const
{
    Require(fsync(file_) == 0, "the picture can't be written to the disk");
    posix_fadvise(file_, 0, 0, POSIX_FADV_DONTNEED);
}

NewFile::NewFile(const std::string& path)
    : file_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600))
{
    Require(file_ >= 0, "a file can't be made");
}

NewFile::~NewFile()
{
    close(file_);
}

void NewFile::Write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written =
            pwrite(file_, bytes.data(), bytes.size(), static_cast<off_t>(position_));
        Require(written > 0, "a file can't be written");
        position_ += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

void BringIntoCache(const std::string& path)
{
    constexpr std::size_t kBlock = 1U << 20U;
    const RawFile file(path);
    file.DropPages();
    std::vector<std::uint8_t> block(kBlock);
    file.ReadThrough(file.Length(), block);
}

} // namespace tympan::bench
