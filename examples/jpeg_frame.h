// The little that the examples with JPEG files have to know of a JPEG's head.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace example {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint8_t kMarker = 0xFF; // in front of the byte that tells which
inline constexpr std::uint8_t kFirstRestart = 0xD0;
inline constexpr std::uint8_t kLastRestart = 0xD7;
inline constexpr std::uint8_t kEndOfImage = 0xD9;
inline constexpr unsigned int kBandRows = 8;

/// What a baseline head tells of its picture.
struct JpegFrame {
    std::size_t heightAt = 0; ///< place of the height, two bytes, the higher first
    unsigned int height = 0;  ///< pixels
    unsigned int width = 0;   ///< pixels
    std::size_t scanAt = 0;   ///< place of the first byte behind the head
};

inline unsigned int NumberAt(const Bytes& bytes, std::size_t place)
{
    return static_cast<unsigned int>(bytes[place]) << 8U | bytes[place + 1];
}

/// Walks the segments of a head: a marker, a length that counts itself, and what they hold.
/// \return nothing for bytes that aren't a whole baseline head.
inline std::optional<JpegFrame> FrameOf(const Bytes& bytes)
{
    constexpr std::uint8_t kBaselineFrame = 0xC0;
    constexpr std::uint8_t kScan = 0xDA;
    constexpr std::size_t kFrameBytes = 9; // up to and with the width
    JpegFrame frame;
    for (std::size_t at = 2; at + kFrameBytes <= bytes.size() && bytes[at] == kMarker;) {
        const std::uint8_t marker = bytes[at + 1];
        if (marker == kBaselineFrame) {
            frame.heightAt = at + 5;
            frame.height = NumberAt(bytes, at + 5);
            frame.width = NumberAt(bytes, at + 7);
        }
        at += 2 + NumberAt(bytes, at + 2);
        if (marker == kScan) {
            frame.scanAt = at;
            break;
        }
    }
    if (frame.heightAt == 0 || frame.scanAt == 0 || frame.scanAt > bytes.size())
        return std::nullopt;
    return frame;
}

} // namespace example
