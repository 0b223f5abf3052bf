#include "source_pictures.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tympan::test {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

File OpenToWrite(const std::string& path)
{
    File file(std::fopen(path.c_str(), "wb"));
    if (file == nullptr)
        throw std::runtime_error("can't write " + path);
    return file;
}

Tiff OpenTiff(const std::string& path, const char* mode)
{
    Tiff tiff(TIFFOpen(path.c_str(), mode));
    if (tiff == nullptr)
        throw std::runtime_error("can't open " + path);
    return tiff;
}

enum class ByteOrder { HighFirst, OfTheMachine };

// Numbers side by side, filled up to whole bytes.
std::vector<std::uint8_t> Pack(const std::vector<std::uint16_t>& numbers, unsigned int bits,
                               ByteOrder order)
{
    std::vector<std::uint8_t> bytes((numbers.size() * bits + 7) / 8);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        for (unsigned int bit = 0; bit < bits; ++bit)
            if ((unsigned{ numbers[i] } >> (bits - 1 - bit) & 1U) != 0)
                bytes[(i * bits + bit) / 8] |=
                    static_cast<std::uint8_t>(128U >> ((i * bits + bit) % 8));
    constexpr bool kLowFirst = std::endian::native == std::endian::little;
    if (bits == 16 && order == ByteOrder::OfTheMachine && kLowFirst)
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
            std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

std::vector<std::uint16_t> RowOf(const Samples& samples, std::size_t row)
{
    const std::size_t count = std::size_t{ samples.width } * samples.perPixel;
    const auto first = samples.numbers.begin() + static_cast<std::ptrdiff_t>(row * count);
    return { first, first + static_cast<std::ptrdiff_t>(count) };
}

// ---- PNG

void SetPalette(png_structp png, png_infop info, const PngForm& form)
{
    std::vector<png_color> colours;
    for (const std::uint32_t colour : form.palette)
        colours.push_back({ static_cast<png_byte>(colour >> 16U),
                            static_cast<png_byte>(colour >> 8U), static_cast<png_byte>(colour) });
    if (!colours.empty())
        png_set_PLTE(png, info, colours.data(), static_cast<int>(colours.size()));
    if (!form.alphas.empty())
        png_set_tRNS(png, info, form.alphas.data(), static_cast<int>(form.alphas.size()), nullptr);
}

void SetColourKey(png_structp png, png_infop info, const PngForm& form)
{
    png_color_16 key{};
    if (form.colourKey.size() == 1)
        key.gray = form.colourKey[0];
    else if (form.colourKey.size() == 3) {
        key.red = form.colourKey[0];
        key.green = form.colourKey[1];
        key.blue = form.colourKey[2];
    } else {
        return;
    }
    png_set_tRNS(png, info, nullptr, 0, &key);
}

void SetHeader(png_structp png, png_infop info, const Samples& samples, const PngForm& form)
{
    png_set_IHDR(png, info, samples.width, samples.height, form.bits, form.colourType,
                 form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    SetPalette(png, info, form);
    SetColourKey(png, info, form);
    if (form.perMetreX != 0)
        png_set_pHYs(png, info, form.perMetreX, form.perMetreY,
                     form.knownUnit ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
}

// ---- TIFF

std::vector<std::uint16_t> PlaneRow(const Samples& samples, std::size_t row, std::size_t plane)
{
    const std::vector<std::uint16_t> all = RowOf(samples, row);
    std::vector<std::uint16_t> one;
    for (std::size_t i = plane; i < all.size(); i += samples.perPixel)
        one.push_back(all[i]);
    return one;
}

std::vector<std::uint8_t> StoredRow(const Samples& samples, const TiffForm& form, std::size_t row,
                                    std::uint16_t plane)
{
    const bool inPlanes = form.planarity == PLANARCONFIG_SEPARATE;
    return Pack(inPlanes ? PlaneRow(samples, row, plane) : RowOf(samples, row),
                static_cast<unsigned int>(form.bits), ByteOrder::OfTheMachine);
}

void WriteRowsOfPlane(TIFF* tiff, const Samples& samples, const TiffForm& form, std::uint16_t plane)
{
    for (std::uint32_t row = 0; row < samples.height; ++row)
        TIFFWriteScanline(tiff, StoredRow(samples, form, row, plane).data(), row, plane);
}

void WriteTilesOfPlane(TIFF* tiff, const Samples& samples, const TiffForm& form,
                       std::uint16_t plane)
{
    const auto tileRow = static_cast<std::size_t>(TIFFTileRowSize(tiff));
    std::vector<std::uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
    const std::size_t tileRows = tile.size() / tileRow;
    const std::size_t rowBytes = StoredRow(samples, form, 0, plane).size();
    std::uint32_t number = plane * TIFFNumberOfTiles(tiff) /
                           (form.planarity == PLANARCONFIG_SEPARATE ? samples.perPixel : 1U);
    for (std::size_t top = 0; top < samples.height; top += tileRows)
        for (std::size_t left = 0; left < rowBytes; left += tileRow) {
            std::fill(tile.begin(), tile.end(), std::uint8_t{ 0 });
            for (std::size_t row = top; row < std::min<std::size_t>(top + tileRows, samples.height);
                 ++row) {
                const auto bytes = StoredRow(samples, form, row, plane);
                std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(left),
                            std::min(tileRow, rowBytes - left),
                            tile.begin() + static_cast<std::ptrdiff_t>((row - top) * tileRow));
            }
            TIFFWriteEncodedTile(tiff, number++, tile.data(), static_cast<tmsize_t>(tile.size()));
        }
}

void SetTiffPalette(TIFF* tiff, const TiffForm& form)
{
    if (form.palette.empty())
        return;
    std::array<std::vector<std::uint16_t>, 3> channels;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        channels[i].resize(std::size_t{ 1 } << form.bits);
        for (std::size_t colour = 0; colour < form.palette.size(); ++colour)
            channels[i][colour] =
                static_cast<std::uint16_t>((form.palette[colour] >> (16 - 8 * i) & 255U) * 257U);
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, channels[0].data(), channels[1].data(),
                 channels[2].data());
}

void SetTags(TIFF* tiff, const Samples& samples, const TiffForm& form)
{
    const std::pair<std::uint32_t, int> tags[] = {
        { TIFFTAG_IMAGEWIDTH, static_cast<int>(samples.width) },
        { TIFFTAG_IMAGELENGTH, static_cast<int>(samples.height) },
        { TIFFTAG_BITSPERSAMPLE, form.bits },
        { TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(samples.perPixel) },
        { TIFFTAG_SAMPLEFORMAT, form.sampleFormat },
        { TIFFTAG_PHOTOMETRIC, form.photometric },
        { TIFFTAG_PLANARCONFIG, form.planarity },
        { TIFFTAG_COMPRESSION, form.compression },
        { TIFFTAG_ORIENTATION, form.orientation },
        { form.tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, form.tiled ? 16 : 7 },
    };
    for (const auto& [tag, value] : tags)
        TIFFSetField(tiff, tag, value);
    if (form.tiled)
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
    if (form.photometric == PHOTOMETRIC_SEPARATED)
        TIFFSetField(tiff, TIFFTAG_INKSET, form.inkSet);
    if (form.compression == COMPRESSION_JPEG && form.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    const std::uint16_t extra[] = { static_cast<std::uint16_t>(form.extraSample) };
    if (form.extraSample >= 0)
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
    if (form.unit != 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, form.resolutionX);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, form.resolutionY);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, form.unit);
    }
    SetTiffPalette(tiff, form);
}

} // namespace

void WritePng(const std::string& path, const Samples& samples, const PngForm& form)
{
    const File file = OpenToWrite(path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    SetHeader(png, info, samples, form);
    png_write_info(png, info);
    std::vector<std::vector<std::uint8_t>> rows;
    std::vector<png_bytep> pointers;
    for (std::size_t row = 0; row < samples.height; ++row) {
        rows.push_back(
            Pack(RowOf(samples, row), static_cast<unsigned int>(form.bits), ByteOrder::HighFirst));
        pointers.push_back(rows.back().data());
    }
    png_write_image(png, pointers.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
}

void WriteJpeg(const std::string& path, const Samples& samples, const JpegForm& form)
{
    const File file = OpenToWrite(path);
    jpeg_error_mgr errors{};
    jpeg_compress_struct jpeg{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file.get());
    jpeg.image_width = samples.width;
    jpeg.image_height = samples.height;
    jpeg.input_components = static_cast<int>(samples.perPixel);
    jpeg.in_color_space = static_cast<J_COLOR_SPACE>(form.samplesAs);
    jpeg_set_defaults(&jpeg);
    jpeg_set_colorspace(&jpeg, static_cast<J_COLOR_SPACE>(form.storedAs));
    jpeg_set_quality(&jpeg, 100, TRUE);
    for (int i = 0; i < jpeg.num_components; ++i) // none of them in fewer pixels than another
        jpeg.comp_info[i].h_samp_factor = jpeg.comp_info[i].v_samp_factor = 1;
    if (form.progressive)
        jpeg_simple_progression(&jpeg);
    if (!form.adobe)
        jpeg.write_Adobe_marker = FALSE;
    jpeg.density_unit = static_cast<UINT8>(form.densityUnit);
    jpeg.X_density = form.densityX;
    jpeg.Y_density = form.densityY;
    if (!form.exif.empty())
        jpeg.write_JFIF_header = FALSE;
    jpeg_start_compress(&jpeg, TRUE);
    if (!form.exif.empty())
        jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(form.exif.data()),
                          static_cast<unsigned int>(form.exif.size()));
    for (std::size_t row = 0; row < samples.height; ++row) {
        std::vector<std::uint8_t> bytes = Pack(RowOf(samples, row), 8, ByteOrder::HighFirst);
        JSAMPROW rows[] = { bytes.data() };
        jpeg_write_scanlines(&jpeg, rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
}

void WriteTiff(const std::string& path, const Samples& samples, const TiffForm& form)
{
    const Tiff tiff = OpenTiff(path, "w");
    const bool inPlanes = form.planarity == PLANARCONFIG_SEPARATE;
    const auto planes = static_cast<std::uint16_t>(inPlanes ? samples.perPixel : 1);
    for (int page = 0; page < form.pages; ++page) {
        SetTags(tiff.get(), samples, form);
        for (std::uint16_t plane = 0; plane < planes; ++plane)
            (form.tiled ? WriteTilesOfPlane : WriteRowsOfPlane)(tiff.get(), samples, form, plane);
        TIFFWriteDirectory(tiff.get());
    }
}

TiffPicture ReadTiff(const std::string& path)
{
    TiffPicture picture;
    const Tiff tiff = OpenTiff(path, "r");
    constexpr std::uint32_t kTags[] = { TIFFTAG_BITSPERSAMPLE,  TIFFTAG_SAMPLESPERPIXEL,
                                        TIFFTAG_PHOTOMETRIC,    TIFFTAG_PLANARCONFIG,
                                        TIFFTAG_COMPRESSION,    TIFFTAG_PREDICTOR,
                                        TIFFTAG_RESOLUTIONUNIT, TIFFTAG_INKSET,
                                        TIFFTAG_NUMBEROFINKS };
    for (const std::uint32_t tag : kTags) {
        std::uint16_t value = 0;
        if (TIFFGetField(tiff.get(), tag, &value) == 1)
            picture.tags[tag] = value;
    }
    Samples& samples = picture.samples;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &samples.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &samples.height);
    TIFFGetField(tiff.get(), TIFFTAG_XRESOLUTION, &picture.resolutionX);
    TIFFGetField(tiff.get(), TIFFTAG_YRESOLUTION, &picture.resolutionY);
    samples.perPixel = static_cast<unsigned int>(picture.tags[TIFFTAG_SAMPLESPERPIXEL]);
    const char* names = nullptr;
    std::uint16_t nameBytes = 0;
    if (TIFFGetField(tiff.get(), TIFFTAG_INKNAMES, &names) == 1)
        for (int ink = 0; ink < picture.tags[TIFFTAG_NUMBEROFINKS]; ++ink)
            for (bool more = true; more; ++nameBytes)
                more = names[nameBytes] != '\0';
    picture.inkNames.assign(names != nullptr ? names : "", nameBytes);
    EXPECT_EQ(picture.tags[TIFFTAG_BITSPERSAMPLE], 8) << path;
    EXPECT_EQ(picture.tags[TIFFTAG_PLANARCONFIG], PLANARCONFIG_CONTIG) << path;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
    for (std::uint32_t y = 0; y < samples.height; ++y) {
        EXPECT_EQ(TIFFReadScanline(tiff.get(), row.data(), y, 0), 1) << path;
        samples.numbers.insert(samples.numbers.end(), row.begin(), row.end());
    }
    return picture;
}

} // namespace tympan::test
