#include "bench/big_picture.h"

#include "tests/support/ct_samples.h"

#include <algorithm>
#include <random>
#include <span>

namespace tympan::bench {

namespace {

test::CtSample SampleOf(PictureSize size)
{
    test::CtSample sample;
    sample.width = size.width;
    sample.height = size.height;
    return sample;
}

// A block of random bytes serves again and again, each time from another place.
void WriteRows(NewFile& file, PictureSize size)
{
    std::vector<std::uint8_t> noise(std::size_t{ size.width } * 5);
    std::mt19937 random(1);
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<std::uint8_t>(random()); });
    const std::size_t rowBytes = std::size_t{ size.width } * 4;
    for (unsigned int row = 0; row < size.height; ++row)
        file.Write(std::span(noise).subspan(random() % size.width, rowBytes));
}

} // namespace

BigPicture::BigPicture(const std::string& path, PictureSize size) : path_(path), size_(size)
{
    {
        NewFile file(path);
        file.Write(SampleOf(size).Header());
        WriteRows(file, size);
    }
    BringIntoCache(path);
}

std::uint64_t BigPicture::PlaceOf(unsigned int row, ColorSeparationType separation) const
{
    return SampleOf(size_).Place(row, static_cast<unsigned int>(separation));
}

std::unique_ptr<CtFileInterface> BigPicture::Open() const
{
    std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path_.c_str(), true));
    Require(picture != nullptr && picture->ObjectStatus(), "the library can't open the picture");
    return picture;
}

std::vector<std::uint8_t> BigPicture::Plate(ColorSeparationType separation) const
{
    std::vector<std::uint8_t> plate = TouchedMemory(Pixels());
    const RawFile file(path_);
    for (unsigned int row = 0; row < size_.height; ++row)
        file.ReadAt(PlaceOf(row, separation),
                    std::span(plate).subspan(std::size_t{ row } * size_.width, size_.width));
    return plate;
}

} // namespace tympan::bench
