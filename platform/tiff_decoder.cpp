#include "platform/tiff_decoder.h"

#include "platform/claims.h"
#include "platform/tiff_deflate.h"
#include "platform/tiff_pixels.h"
#include "platform/tiff_plain_rows.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace tympan {

namespace {

// The largest band, where a single row isn't larger.
constexpr std::uint64_t kMostBand = 64U << 20U;

std::uint32_t BandRows(const TiffLayout& layout, std::uint64_t fileLength)
{
    const std::uint64_t rowBytes = layout.RowBytes();
    assert(rowBytes != 0);                                     // an empty picture has no decoder
    const std::uint64_t block = layout.blockLength * rowBytes; // 32 bits each
    const bool isGranted = block <= kMostBand && MayClaimWhole(block, fileLength);
    const std::uint64_t most = isGranted ? block : std::clamp(fileLength, kFreeClaim, kMostBand);
    return static_cast<std::uint32_t>(
        std::clamp(most / rowBytes, std::uint64_t{ 1 }, std::uint64_t{ layout.blockLength }));
}

// What the processor's caches keep of a plain file until its rows have been asked for.
constexpr std::uint64_t kStretchBytes = 256U << 10U;

// Whether the JBIG data that begin so are of that size and of one plane: the decoder takes memory
// and time by what they say themselves, whatever the directory says.
bool IsJbigOf(std::span<const std::uint8_t> header, std::uint32_t width, std::uint32_t rows)
{
    constexpr std::size_t kPlanes = 2;
    constexpr std::size_t kWidth = 4;
    constexpr std::size_t kRows = 8;
    const auto number = [&](std::size_t place) {
        return std::uint32_t{ header[place] } << 24U | std::uint32_t{ header[place + 1] } << 16U |
               std::uint32_t{ header[place + 2] } << 8U | std::uint32_t{ header[place + 3] };
    };
    return header[kPlanes] == 1 && number(kWidth) == width && number(kRows) == rows;
}

} // namespace

void TiffBand::Become(std::uint32_t newFirst, std::uint32_t newCount, std::size_t newRowBytes)
{
    count = 0; // holds nothing while it grows, which may fail
    first = newFirst;
    decoded = 0;
    failure = {};
    rowBytes = newRowBytes;
    const std::size_t size = std::size_t{ newCount } * rowBytes;
    if (size > room) {
        room = 0;
        bytes.reset();
        bytes = std::make_unique_for_overwrite<std::byte[]>(size);
        room = size;
    }
    count = newCount;
}

TiffDecoder::TiffDecoder(TiffSource& source, const TiffLayout& layout)
    : source_(source), layout_(layout), bandRows_(BandRows(layout, source.file.Length())),
      stretchBytes_(kStretchBytes), readsStrips_(layout.isExact && bandRows_ == layout.blockLength)
{}

void TiffDecoder::Fill(TiffBand& band, std::uint32_t row)
{
    if (layout_.isPlain)
        FillPlain(band, row);
    else
        FillDecoded(band, row);
}

void TiffDecoder::FillPlain(TiffBand& band, std::uint32_t row)
{
    const auto rowBytes = static_cast<std::size_t>(layout_.RowBytes());
    const auto stretch =
        PlainStretchAround(source_.Get(), layout_, row, stretchBytes_, source_.file.Length());
    if (stretch) {
        band.Become(stretch->first, stretch->count, rowBytes);
        if (source_.file.ReadAt(stretch->position, band.Rows())) {
            band.decoded = band.count;
            return;
        }
    }
    band.Become(row, 1, rowBytes); // the others may be there
    if (source_.file.HasFailed())
        stretchBytes_ = 0; // from now on up to the fault
    else
        source_.report.Fail("row " + std::to_string(row) + " is not in the file");
}

void TiffDecoder::FillDecoded(TiffBand& band, std::uint32_t row)
{
    const std::uint32_t first = row - (row - layout_.FirstRowOfBlock(row)) % bandRows_;
    const std::uint32_t count = std::min(bandRows_, layout_.EndOfBlock(row) - first);
    band.Become(first, count, static_cast<std::size_t>(layout_.RowBytes()));
    // What decoding leaves out, the last bits of a row among it, is 0 and not of an older row.
    if (!layout_.isExact || layout_.bits % 8 != 0)
        std::fill_n(band.bytes.get(), band.Rows().size(), std::byte{ 0 });
    band.decoded = layout_.decodesWhole ? FromBlocks(band) : FromStrips(band);
}

std::uint32_t TiffDecoder::FromStrips(TiffBand& band)
{
    if (!readsStrips_)
        return FromLines(band);
    if (FromStrip(band))
        return band.count;
    // Lines reach up to the fault. From now on for every strip: libtiff would go on decoding behind
    // those that it has given at one go.
    readsStrips_ = false;
    isStale_ = true;
    // What the system can't read is told before it is tried again.
    return source_.file.HasFailed() ? 0 : FromLines(band);
}

bool TiffDecoder::FromStrip(TiffBand& band)
{
    TIFF* const open = source_.Get();
    const std::uint64_t lineBytes = layout_.LineBytes();
    for (std::uint16_t plane = 0; plane != layout_.planes; ++plane) {
        const std::span<std::byte> lines = StripBuffer(band);
        const auto size = static_cast<tmsize_t>(lines.size());
        const auto decode = [&] {
            return TIFFReadEncodedStrip(open, TIFFComputeStrip(open, band.first, plane),
                                        lines.data(), size) == size;
        };
        if (!DecodeToTheEnd(open, layout_, lines, decode))
            return false;
        for (std::uint32_t row = band.first; layout_.planes != 1 && row != band.End(); ++row)
            PlaceLine(lines.subspan((row - band.first) * lineBytes, lineBytes), band.Row(row),
                      plane);
    }
    return true;
}

// Strips of whole pixels are decoded in their place.
std::span<std::byte> TiffDecoder::StripBuffer(TiffBand& band)
{
    if (layout_.planes == 1)
        return band.Rows();
    plane_.resize(static_cast<std::size_t>(band.count * layout_.LineBytes()));
    return plane_;
}

// How many rows of the band all planes have.
std::uint32_t TiffDecoder::FromLines(TiffBand& band)
{
    std::uint32_t decoded = band.count;
    for (std::uint16_t plane = 0; plane != layout_.planes && decoded != 0; ++plane)
        decoded = std::min(decoded, LinesOfPlane(band, plane));
    return decoded;
}

std::uint32_t TiffDecoder::LinesOfPlane(TiffBand& band, std::uint16_t plane)
{
    // Compressed lines can be reached only through those before them in the strip.
    for (std::uint32_t row = LineToStartFrom(band.first, plane); row != band.End(); ++row) {
        const bool isWanted = row >= band.first;
        const std::span<std::byte> line = LineBuffer(band, row);
        if (!ReadLine(line, row, plane))
            return isWanted ? row - band.first : 0;
        if (isWanted && layout_.planes != 1)
            PlaceLine(line, band.Row(row), plane);
    }
    return band.count;
}

std::uint32_t TiffDecoder::LineToStartFrom(std::uint32_t row, std::uint16_t plane) const
{
    const std::uint32_t strip = layout_.FirstRowOfBlock(row);
    const bool goesOn = next_ && next_->plane == plane && next_->row >= strip && next_->row <= row;
    return goesOn ? next_->row : strip;
}

// Lines of whole pixels go to their place at once; those before the band are overwritten there.
std::span<std::byte> TiffDecoder::LineBuffer(TiffBand& band, std::uint32_t row)
{
    if (layout_.planes == 1)
        return band.Row(std::max(row, band.first));
    plane_.resize(static_cast<std::size_t>(layout_.LineBytes()));
    return plane_;
}

void TiffDecoder::PlaceLine(std::span<const std::byte> line, std::span<std::byte> row,
                            std::uint16_t plane) const
{
    CopySamples(line, layout_.width, row, { plane, layout_.planes }, layout_.bits);
}

bool TiffDecoder::ReadLine(std::span<std::byte> line, std::uint32_t row, std::uint16_t plane)
{
    next_.reset();
    if (isStale_ && !Refresh(row, plane))
        return false;
    isStale_ = TIFFReadScanline(source_.Get(), line.data(), row, plane) != 1;
    if (!isStale_)
        next_ = Place{ plane, row + 1 };
    return !isStale_;
}

// A strip that couldn't be read has left its bytes where those of the strip before still count
// as read. Any other strip is read whole; that one asks for a new start.
bool TiffDecoder::Refresh(std::uint32_t row, std::uint16_t plane)
{
    TIFF* const open = source_.Get();
    if (open && TIFFCurrentStrip(open) != TIFFComputeStrip(open, row, plane))
        return true;
    return source_.Open() && IsUnchanged();
}

// Another program may have written the file meanwhile.
bool TiffDecoder::IsUnchanged()
{
    tiff record;
    FillRecord(record, source_.Get());
    if (ReadLayout(source_.Get(), record) == layout_ && AgreesWithLibtiff(source_.Get(), layout_))
        return true;
    source_.Close();
    source_.report.Fail("the file has changed");
    return false;
}

// All rows of the band or none.
std::uint32_t TiffDecoder::FromBlocks(TiffBand& band)
{
    for (std::uint16_t plane = 0; plane != layout_.planes; ++plane)
        for (std::uint64_t x = 0; x < layout_.width; x += layout_.blockWidth) {
            const auto column = static_cast<std::uint32_t>(x);
            if (!ReadBlock(column, band.first, plane))
                return 0;
            PlaceBlock(band, column, plane);
        }
    return band.count;
}

bool TiffDecoder::ReadBlock(std::uint32_t column, std::uint32_t row, std::uint16_t plane)
{
    const std::uint32_t block = BlockNumber(column, row, plane);
    if (decodedBlock_ == block)
        return true;
    decodedBlock_.reset();
    block_.resize(static_cast<std::size_t>(layout_.BlockLines() * layout_.BlockLineBytes()));
    if (!layout_.isExact)
        std::fill(block_.begin(), block_.end(), std::byte{ 0 });
    if (!DecodeBlock(block, column, row))
        return false;
    decodedBlock_ = block;
    return true;
}

bool TiffDecoder::DecodeBlock(std::uint32_t block, std::uint32_t column, std::uint32_t row)
{
    if (layout_.isSharedJpeg)
        return DecodeSharedJpeg(source_, layout_, block, AreaOfBlock(column, row), block_);
    if (layout_.isJbig && !IsJbigSound(block, row))
        return false;
    TIFF* const open = source_.Get();
    const auto room = static_cast<tmsize_t>(block_.size());
    return DecodeToTheEnd(open, layout_, block_, [&] {
        return layout_.isTiled ? TIFFReadEncodedTile(open, block, block_.data(), room) >= 0
                               : TIFFReadEncodedStrip(open, block, block_.data(), room) >= 0;
    });
}

BlockArea TiffDecoder::AreaOfBlock(std::uint32_t column, std::uint32_t row) const
{
    return { std::min(layout_.blockWidth, layout_.width - column),
             layout_.EndOfBlock(row) - layout_.FirstRowOfBlock(row) };
}

std::uint32_t TiffDecoder::BlockNumber(std::uint32_t column, std::uint32_t row,
                                       std::uint16_t plane) const
{
    const auto blocksOf = [](std::uint64_t size, std::uint64_t block) {
        return (size + block - 1) / block;
    };
    const std::uint64_t down =
        plane * blocksOf(layout_.length, layout_.blockLength) + row / layout_.blockLength;
    return static_cast<std::uint32_t>(down * blocksOf(layout_.width, layout_.blockWidth) +
                                      column / layout_.blockWidth);
}

bool TiffDecoder::IsJbigSound(std::uint32_t block, std::uint32_t row)
{
    std::array<std::uint8_t, 20> header{};
    TIFF* const open = source_.Get();
    const auto room = static_cast<tmsize_t>(header.size());
    const tmsize_t read = layout_.isTiled ? TIFFReadRawTile(open, block, header.data(), room)
                                          : TIFFReadRawStrip(open, block, header.data(), room);
    if (read != room)
        return false;
    if (TiffField<std::uint16_t>(open, TIFFTAG_FILLORDER) == FILLORDER_MSB2LSB)
        TIFFReverseBits(header.data(), room); // as libtiff's JBIG has it
    const std::uint32_t rows = layout_.isTiled
                                   ? layout_.blockLength
                                   : layout_.EndOfBlock(row) - layout_.FirstRowOfBlock(row);
    if (IsJbigOf(header, layout_.blockWidth, rows))
        return true;
    source_.report.Fail("the JBIG data are not of the picture's size");
    return false;
}

void TiffDecoder::PlaceBlock(TiffBand& band, std::uint32_t column, std::uint16_t plane) const
{
    const std::uint32_t pixels = AreaOfBlock(column, band.first).width;
    const std::uint64_t samples = std::uint64_t{ pixels } * layout_.PlaneSamples();
    const SamplePlaces places{ std::uint64_t{ column } * layout_.samples + plane, layout_.planes };
    for (std::uint32_t row = band.first; row != band.End(); ++row) {
        const std::uint32_t down = row - layout_.FirstRowOfBlock(row);
        if (layout_.SharesChroma())
            PlaceClumps(down, band.Row(row), column, pixels);
        else
            CopySamples(BlockLine(down), samples, band.Row(row), places, layout_.bits);
    }
}

// Row `down` of the block, with its chroma beside every pixel.
void TiffDecoder::PlaceClumps(std::uint32_t down, std::span<std::byte> row, std::uint32_t column,
                              std::uint32_t pixels) const
{
    const ChromaSharing shared = layout_.chroma;
    const auto line = BlockLine(down / shared.down);
    const std::uint64_t lumaBefore = std::uint64_t{ down % shared.down } * shared.across;
    const std::uint64_t lumaOfClump = std::uint64_t{ shared.across } * shared.down;
    std::uint64_t target = std::uint64_t{ column } * layout_.samples;
    std::uint64_t clump = 0;
    for (std::uint64_t x = 0; x < pixels; x += shared.across, clump += layout_.ClumpSamples()) {
        const std::uint64_t count = std::min<std::uint64_t>(shared.across, pixels - x);
        for (std::uint64_t i = 0; i != count; ++i, target += layout_.samples) {
            CopySample(line, clump + lumaBefore + i, row, target, layout_.bits);
            CopySample(line, clump + lumaOfClump, row, target + 1, layout_.bits);
            CopySample(line, clump + lumaOfClump + 1, row, target + 2, layout_.bits);
        }
    }
}

std::span<const std::byte> TiffDecoder::BlockLine(std::uint32_t line) const
{
    const auto bytes = static_cast<std::size_t>(layout_.BlockLineBytes());
    return std::span(block_).subspan(line * bytes, bytes);
}

} // namespace tympan
