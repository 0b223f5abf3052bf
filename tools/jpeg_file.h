// Ordinary JPEG files for a browser, written by rows.
#pragma once

#include "box_average.h"
#include "row_writer.h"

#include <memory>
#include <string>

namespace tympan::tool {

/// The bytes of a pixel: grey, or blue, green and red.
enum class JpegColour { Grey = 1, Bgr = 3 };

/// A JPEG of good quality whose colours are as fine as its greys. One that isn't finished is removed.
class JpegFile : public RowWriter {
  public:
    /// \param shown what a failure names
    JpegFile(const std::string& path, const std::string& shown, PixelSize size, JpegColour colour);
    ~JpegFile() override;

    void Write(std::span<const std::uint8_t> row) override;
    void Finish() override;

  private:
    struct Writer;
    std::unique_ptr<Writer> writer_;
};

} // namespace tympan::tool
