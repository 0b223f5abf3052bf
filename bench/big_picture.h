// CT files too large for any cache of the processor, made for the measuring and kept in the page
// cache.
#pragma once

#include "bench/files.h"
#include "core/picture_parameters.h"
#include "ct/ct_file.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tympan::bench {

struct PictureSize {
    unsigned int width;  // pixels
    unsigned int height; // rows
};

/// A CT file of four separations with random pixels.
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
    std::string path_;
    PictureSize size_;
};

} // namespace tympan::bench
