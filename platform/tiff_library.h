// Stands in for the platform's TIFF library: seven functions and the record that an open file is.
// The library decodes, and the file's bytes come through the seam of platform/file_system.h.
#pragma once

#include "platform/text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// An open TIFF file: what its first directory tells, each field at the place where the platform
/// has it. The rest of the record is the library's own. A field that the file lacks has the default
/// of the TIFF standard, 0 where the standard has none.
struct tiff {
    std::array<std::byte, 48> ahead_{};
    std::uint32_t ImageWidth = 0;  ///< pixels of a row
    std::uint32_t ImageLength = 0; ///< rows
    std::array<std::byte, 20> behindSizes_{};
    std::uint16_t BitsPerSample = 0;
    std::array<std::byte, 2> behindBits_{};
    std::uint16_t Compression = 0;
    std::uint16_t PhotometricInterpretation = 0;
    std::array<std::byte, 6> behindPhotometric_{};
    std::uint16_t SamplesPerPixel = 0;
    std::array<std::byte, 28> behindSamples_{};
    float XResolution = 0; ///< in the file's own unit
    float YResolution = 0; ///< in the file's own unit
};

static_assert(offsetof(tiff, ImageWidth) == 48);
static_assert(offsetof(tiff, ImageLength) == 52);
static_assert(offsetof(tiff, BitsPerSample) == 76);
static_assert(offsetof(tiff, Compression) == 80);
static_assert(offsetof(tiff, PhotometricInterpretation) == 82);
static_assert(offsetof(tiff, SamplesPerPixel) == 90);
static_assert(offsetof(tiff, XResolution) == 120);
static_assert(offsetof(tiff, YResolution) == 124);

/// What the first directory tells beside the record.
struct TiffInfo {
    static constexpr std::uint16_t kNoUnit = 1, kInch = 2, kCentimetre = 3;

    std::uint16_t resolutionUnit = kInch;
    std::vector<std::string> inkNames; ///< of the first samples; empty where they have none
    std::vector<std::uint16_t>
        extraSamples; ///< kinds of those behind the colours: 1 and 2 are alpha
    /// Red, green and blue of each number that a palette's sample can have, up to 65535; empty for
    /// a picture without a palette.
    std::vector<std::array<std::uint16_t, 3>> colourMap;
};

// None of the functions but TiffErrorMsg() and TiffInfoOf() throws. One open file is for one thread
// at a time.

/// Opens a file by its path, which the path resolver is asked for, and reads its first directory.
/// \param mode "r", the only one there is.
/// \return the open file, which TiffClose() is to end; null on failure, with the reason in
///         TiffErrorMsg().
tiff* TiffOpen(const char* name, const char* mode);

/// The same for a file that is open already, by its number in the seam (`CFile::m_hFile`).
/// \param handle stays the caller's: its position doesn't move, and TiffClose() leaves it open. It
///        has to stay open as long as rows are read.
/// \param name what messages call the file.
tiff* TifffdOpen(int handle, const char* name, const char* mode);

/// Ends an open file; null is left alone.
void TiffClose(tiff* file);

/// Reads one row, in any order. It holds all samples of a pixel side by side, then those of the
/// next pixel, whatever the file's layout: planes are brought together, and chroma that is stored
/// once for several pixels stands with each of them, in JPEG as its decoder interpolates it.
/// Samples of 16 bits and more are in the machine's byte order, those of less than 8 bits are
/// packed from the highest bit on.
/// \param buffer room for TiffScanlineSize() bytes.
/// \param row counted from 0; one at or beyond the file's length is refused.
/// \param sample without effect, since a row holds all of them.
/// \return 1, or -1 with the reason in TiffErrorMsg() and the buffer as it was.
int TiffReadScanline(tiff* file, void* buffer, unsigned int row, unsigned short sample);

/// The bytes of one row. Rows of more than 32 bits of bytes are told but can't be read.
std::int64_t TiffScanlineSize(tiff* file);

/// Whether rows can be read at all, as far as the directory and the file's length tell: false, with
/// the reason in TiffErrorMsg(), for rows that are longer than the file can fill.
bool TiffGivesRows(tiff* file);

/// \throws std::bad_alloc.
TiffInfo TiffInfoOf(tiff* file);

/// Formats a warning as printf does and keeps it for TiffErrorMsg().
/// \param module the operation that warns; not part of the text.
[[gnu::format(printf, 2, 3)]] void TiffWarning(const char* module, const char* format, ...);

/// The text of this thread's last error or warning, of any file; empty before the first.
CString TiffErrorMsg();

/// The errno value behind that text; 0 where the system didn't fail, so that the file is the reason.
int TiffSystemError();
