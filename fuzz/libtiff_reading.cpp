#include "fuzz/libtiff_reading.h"

#include <tiffio.h>

#include <cstring>
#include <memory>

namespace tympan::fuzz {

namespace {

constexpr std::size_t kMostBytes = std::size_t{ 64 } << 10U;

/// The input as a file of libtiff's.
struct Bytes {
    Input bytes;
    std::uint64_t position = 0;

    static tmsize_t Read(thandle_t handle, void* buffer, tmsize_t size)
    {
        auto& self = *static_cast<Bytes*>(handle);
        const auto from =
            static_cast<std::size_t>(std::min<std::uint64_t>(self.position, self.bytes.size()));
        const std::size_t count =
            std::min(static_cast<std::size_t>(size), self.bytes.size() - from);
        if (count != 0)
            std::memcpy(buffer, self.bytes.data() + from, count);
        self.position += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t Write(thandle_t, void*, tmsize_t) { return -1; }
    static toff_t Seek(thandle_t handle, toff_t offset, int from)
    {
        auto& self = *static_cast<Bytes*>(handle);
        self.position = offset + (from == SEEK_SET   ? 0
                                  : from == SEEK_CUR ? self.position
                                                     : self.bytes.size());
        return self.position;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return static_cast<Bytes*>(handle)->bytes.size(); }
};

std::uint16_t Number(TIFF* file, std::uint32_t tag)
{
    std::uint16_t number = 0;
    TIFFGetFieldDefaulted(file, tag, &number);
    return number;
}

bool IsPlain(TIFF* file, const PlainTiff& picture)
{
    return TIFFIsTiled(file) == 0 && Number(file, TIFFTAG_BITSPERSAMPLE) == 8 &&
           Number(file, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG &&
           picture.photometric != PHOTOMETRIC_YCBCR && picture.samples != 0 && picture.width != 0 &&
           picture.length != 0 && picture.width <= kMostBytes &&
           picture.length <= kMostBytes / picture.width / picture.samples &&
           static_cast<std::size_t>(TIFFScanlineSize(file)) == picture.RowBytes();
}

} // namespace

std::optional<PlainTiff> ReadByLibtiff(Input file)
{
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    Bytes bytes{ file };
    const std::unique_ptr<TIFF, void (*)(TIFF*)> opened(
        TIFFClientOpen("input", "rm", &bytes, &Bytes::Read, &Bytes::Write, &Bytes::Seek,
                       &Bytes::Close, &Bytes::Size, nullptr, nullptr),
        TIFFClose);
    if (opened == nullptr)
        return std::nullopt;
    PlainTiff picture;
    TIFFGetField(opened.get(), TIFFTAG_IMAGEWIDTH, &picture.width);
    TIFFGetField(opened.get(), TIFFTAG_IMAGELENGTH, &picture.length);
    TIFFGetFieldDefaulted(opened.get(), TIFFTAG_ROWSPERSTRIP, &picture.rowsPerStrip);
    picture.samples = Number(opened.get(), TIFFTAG_SAMPLESPERPIXEL);
    TIFFGetField(opened.get(), TIFFTAG_PHOTOMETRIC, &picture.photometric);
    picture.isUncompressed = Number(opened.get(), TIFFTAG_COMPRESSION) == COMPRESSION_NONE;
    if (!IsPlain(opened.get(), picture))
        return std::nullopt;
    for (std::uint32_t row = 0; row < picture.length; ++row) {
        picture.rows.emplace_back(picture.RowBytes());
        if (TIFFReadScanline(opened.get(), picture.rows.back().data(), row) != 1)
            return std::nullopt;
    }
    return picture;
}

} // namespace tympan::fuzz
