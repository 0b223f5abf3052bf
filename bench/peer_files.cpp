// The files of runs that peers decode, and the peer that reads the TIFF.
#include "bench/peers.h"

#include <tiffio.h>

#include <algorithm>

namespace tympan::bench {

namespace {

constexpr std::uint32_t kBitmapPixels = 54 + 256 * 4; // behind the headers and the palette
constexpr std::uint32_t kRle8 = 1;

void PutNumber(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t number)
{
    for (std::size_t i = 0; i < sizeof number; ++i)
        bytes.at(at + i) = static_cast<std::uint8_t>(number >> (8 * i));
}

std::vector<std::uint8_t> BitmapHeader(PictureSize size, std::uint32_t pixelBytes)
{
    std::vector<std::uint8_t> header(kBitmapPixels);
    header[0] = 'B';
    header[1] = 'M';
    PutNumber(header, 2, kBitmapPixels + pixelBytes);
    PutNumber(header, 10, kBitmapPixels);
    PutNumber(header, 14, 40);
    PutNumber(header, 18, size.width);
    PutNumber(header, 22, size.height);
    header[26] = 1; // plane
    header[28] = 8; // bits
    PutNumber(header, 30, kRle8);
    PutNumber(header, 34, pixelBytes);
    PutNumber(header, 46, 256);
    for (std::uint32_t grey = 0; grey < 256; ++grey)
        PutNumber(header, 54 + std::size_t{ grey } * 4, grey * 0x010101U);
    return header;
}

// The rows stand from the last to the first, each with an end of two zeros, and the last end is 0, 1.
std::vector<std::uint8_t> Rle8Rows(const LwPicture& picture, unsigned int rows)
{
    std::vector<std::uint8_t> bytes;
    for (unsigned int row = rows; row-- > 0;) {
        for (const Run run : picture.Row(row))
            bytes.insert(bytes.end(), { run.length, LwPicture::Ink(run.index) });
        bytes.insert(bytes.end(), { 0, 0 });
    }
    bytes.insert(bytes.end(), { 0, 1 });
    return bytes;
}

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

class PackBitsTiff : public Peer {
  public:
    PackBitsTiff(const std::string& path, PictureSize size)
        : path_(path), pixels_(TouchedMemory(std::size_t{ size.width } * size.height))
    {}

    void Decode() override
    {
        const TiffHandle tiff(TIFFOpen(path_.c_str(), "r"));
        Require(tiff != nullptr, "the TIFF can't be opened");
        std::span<std::uint8_t> left = pixels_;
        for (tstrip_t strip = 0; !left.empty(); ++strip) {
            const tmsize_t stored = TIFFReadEncodedStrip(tiff.get(), strip, left.data(),
                                                         static_cast<tmsize_t>(left.size()));
            Require(stored > 0, "the TIFF can't be read");
            left = left.subspan(static_cast<std::size_t>(stored));
        }
    }
    void Verify(const LwPicture& picture) override { RequireInks(picture, pixels_); }

  private:
    std::string path_;
    std::vector<std::uint8_t> pixels_;
};

} // namespace

void WriteRle8Bitmap(const LwPicture& picture, unsigned int rows, const std::string& path)
{
    const std::vector<std::uint8_t> pixels = Rle8Rows(picture, rows);
    {
        NewFile file(path);
        file.Write(BitmapHeader({ picture.Size().width, rows },
                                static_cast<std::uint32_t>(pixels.size())));
        file.Write(pixels);
    }
    BringIntoCache(path);
}

void WritePackBitsTiff(const LwPicture& picture, unsigned int rows, const std::string& path)
{
    TiffHandle tiff(TIFFOpen(path.c_str(), "w"));
    Require(tiff != nullptr, "the TIFF can't be made");
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, picture.Size().width);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, rows);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, 64);
    std::vector<std::uint8_t> pixels(picture.Size().width);
    for (unsigned int row = 0; row < rows; ++row) {
        ExpandRow(picture.Row(row), Inks(), pixels);
        Require(TIFFWriteScanline(tiff.get(), pixels.data(), row) == 1,
                "the TIFF can't be written");
    }
    tiff.reset();
    BringIntoCache(path);
}

std::unique_ptr<Peer> LibtiffPeer(const std::string& path, PictureSize size)
{
    return std::make_unique<PackBitsTiff>(path, size);
}

} // namespace tympan::bench
