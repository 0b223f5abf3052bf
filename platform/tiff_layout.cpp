#include "platform/tiff_layout.h"

#include "platform/claims.h"

#include <algorithm>
#include <limits>

namespace tympan {

namespace {

bool HasChroma(const tiff& record)
{
    return record.PhotometricInterpretation == PHOTOMETRIC_YCBCR && record.SamplesPerPixel == 3;
}

ChromaSharing ReadSharing(TIFF* open, const tiff& record)
{
    ChromaSharing chroma;
    if (HasChroma(record) && TIFFIsUpSampled(open) == 0)
        TIFFGetFieldDefaulted(open, TIFFTAG_YCBCRSUBSAMPLING, &chroma.across, &chroma.down);
    return chroma;
}

bool IsSound(ChromaSharing chroma)
{
    const auto isSound = [](std::uint16_t count) { return count == 1 || count == 2 || count == 4; };
    return isSound(chroma.across) && isSound(chroma.down);
}

// The others, fax and JPEG among them, go on behind what is missing.
bool FillsOrFails(std::uint16_t compression)
{
    constexpr std::uint16_t kExact[] = { COMPRESSION_NONE,          COMPRESSION_LZW,
                                         COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE,
                                         COMPRESSION_PACKBITS,      COMPRESSION_LZMA,
                                         COMPRESSION_ZSTD };
    return std::find(std::begin(kExact), std::end(kExact), compression) != std::end(kExact);
}

// Whether libtiff changes neither the order of the bytes nor that of their bits.
bool IsInOrder(TIFF* open, std::uint16_t bits)
{
    constexpr std::uint16_t kWord = 16; // bits; words and more have an order of their bytes
    return TiffField<std::uint16_t>(open, TIFFTAG_FILLORDER) == FILLORDER_MSB2LSB &&
           (bits < kWord || TIFFIsByteSwapped(open) == 0);
}

} // namespace

std::uint64_t TiffLayout::BlockLineBytes() const
{
    if (!SharesChroma())
        return BytesOf(std::uint64_t{ blockWidth } * PlaneSamples());
    return BytesOf(isSharedJpeg ? JpegTileWidth() * samples : ClumpsAcross() * ClumpSamples());
}

std::uint64_t TiffLayout::JpegTileWidth() const
{
    const std::uint64_t line = ClumpsAcross() * ClumpSamples();
    return std::max(std::uint64_t{ blockWidth }, (line + samples - 1) / samples);
}

TiffLayout ReadLayout(TIFF* open, const tiff& record)
{
    TiffLayout layout;
    layout.width = record.ImageWidth;
    layout.length = record.ImageLength;
    layout.samples = record.SamplesPerPixel;
    layout.bits = record.BitsPerSample;
    const auto planar = TiffField<std::uint16_t>(open, TIFFTAG_PLANARCONFIG);
    layout.planes = planar == PLANARCONFIG_SEPARATE ? layout.samples : std::uint16_t{ 1 };
    layout.isTiled = TIFFIsTiled(open) != 0;
    layout.chroma = ReadSharing(open, record);
    layout.isSharedJpeg = record.Compression == COMPRESSION_JPEG && layout.SharesChroma();
    layout.isJbig = record.Compression == COMPRESSION_JBIG;
    // Shared chroma has no lines of single rows; libtiff has JBIG and old JPEG by the block only.
    layout.decodesWhole = layout.isTiled || layout.SharesChroma() || layout.isJbig ||
                          record.Compression == COMPRESSION_OJPEG;
    layout.isExact = FillsOrFails(record.Compression);
    layout.isPlain = record.Compression == COMPRESSION_NONE && !layout.decodesWhole &&
                     layout.planes == 1 && IsInOrder(open, layout.bits);
    layout.blockWidth =
        layout.isTiled ? TiffField<std::uint32_t>(open, TIFFTAG_TILEWIDTH) : layout.width;
    layout.blockLength =
        layout.isTiled
            ? TiffField<std::uint32_t>(open, TIFFTAG_TILELENGTH)
            : std::min(TiffField<std::uint32_t>(open, TIFFTAG_ROWSPERSTRIP), layout.length);
    return layout;
}

bool AgreesWithLibtiff(TIFF* open, const TiffLayout& layout)
{
    if (layout.isSharedJpeg)
        return true; // whoever decodes it looks
    if (!layout.decodesWhole)
        return TIFFScanlineSize64(open) == layout.LineBytes();
    const std::uint64_t size = layout.isTiled ? TIFFTileSize64(open) : TIFFStripSize64(open);
    return size == layout.BlockLines() * layout.BlockLineBytes();
}

const char* WhyRefused(TIFF* open, const TiffLayout& layout, std::uint64_t fileLength)
{
    constexpr std::uint64_t kLongestRow = std::numeric_limits<std::uint32_t>::max();
    constexpr std::uint64_t kMostJpegExpansion = 256; // two bits for a block of 64 samples
    if (layout.RowBytes() == 0 || layout.blockWidth == 0 || layout.blockLength == 0)
        return "the picture is empty";
    if (!IsSound(layout.chroma))
        return "chroma is shared by other than 1, 2 or 4 pixels";
    if (layout.SharesChroma() && layout.planes != 1)
        return "shared chroma in planes of its own can't be read";
    if (layout.RowBytes() > kLongestRow || !MayClaim(layout.RowBytes(), fileLength))
        return "the rows are longer than the file can fill";
    const std::uint64_t mostLines =
        std::numeric_limits<std::uint64_t>::max() / layout.BlockLineBytes();
    if (layout.decodesWhole &&
        (layout.BlockLines() > mostLines ||
         !MayClaimWhole(layout.BlockLines() * layout.BlockLineBytes(), fileLength,
                        layout.isSharedJpeg ? kMostJpegExpansion : kMostExpansion)))
        return "the strips or tiles are larger than the file can fill";
    return AgreesWithLibtiff(open, layout) ? nullptr : "the layout of the samples is not known";
}

bool MayClaimWhole(std::uint64_t claim, std::uint64_t fileLength, std::uint64_t expansion)
{
    return claim <= kFreeClaim || (claim / expansion <= fileLength && claim <= kAddressable);
}

} // namespace tympan
