// A picture as canonical samples, which pictures of different formats have in common. What these
// are stands in docs/canonical-samples.md.
#pragma once

#include "picture.h"
#include "separation_bands.h"
#include "tiff_plates.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

/// An open picture, of which canonical samples are read from the top down in a few MiB of memory.
class CanonicalPicture {
  public:
    /// \param asFormat a value of `--as`
    /// \throws UsageFailure for a format that this build doesn't read; FileFailure for a file that
    ///   can't be opened, gives no rows, or ends before them.
    CanonicalPicture(const std::string& path, const std::string& asFormat);
    CanonicalPicture(const CanonicalPicture&) = delete;
    CanonicalPicture& operator=(const CanonicalPicture&) = delete;

    const std::string& Path() const { return picture_.Path(); }
    std::uint32_t Width() const { return picture_.Width(); }
    std::uint32_t Height() const { return picture_.Height(); }
    /// The canonical names of the separations, in canonical order.
    const std::vector<std::string>& Names() const { return names_; }

    /// A row of one of the separations, by its place in that order. It holds until another row is
    /// asked for.
    /// \throws FileFailure, naming the row.
    std::span<const std::uint8_t> Row(std::uint32_t row, std::size_t separation);

    /// To be asked behind the last row, for a file may be cut short while it is open.
    /// \throws FileFailure when the file no longer has all its rows.
    void RequireStillWhole() const;

  private:
    std::span<const std::uint8_t> ColourRow(std::uint32_t row, std::size_t colour);

    Picture picture_;
    std::optional<TiffColours> palette_; // nothing for a picture without
    std::vector<std::string> names_;
    std::vector<std::size_t> places_; // where they stand in the order of the file
    SeparationBands bands_;
    std::vector<std::uint8_t> rgb_; // a row in the colours of the palette
    std::vector<std::uint8_t> plate_;
};

} // namespace tympan::tool
