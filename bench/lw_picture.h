// Line-work files of random runs, made for the measuring without the library, and the plain reading
// of runs that the contenders' work is held against.
#pragma once

#include "bench/big_picture.h"
#include "lw/lw_layout.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tympan::bench {

/// An LW file of some dozens of colours, and its runs.
class LwPicture {
  public:
    /// The plate that is measured.
    static constexpr ColorSeparationType kPlate = Magenta;

    /// Run lengths are random, geometric with that mean, and cut at 255.
    LwPicture(const std::string& path, PictureSize size, double meanRun);

    const std::string& Path() const { return path_; }
    PictureSize Size() const { return size_; }
    std::uint64_t FileBytes() const;
    std::size_t RowBytes() const; ///< of all rows, delimiters included
    std::span<const Run> Row(unsigned int row) const;
    /// The value of a colour in the measured plate.
    static std::uint8_t Ink(std::uint8_t index);

  private:
    void MakeRow(double meanRun, std::uint32_t seed);
    void WriteFile() const;

    std::string path_;
    PictureSize size_;
    std::vector<Run> runs_;
    std::vector<std::size_t> rows_; // where each begins in `runs_`, and where the last ends
};

/// Rows of runs, delimiters included, one behind the other in memory. Expands them run by run.
class PlainRows {
  public:
    PlainRows(std::span<const std::uint8_t> bytes, std::size_t width)
        : bytes_(bytes), pixels_(width)
    {}

    /// The next row: each run's first byte as often as the second says. Holds until the next call.
    /// Throws for a row that is not sound.
    std::span<const std::uint8_t> Next();
    std::size_t Position() const { return at_; }

  private:
    void TakeDelimiter();
    Run Take();

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    std::vector<std::uint8_t> pixels_;
};

/// Expands a row of the picture by a table of what stands for each index.
void ExpandRow(std::span<const Run> row, const std::array<std::uint8_t, 256>& values,
               std::span<std::uint8_t> pixels);
/// What `ExpandRow` takes: the indexes themselves, or the inks of the measured plate.
std::array<std::uint8_t, 256> Indexes();
std::array<std::uint8_t, 256> Inks();

/// Throws unless `pixels` are the inks of the picture's first rows, whole rows of them.
void RequireInks(const LwPicture& picture, std::span<const std::uint8_t> pixels);

} // namespace tympan::bench
