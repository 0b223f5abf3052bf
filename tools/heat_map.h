// A map of a picture's total ink with a legend, as PNG.
#pragma once

#include "box_average.h"
#include "heat_map_text.h"
#include "output_file.h"
#include "png_file.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// What a map shows.
struct HeatMapForm {
    PixelSize picture;
    PixelSize map;                   ///< not larger than the picture
    unsigned int inks = 1;           ///< separations of the picture
    unsigned int limitPercent = 300; ///< more total ink than this is marked
};

/// Where a map and its legend stand, in pixels of the file.
struct HeatMapLayout {
    explicit HeatMapLayout(const HeatMapForm& form);

    std::uint32_t unit;   ///< how high a digit is, by which all else is measured
    std::uint32_t margin; ///< white around all
    std::uint32_t width;  ///< of the file
    std::uint32_t left;   ///< of the map
    std::uint32_t legendHeight;
    std::uint32_t height; ///< of the file
};

/// Each pixel of the map has the colour of the mean total ink of the pixels of the picture that it
/// stands for: light for none, dark for the limit, or for all inks in full where these don't reach
/// it. What is above the limit is laid over it in a colour of its own, by its share. The legend
/// stands below. Memory is that of the legend and of some rows.
class HeatMap {
  public:
    HeatMap(const OutputFile& output, const HeatMapForm& form);
    HeatMap(const HeatMap&) = delete;
    HeatMap& operator=(const HeatMap&) = delete;

    /// Adds the total ink of some pixels, in 255ths of full ink: rows in order, and in a row from left
    /// to right.
    void Add(std::uint32_t row, std::uint32_t firstColumn, std::span<const std::uint16_t> totals);
    /// Writes the legend and closes the file. All pixels must have been added.
    void Finish();

  private:
    void WriteMapRow(std::span<const std::uint8_t> means, std::span<const std::uint8_t> shares);
    void WriteEdge();

    HeatMapForm form_;
    HeatMapLayout layout_;
    std::array<RgbColour, 256> colours_; // of each mean ink of a separation
    PngFile png_;
    std::vector<std::uint8_t> meanRow_; // waits for the shares of the same pixels
    BoxAverage means_;                  // of the ink of a separation
    BoxAverage shares_;                 // of the pixels above the limit
    std::vector<std::uint8_t> plate_;
};

} // namespace tympan::tool
