// Decodes the rows of an open TIFF, a band at a time.
#pragma once

#include "platform/tiff_layout.h"
#include "platform/tiff_shared_jpeg.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tympan {

/// Rows that follow each other. Decoding has reached `decoded` of them.
struct TiffBand {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t decoded = 0;
    std::size_t rowBytes = 0;
    std::unique_ptr<std::byte[]> bytes; ///< without a value until they are decoded
    std::size_t room = 0;               ///< how many of them there are
    TiffMessage failure;                ///< why there are no more

    bool Holds(std::uint32_t row) const { return row >= first && row - first < count; }
    bool HasDecoded(std::uint32_t row) const { return row - first < decoded; }
    std::uint32_t End() const { return first + count; }
    std::span<std::byte> Rows() { return { bytes.get(), count * rowBytes }; }
    std::span<std::byte> Row(std::uint32_t row)
    {
        return Rows().subspan((row - first) * rowBytes, rowBytes);
    }

    /// Takes the place of the rows until now, whose bytes stay until they are written over.
    void Become(std::uint32_t newFirst, std::uint32_t newCount, std::size_t newRowBytes);
};

/// The bands of one open file. A strip, or a row of tiles, is one band, decoded once for all of its
/// rows, as far as memory is granted for it; of rows that stand plainly in the file a band is what
/// one read gives.
class TiffDecoder {
  public:
    /// \param layout of a picture whose rows can be read.
    TiffDecoder(TiffSource& source, const TiffLayout& layout);

    /// Fills a band that holds the row, as far as it can be decoded.
    void Fill(TiffBand& band, std::uint32_t row);

  private:
    // Where libtiff's reading by lines stands: before a row of a plane.
    struct Place {
        std::uint16_t plane;
        std::uint32_t row;
    };

    void FillPlain(TiffBand& band, std::uint32_t row);
    void FillDecoded(TiffBand& band, std::uint32_t row);
    std::uint32_t FromStrips(TiffBand& band);
    bool FromStrip(TiffBand& band);
    std::span<std::byte> StripBuffer(TiffBand& band);

    std::uint32_t FromLines(TiffBand& band);
    std::uint32_t LinesOfPlane(TiffBand& band, std::uint16_t plane);
    std::uint32_t LineToStartFrom(std::uint32_t row, std::uint16_t plane) const;
    std::span<std::byte> LineBuffer(TiffBand& band, std::uint32_t row);
    void PlaceLine(std::span<const std::byte> line, std::span<std::byte> row,
                   std::uint16_t plane) const;
    bool ReadLine(std::span<std::byte> line, std::uint32_t row, std::uint16_t plane);
    bool Refresh(std::uint32_t row, std::uint16_t plane);
    bool IsUnchanged();

    std::uint32_t FromBlocks(TiffBand& band);
    bool ReadBlock(std::uint32_t column, std::uint32_t row, std::uint16_t plane);
    std::uint32_t BlockNumber(std::uint32_t column, std::uint32_t row, std::uint16_t plane) const;
    bool DecodeBlock(std::uint32_t block, std::uint32_t column, std::uint32_t row);
    BlockArea AreaOfBlock(std::uint32_t column, std::uint32_t row) const;
    bool IsJbigSound(std::uint32_t block, std::uint32_t row);
    void PlaceBlock(TiffBand& band, std::uint32_t column, std::uint16_t plane) const;
    void PlaceClumps(std::uint32_t down, std::span<std::byte> row, std::uint32_t column,
                     std::uint32_t pixels) const;
    std::span<const std::byte> BlockLine(std::uint32_t line) const;

    TiffSource& source_;
    TiffLayout layout_;
    std::uint32_t bandRows_;
    std::uint64_t stretchBytes_; // read of a plain file at a time
    bool readsStrips_;           // at one go, not line by line
    bool isStale_ = false;       // libtiff's bytes of a strip may be wrong
    std::optional<Place> next_;
    std::vector<std::byte> plane_;              // a line or a strip of one plane
    std::vector<std::byte> block_;              // one strip or tile, as libtiff gives it
    std::optional<std::uint32_t> decodedBlock_; // the number of that one
};

} // namespace tympan
