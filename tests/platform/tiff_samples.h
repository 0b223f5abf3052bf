// TIFF files for tests, made by libtiff itself. libtiff's header stays in the source: it declares a
// `tiff` of its own.
#pragma once

#include "platform/memory_files.h"

#include <cstdint>

namespace tympan::test {

inline constexpr std::uint16_t kUncompressed = 1;
inline constexpr std::uint16_t kFaxG3 = 3;
inline constexpr std::uint16_t kFaxG4 = 4;
inline constexpr std::uint16_t kLzw = 5;
inline constexpr std::uint16_t kJpeg = 7;
inline constexpr std::uint16_t kDeflate = 8;
inline constexpr std::uint16_t kPackBits = 32773;
inline constexpr std::uint16_t kJbig = 34661;

inline constexpr std::uint16_t kWhiteIsZero = 0;
inline constexpr std::uint16_t kBlackIsZero = 1;
inline constexpr std::uint16_t kRgb = 2;
inline constexpr std::uint16_t kSeparated = 5;
inline constexpr std::uint16_t kYCbCr = 6;

/// How a picture lies in its file.
struct TiffLayout {
    std::uint16_t samples = 3;
    std::uint16_t bits = 8;
    std::uint16_t photometric = kRgb;
    std::uint16_t compression = kUncompressed;
    std::uint32_t stripRows = 8;
    std::uint32_t tileWidth = 0; ///< 0: strips
    std::uint32_t tileLength = 0;
    bool isPlanar = false;
    std::uint16_t chromaAcross = 1;
    std::uint16_t chromaDown = 1;
    const char* mode = "w"; ///< libtiff's: "wb" big-endian, "w8" BigTIFF
    std::uint32_t width = 37;
    std::uint32_t length = 29;
    std::uint32_t grain = 1; ///< how many pixels of a row are alike, for files that compress well
};

/// What a sample of the picture is: in every layout the same, but for its range, and smooth where
/// compression is lossy. Chroma is that of the first pixel that shares it.
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
