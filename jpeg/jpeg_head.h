// The head of a JPEG stream, segment by segment as the stream has it: what the scan of
// jpeg_parameters.h is held against.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class CFile;

namespace tympan {

struct HeadSegment {
    std::uint64_t offset = 0;           ///< of the length field; 0 for a segment that isn't there
    std::vector<unsigned char> payload; ///< what is behind it

    bool IsThere() const { return offset != 0; }
    /// 0 for a byte that isn't there.
    unsigned int Byte(std::size_t at) const { return at < payload.size() ? payload[at] : 0U; }
    unsigned int Word(std::size_t at) const { return Byte(at) << 8U | Byte(at + 1); }
};

/// A component as the frame header or the scan header lists it.
struct HeadComponent {
    unsigned int identifier = 0;
    unsigned int sampling = 0; ///< 0x11 for none, in a frame header
    unsigned int tables = 0;   ///< numbers of tables; in a scan header DC in the upper four bits
};

struct JpegHead {
    bool begins = false;                     ///< with the marker of a JPEG stream
    bool isJfif = false;                     ///< has the letters of a JFIF file
    std::array<HeadSegment, 2> quantization; ///< the first and the second
    HeadSegment frame;                       ///< the first of any kind
    unsigned char frameMarker = 0;
    std::array<HeadSegment, 3> huffman; ///< the first ones
    HeadSegment restartInterval;        ///< the last one
    HeadSegment scan;
    std::uint64_t end = 0; ///< behind the scan header, or where the head can't be followed further

    bool IsWhole() const { return scan.IsThere(); }
    std::vector<HeadComponent> FrameComponents() const;
    std::vector<HeadComponent> ScanComponents() const;
    /// 0 for a stream without restart markers.
    unsigned int RestartInterval() const { return restartInterval.Word(0); }
};

/// Reads the head of a file up to the entropy-coded data. Memory is bounded by the largest segments
/// that there can be. \throws CFileException*; std::bad_alloc.
JpegHead ReadJpegHead(CFile& file);

/// The numbers of the tables in a segment, each with its class or precision in the upper four bits;
/// nothing when the tables don't add up to the segment.
std::optional<std::vector<unsigned int>> QuantizationTables(const HeadSegment& segment);
std::optional<std::vector<unsigned int>> HuffmanTables(const HeadSegment& segment);

} // namespace tympan
