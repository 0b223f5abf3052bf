// What picture files that are written row by row have in common.
#pragma once

#include <cstdint>
#include <span>

namespace tympan::tool {

/// Size of a picture to be written, and its resolution in pixels per inch, which a format that
/// can't hold it, or a resolution that isn't a finite number above 0, leaves out.
struct WrittenForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    double resolutionX = 0.0;
    double resolutionY = 0.0;
};

/// A file that takes rows from the top down, as many as its height. All fail with a FileFailure.
class RowWriter {
  public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    virtual ~RowWriter() = default;

    virtual void Write(std::span<const std::uint8_t> row) = 0;
    /// Writes what is left and closes the file.
    virtual void Finish() = 0;
};

} // namespace tympan::tool
