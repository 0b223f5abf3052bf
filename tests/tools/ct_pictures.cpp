#include "ct_pictures.h"

#include "support/ct_samples.h"

#include <tympan/tympan.h>

#include <array>
#include <cstddef>
#include <random>

namespace tympan::test {

namespace {

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
    const auto header =
        CtSample{ width, height, separations, height / resolutionY, width / resolutionX }.Header();
    return { header.begin(), header.end() };
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
