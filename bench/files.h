// Files and memory of the measuring: written to the disk and read back, so that no writing goes on
// while something is measured.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace tympan::bench {

/// Throws unless `holds`; `what` tells what went wrong.
inline void Require(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(what);
}

/// Memory of `size` bytes, each page of it touched.
std::vector<std::uint8_t> TouchedMemory(std::size_t size);

/// A file of the system that is open for reading; it is what the limits read.
class RawFile {
  public:
    explicit RawFile(const std::string& path);
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;
    ~RawFile();

    /// Fills `bytes` by one call of the system, or throws.
    void ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const;
    /// Reads `size` bytes from the start on, as many at a time as `block` has, and hands them to `use`,
    /// if there is one.
    void ReadThrough(std::uint64_t size, std::span<std::uint8_t> block,
                     const std::function<void(std::span<const std::uint8_t>)>& use = {}) const;
    std::uint64_t Length() const;
    /// Has the system write out the file's pages and then forget them.
    void DropPages() const;

  private:
    int file_;
};

/// A file of the system that is written from its start on; one that is there is emptied.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// By as few calls of the system as it allows; throws when it fails.
    void Write(std::span<const std::uint8_t> bytes);

  private:
    int file_;
    std::uint64_t position_ = 0;
};

/// Writes a file out to the disk and reads it back into the page cache. From front to back, which
/// brings the pages together as any reading from the disk does; those that writing leaves are as
/// small as each write was, and cost twice as much to read.
void BringIntoCache(const std::string& path);

} // namespace tympan::bench
