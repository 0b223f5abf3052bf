#include "jpeg/jpeg_head.h"

#include "core/block_size.h"
#include "jpeg/block_file.h"
#include "jpeg/jpeg_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <span>

namespace tympan {

namespace {

// A head seldom has more.
constexpr std::size_t kHeadBlockBytes = std::min<std::size_t>(kBlockBytes, 64U << 10U);

constexpr std::size_t kFrameComponents = 5; // their number; behind it the components, 3 bytes each

class HeadReader {
  public:
    explicit HeadReader(CFile& file) : length_(file.GetLength()), file_(file, kHeadBlockBytes) {}

    JpegHead Read()
    {
        std::array<unsigned char, kJfifLetters + 4> front{};
        Take(front);
        head_.begins = front[0] == kMarkerPrefix && front[1] == marker::kStart;
        head_.isJfif = std::equal(front.begin() + kJfifLetters, front.end(), kJfifText);
        head_.end = 2;
        if (head_.begins)
            while (!head_.IsWhole() && PassMarker()) {
            }
        return std::move(head_);
    }

  private:
    static constexpr char kJfifText[] = { 'J', 'F', 'I', 'F' };

    bool Take(std::span<unsigned char> bytes)
    {
        return file_.Read(bytes.data(), static_cast<UINT>(bytes.size())) == bytes.size();
    }

    // False where the head can't be followed further.
    bool PassMarker()
    {
        std::array<unsigned char, 2> bytes{};
        file_.Seek(static_cast<LONGLONG>(head_.end), CFile::begin);
        if (!Take(bytes) || bytes[0] != kMarkerPrefix || bytes[1] == marker::kEnd)
            return false;
        if (bytes[1] != kMarkerPrefix) // which would be a byte to fill up with
            return PassSegment(bytes[1]);
        ++head_.end;
        return true;
    }

    bool PassSegment(unsigned char marker)
    {
        std::array<unsigned char, 2> field{};
        if (!Take(field))
            return false;
        const std::uint64_t offset = head_.end + 2;
        const unsigned int length = static_cast<unsigned int>(field[0] << 8U | field[1]);
        if (length < field.size() || offset + length > length_)
            return false;
        if (HeadSegment* const kept = KeptAs(marker)) {
            kept->payload.resize(length - field.size());
            if (!Take(kept->payload))
                return false;
            kept->offset = offset;
        }
        head_.end = offset + length;
        return true;
    }

    // Where a segment is kept; null for one that isn't.
    HeadSegment* KeptAs(unsigned char marker)
    {
        switch (marker) {
        case marker::kQuantization: return FirstFree(head_.quantization);
        case marker::kHuffman: return FirstFree(head_.huffman);
        case marker::kRestartInterval: return &head_.restartInterval;
        case marker::kScan: return &head_.scan;
        case marker::kExtension:
        case marker::kArithmetic: return nullptr;
        default: break;
        }
        const bool isFrame = marker >= marker::kBaselineFrame && marker <= marker::kLastFrame;
        if (!isFrame || head_.frame.IsThere())
            return nullptr;
        head_.frameMarker = marker;
        return &head_.frame;
    }

    static HeadSegment* FirstFree(std::span<HeadSegment> segments)
    {
        const auto free = std::find_if(segments.begin(), segments.end(),
                                       [](const HeadSegment& one) { return !one.IsThere(); });
        return free == segments.end() ? nullptr : &*free;
    }

    std::uint64_t length_;
    BlockFile file_;
    JpegHead head_;
};

// `bytesOf(first, place)` tells how many bytes the table at a place has behind its first.
template <typename BytesOf>
std::optional<std::vector<unsigned int>> Tables(const HeadSegment& segment, BytesOf&& bytesOf)
{
    std::vector<unsigned int> tables;
    std::size_t at = 0;
    while (at < segment.payload.size()) {
        tables.push_back(segment.Byte(at));
        at += 1 + bytesOf(segment.Byte(at), at + 1);
    }
    if (at != segment.payload.size())
        return std::nullopt;
    return tables;
}

} // namespace

JpegHead ReadJpegHead(CFile& file)
{
    return HeadReader(file).Read();
}

std::vector<HeadComponent> JpegHead::FrameComponents() const
{
    std::vector<HeadComponent> components(frame.Byte(kFrameComponents));
    for (std::size_t i = 0; i < components.size(); ++i) {
        const std::size_t at = kFrameComponents + 1 + 3 * i;
        components[i] = { frame.Byte(at), frame.Byte(at + 1), frame.Byte(at + 2) };
    }
    return components;
}

std::vector<HeadComponent> JpegHead::ScanComponents() const
{
    std::vector<HeadComponent> components(scan.Byte(0));
    for (std::size_t i = 0; i < components.size(); ++i)
        components[i] = { scan.Byte(1 + 2 * i), 0, scan.Byte(2 + 2 * i) };
    return components;
}

std::optional<std::vector<unsigned int>> QuantizationTables(const HeadSegment& segment)
{
    constexpr std::size_t kValues = 64;
    return Tables(segment, [](unsigned int first, std::size_t) {
        return first >> 4U == 0 ? kValues : 2 * kValues;
    });
}

std::optional<std::vector<unsigned int>> HuffmanTables(const HeadSegment& segment)
{
    constexpr std::size_t kLengths = 16;
    return Tables(segment, [&](unsigned int, std::size_t at) {
        std::size_t symbols = 0;
        for (std::size_t i = 0; i < kLengths; ++i)
            symbols += segment.Byte(at + i);
        return kLengths + symbols;
    });
}

} // namespace tympan
