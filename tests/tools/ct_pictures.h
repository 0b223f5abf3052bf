// CT files made by hand: the header's text as it stands in the file, and random pixels.
#pragma once

#include "tools/command_runner.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tympan::test {

/// A CT picture and the file that holds it. The fields may be changed before `File`.
struct CtPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t separations = 4; ///< 4, or 1 for cyan alone
    double resolutionX = 300.0;    ///< pixels per inch along the width
    double resolutionY = 300.0;
    std::vector<std::uint8_t> bytes; ///< row by row, in a row separation by separation, no padding

    /// The byte of a plate; 255 is no ink.
    std::uint8_t At(std::uint32_t column, std::uint32_t row, std::uint32_t plate) const;
    /// A row of one plate.
    std::string Row(std::uint32_t row, std::uint32_t plate) const;
    /// Red, green and blue of a pixel, or of the tint of a plate, by the library's rule.
    std::vector<std::uint8_t> Colour(std::uint32_t column, std::uint32_t row) const;
    std::vector<std::uint8_t> Tint(std::uint32_t column, std::uint32_t row,
                                   std::uint32_t plate) const;

    /// The 2048 bytes in front of the rows.
    std::string Header() const;
    /// The whole file, padding included.
    std::string File() const;
};

/// A picture of random bytes, the same ones for the same seed.
CtPicture RandomCt(std::uint32_t width, std::uint32_t height, std::uint32_t separations = 4,
                   std::uint32_t seed = 1);

/// A folder with the picture as "a.ct".
struct CtFolder : TemporaryFolder {
    explicit CtFolder(const CtPicture& picture) { WriteFile(*this / "a.ct", picture.File()); }
};

} // namespace tympan::test
