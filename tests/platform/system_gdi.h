// The drawing calls of Windows itself, under names of our own: the platform's header stays in the
// source, since the library's stand-in bears the same names. Records go by address; they have the
// same layout on both sides.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan::test {

struct SystemPoint {
    std::int32_t x, y;
};

/// A device context of the system with a bitmap selected into it.
class SystemCanvas {
  public:
    /// \param info a BITMAPINFO with its colour table
    explicit SystemCanvas(const void* info);
    SystemCanvas(const SystemCanvas&) = delete;
    SystemCanvas& operator=(const SystemCanvas&) = delete;
    ~SystemCanvas();

    /// False when the system refused the bitmap.
    bool IsMade() const { return bitmap_ != nullptr; }
    std::uint8_t* Bits() const { return static_cast<std::uint8_t*>(bits_); }

    /// Gives the origin that stood before.
    SystemPoint MoveOrigin(SystemPoint origin) const;
    std::uint32_t Set(SystemPoint at, std::uint32_t colour) const;
    bool SetOnly(SystemPoint at, std::uint32_t colour) const;
    std::uint32_t Get(SystemPoint at) const;
    /// `table` takes `count` RGBQUADs.
    unsigned ColourTable(unsigned start, unsigned count, void* table) const;
    /// Draws a rectangle of one row.
    void FillRow(SystemPoint at, int count, std::uint32_t colour) const;
    /// Draws a row of B, G, R.
    void CopyRow(SystemPoint at, std::span<const std::uint8_t> bgr) const;

  private:
    void* bits_ = nullptr; // set with the bitmap
    void* context_ = nullptr;
    void* bitmap_ = nullptr;
    void* before_ = nullptr;
};

/// Makes a palette of a LOGPALETTE, reads `count` PALETTEENTRYs of it from `start` on, and deletes
/// it. Gives what the reading gave; 0 when there was no palette.
unsigned SystemPaletteEntries(const void* colours, unsigned start, unsigned count, void* entries);

} // namespace tympan::test
