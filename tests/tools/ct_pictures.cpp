#include "ct_pictures.h"

#include <tympan/tympan.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <random>

namespace tympan::test {

namespace {

constexpr std::size_t kHeaderBytes = 2048;

// A plus sign, a point, eight digits and an exponent: for sizes from 0.1 on.
std::string FloatingText(double value)
{
    int exponent = 0;
    while (value >= 1.0) {
        value /= 10.0;
        ++exponent;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "+.%08.0fE+%02d", value * 1e8, exponent);
    return text.data();
}

std::string WholeText(std::uint32_t value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "+%011u", value);
    return text.data();
}

std::vector<std::uint8_t> Channels(unsigned long packed)
{
    return { static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8U),
             static_cast<std::uint8_t>(packed >> 16U) };
}

} // namespace

std::uint8_t CtPicture::At(std::uint32_t column, std::uint32_t row, std::uint32_t plate) const
{
    if (plate >= separations)
        return 255;
    return bytes[(std::size_t{ row } * separations + plate) * width + column];
}

std::string CtPicture::Row(std::uint32_t row, std::uint32_t plate) const
{
    std::string text;
    for (std::uint32_t column = 0; column < width; ++column)
        text += static_cast<char>(At(column, row, plate));
    return text;
}

std::vector<std::uint8_t> CtPicture::Colour(std::uint32_t column, std::uint32_t row) const
{
    const std::array<unsigned char, 4> plates{ At(column, row, 0), At(column, row, 1),
                                               At(column, row, 2), At(column, row, 3) };
    return Channels(PictureFileInterface::CalculatePixelAsRGB(plates.data()));
}

std::vector<std::uint8_t> CtPicture::Tint(std::uint32_t column, std::uint32_t row,
                                          std::uint32_t plate) const
{
    return Channels(PictureFileInterface::CalculatePixelAsRGB(
        At(column, row, plate), static_cast<ColorSeparationType>(plate)));
}

std::string CtPicture::Header() const
{
    std::string header(kHeaderBytes, '\0');
    header[1024] = 1; // inches
    header[1025] = static_cast<char>(separations);
    header[1027] = static_cast<char>(separations == 4 ? 15 : 1);
    header.replace(1028, 14, FloatingText(height / resolutionY));
    header.replace(1042, 14, FloatingText(width / resolutionX));
    header.replace(1056, 12, WholeText(height));
    header.replace(1068, 12, WholeText(width));
    return header;
}

std::string CtPicture::File() const
{
    std::string file = Header();
    for (std::uint32_t row = 0; row < height; ++row)
        for (std::uint32_t plate = 0; plate < separations; ++plate)
            file += Row(row, plate) + std::string(width % 2, '\0');
    return file;
}

CtPicture RandomCt(std::uint32_t width, std::uint32_t height, std::uint32_t separations,
                   std::uint32_t seed)
{
    CtPicture picture{ width, height, separations, 300.0, 300.0, {} };
    std::mt19937 random(seed);
    picture.bytes.resize(std::size_t{ width } * height * separations);
    for (std::uint8_t& byte : picture.bytes)
        byte = static_cast<std::uint8_t>(random() >> 8U);
    return picture;
}

} // namespace tympan::test
