// The bands of a JPEG picture in the bytes of its scan: what stands between restart markers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace tympan::tool {

/// Takes the bytes behind the head in pieces of any size.
class JpegBandFinder {
  public:
    /// \param place of the first byte in the file
    explicit JpegBandFinder(std::uint64_t place) : place_(place), first_(place) {}

    /// Calls `take(first, end, marker)` for each band that ends in these bytes: the places of its first
    /// byte and behind its last, and the marker there.
    template <typename Take>
    void Read(std::span<const std::uint8_t> bytes, const Take& take)
    {
        for (auto at = bytes.begin();; ++at) {
            if (!behindFill_) {
                const auto fill = std::find(at, bytes.end(), kFill);
                place_ += static_cast<std::uint64_t>(fill - at);
                at = fill;
            }
            if (at == bytes.end())
                return;
            ReadByte(*at, take);
            ++place_;
        }
    }

  private:
    static constexpr std::uint8_t kFill =
        0xFF; // before a marker, or before 0 as a byte of the data

    template <typename Take>
    void ReadByte(std::uint8_t byte, const Take& take)
    {
        if (byte == kFill) {
            end_ = behindFill_ ? end_ : place_;
            behindFill_ = true;
            return;
        }
        behindFill_ = false;
        if (byte == 0)
            return;
        take(first_, end_, byte);
        first_ = place_ + 1;
    }

    std::uint64_t place_;
    std::uint64_t first_;
    std::uint64_t end_ = 0;
    bool behindFill_ = false;
};

} // namespace tympan::tool
