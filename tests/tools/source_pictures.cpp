#include "source_pictures.h"

#include "support/tiff_writing.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
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

std::vector<std::byte> PackedRow(const Samples& samples, std::size_t row, int bits)
{
    Packer packer(static_cast<unsigned>(bits), WordOrder::highFirst);
    const std::size_t count = std::size_t{ samples.width } * samples.perPixel;
    for (std::size_t i = 0; i != count; ++i)
        packer.Put(samples.numbers[row * count + i]);
    return packer.Take();
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
    if (form.key.size() == 1)
        key.gray = form.key[0];
    else if (form.key.size() == 3) {
        key.red = form.key[0];
        key.green = form.key[1];
        key.blue = form.key[2];
    } else {
        return;
    }
    png_set_tRNS(png, info, nullptr, 0, &key);
}

void SetHeader(png_structp png, png_infop info, const Samples& samples, const PngForm& form)
{
    png_set_IHDR(png, info, samples.width, samples.height, form.bits, form.as,
                 form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    SetPalette(png, info, form);
    SetColourKey(png, info, form);
    if (form.x != 0)
        png_set_pHYs(png, info, form.x, form.y,
                     form.knownUnit ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
}

// ---- TIFF

std::vector<std::byte> BlockOf(const Samples& samples, const TiffForm& form, Area area,
                               unsigned plane)
{
    const auto sample = [&](std::uint32_t x, std::uint32_t y, unsigned number) {
        const std::size_t pixel = std::size_t{ std::min(y, samples.height - 1) } * samples.width +
                                  std::min(x, samples.width - 1);
        return samples.numbers[pixel * samples.perPixel + number];
    };
    const Packer packer(static_cast<unsigned>(form.bits));
    return form.planes ? Lines(packer, area, plane, plane + 1, sample)
                       : Lines(packer, area, 0, samples.perPixel, sample);
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
        { TIFFTAG_PHOTOMETRIC, form.as },
        { TIFFTAG_PLANARCONFIG, form.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG },
        { TIFFTAG_COMPRESSION, form.packed },
        { TIFFTAG_ORIENTATION, form.orientation },
        { form.tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, form.tiled ? 16 : 7 },
    };
    for (const auto& [tag, value] : tags)
        TIFFSetField(tiff, tag, value);
    if (form.tiled)
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
    if (form.as == PHOTOMETRIC_SEPARATED)
        TIFFSetField(tiff, TIFFTAG_INKSET, form.inkSet);
    if (form.packed == COMPRESSION_JPEG && form.as == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    else if (form.as == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
    const std::uint16_t extra[] = { static_cast<std::uint16_t>(form.extra) };
    if (form.extra >= 0)
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
    if (form.unit != 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, form.x);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, form.y);
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
    std::vector<std::vector<std::byte>> rows;
    std::vector<png_bytep> pointers;
    for (std::size_t row = 0; row < samples.height; ++row) {
        rows.push_back(PackedRow(samples, row, form.bits));
        pointers.push_back(reinterpret_cast<png_bytep>(rows.back().data()));
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
    jpeg.in_color_space = static_cast<J_COLOR_SPACE>(form.from);
    jpeg_set_defaults(&jpeg);
    jpeg_set_colorspace(&jpeg, static_cast<J_COLOR_SPACE>(form.to));
    jpeg_set_quality(&jpeg, 100, TRUE);
    for (int i = 0; i < jpeg.num_components; ++i) // none of them in fewer pixels than another
        jpeg.comp_info[i].h_samp_factor = jpeg.comp_info[i].v_samp_factor = 1;
    if (form.progressive)
        jpeg_simple_progression(&jpeg);
    if (!form.adobe)
        jpeg.write_Adobe_marker = FALSE;
    jpeg.density_unit = static_cast<UINT8>(form.unit);
    jpeg.X_density = form.x;
    jpeg.Y_density = form.y;
    if (!form.exif.empty())
        jpeg.write_JFIF_header = FALSE;
    if (form.change != nullptr)
        form.change(jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    if (!form.exif.empty())
        jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(form.exif.data()),
                          static_cast<unsigned int>(form.exif.size()));
    for (std::size_t row = 0; row < samples.height; ++row) {
        std::vector<std::byte> bytes = PackedRow(samples, row, 8);
        JSAMPROW rows[] = { reinterpret_cast<JSAMPROW>(bytes.data()) };
        jpeg_write_scanlines(&jpeg, rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
}

Samples ReadJpeg(const std::string& path)
{
    const File file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr)
        throw std::runtime_error("can't read " + path);
    jpeg_error_mgr errors{};
    jpeg_decompress_struct jpeg{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    Samples samples{
        jpeg.output_width, jpeg.output_height, static_cast<unsigned int>(jpeg.output_components), {}
    };
    std::vector<JSAMPLE> row(std::size_t{ samples.width } * samples.perPixel);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW rows[] = { row.data() };
        jpeg_read_scanlines(&jpeg, rows, 1);
        samples.numbers.insert(samples.numbers.end(), row.begin(), row.end());
    }
    jpeg_finish_decompress(&jpeg);
    EXPECT_EQ(errors.num_warnings, 0) << path;
    jpeg_destroy_decompress(&jpeg);
    return samples;
}

void WriteTiff(const std::string& path, const Samples& samples, const TiffForm& form)
{
    const Tiff tiff = OpenTiff(path, form.mode);
    for (int page = 0; page < form.pages; ++page) {
        SetTags(tiff.get(), samples, form);
        WriteBlocks(tiff.get(),
                    [&](Area area, unsigned plane) { return BlockOf(samples, form, area, plane); });
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
