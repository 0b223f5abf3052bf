#include "bench/big_picture.h"

#include "tests/support/ct_samples.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace tympan::bench {

namespace {

test::CtSample SampleOf(PictureSize size)
{
    test::CtSample sample;
    sample.width = size.width;
    sample.height = size.height;
    return sample;
}

void WriteAll(int file, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        Require(written > 0, "the picture can't be written");
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

// A block of random bytes serves again and again, each time from another place.
void WriteRows(int file, PictureSize size)
{
    std::vector<std::uint8_t> noise(std::size_t{ size.width } * 5);
    std::mt19937 random(1);
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<std::uint8_t>(random()); });
    const std::size_t rowBytes = std::size_t{ size.width } * 4;
    for (unsigned int row = 0; row < size.height; ++row)
        WriteAll(file, std::span(noise).subspan(random() % size.width, rowBytes));
}

} // namespace

void Require(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(what);
}

std::vector<std::uint8_t> TouchedMemory(std::size_t size)
{
    return std::vector<std::uint8_t>(size, 1);
}

RawFile::RawFile(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    Require(file_ >= 0, "the picture can't be opened");
}

RawFile::~RawFile()
{
    close(file_);
}

void RawFile::ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const
{
    const ssize_t held = pread(file_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    Require(held == static_cast<ssize_t>(bytes.size()), "the picture can't be read");
}

BigPicture::BigPicture(const std::string& path, PictureSize size) : path_(path), size_(size)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    Require(file >= 0, "the picture can't be made");
    WriteAll(file, SampleOf(size).Header());
    WriteRows(file, size);
    const bool onDisk = fsync(file) == 0;
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    Require(close(file) == 0 && onDisk, "the picture can't be written to the disk");
    WarmUp();
}

// From front to back, which brings the pages together as any reading from the disk does; those that
// writing leaves are as small as each write was, and cost twice as much to read.
void BigPicture::WarmUp() const
{
    const RawFile file(path_);
    std::vector<std::uint8_t> row(size_.width);
    for (unsigned int i = 0; i < size_.height; ++i)
        for (const ColorSeparationType plate : { Cyan, Magenta, Yellow, Black })
            file.ReadAt(PlaceOf(i, plate), row);
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
