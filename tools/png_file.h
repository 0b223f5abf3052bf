// PNG files, written by rows.
#pragma once

#include "output_file.h"
#include "row_writer.h"

#include <memory>

namespace tympan::tool {

/// The samples of a pixel: one byte, or three for red, green and blue.
enum class PngColour { Grey, Rgb };

/// A PNG of 8 bits a sample.
class PngFile : public RowWriter {
  public:
    PngFile(const OutputFile& output, const WrittenForm& form, PngColour colour);
    ~PngFile() override;

    void Write(std::span<const std::uint8_t> row) override;
    void Finish() override;

  private:
    struct Writer;
    std::unique_ptr<Writer> writer_;
};

} // namespace tympan::tool
