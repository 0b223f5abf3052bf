#include "jpeg_segments.h"

namespace tympan::tool {

std::vector<JpegSegment> JpegSegmentsOf(std::span<const std::uint8_t> head)
{
    constexpr std::size_t kStartOfImage = 2; // bytes
    constexpr std::size_t kLengthBytes = 2;
    constexpr std::size_t kLead = 2 + kLengthBytes;
    std::vector<JpegSegment> segments;
    std::size_t at = kStartOfImage;
    while (at < head.size() && head.size() - at >= kLead && head[at] == 0xFF) {
        const std::size_t length = std::size_t{ head[at + 2] } << 8U | head[at + 3];
        if (length < kLengthBytes || length - kLengthBytes > head.size() - at - kLead)
            break;
        segments.push_back({ head[at + 1], at, head.subspan(at + kLead, length - kLengthBytes) });
        if (segments.back().marker == kScan)
            break;
        at = segments.back().End();
    }
    return segments;
}

} // namespace tympan::tool
