// libtiff's colours would be RGB, of which the samples of the file can't be had back, and the lines
// of its raw mode overlap: they begin as far from each other as TIFFScanlineSize or TIFFTileRowSize
// says, and neither is the length of a line of clumps. So libtiff is told of tiles that are wide
// enough, be they strips, and gets the bytes of each from here, as it reads no strips for tiles.
#include "platform/tiff_shared_jpeg.h"

#include "platform/claims.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace tympan {

namespace {

// The head of a JPEG frame, and where in its stream the number of its rows stands.
struct JpegFrame {
    std::size_t rowsPlace = 0;
    std::uint32_t rows = 0;
    std::uint32_t width = 0;
};

constexpr std::uint32_t kFirstFrame = 0xFFC0;
constexpr std::uint32_t kLastFrame = 0xFFCF;

bool IsFrame(std::uint32_t marker)
{
    constexpr std::uint32_t kHuffmanTables = 0xFFC4;
    constexpr std::uint32_t kReserved = 0xFFC8;
    constexpr std::uint32_t kArithmeticTables = 0xFFCC;
    return marker >= kFirstFrame && marker <= kLastFrame && marker != kHuffmanTables &&
           marker != kReserved && marker != kArithmeticTables;
}

// Whether a length stands behind the marker, and it may stand ahead of a frame.
bool HasLength(std::uint32_t marker)
{
    constexpr std::uint32_t kFirstRestart = 0xFFD0;
    constexpr std::uint32_t kScan = 0xFFDA;
    return marker >= kFirstFrame && (marker < kFirstRestart || marker > kScan);
}

std::uint32_t WordAt(std::span<const std::byte> stream, std::size_t place)
{
    return std::to_integer<std::uint32_t>(stream[place]) << 8U |
           std::to_integer<std::uint32_t>(stream[place + 1]);
}

std::optional<JpegFrame> FindFrame(std::span<const std::byte> stream)
{
    constexpr std::size_t kRows = 5; // behind marker, length and precision
    constexpr std::size_t kWidth = 7;
    constexpr std::size_t kEnd = 9;
    constexpr std::uint32_t kFilled = 0xFFFF;
    std::size_t place = 2;
    while (place + kEnd <= stream.size()) {
        const std::uint32_t marker = WordAt(stream, place);
        if (IsFrame(marker))
            return JpegFrame{ place + kRows, WordAt(stream, place + kRows),
                              WordAt(stream, place + kWidth) };
        if (!HasLength(marker))
            break;
        place += marker == kFilled ? 1 : 2 + WordAt(stream, place + 2);
    }
    return std::nullopt;
}

// Empty where they aren't all in the file: what is cut off would be decoded to grey, with no more
// than a warning.
std::vector<std::byte> BytesOf(TiffSource& source, std::uint32_t block)
{
    const std::uint64_t position = TIFFGetStrileOffset(source.Get(), block);
    const std::uint64_t count = TIFFGetStrileByteCount(source.Get(), block);
    const std::uint64_t length = source.file.Length();
    if (position > length || count > std::min(length - position, kAddressable))
        return {};
    std::vector<std::byte> bytes(static_cast<std::size_t>(count));
    if (!source.file.ReadAt(position, bytes))
        bytes.clear();
    return bytes;
}

// Lines that are longer than the block's could overlap again.
bool Fits(const JpegFrame& frame, const TiffLayout& layout, BlockArea area)
{
    return frame.width >= area.width && frame.width <= layout.blockWidth &&
           frame.rows >= area.length;
}

// Some writers fill a strip behind the picture's end; the decoder is told of no more rows than
// there is room for.
void LeaveOutRowsBehind(std::span<std::byte> stream, const JpegFrame& frame, std::uint64_t most)
{
    if (frame.rows <= most)
        return;
    stream[frame.rowsPlace] = static_cast<std::byte>(most >> 8U);
    stream[frame.rowsPlace + 1] = static_cast<std::byte>(most);
}

// Keeps the reason, and gives false.
bool Fail(TiffSource& source, std::string_view text)
{
    source.report.Fail(text);
    return false;
}

bool SetTile(TIFF* open, const TiffLayout& layout)
{
    const auto width = static_cast<std::uint32_t>(layout.JpegTileWidth());
    const auto length = static_cast<std::uint32_t>(layout.BlockLines() * layout.chroma.down);
    return TIFFSetField(open, TIFFTAG_TILEWIDTH, width) != 0 &&
           TIFFSetField(open, TIFFTAG_TILELENGTH, length) != 0 &&
           TIFFTileRowSize64(open) == layout.BlockLineBytes();
}

} // namespace

bool DecodeSharedJpeg(TiffSource& source, const TiffLayout& layout, std::uint32_t block,
                      BlockArea area, std::span<std::byte> lines)
{
    std::vector<std::byte> stream = BytesOf(source, block);
    if (stream.empty())
        return Fail(source, "the JPEG data are not in the file");
    const auto frame = FindFrame(stream);
    if (!frame || !Fits(*frame, layout, area))
        return Fail(source, "the JPEG data are not of the picture's size");
    LeaveOutRowsBehind(stream, *frame, layout.BlockLines() * layout.chroma.down);
    return SetTile(source.Get(), layout) &&
           TIFFReadFromUserBuffer(source.Get(), block, stream.data(),
                                  static_cast<tmsize_t>(stream.size()), lines.data(),
                                  static_cast<tmsize_t>(lines.size())) != 0;
}

} // namespace tympan
