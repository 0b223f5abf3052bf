// The TIFF library over libtiff: decoding is libtiff's; the order of the rows, their layout and the
// bounds of memory are kept here. In this file alone `TIFF`, libtiff's name for what it has open,
// is declared as the same type as the record `tiff`; a `TIFF*` here always comes from libtiff and
// goes nowhere else.
#include "platform/tiff_library.h"

#include "platform/claims.h"
#include "platform/file_system.h"
#include "platform/tiff_messages.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tympan {

namespace {

// What has to be decoded in one piece may be this many times as long as the file: common
// compressions of pictures stay below it.
constexpr std::uint64_t kMostExpansion = 64;

constexpr bool MayClaimWhole(std::uint64_t claim, std::uint64_t fileLength)
{
    return claim <= kFreeClaim || claim / kMostExpansion <= fileLength;
}

// The largest claim that MayClaimWhole() grants, for libtiff's own allocations.
tmsize_t LargestWholeClaim(std::uint64_t fileLength)
{
    constexpr std::uint64_t kMost = std::numeric_limits<tmsize_t>::max();
    const std::uint64_t claim =
        fileLength > kMost / kMostExpansion ? kMost : fileLength * kMostExpansion;
    return static_cast<tmsize_t>(std::max(kFreeClaim, claim));
}

std::string SystemText(int error)
{
    return std::generic_category().message(error);
}

// Where errors and warnings about one file go.
class Report {
  public:
    explicit Report(std::string fileName) : fileName_(std::move(fileName)) {}

    // An operation starts: nothing has failed in it.
    void Begin() noexcept { hasFailed_ = false; }
    const std::string& FileName() const noexcept { return fileName_; }
    bool HasFailed() const noexcept { return hasFailed_; }

    void Fail(std::string_view text) noexcept
    {
        hasFailed_ = true;
        KeepTiffMessage([&] { return Named(text); });
    }

    // libtiff's handlers; a result but 0 keeps the handlers of the process out of it.
    static int TakeError(TIFF*, void* report, const char*, const char* format,
                         std::va_list arguments) noexcept
    {
        Report& self = *static_cast<Report*>(report);
        self.hasFailed_ = true;
        KeepTiffMessage([&] { return self.Named(FormatTiffMessage(format, arguments)); });
        return 1;
    }

    // A warning that comes behind an error would hide the reason of the failure.
    static int TakeWarning(TIFF*, void* report, const char*, const char* format,
                           std::va_list arguments) noexcept
    {
        const Report& self = *static_cast<const Report*>(report);
        if (!self.hasFailed_)
            KeepTiffMessage([&] { return self.Named(FormatTiffMessage(format, arguments)); });
        return 1;
    }

  private:
    std::string Named(std::string_view text) const
    {
        return std::string(fileName_).append(": ").append(text);
    }

    std::string fileName_;
    bool hasFailed_ = false;
};

enum class Owner { library, caller };

// An open file of the seam with a position of its own, as libtiff's procedures want it.
class SeamFile {
  public:
    static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

    SeamFile() noexcept = default;
    SeamFile(const SeamFile&) = delete;
    SeamFile& operator=(const SeamFile&) = delete;
    ~SeamFile()
    {
        if (owner_ == Owner::library)
            CurrentFileSystem().Close(number_);
    }

    void Attach(int number, Owner owner) noexcept
    {
        number_ = number;
        owner_ = owner;
    }

    // The file's length, 0 where it can't be told.
    std::uint64_t Length() const noexcept
    {
        return static_cast<std::uint64_t>(CurrentFileSystem().Size(number_).value);
    }

    // libtiff opens what lies at the position.
    void Rewind() noexcept { position_ = 0; }
    // Bounds what may be read from now on.
    void Allow(std::uint64_t bytes) noexcept { allowance_ = bytes; }
    // The errno value of the last read that failed since the last call, 0 for none.
    int TakeError() noexcept { return std::exchange(error_, 0); }

    static tmsize_t Read(thandle_t file, void* buffer, tmsize_t size) noexcept
    {
        return static_cast<SeamFile*>(file)->ReadOn(
            std::span(static_cast<std::byte*>(buffer), static_cast<std::size_t>(size)));
    }
    static tmsize_t Write(thandle_t, void*, tmsize_t) noexcept { return -1; }
    static toff_t Seek(thandle_t file, toff_t offset, int from) noexcept
    {
        return static_cast<SeamFile*>(file)->SeekTo(offset, from);
    }
    static toff_t Size(thandle_t file) noexcept { return static_cast<SeamFile*>(file)->Length(); }
    static int Close(thandle_t) noexcept { return 0; } // the destructor's part

  private:
    // Gives 0 for a failure too: libtiff takes a negative count into its sums.
    tmsize_t ReadOn(std::span<std::byte> buffer) noexcept
    {
        if (buffer.size() > allowance_)
            return 0;
        const IoResult read = CurrentFileSystem().ReadAt(number_, buffer, position_);
        if (!read)
            error_ = read.error;
        position_ += read.value;
        if (allowance_ != kUnlimited)
            allowance_ -= static_cast<std::uint64_t>(read.value);
        return static_cast<tmsize_t>(read.value);
    }

    toff_t SeekTo(toff_t offset, int from) noexcept
    {
        // Leaves room for the largest read, so that no position wraps.
        constexpr toff_t kFarthest = std::numeric_limits<std::int64_t>::max() / 2;
        const toff_t start = from == SEEK_SET   ? 0
                             : from == SEEK_CUR ? static_cast<toff_t>(position_)
                                                : Length();
        if (offset > kFarthest || start > kFarthest - offset)
            return static_cast<toff_t>(-1);
        position_ = static_cast<std::int64_t>(start + offset);
        return start + offset;
    }

    int number_ = -1;
    Owner owner_ = Owner::caller;
    std::int64_t position_ = 0;
    std::uint64_t allowance_ = kUnlimited;
    int error_ = 0;
};

struct CloseLibtiff {
    void operator()(TIFF* open) const noexcept { TIFFClose(open); }
};
using Libtiff = std::unique_ptr<TIFF, CloseLibtiff>;

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};

// Opens through libtiff and has it read the first directory; null on failure.
Libtiff OpenLibtiff(SeamFile& file, Report& report)
{
    // Tags that all point at the same bytes would be read, and kept, once each: what a directory
    // makes libtiff read is held against the file.
    constexpr std::uint64_t kFewTags = 1U << 20U;
    const std::uint64_t length = file.Length();
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), LargestWholeClaim(length));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &Report::TakeError, &report);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &Report::TakeWarning, &report);
    file.Rewind();
    file.Allow(2 * length + kFewTags);
    Libtiff open(TIFFClientOpenExt(report.FileName().c_str(), "r", &file, &SeamFile::Read,
                                   &SeamFile::Write, &SeamFile::Seek, &SeamFile::Close,
                                   &SeamFile::Size, nullptr, nullptr, options.get()));
    file.Allow(SeamFile::kUnlimited);
    return open;
}

// A file with libtiff's reading of it.
struct Source {
    explicit Source(const char* name) : report(name) {}

    // Has libtiff read the directory, anew if it has before.
    bool Open()
    {
        libtiff.reset();
        libtiff = OpenLibtiff(file, report);
        return libtiff != nullptr;
    }

    TIFF* Get() const { return libtiff.get(); }

    Report report;
    SeamFile file;
    Libtiff libtiff; // ends before the file that it reads
};

// A field of the directory or its default; 0 where there is neither.
template <typename Value>
Value Field(TIFF* open, std::uint32_t tag)
{
    Value value = 0;
    return TIFFGetFieldDefaulted(open, tag, &value) != 0 ? value : Value{ 0 };
}

void FillRecord(tiff& record, TIFF* open)
{
    record.ImageWidth = Field<std::uint32_t>(open, TIFFTAG_IMAGEWIDTH);
    record.ImageLength = Field<std::uint32_t>(open, TIFFTAG_IMAGELENGTH);
    record.BitsPerSample = Field<std::uint16_t>(open, TIFFTAG_BITSPERSAMPLE);
    record.Compression = Field<std::uint16_t>(open, TIFFTAG_COMPRESSION);
    record.PhotometricInterpretation = Field<std::uint16_t>(open, TIFFTAG_PHOTOMETRIC);
    record.SamplesPerPixel = Field<std::uint16_t>(open, TIFFTAG_SAMPLESPERPIXEL);
    record.XResolution = Field<float>(open, TIFFTAG_XRESOLUTION);
    record.YResolution = Field<float>(open, TIFFTAG_YRESOLUTION);
}

// How many pixels share a sample of chroma.
struct ChromaSharing {
    std::uint16_t across = 1;
    std::uint16_t down = 1;

    bool operator==(const ChromaSharing&) const = default;
};

// What decides how samples lie in the file. A block is a strip or a tile.
struct Layout {
    std::uint32_t width = 0;
    std::uint32_t length = 0;
    std::uint16_t samples = 0;
    std::uint16_t bits = 0;
    std::uint16_t planes = 1; // 1: a pixel's samples lie side by side; else a plane for each
    bool isTiled = false;
    bool isJbig = false;
    bool decodesWhole = false; // by blocks, not line by line
    bool arrivesAsRgb = false; // from libtiff, instead of the YCbCr that the file holds
    ChromaSharing chroma;
    std::uint32_t blockWidth = 0;
    std::uint32_t blockLength = 0;

    bool operator==(const Layout&) const = default;

    bool SharesChroma() const { return chroma.across != 1 || chroma.down != 1; }
    std::uint16_t PlaneSamples() const { return planes == 1 ? samples : std::uint16_t{ 1 }; }

    // Neither can wrap: a width has 32 bits, a count of samples and one of bits 16 each.
    std::uint64_t BytesOf(std::uint64_t sampleCount) const { return (sampleCount * bits + 7) / 8; }
    std::uint64_t RowBytes() const { return BytesOf(std::uint64_t{ width } * samples); }
    // A line of one plane across the picture.
    std::uint64_t LineBytes() const { return BytesOf(std::uint64_t{ width } * PlaneSamples()); }

    // A clump is the pixels that share chroma: their luma, then the two samples of chroma.
    std::uint32_t ClumpSamples() const { return std::uint32_t{ chroma.across } * chroma.down + 2U; }
    // What lies side by side in a decoded block, and how often.
    std::uint64_t BlockLineBytes() const
    {
        if (!SharesChroma())
            return BytesOf(std::uint64_t{ blockWidth } * PlaneSamples());
        const std::uint64_t clumps =
            (std::uint64_t{ blockWidth } + chroma.across - 1) / chroma.across;
        return BytesOf(clumps * ClumpSamples());
    }
    std::uint64_t BlockLines() const
    {
        return (std::uint64_t{ blockLength } + chroma.down - 1) / chroma.down;
    }
};

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

// libtiff doesn't give the shared chroma of JPEG as it is stored when pixels share it downwards,
// its lines overlap. It does give such a picture as RGB with a pixel's own chroma.
bool AskForRgb(TIFF* open, const tiff& record)
{
    const ChromaSharing chroma = ReadSharing(open, record);
    return record.Compression == COMPRESSION_JPEG && record.BitsPerSample == 8 &&
           (chroma.across != 1 || chroma.down != 1) &&
           TIFFSetField(open, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB) != 0 &&
           TIFFIsUpSampled(open) != 0;
}

// The stored YCbCr of pixels that a JPEG decoder has made RGB of: the inverse of its sums.
void MakeYCbCr(std::span<std::byte> pixels)
{
    // In parts of 65536.
    constexpr int kSums[3][3] = { { 19595, 38470, 7471 },
                                  { -11059, -21709, 32768 },
                                  { 32768, -27439, -5329 } };
    constexpr int kHalf = 1 << 15;
    constexpr int kNoColour[3] = { 0, 128, 128 };
    for (; pixels.size() >= 3; pixels = pixels.subspan(3)) {
        const int rgb[3] = { std::to_integer<int>(pixels[0]), std::to_integer<int>(pixels[1]),
                             std::to_integer<int>(pixels[2]) };
        for (std::size_t i = 0; i != 3; ++i) {
            const int sum = kSums[i][0] * rgb[0] + kSums[i][1] * rgb[1] + kSums[i][2] * rgb[2];
            pixels[i] =
                static_cast<std::byte>(std::clamp(((sum + kHalf) >> 16) + kNoColour[i], 0, 255));
        }
    }
}

Layout ReadLayout(TIFF* open, const tiff& record)
{
    Layout layout;
    layout.width = record.ImageWidth;
    layout.length = record.ImageLength;
    layout.samples = record.SamplesPerPixel;
    layout.bits = record.BitsPerSample;
    const auto planar = Field<std::uint16_t>(open, TIFFTAG_PLANARCONFIG);
    layout.planes = planar == PLANARCONFIG_SEPARATE ? layout.samples : std::uint16_t{ 1 };
    layout.isTiled = TIFFIsTiled(open) != 0;
    layout.arrivesAsRgb = layout.planes == 1 && AskForRgb(open, record);
    layout.chroma = ReadSharing(open, record);
    layout.isJbig = record.Compression == COMPRESSION_JBIG;
    // Shared chroma has no lines of single rows, and libtiff has JBIG by the block only.
    layout.decodesWhole = layout.isTiled || layout.SharesChroma() || layout.isJbig;
    layout.blockWidth =
        layout.isTiled ? Field<std::uint32_t>(open, TIFFTAG_TILEWIDTH) : layout.width;
    layout.blockLength =
        layout.isTiled ? Field<std::uint32_t>(open, TIFFTAG_TILELENGTH)
                       : std::min(Field<std::uint32_t>(open, TIFFTAG_ROWSPERSTRIP), layout.length);
    return layout;
}

bool IsSound(ChromaSharing chroma)
{
    const auto isSound = [](std::uint16_t count) { return count == 1 || count == 2 || count == 4; };
    return isSound(chroma.across) && isSound(chroma.down);
}

// Whether libtiff writes into a buffer what the layout says that it does.
bool AgreesWithLibtiff(TIFF* open, const Layout& layout)
{
    if (!layout.decodesWhole)
        return TIFFScanlineSize64(open) == layout.LineBytes();
    const std::uint64_t size = layout.isTiled ? TIFFTileSize64(open) : TIFFStripSize64(open);
    return size == layout.BlockLines() * layout.BlockLineBytes();
}

// Why rows of the layout can't be read, null when they can.
const char* WhyRefused(TIFF* open, const Layout& layout, std::uint64_t fileLength)
{
    constexpr std::uint64_t kLongestRow = std::numeric_limits<std::uint32_t>::max();
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
         !MayClaimWhole(layout.BlockLines() * layout.BlockLineBytes(), fileLength)))
        return "the strips or tiles are larger than the file can fill";
    return AgreesWithLibtiff(open, layout) ? nullptr : "the layout of the samples is not known";
}

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

// Samples of some bits each, packed from the highest bit on, or bytes in the machine's order.
void CopySample(std::span<const std::byte> from, std::uint64_t fromIndex, std::span<std::byte> to,
                std::uint64_t toIndex, std::uint16_t bits)
{
    if (bits == 8) {
        to[toIndex] = from[fromIndex];
        return;
    }
    if (bits % 8 == 0) {
        const std::size_t bytes = bits / 8U;
        std::memcpy(&to[toIndex * bytes], &from[fromIndex * bytes], bytes);
        return;
    }
    constexpr std::byte kHighest{ 0x80 };
    for (std::uint64_t i = 0; i != bits; ++i) {
        const std::uint64_t source = fromIndex * bits + i;
        const std::uint64_t target = toIndex * bits + i;
        const bool isSet = (from[source / 8] & (kHighest >> (source % 8))) != std::byte{ 0 };
        to[target / 8] &= ~(kHighest >> (target % 8));
        to[target / 8] |= isSet ? kHighest >> (target % 8) : std::byte{ 0 };
    }
}

// Where samples go in a row: to every `step`th place from `first` on.
struct Places {
    std::uint64_t first = 0;
    std::uint64_t step = 1;
};

void CopySamples(std::span<const std::byte> from, std::uint64_t count, std::span<std::byte> to,
                 Places places, std::uint16_t bits)
{
    if (places.step == 1 && (places.first * bits) % 8 == 0 && (count * bits) % 8 == 0) {
        std::memcpy(&to[places.first * bits / 8], from.data(), count * bits / 8);
        return;
    }
    for (std::uint64_t i = 0; i != count; ++i)
        CopySample(from, i, to, places.first + i * places.step, bits);
}

// Decoded rows that follow each other, of one strip or of the tiles side by side: as many as memory
// is granted for. Decoding has reached `decoded` of them.
struct Band {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t decoded = 0;
    std::size_t rowBytes = 0;
    std::vector<std::byte> bytes;
    std::string failure; // why there are no more

    bool Holds(std::uint32_t row) const { return row >= first && row - first < count; }
    bool HasDecoded(std::uint32_t row) const { return row - first < decoded; }
    std::uint32_t End() const { return first + count; }
    std::span<std::byte> Row(std::uint32_t row)
    {
        return std::span(bytes).subspan((row - first) * rowBytes, rowBytes);
    }

    // Takes the place of the rows until now. What decoding then leaves out is 0, not an older row.
    void Become(std::uint32_t newFirst, std::uint32_t newCount, std::size_t newRowBytes)
    {
        count = 0; // holds nothing while it grows, which may fail
        first = newFirst;
        decoded = 0;
        failure.clear();
        rowBytes = newRowBytes;
        bytes.assign(std::size_t{ newCount } * rowBytes, std::byte{ 0 });
        count = newCount;
    }
};

// The bands of one open file.
class Decoder {
  public:
    Decoder(Source& source, const Layout& layout)
        : source_(source), layout_(layout), bandRows_(BandRows(layout, source.file.Length()))
    {}

    // Fills a band that holds the row, as far as it can be decoded.
    void Fill(Band& band, std::uint32_t row)
    {
        const std::uint32_t block = FirstRowOfBlock(row);
        const std::uint32_t first = row - (row - block) % bandRows_;
        const std::uint64_t end =
            std::min(std::uint64_t{ block } + layout_.blockLength, std::uint64_t{ layout_.length });
        const auto count =
            static_cast<std::uint32_t>(std::min(std::uint64_t{ bandRows_ }, end - first));
        band.Become(first, count, static_cast<std::size_t>(layout_.RowBytes()));
        band.decoded = layout_.decodesWhole ? FromBlocks(band) : FromLines(band);
        if (layout_.arrivesAsRgb)
            MakeYCbCr(std::span(band.bytes).first(band.decoded * band.rowBytes));
    }

  private:
    // Where libtiff's reading by lines stands: before a row of a plane.
    struct Place {
        std::uint16_t plane;
        std::uint32_t row;
    };

    static std::uint32_t BandRows(const Layout& layout, std::uint64_t fileLength)
    {
        const std::uint64_t rowBytes = layout.RowBytes();
        assert(rowBytes != 0); // an empty picture has no decoder
        const std::uint64_t rows = std::max(kFreeClaim, fileLength) / rowBytes;
        return static_cast<std::uint32_t>(
            std::clamp(rows, std::uint64_t{ 1 }, std::uint64_t{ layout.blockLength }));
    }

    std::uint32_t FirstRowOfBlock(std::uint32_t row) const
    {
        return row - row % layout_.blockLength;
    }

    // How many rows of the band all planes have.
    std::uint32_t FromLines(Band& band)
    {
        std::uint32_t decoded = band.count;
        for (std::uint16_t plane = 0; plane != layout_.planes && decoded != 0; ++plane)
            decoded = std::min(decoded, LinesOfPlane(band, plane));
        return decoded;
    }

    std::uint32_t LinesOfPlane(Band& band, std::uint16_t plane)
    {
        // Compressed lines can be reached only through those before them in the strip.
        for (std::uint32_t row = LineToStartFrom(band.first, plane); row != band.End(); ++row) {
            const bool isWanted = row >= band.first;
            if (!ReadLine(LineBuffer(band, row), row, plane))
                return isWanted ? row - band.first : 0;
            if (isWanted && layout_.planes != 1)
                CopySamples(line_, layout_.width, band.Row(row), { plane, layout_.planes },
                            layout_.bits);
        }
        return band.count;
    }

    std::uint32_t LineToStartFrom(std::uint32_t row, std::uint16_t plane) const
    {
        const std::uint32_t strip = FirstRowOfBlock(row);
        const bool goesOn =
            next_ && next_->plane == plane && next_->row >= strip && next_->row <= row;
        return goesOn ? next_->row : strip;
    }

    // Lines of whole pixels go to their place at once; those before the band are overwritten there.
    std::span<std::byte> LineBuffer(Band& band, std::uint32_t row)
    {
        if (layout_.planes == 1)
            return band.Row(std::max(row, band.first));
        line_.resize(static_cast<std::size_t>(layout_.LineBytes()));
        return line_;
    }

    bool ReadLine(std::span<std::byte> line, std::uint32_t row, std::uint16_t plane)
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
    bool Refresh(std::uint32_t row, std::uint16_t plane)
    {
        TIFF* const open = source_.Get();
        if (open && TIFFCurrentStrip(open) != TIFFComputeStrip(open, row, plane))
            return true;
        return source_.Open() && IsUnchanged();
    }

    // Another program may have written the file meanwhile.
    bool IsUnchanged()
    {
        tiff record;
        FillRecord(record, source_.Get());
        if (ReadLayout(source_.Get(), record) == layout_ &&
            AgreesWithLibtiff(source_.Get(), layout_))
            return true;
        source_.libtiff.reset();
        source_.report.Fail("the file has changed");
        return false;
    }

    // All rows of the band or none.
    std::uint32_t FromBlocks(Band& band)
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

    bool ReadBlock(std::uint32_t column, std::uint32_t row, std::uint16_t plane)
    {
        const std::uint64_t size = layout_.BlockLines() * layout_.BlockLineBytes();
        block_.assign(static_cast<std::size_t>(size), std::byte{ 0 });
        const auto room = static_cast<tmsize_t>(size);
        TIFF* const open = source_.Get();
        if (layout_.isJbig && !IsJbigSound(column, row, plane))
            return false;
        return layout_.isTiled ? TIFFReadEncodedTile(open, BlockNumber(column, row, plane),
                                                     block_.data(), room) >= 0
                               : TIFFReadEncodedStrip(open, BlockNumber(column, row, plane),
                                                      block_.data(), room) >= 0;
    }

    std::uint32_t BlockNumber(std::uint32_t column, std::uint32_t row, std::uint16_t plane) const
    {
        return layout_.isTiled ? TIFFComputeTile(source_.Get(), column, row, 0, plane)
                               : TIFFComputeStrip(source_.Get(), row, plane);
    }

    bool IsJbigSound(std::uint32_t column, std::uint32_t row, std::uint16_t plane)
    {
        std::array<std::uint8_t, 20> header{};
        TIFF* const open = source_.Get();
        const auto room = static_cast<tmsize_t>(header.size());
        const std::uint32_t block = BlockNumber(column, row, plane);
        const tmsize_t read = layout_.isTiled ? TIFFReadRawTile(open, block, header.data(), room)
                                              : TIFFReadRawStrip(open, block, header.data(), room);
        if (read != room)
            return false;
        if (Field<std::uint16_t>(open, TIFFTAG_FILLORDER) == FILLORDER_MSB2LSB)
            TIFFReverseBits(header.data(), room); // as libtiff's JBIG has it
        const std::uint32_t rows =
            layout_.isTiled ? layout_.blockLength
                            : std::min(layout_.blockLength, layout_.length - FirstRowOfBlock(row));
        if (IsJbigOf(header, layout_.blockWidth, rows))
            return true;
        source_.report.Fail("the JBIG data are not of the picture's size");
        return false;
    }

    void PlaceBlock(Band& band, std::uint32_t column, std::uint16_t plane)
    {
        const std::uint32_t pixels = std::min(layout_.blockWidth, layout_.width - column);
        const std::uint32_t samples = layout_.PlaneSamples();
        for (std::uint32_t row = band.first; row != band.End(); ++row) {
            if (layout_.SharesChroma())
                PlaceClumps(row - FirstRowOfBlock(row), band.Row(row), column, pixels);
            else
                CopySamples(BlockLine(row - FirstRowOfBlock(row)),
                            std::uint64_t{ pixels } * samples, band.Row(row),
                            { std::uint64_t{ column } * layout_.samples + plane, layout_.planes },
                            layout_.bits);
        }
    }

    // Row `down` of the block, with its chroma beside every pixel.
    void PlaceClumps(std::uint32_t down, std::span<std::byte> row, std::uint32_t column,
                     std::uint32_t pixels) const
    {
        const ChromaSharing shared = layout_.chroma;
        const auto line = BlockLine(down / shared.down);
        const std::uint32_t lumaBefore = down % shared.down * shared.across;
        for (std::uint32_t x = 0; x != pixels; ++x) {
            const std::uint64_t clump = std::uint64_t{ x / shared.across } * layout_.ClumpSamples();
            const std::uint64_t cb = clump + std::uint64_t{ shared.across } * shared.down;
            const std::uint64_t target = (std::uint64_t{ column } + x) * layout_.samples;
            CopySample(line, clump + lumaBefore + x % shared.across, row, target, layout_.bits);
            CopySample(line, cb, row, target + 1, layout_.bits);
            CopySample(line, cb + 1, row, target + 2, layout_.bits);
        }
    }

    std::span<const std::byte> BlockLine(std::uint32_t line) const
    {
        const auto bytes = static_cast<std::size_t>(layout_.BlockLineBytes());
        return std::span(block_).subspan(line * bytes, bytes);
    }

    Source& source_;
    Layout layout_;
    std::uint32_t bandRows_;
    bool isStale_ = false; // a line could not be read, and none has been since
    std::optional<Place> next_;
    std::vector<std::byte> line_;  // of one plane
    std::vector<std::byte> block_; // one strip or tile, as libtiff gives it
};

// An open file: the record with what the library keeps beside it.
class OpenTiff final : public tiff {
  public:
    explicit OpenTiff(const char* name) : source_(name) {}

    // Reads the directory of a file, which is closed in the end if it is the library's.
    bool Open(int number, Owner owner)
    {
        source_.file.Attach(number, owner);
        if (!source_.Open())
            return FailOpening();
        FillRecord(*this, source_.Get());
        layout_ = ReadLayout(source_.Get(), *this);
        refusal_ = WhyRefused(source_.Get(), layout_, source_.file.Length());
        if (!refusal_)
            decoder_.emplace(source_, layout_);
        return true;
    }

    std::uint64_t RowBytes() const { return layout_.RowBytes(); }

    bool ReadRow(void* buffer, std::uint32_t row)
    {
        source_.report.Begin();
        if (refusal_)
            return Fail(refusal_);
        if (row >= ImageLength)
            return Fail("there is no row " + std::to_string(row) + ", the file has " +
                        std::to_string(ImageLength));
        if (!band_.Holds(row))
            FillBand(row);
        if (!band_.HasDecoded(row)) {
            KeepTiffMessage([&] { return band_.failure; });
            return false;
        }
        const auto bytes = band_.Row(row);
        std::memcpy(buffer, bytes.data(), bytes.size());
        return true;
    }

    // Keeps the reason, and gives false.
    bool Fail(std::string_view text) noexcept
    {
        source_.report.Fail(text);
        return false;
    }

  private:
    bool FailOpening()
    {
        const int error = source_.file.TakeError();
        if (error != 0)
            return Fail(SystemText(error));
        return source_.report.HasFailed() ? false : Fail("it is no TIFF file");
    }

    void FillBand(std::uint32_t row)
    {
        source_.file.TakeError();
        decoder_->Fill(band_, row);
        if (band_.decoded != band_.count)
            KeepFailure(source_.file.TakeError());
    }

    // The failure stays with the band, since every row behind it would decode again all that is
    // before; but what the system could not read now it may read the next time.
    void KeepFailure(int error)
    {
        if (error != 0)
            source_.report.Fail(SystemText(error));
        else if (!source_.report.HasFailed())
            source_.report.Fail("row " + std::to_string(band_.first + band_.decoded) +
                                " can't be decoded");
        band_.failure = LastTiffMessage();
        if (error != 0)
            band_.count = band_.decoded;
    }

    Source source_;
    Layout layout_;
    const char* refusal_ = nullptr; // why no row can be read
    std::optional<Decoder> decoder_;
    Band band_;
};

OpenTiff& Opened(tiff* file)
{
    return *static_cast<OpenTiff*>(file);
}

// Opens what `open` gives, a result of the seam; null on failure, with the reason kept.
template <typename OpenNumber>
tiff* OpenNumbered(const char* name, const char* mode, Owner owner, OpenNumber openNumber)
{
    const char* const named = name ? name : "";
    try {
        auto opened = std::make_unique<OpenTiff>(named);
        if (!mode || std::string_view(mode) != "r")
            return opened->Fail("TIFF files are only read"), nullptr;
        const IoResult number = openNumber(named);
        if (!number)
            return opened->Fail(SystemText(number.error)), nullptr;
        return opened->Open(static_cast<int>(number.value), owner) ? opened.release() : nullptr;
    } catch (const std::exception& failure) {
        KeepTiffMessage([&] { return std::string(named) + ": " + failure.what(); });
        return nullptr;
    }
}

IoResult OpenPath(const char* path)
{
    const std::optional<CString> resolved = ResolvePath(path);
    return resolved ? CurrentFileSystem().Open(*resolved, OpenMode{}) : IoResult::Failed(ENOENT);
}

} // namespace

} // namespace tympan

tiff* TiffOpen(const char* name, const char* mode)
{
    return tympan::OpenNumbered(name, mode, tympan::Owner::library, tympan::OpenPath);
}

tiff* TifffdOpen(int handle, const char* name, const char* mode)
{
    return tympan::OpenNumbered(name, mode, tympan::Owner::caller, [=](const char*) {
        return tympan::IoResult{ handle, 0 };
    });
}

void TiffClose(tiff* file)
{
    if (file)
        delete &tympan::Opened(file);
}

int TiffReadScanline(tiff* file, void* buffer, unsigned int row, unsigned short)
{
    if (!file || !buffer)
        return -1;
    tympan::OpenTiff& opened = tympan::Opened(file);
    try {
        return opened.ReadRow(buffer, row) ? 1 : -1;
    } catch (const std::exception& failure) {
        opened.Fail(failure.what());
        return -1;
    }
}

std::int64_t TiffScanlineSize(tiff* file)
{
    return file ? static_cast<std::int64_t>(tympan::Opened(file).RowBytes()) : 0;
}
