// CT files too large for any cache of the processor, made for the measuring and kept in the page
// cache.
#pragma once

#include "core/picture_parameters.h"
#include "ct/ct_file.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tympan::bench {

struct PictureSize {
    unsigned int width;  // pixels
    unsigned int height; // rows
};

/// A file of the system that is open for reading; it is what the limits read.
class RawFile {
  public:
    explicit RawFile(const std::string& path);
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;
    ~RawFile();

    /// Fills `bytes` by one call of the system, or throws.
    void ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const;

  private:
    int file_;
};

/// A CT file of four separations with random pixels, written out to the disk, so that no writing
/// goes on while something is measured, and read back into the page cache.
class BigPicture {
  public:
    BigPicture(const std::string& path, PictureSize size);

    const std::string& Path() const { return path_; }
    PictureSize Size() const { return size_; }
    std::uint64_t Pixels() const { return std::uint64_t{ size_.width } * size_.height; }
    /// Where a separation of a row stands.
    std::uint64_t PlaceOf(unsigned int row, ColorSeparationType separation) const;

    /// A new object on the file.
    std::unique_ptr<CtFileInterface> Open() const;
    /// One plate of the whole picture.
    std::vector<std::uint8_t> Plate(ColorSeparationType separation) const;

  private:
    void WarmUp() const;

    std::string path_;
    PictureSize size_;
};

/// Memory of `size` bytes, each page of it touched.
std::vector<std::uint8_t> TouchedMemory(std::size_t size);

/// Throws unless `holds`; `what` tells what went wrong.
void Require(bool holds, const char* what);

} // namespace tympan::bench
