// What a target's input tells it to do: numbers drawn from its front, and the bytes behind them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan::fuzz {

using Input = std::span<const std::uint8_t>;

class Drawn {
  public:
    explicit Drawn(Input input) : left_(input) {}
    Drawn(const std::uint8_t* data, std::size_t size) : left_(data, size) {}

    bool IsEmpty() const { return left_.empty(); }
    /// 0 behind the input's end.
    std::uint8_t Byte()
    {
        const Input byte = Bytes(1);
        return byte.empty() ? std::uint8_t{ 0 } : byte.front();
    }
    std::uint32_t Word() { return Byte() | std::uint32_t{ Byte() } << 8U; }
    /// 0 to `bound` - 1, for a bound of up to 65536.
    std::uint32_t Below(std::size_t bound)
    {
        return static_cast<std::uint32_t>((bound > 256 ? Word() : Byte()) % bound);
    }
    bool Coin() { return Below(2) != 0; }
    /// So many bytes, or all that are left.
    Input Bytes(std::size_t count)
    {
        const Input bytes = left_.first(std::min(count, left_.size()));
        left_ = left_.subspan(bytes.size());
        return bytes;
    }
    Input Rest() { return Bytes(left_.size()); }

  private:
    Input left_;
};

} // namespace tympan::fuzz
