// Pixels of a JPEG picture, decoded from the blocks and tables that the library hands out.
#pragma once

#include "picture.h"
#include "row_range.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tympan::tool {

/// Rows of a JPEG block.
inline constexpr std::uint32_t kJpegBandRows = 8;

/// Decodes rows of a JPEG picture, a band of 8 at a time: only the file's head and the blocks of these
/// rows are read, and memory is that of a band. What libjpeg calls damaged, be it a warning, fails.
class JpegBands {
  public:
    /// \param picture a JPEG that is open; it outlives the bands
    /// \param rows those that will be asked for
    /// \throws FileFailure when the file's head has another form than its blocks are decoded by, or
    ///   contradicts the picture's record.
    JpegBands(const Picture& picture, RowRange rows);
    JpegBands(const JpegBands&) = delete;
    JpegBands& operator=(const JpegBands&) = delete;
    ~JpegBands();

    /// Samples of a pixel: 1, 3 or 4.
    std::size_t Components() const;

    /// A row, the samples of a pixel together: grey, 255 white; red, green and blue; or cyan,
    /// magenta, yellow and black, 255 for no ink. Quick from the top down. It holds until a row of
    /// another band is asked for.
    /// \throws FileFailure, naming the rows, when their band can't be decoded; others still can.
    std::span<const std::uint8_t> Row(std::uint32_t row);

  private:
    class Decoding;
    std::unique_ptr<Decoding> decoding_;
};

} // namespace tympan::tool
