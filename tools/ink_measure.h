// How much ink a picture has: of each separation, and of all together.
#pragma once

#include "picture.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

/// The value of full ink; 0 is none.
inline constexpr unsigned int kFullInk = 255;

/// Pixels by a value of 0 and more: an ink, or the total of several in the same unit.
using InkCounts = std::vector<std::uint64_t>;

/// The least and the greatest value that a pixel has; of no pixels 0.
/// @{
unsigned int LeastOf(const InkCounts& counts);
unsigned int GreatestOf(const InkCounts& counts);
/// @}
/// The values of all pixels together.
std::uint64_t SumOf(const InkCounts& counts);
/// The least value that 999 of 1000 pixels don't exceed.
unsigned int Percentile999Of(const InkCounts& counts);
/// How many pixels have more than so many hundredths of full ink.
std::uint64_t PixelsOver(const InkCounts& counts, unsigned int percent);

struct SeparationInk {
    std::string name; ///< of a TIFF's ink as the file has it
    InkCounts counts; ///< of 0 to 255
};

struct InkFigures {
    std::uint64_t pixels = 0;
    std::vector<SeparationInk> separations;
    InkCounts totals; ///< of 0 to 255 times the number of separations
};

/// Takes the total ink of pixels of a row: rows from the top down, and in a row from left to right.
using TakeTotals = std::function<void(std::uint32_t row, std::uint32_t firstColumn,
                                      std::span<const std::uint16_t> totals)>;

/// The separations of a picture that are ink, and what they are called. Grey and bits are black; red,
/// green and blue are what is left of cyan, magenta and yellow.
struct Inks {
    std::vector<ColorSeparationType> separations;
    std::vector<std::string> names;
};

/// \throws FileFailure for a picture without rows, and for one that stores no ink.
Inks InksOf(const Picture& picture);

/// Measures a picture: line work by its runs, any other by its rows, in a few MiB of memory.
/// Transparent colours have no ink.
/// \param take may be empty
/// \throws FileFailure, naming a row that can't be read.
InkFigures MeasureInk(const Picture& picture, const TakeTotals& take = {});

} // namespace tympan::tool
