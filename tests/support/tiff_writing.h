// The blocks of TIFF files: samples packed as libtiff wants them, strip by strip or tile by tile.
#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tympan::test {

enum class WordOrder { highFirst, ofTheMachine };

/// Appends samples side by side.
class Packer {
  public:
    explicit Packer(unsigned bits, WordOrder order = WordOrder::ofTheMachine)
        : bits_(bits), order_(order)
    {}

    void Put(std::uint32_t value)
    {
        if (bits_ == 16 && order_ == WordOrder::ofTheMachine) {
            const auto word = static_cast<std::uint16_t>(value);
            const auto* bytes = reinterpret_cast<const std::byte*>(&word);
            bytes_.insert(bytes_.end(), bytes, bytes + sizeof word);
            return;
        }
        for (unsigned bit = bits_; bit-- != 0;) {
            if (used_ == 0)
                bytes_.push_back(std::byte{ 0 });
            bytes_.back() |= std::byte((value >> bit & 1U) << (7U - used_));
            used_ = (used_ + 1) % 8;
        }
    }
    void EndLine() { used_ = 0; }
    std::vector<std::byte> Take() { return std::move(bytes_); }

  private:
    unsigned bits_;
    WordOrder order_;
    unsigned used_ = 0; // bits of the last byte
    std::vector<std::byte> bytes_;
};

struct Area {
    std::uint32_t x, y, width, length;
};

/// The samples from `first` up to `end` of every pixel, each by `sample(x, y, number)`.
template <typename Sample>
std::vector<std::byte> Lines(Packer packer, Area area, unsigned first, unsigned end, Sample sample)
{
    for (std::uint32_t y = area.y; y != area.y + area.length; ++y) {
        for (std::uint32_t x = area.x; x != area.x + area.width; ++x)
            for (unsigned number = first; number != end; ++number)
                packer.Put(sample(x, y, number));
        packer.EndLine();
    }
    return packer.Take();
}

/// Writes all strips or tiles of the directory whose fields are set, each of `block(area, plane)`.
template <typename Block>
void WriteBlocks(TIFF* file, Block block)
{
    const bool isTiled = TIFFIsTiled(file) != 0;
    std::uint32_t width = 0, length = 0, across = 0, down = 0;
    std::uint16_t samples = 1, planarity = PLANARCONFIG_CONTIG;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &length);
    TIFFGetField(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(file, TIFFTAG_PLANARCONFIG, &planarity);
    TIFFGetField(file, isTiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, &down);
    TIFFGetField(file, isTiled ? TIFFTAG_TILEWIDTH : TIFFTAG_IMAGEWIDTH, &across);
    const auto planes = planarity == PLANARCONFIG_SEPARATE ? samples : std::uint16_t{ 1 };
    for (std::uint16_t plane = 0; plane != planes; ++plane)
        for (std::uint32_t y = 0; y < length; y += down)
            for (std::uint32_t x = 0; x < width; x += across) {
                const std::uint32_t rows = isTiled ? down : std::min(down, length - y);
                std::vector<std::byte> bytes = block(Area{ x, y, across, rows }, plane);
                const auto size = static_cast<tmsize_t>(bytes.size());
                const tmsize_t written =
                    isTiled ? TIFFWriteTile(file, bytes.data(), x, y, 0, plane)
                            : TIFFWriteEncodedStrip(file, TIFFComputeStrip(file, y, plane),
                                                    bytes.data(), size);
                if (written < 0)
                    throw std::runtime_error("a block of a TIFF file can't be written");
            }
}

} // namespace tympan::test
