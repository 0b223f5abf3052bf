// TIFF files, written by rows: Deflate compressed, of 8 bits a sample.
#pragma once

#include "output_file.h"
#include "row_writer.h"
#include "tiff_file.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// The samples of a pixel: a grey, 255 white; red, green and blue; or the inks C, M, Y and K, 255
/// full ink.
enum class TiffColour { Grey, Rgb, CmykInk };

class TiffWriter : public RowWriter {
  public:
    TiffWriter(const OutputFile& output, const WrittenForm& form, TiffColour colour);

    void Write(std::span<const std::uint8_t> row) override;
    void Finish() override;

  private:
    bool SetTags(const WrittenForm& form, TiffColour colour);
    bool SetInks();
    bool SetResolution(const WrittenForm& form);

    TiffFile tiff_;
    std::vector<std::uint8_t> row_;
    std::uint32_t nextRow_ = 0;
};

} // namespace tympan::tool
