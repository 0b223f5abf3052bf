#include "jpeg_bands.h"

#include "jpeg_head.h"
#include "jpeg_messages.h"
#include "jpeg_segments.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

using Bytes = std::vector<JOCTET>;

constexpr JOCTET kMarker = 0xFF;
constexpr JOCTET kStartOfImage = 0xD8;

// Rows of one stream: whole bands of what libjpeg takes.
constexpr std::uint32_t kMostStreamRows = JPEG_MAX_DIMENSION / kJpegBandRows * kJpegBandRows;

// The segments of tables, without the first byte of each.
struct Tables {
    Bytes quantization;
    Bytes dc;
    Bytes ac;
};

Tables TablesOf(const JpegFileInterface& file)
{
    Tables tables;
    unsigned char* bytes = nullptr;
    const unsigned short quantization = file.RetrieveQuantizationTable(bytes);
    const std::unique_ptr<unsigned char[]> ownedQuantization(bytes);
    if (bytes != nullptr)
        tables.quantization.assign(bytes, bytes + quantization);
    unsigned short dc = 0;
    const unsigned short huffman = file.RetrieveHuffmanTable(bytes, dc);
    const std::unique_ptr<unsigned char[]> ownedHuffman(bytes);
    if (bytes != nullptr && dc <= huffman) { // 16 bits may not have held the sum
        tables.dc.assign(bytes, bytes + dc);
        tables.ac.assign(bytes + dc, bytes + huffman);
    }
    return tables;
}

// The number of the table that the components behind the first have: 1 where a segment holds two.
JOCTET QuantizationOfOthers(const Tables& tables)
{
    return tables.quantization.size() > DCTSIZE2 ? 1 : 0;
}

JOCTET HuffmanOfOthers(const Bytes& table)
{
    constexpr std::ptrdiff_t kLengths = 16; // of codes, a count for each, before the symbols
    if (table.size() < kLengths)
        return 0;
    const std::size_t symbols =
        std::accumulate(table.begin(), table.begin() + kLengths, std::size_t{ 0 });
    return table.size() > kLengths + symbols ? 1 : 0;
}

void Put16(Bytes& stream, std::size_t number)
{
    stream.push_back(static_cast<JOCTET>(number >> 8U));
    stream.push_back(static_cast<JOCTET>(number));
}

void PutSegment(Bytes& stream, JOCTET marker, const Bytes& content)
{
    stream.insert(stream.end(), { kMarker, marker });
    Put16(stream, content.size() + 2);
    stream.insert(stream.end(), content.begin(), content.end());
}

// The first byte tells the kind and the number of the first table.
void PutTables(Bytes& stream, JOCTET marker, JOCTET first, const Bytes& tables)
{
    if (tables.empty())
        return;
    Bytes content{ first };
    content.insert(content.end(), tables.begin(), tables.end());
    PutSegment(stream, marker, content);
}

struct StreamForm {
    std::uint32_t width;
    std::uint32_t rows;
    JOCTET components;
};

void PutFrame(Bytes& stream, const StreamForm& form, const Tables& tables)
{
    constexpr JOCTET kSampleBits = 8;
    constexpr JOCTET kNotSubsampled = 0x11;
    Bytes frame{ kSampleBits };
    Put16(frame, form.rows);
    Put16(frame, form.width);
    frame.push_back(form.components);
    for (JOCTET i = 0; i < form.components; ++i)
        frame.insert(frame.end(), { static_cast<JOCTET>(i + 1), kNotSubsampled,
                                    i == 0 ? JOCTET{ 0 } : QuantizationOfOthers(tables) });
    PutSegment(stream, kBaselineFrame, frame);
}

void PutScan(Bytes& stream, const StreamForm& form, const Tables& tables)
{
    const auto others =
        static_cast<JOCTET>(HuffmanOfOthers(tables.dc) << 4U | HuffmanOfOthers(tables.ac));
    Bytes scan{ form.components };
    for (JOCTET i = 0; i < form.components; ++i)
        scan.insert(scan.end(), { static_cast<JOCTET>(i + 1), i == 0 ? JOCTET{ 0 } : others });
    scan.insert(scan.end(), { 0, DCTSIZE2 - 1, 0 }); // all coefficients, at their full depth
    PutSegment(stream, kScan, scan);
}

// All in front of the first block. Each band ends a restart interval.
Bytes HeadOf(const StreamForm& form, const Tables& tables)
{
    Bytes stream{ kMarker, kStartOfImage };
    PutTables(stream, kQuantizationTables, 0x00, tables.quantization);
    PutFrame(stream, form, tables);
    PutTables(stream, kHuffmanTables, 0x00, tables.dc);
    PutTables(stream, kHuffmanTables, 0x10, tables.ac);
    Bytes interval;
    Put16(interval, (form.width + DCTSIZE - 1) / DCTSIZE);
    PutSegment(stream, kRestartInterval, interval);
    PutScan(stream, form, tables);
    return stream;
}

// Blocks come from the library, so that no warning is one of reading.
void FailOnWarning(j_common_ptr jpeg, int level)
{
    if (level < 0)
        (*jpeg->err->error_exit)(jpeg);
}

} // namespace

class JpegBands::Decoding {
  public:
    Decoding(const Picture& picture, RowRange rows)
        : picture_(picture), file_(*picture.AsJpeg()), rows_(rows), colours_(ReadJpegHead(picture)),
          tables_(TablesOf(file_)), rowBytes_(std::size_t{ picture.Width() } * Components())
    {
        messages_.Manager()->emit_message = FailOnWarning;
        jpeg_.err = messages_.Manager();
        if (!messages_.Do([this] { jpeg_create_decompress(&jpeg_); }))
            throw std::bad_alloc();
        samples_.resize(rowBytes_ * kJpegBandRows);
    }

    std::size_t Components() const { return file_.FileNumberOfSeparations(); }

    std::span<const std::uint8_t> Row(std::uint32_t row)
    {
        if (row < held_.first || row >= held_.end)
            DecodeBand(row / kJpegBandRows * kJpegBandRows);
        return std::span(samples_).subspan((row - held_.first) * rowBytes_, rowBytes_);
    }

  private:
    void DecodeBand(std::uint32_t first)
    {
        const bool goesOn = first == reached_ && first < stream_.end;
        held_ = { first, first }; // nothing, and no stream to go on with, unless all is well
        reached_ = kNowhere;
        if (!goesOn)
            BeginStream(first);
        band_ = { first, std::min(first + kJpegBandRows, stream_.end) };
        GiveBlock();
        ReadRows();
        RequireUsedUp();
        if (band_.end == stream_.end)
            Do([this] { jpeg_finish_decompress(&jpeg_); });
        reached_ = band_.end;
        held_ = band_;
    }

    void BeginStream(std::uint32_t first)
    {
        const std::uint32_t endBand = (rows_.end + kJpegBandRows - 1) / kJpegBandRows;
        stream_ = { first, std::min({ first + kMostStreamRows, endBand * kJpegBandRows,
                                      picture_.Height() }) };
        band_ = stream_;
        bytes_ = HeadOf({ picture_.Width(), stream_.Count(), static_cast<JOCTET>(Components()) },
                        tables_);
        Do([this] {
            jpeg_abort_decompress(&jpeg_);
            jpeg_mem_src(&jpeg_, bytes_.data(), static_cast<unsigned long>(bytes_.size()));
            jpeg_read_header(&jpeg_, TRUE);
            jpeg_.jpeg_color_space = colours_.stored;
            jpeg_.out_color_space = colours_.decoded;
            jpeg_start_decompress(&jpeg_);
        });
    }

    // What libjpeg hasn't taken yet, the block, and the marker behind it.
    void GiveBlock()
    {
        const Bytes rest(jpeg_.src->next_input_byte,
                         jpeg_.src->next_input_byte + jpeg_.src->bytes_in_buffer);
        const std::size_t size = BlockSize();
        bytes_ = rest;
        bytes_.resize(rest.size() + size);
        unsigned int block = 0;
        const unsigned long read =
            file_.GetPictureRows(bytes_.data() + rest.size(), band_.first, band_.first, block,
                                 nullptr, Cyan, static_cast<unsigned long>(size), false);
        if (read != size)
            Fail("the block can't be read");
        bytes_.insert(bytes_.end(), { kMarker, MarkerBehind() });
        Do([this] {
            jpeg_mem_src(&jpeg_, bytes_.data(), static_cast<unsigned long>(bytes_.size()));
        });
    }

    JOCTET MarkerBehind() const
    {
        constexpr std::uint32_t kRestarts = 8; // different markers
        if (band_.end == stream_.end)
            return kEndOfImage;
        const std::uint32_t band = (band_.first - stream_.first) / kJpegBandRows;
        return static_cast<JOCTET>(kFirstRestart + band % kRestarts);
    }

    // An index can claim anything, so that a block is held against the file and against the longest
    // code that a band can have.
    std::size_t BlockSize() const
    {
        constexpr std::uint64_t kMostBytesForUnit = 512; // of 8 x 8 samples
        unsigned long start = 0;
        unsigned long end = 0;
        if (!file_.GetCompressedBlocksOffsetInfo(band_.first, band_.first, start, end))
            Fail("the index has no block for them");
        const std::string bytes =
            "their block, bytes " + std::to_string(start) + " to " + std::to_string(end) + ", ";
        if (end < start || end >= file_.JpegFileHandle()->GetLength())
            Fail(bytes + "isn't inside the file");
        const std::uint64_t units =
            std::uint64_t{ (picture_.Width() + kJpegBandRows - 1) / kJpegBandRows } * Components();
        if (end - start >= units * kMostBytesForUnit)
            Fail(bytes + "is longer than so many pixels can be");
        return static_cast<std::size_t>(end - start + 1);
    }

    void ReadRows()
    {
        std::array<JSAMPROW, kJpegBandRows> rows{};
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i] = samples_.data() + i * rowBytes_;
        Do([&] {
            for (JDIMENSION read = 0; read < band_.Count();)
                read += jpeg_read_scanlines(&jpeg_, rows.data() + read, band_.Count() - read);
        });
        if (colours_.isInk)
            std::transform(
                samples_.begin(), samples_.end(), samples_.begin(),
                [](std::uint8_t sample) { return static_cast<std::uint8_t>(255 - sample); });
    }

    // Libjpeg tells of bytes that are left only when it comes to the next band, if at all.
    void RequireUsedUp() const
    {
        const std::span<const JOCTET> rest(jpeg_.src->next_input_byte, jpeg_.src->bytes_in_buffer);
        const auto isFill = [](JOCTET byte) { return byte == kMarker; };
        if (rest.empty() ||
            (jpeg_.unread_marker == 0 && std::all_of(rest.begin(), rest.end() - 1, isFill)))
            return;
        Fail("their block goes on behind its last pixel");
    }

    template <typename Calls>
    void Do(const Calls& calls)
    {
        if (!messages_.Do(calls))
            Fail(messages_.Text());
    }

    [[noreturn]] void Fail(const std::string& what) const
    {
        const unsigned long code = file_.TraceStatus();
        throw FileFailure(picture_.Path(),
                          "rows " + std::to_string(band_.first) + " to " +
                              std::to_string(band_.end - 1) + " of " +
                              std::to_string(picture_.Height()) + " can't be decoded: " + what,
                          code != 0 ? std::optional(code) : std::nullopt, kCheckAdvice);
    }

    static constexpr std::uint32_t kNowhere = ~std::uint32_t{ 0 };

    const Picture& picture_;
    JpegFileInterface& file_;
    RowRange rows_;
    JpegColours colours_;
    Tables tables_;
    std::size_t rowBytes_;
    JpegMessages messages_;
    JpegDecoder jpeg_;
    Bytes bytes_;                      // what libjpeg reads from
    RowRange stream_{ 0, 0 };          // that libjpeg is in
    std::uint32_t reached_ = kNowhere; // the row that comes next in it
    RowRange band_{ 0, 0 };            // that is decoded, or was meant to be
    RowRange held_{ 0, 0 };            // by `samples_`
    std::vector<std::uint8_t> samples_;
};

JpegBands::JpegBands(const Picture& picture, RowRange rows)
    : decoding_(std::make_unique<Decoding>(picture, rows))
{}

JpegBands::~JpegBands() = default;

std::size_t JpegBands::Components() const
{
    return decoding_->Components();
}

std::span<const std::uint8_t> JpegBands::Row(std::uint32_t row)
{
    return decoding_->Row(row);
}

} // namespace tympan::tool
