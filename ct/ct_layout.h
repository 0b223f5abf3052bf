// Where the bytes of a CT file stand, and the bands in which its pixels are read for the screen.
//
//   kCtFirstRow + (separations * row + slot) * stride:  the bytes of one separation of one row, then
//   one byte of padding if the width is odd
#pragma once

#include "core/block_size.h"
#include "core/header_layout.h"
#include "core/picture_parameters.h"
#include "core/pixel_colour.h"
#include "core/whole_numbers.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace tympan {

inline constexpr std::uint64_t kCtFirstRow = kHeaderBytes;

/// The places of a CT picture's bytes, by its record, which has to outlive them. It is made for
/// each row that is asked for, and so copies no more than it must.
struct CtLayout {
    std::uint32_t width = 0;       // pixels, and bytes of one separation of a row
    std::uint32_t separations = 0; // as the record counts them
    const PictureParameters* record;

    explicit CtLayout(const PictureParameters& pictureRecord)
        : width(CutToWhole<std::uint32_t>(pictureRecord.WidthInPixels())),
          separations(pictureRecord.NumberOfSeparations()), record(&pictureRecord)
    {}

    std::uint64_t Stride() const { return std::uint64_t{ width } + width % 2; }

    /// Where a separation of a row stands; nothing when no file of this machine can hold all of it.
    std::optional<std::uint64_t> Position(std::uint64_t row, unsigned int slot) const;
    std::optional<std::uint64_t> PositionOf(std::uint64_t row,
                                            ColorSeparationType separation) const;
    /// The slot of a separation among those in use.
    std::optional<unsigned int> SlotOf(ColorSeparationType separation) const;
};

/// Puts the file where reading a whole row, the separations one after the other, would leave it.
void LeaveBehindRow(CFile& file, const CtLayout& layout,
                    std::span<const ColorSeparationType> separations, std::uint64_t row);

/// A part of a picture, the ends not in it.
struct CtArea {
    std::uint64_t firstRow, endRow;
    std::size_t firstColumn, endColumn;
};

/// Gives the pixels of a picture's rows in stretches, a plate of `kNoInk`, corrected or not, for
/// each separation or row that the file doesn't hold. Reads whole rows of all separations many at a time where they
/// are narrow, and stretches of single rows where they are wide, so that its memory is constant.
class CtBands {
  public:
    /// \param corrections for each separation wanted what its bytes become; none: they stay.
    CtBands(CFile& file, const CtLayout& layout, std::span<const ColorSeparationType> wanted,
            std::span<const ByteTable> corrections = {});

    /// Calls `take(row, firstColumn, plates)` for the stretches of an area, from left to right and
    /// down; columns beyond the width are left out. `plates.plate[i]` is the i-th separation
    /// wanted.
    template <typename Take>
    void ForEachStretch(CtArea area, Take&& take);

  private:
    static constexpr std::size_t kBandBytes = kBlockBytes;
    static constexpr std::size_t kStretch = kBlockBytes / 8; // pixels

    bool RowsAreNarrow() const;
    void ReadBand(std::uint64_t row, std::uint64_t rows);
    Plates BandRow(std::uint64_t rowInBand, const CtArea& area) const;
    Plates ReadStretch(std::uint64_t row, std::size_t column, std::size_t count);
    std::size_t ReadOrNoInk(std::optional<std::uint64_t> position, std::uint8_t* bytes,
                            std::size_t count);
    void CorrectBand(std::uint64_t rows, std::size_t held);
    void Correct(std::size_t i, std::uint8_t* bytes, std::size_t count) const;

    CFile& file_;
    const CtLayout& layout_;
    std::array<std::optional<unsigned int>, PictureParameters::kSlots> slots_{};
    std::size_t wanted_;
    std::vector<ByteTable> corrections_;
    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint8_t> noInk_;
};

template <typename Take>
void CtBands::ForEachStretch(CtArea area, Take&& take)
{
    area.endColumn = std::min<std::size_t>(area.endColumn, layout_.width);
    if (area.firstColumn >= area.endColumn)
        return;
    if (RowsAreNarrow()) {
        const std::uint64_t bandRows = kBandBytes / (layout_.separations * layout_.Stride());
        for (std::uint64_t row = area.firstRow; row < area.endRow; row += bandRows) {
            const std::uint64_t rows = std::min(bandRows, area.endRow - row);
            ReadBand(row, rows);
            for (std::uint64_t i = 0; i < rows; ++i)
                take(row + i, area.firstColumn, BandRow(i, area));
        }
        return;
    }
    for (std::uint64_t row = area.firstRow; row < area.endRow; ++row)
        for (std::size_t column = area.firstColumn; column < area.endColumn; column += kStretch)
            take(row, column,
                 ReadStretch(row, column, std::min(kStretch, area.endColumn - column)));
}

} // namespace tympan
