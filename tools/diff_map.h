// A map of where two pictures differ, over one of them, as PNG.
#pragma once

#include "box_average.h"
#include "canonical_picture.h"
#include "heat_map.h"
#include "output_file.h"
#include "png_file.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// Each pixel of the map stands for a box of the pictures' pixels. It has the colour of the greatest
/// difference in the box, so that one sample among millions is seen; and where there is none, a
/// light grey by which the picture can be made out. The legend stands below. Memory is that of the
/// legend and of some rows.
class DiffMap {
  public:
    /// \param map not larger than the picture
    DiffMap(const OutputFile& output, PixelSize picture, PixelSize map);
    DiffMap(const DiffMap&) = delete;
    DiffMap& operator=(const DiffMap&) = delete;

    /// Adds a row, from the top down.
    /// \param shown the picture that is made out
    /// \param differences one for each pixel
    void Add(CanonicalPicture& shown, std::uint32_t row, std::span<const std::uint8_t> differences);
    /// Writes the legend and closes the file. All rows must have been added.
    void Finish();

  private:
    void WriteMapRow(std::span<const std::uint8_t> greys);

    HeatMapLayout layout_;
    PngFile png_;
    std::vector<PixelRange> boxes_; // of the map's columns
    std::vector<std::uint8_t>
        greatest_; // difference of each, in the rows since the last of the map
    BoxAverage greys_;
    std::vector<std::uint8_t> greyRow_;
};

} // namespace tympan::tool
