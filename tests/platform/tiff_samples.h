// TIFF files for tests, made by libtiff itself. libtiff's header stays in the source: it declares a
// `tiff` of its own.
#pragma once

#include "platform/memory_files.h"
#include "support/tiff_numbers.h"

#include <cstdint>

namespace tympan::test {

template <typename Number>
struct Size {
    Number across = 0, down = 0;
};

/// How a picture lies in its file.
struct TiffLayout {
    std::uint16_t samples = 3;
    std::uint16_t bits = 8;
    Photometric as = kRgb;
    Packing packed = kUncompressed;
    std::uint32_t strip = 8;       ///< rows
    Size<std::uint32_t> tile = {}; ///< none: strips
    bool planes = false;
    Size<std::uint16_t> chroma = { 1, 1 }; ///< pixels that share it
    const char* mode = "wl";               ///< libtiff's: "wb" big-endian, "w8" BigTIFF
    std::uint32_t width = 37;
    std::uint32_t length = 29;
    std::uint16_t predictor = 1; ///< 2: differences of samples
    std::uint32_t grain = 1; ///< how many pixels of a row are alike, for files that compress well
};

/// What a sample of the picture is. Chroma is that of the first pixel that shares it; the blocks of
/// JPEG have one value each, so that it loses nothing.
std::uint32_t SampleOf(const TiffLayout& layout, std::uint32_t x, std::uint32_t y, unsigned sample);

/// The bytes of a row with all samples of a pixel side by side.
Bytes RowOf(const TiffLayout& layout, std::uint32_t row);

/// The file; but for JPEG its directory stands ahead of the picture, so that a cut file still
/// opens.
Bytes MakeTiff(const TiffLayout& layout);

/// Counts, while it lives, what libtiff tells the handlers of the process.
class ProcessHandlers {
  public:
    ProcessHandlers();
    ProcessHandlers(const ProcessHandlers&) = delete;
    ProcessHandlers& operator=(const ProcessHandlers&) = delete;
    ~ProcessHandlers();

    static int CallCount();
    /// Whether the handlers are still those that this object has set.
    static bool AreInPlace();
};

} // namespace tympan::test
