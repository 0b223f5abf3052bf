#include "png_pictures.h"

#include <gtest/gtest.h>
#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tympan::test {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// libpng leaves a failure by a jump; nothing in here has a destructor that it could pass.
bool ReadInto(png_structp png, png_infop info, std::FILE* file, PngPicture& picture) noexcept
{
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): libpng's way to fail
        return false;
    png_init_io(png, file);
    png_read_info(png, info);
    picture.width = png_get_image_width(png, info);
    picture.height = png_get_image_height(png, info);
    picture.pixelsPerMetreX = png_get_x_pixels_per_meter(png, info);
    picture.pixelsPerMetreY = png_get_y_pixels_per_meter(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    picture.samples.resize(rowBytes * picture.height);
    for (std::uint32_t row = 0; row < picture.height; ++row)
        png_read_row(png, picture.samples.data() + row * rowBytes, nullptr);
    png_read_end(png, nullptr);
    picture.channels = png_get_channels(png, info);
    return png_get_bit_depth(png, info) == 8;
}

} // namespace

std::vector<std::uint8_t> PngPicture::At(std::uint32_t column, std::uint32_t row) const
{
    const auto place =
        static_cast<std::ptrdiff_t>((std::size_t{ row } * width + column) * channels);
    return { samples.begin() + place,
             samples.begin() + place + static_cast<std::ptrdiff_t>(channels) };
}

PngPicture ReadPng(const std::string& path)
{
    PngPicture picture;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) {
        ADD_FAILURE() << path << ": there is no such file";
        return picture;
    }
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (!ReadInto(png, info, file.get(), picture)) {
        ADD_FAILURE() << path << ": not a whole PNG of 8 bits a sample";
        picture = {};
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return picture;
}

} // namespace tympan::test
