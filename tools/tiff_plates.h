// What the samples of a TIFF are as plates, on which 255 is no ink, and as colours of the screen.
#pragma once

#include "bit_spreader.h"
#include "picture.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

class SeparationBands;

/// The kind of a TIFF as a person calls it; "unknown" for one that isn't opened.
std::string TiffKindName(const TiffFileInterface& tiff);

/// Whether the samples of a TIFF are inks, all of them.
bool IsOfInks(const TiffFileInterface& tiff);

/// Rows of a TIFF's separations. Inks and what is white at zero are turned round, for the file has 0
/// for no ink there; bits become bytes of 0 and 255; all other samples stand as they are in the file.
class TiffPlates {
  public:
    /// \param picture a TIFF that is open; it outlives the plates
    explicit TiffPlates(const Picture& picture);

    /// \param plate as many bytes as the picture has columns
    /// \throws FileFailure, naming the row.
    void Read(std::uint32_t row, ColorSeparationType separation, std::span<std::uint8_t> plate);

  private:
    void ReadStored(std::uint32_t row, ColorSeparationType separation,
                    std::span<std::uint8_t> bytes) const;

    const Picture& picture_;
    bool isTurned_ = false;
    std::optional<BitSpreader> spreader_; // for a row of bits
    std::vector<std::uint8_t> packed_;
};

/// The colours that a TIFF is shown in: those of its palette, its red, green and blue, grey, or the
/// rule for inks, by the first four of them.
class TiffColours {
  public:
    /// \param picture a TIFF that is open
    explicit TiffColours(const Picture& picture);

    /// Those that the colours are made of: one, three or four.
    std::vector<ColorSeparationType> Separations() const;
    /// Whether all colours are greys, of which the plate itself has the values.
    bool IsGrey() const;
    /// Stores red, green and blue of each pixel of a row.
    /// \param bands of `Separations()`
    /// \throws FileFailure as `SeparationBands::Row`.
    void Show(SeparationBands& bands, std::uint32_t row, std::span<std::uint8_t> rgb) const;

  private:
    ColorSetType set_;
    std::vector<std::array<std::uint8_t, 3>> palette_; // of all bytes; empty without one
};

} // namespace tympan::tool
