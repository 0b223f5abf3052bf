// Strips and tiles of Deflate, decoded to their end.
#pragma once

#include "platform/tiff_layout.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// A strip or tile of Deflate that is decoded at one go. Where it holds more than the picture needs,
/// as the last strip of some writers does, libtiff's fast way leaves the end of the picture unwritten
/// and calls that success. So the end is marked ahead; where the mark seems to be there still, the
/// bytes have to be decoded again by the slow way, which writes all of them.
class DeflateEnd {
  public:
    /// \param decoded where the bytes go, all that are needed. Of another compression nothing is done.
    DeflateEnd(TIFF* open, const TiffLayout& layout, std::span<std::byte> decoded);

    /// Whether the mark seems to be there; of one block of 256 that has been written, too.
    bool SeemsUnwritten() const;

  private:
    const TiffLayout& layout_;
    std::span<std::byte> decoded_;
    std::uint16_t predictor_ = 0; // 0: not Deflate
};

/// While it lives, libtiff decodes Deflate the slow way.
class SlowDeflate {
  public:
    explicit SlowDeflate(TIFF* open);
    SlowDeflate(const SlowDeflate&) = delete;
    SlowDeflate& operator=(const SlowDeflate&) = delete;
    ~SlowDeflate();

  private:
    TIFF* open_;
    int before_ = 0;
};

/// Decodes a strip or tile by `decode`, which gives false on failure, and again where the end of a
/// Deflate one wasn't written.
template <typename Decode>
bool DecodeToTheEnd(TIFF* open, const TiffLayout& layout, std::span<std::byte> decoded,
                    Decode decode)
{
    const DeflateEnd end(open, layout, decoded);
    if (!decode())
        return false;
    if (!end.SeemsUnwritten())
        return true;
    const SlowDeflate slow(open);
    return decode();
}

} // namespace tympan
