// The segments of a JPEG file's head: 0xFF, a marker, the length with its own two bytes, a payload.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// Second bytes of markers.
enum JpegMarker : std::uint8_t {
    kBaselineFrame = 0xC0,
    kHuffmanTables = 0xC4,
    kFirstRestart = 0xD0, // of eight that take turns
    kEndOfImage = 0xD9,
    kScan = 0xDA,
    kQuantizationTables = 0xDB,
    kRestartInterval = 0xDD,
    kJfif = 0xE0,
    kColourProfile = 0xE2,
    kAdobe = 0xEE,
};

struct JpegSegment {
    std::uint8_t marker;
    std::size_t place; ///< of the 0xFF
    std::span<const std::uint8_t> payload;

    std::size_t End() const { return place + 4 + payload.size(); }
};

/// The segments from the start of a file to that of its scan, or to where something else stands.
std::vector<JpegSegment> JpegSegmentsOf(std::span<const std::uint8_t> head);

} // namespace tympan::tool
