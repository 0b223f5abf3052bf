// Rows of separations as pixels, whatever the picture's format.
#pragma once

#include "jpeg_bands.h"
#include "picture.h"
#include "row_range.h"
#include "tiff_plates.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tympan::tool {

/// Some rows of some separations, from the top down, read or decoded in bands of a few MiB.
class SeparationBands {
  public:
    /// \param picture one that has rows; it outlives the bands
    SeparationBands(const Picture& picture, std::vector<ColorSeparationType> separations,
                    RowRange rows);

    /// A row of one of the separations, by its place among those given; 255 is no ink, which is what
    /// a row that the file doesn't hold has. Of a TIFF as `TiffPlates` gives it. It holds until a row of another band is asked for.
    /// \throws FileFailure, naming the row.
    std::span<const std::uint8_t> Row(std::uint32_t row, std::size_t separation);

  private:
    void ReadBand(std::uint32_t firstRow);
    void Decode(JpegBands& jpeg);
    void ReadPlates(TiffPlates& tiff);
    std::span<std::uint8_t> PlaceOf(std::uint32_t row, std::size_t separation);

    const Picture& picture_;
    std::vector<ColorSeparationType> separations_;
    RowRange rows_;
    std::optional<JpegBands> jpeg_;    // nothing for other formats
    std::optional<TiffPlates> tiff_;   // the same
    std::vector<std::size_t> samples_; // of a JPEG's pixel, the places of the separations
    std::size_t bandRows_;
    std::vector<std::vector<std::uint8_t>> planes_;
    RowRange band_;
};

/// What is wrong with rows of which the library refused one: names the first that it refuses by
/// itself. Call it when the library has left a code.
FileFailure RowsFailure(const Picture& picture, RowRange rows);

/// The failure that the last operation left, as that of a row.
FileFailure RowFailure(const Picture& picture, std::uint32_t row);

} // namespace tympan::tool
