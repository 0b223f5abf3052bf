// The bands stand between restart markers. That they can be read is asked of those who read them:
// libjpeg's view of the head for what decodes a band, the library's scan for the segments that it
// hands out.
#include "index_jpeg.h"

#include "failure.h"
#include "jpeg_band_finder.h"
#include "jpeg_bands.h"
#include "jpeg_form.h"
#include "jpeg_reader.h"
#include "jpeg_segments.h"
#include "jpeg_side_file.h"
#include "names.h"
#include "output_file.h"
#include "progress.h"

#include <tympan/tympan.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

using Bytes = std::span<const std::uint8_t>;

[[noreturn]] void FailForm(const std::string& path, const std::string& difference)
{
    throw FileFailure(path, "its rows can't be indexed: " + difference, {},
                      "`tympan import FILE -o OUT.jpg` makes a JPEG that has an index.");
}

// ---- the head

// The first bytes of the tables in a segment: what they are, and their numbers.
std::vector<std::uint8_t> TableNumbers(const JpegSegment& segment)
{
    constexpr std::size_t kCodeLengths = 16;
    std::vector<std::uint8_t> numbers;
    for (Bytes rest = segment.payload; !rest.empty();) {
        std::size_t bytes = 1 + DCTSIZE2;
        if (segment.marker == kHuffmanTables && rest.size() > kCodeLengths)
            bytes = std::accumulate(rest.begin() + 1, rest.begin() + 1 + kCodeLengths,
                                    1 + kCodeLengths);
        numbers.push_back(rest.front());
        rest = rest.subspan(std::min(bytes, rest.size()));
    }
    return numbers;
}

// Only the first of these bytes isn't handed out, so that it has to be known.
bool IsNumberedFrom(const JpegSegment& segment, std::uint8_t first)
{
    const std::vector<std::uint8_t> numbers = TableNumbers(segment);
    return !numbers.empty() && numbers.size() <= 2 && numbers.front() == first &&
           numbers.back() - first == static_cast<int>(numbers.size()) - 1;
}

bool AreComponentsNumbered(const jpeg_decompress_struct& jpeg)
{
    for (int i = 0; i < jpeg.num_components; ++i)
        if (jpeg.comp_info[i].component_id != i + 1)
            return false;
    return true;
}

/// The segments that the library hands out, in the order in which it looks for them.
std::vector<JpegSegment> HandedOut(const std::vector<JpegSegment>& segments)
{
    std::vector<JpegSegment> wanted;
    std::copy_if(segments.begin(), segments.end(), std::back_inserter(wanted),
                 [](const JpegSegment& one) {
                     return one.marker == kQuantizationTables || one.marker == kBaselineFrame ||
                            one.marker == kHuffmanTables;
                 });
    return wanted;
}

// The library looks for markers byte by byte, and not beyond its limit.
bool AreFound(const std::string& path, const std::vector<JpegSegment>& wanted)
{
    CFile file(path.c_str(), CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary);
    unsigned short from = 0;
    for (const JpegSegment& segment : wanted) {
        if (find_jpeg_marker(file, segment.marker, from) != segment.place + 2)
            return false;
        from = static_cast<unsigned short>(segment.End());
    }
    return true;
}

/// What differs in the segments; empty when nothing does.
std::string DifferenceOf(const std::string& path, const std::vector<JpegSegment>& segments)
{
    constexpr std::size_t kJfifPlace = 2;
    const std::vector<JpegSegment> wanted = HandedOut(segments);
    if (segments.empty() || segments.back().marker != kScan)
        return "its head holds more than segments";
    if (segments.front().marker != kJfif || segments.front().place != kJfifPlace)
        return "its first segment isn't that of JFIF";
    const auto isNext = [&](std::size_t i, JpegMarker marker) {
        return wanted[i].marker == marker;
    };
    if (wanted.size() != 4 || !isNext(0, kQuantizationTables) || !isNext(1, kBaselineFrame) ||
        !isNext(2, kHuffmanTables) || !isNext(3, kHuffmanTables))
        return "its head hasn't one segment of quantization tables, then the frame header, then "
               "one "
               "segment of DC and one of AC Huffman tables";
    if (!IsNumberedFrom(wanted[0], 0) || !IsNumberedFrom(wanted[2], 0) ||
        !IsNumberedFrom(wanted[3], 0x10))
        return "its tables aren't numbered 0, or 0 and 1, in their segments";
    if (!AreFound(path, wanted))
        return "the segments of its head don't stand where the library looks for them, in the "
               "first "
               "328 bytes";
    return {};
}

std::vector<std::uint8_t> ReadHead(JpegReader& reader, std::uint64_t length)
{
    std::vector<std::uint8_t> head(length);
    std::rewind(reader.File());
    if (std::fread(head.data(), 1, head.size(), reader.File()) != head.size())
        throw SystemFailure(reader.Path(), errno);
    return head;
}

/// Leaves the file at the first byte of the scan.
/// \return its place.
std::uint64_t RequireForm(JpegReader& reader)
{
    jpeg_decompress_struct& jpeg = reader.Jpeg();
    reader.Do([&] { jpeg_read_header(&jpeg, TRUE); });
    const auto ahead = static_cast<std::uint64_t>(std::ftell(reader.File()));
    const std::uint64_t scan = ahead - jpeg.src->bytes_in_buffer;
    const std::string difference = DifferenceFromBandForm(jpeg);
    if (!difference.empty())
        FailForm(reader.Path(), difference);
    if (!AreComponentsNumbered(jpeg))
        FailForm(reader.Path(), "its colour components aren't numbered from 1");
    const std::vector<std::uint8_t> head = ReadHead(reader, scan);
    const std::string segments = DifferenceOf(reader.Path(), JpegSegmentsOf(head));
    if (!segments.empty())
        FailForm(reader.Path(), segments);
    return scan;
}

// ---- the bands

class Bands {
  public:
    Bands(JpegReader& reader, std::uint64_t scan)
        : reader_(reader), height_(reader.Jpeg().image_height), finder_(scan)
    {}

    std::vector<CompressedLine> ReadAll()
    {
        Progress progress("indexing " + Shown(reader_.Path()),
                          std::filesystem::file_size(reader_.Path()), ProgressUnit::Bytes);
        std::vector<std::uint8_t> bytes(std::size_t{ 64 } << 10U);
        while (!ended_) {
            const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), reader_.File());
            if (count == 0)
                FailEnd();
            finder_.Read({ bytes.data(), count },
                         [this](std::uint64_t first, std::uint64_t end, std::uint8_t marker) {
                             if (!ended_)
                                 Take(first, end, marker);
                         });
            progress.Advance(count);
        }
        return std::move(lines_);
    }

  private:
    [[noreturn]] void FailEnd()
    {
        if (std::ferror(reader_.File()) != 0)
            throw SystemFailure(reader_.Path(), errno);
        throw FileFailure(reader_.Path(), "the file ends behind " + Found(), {},
                          "It was cut short: get it again from where it came from.");
    }

    std::string Found() const
    {
        return std::to_string(lines_.size()) + " of " +
               std::to_string((height_ + kJpegBandRows - 1) / kJpegBandRows) + " bands of rows";
    }

    void Take(std::uint64_t first, std::uint64_t end, std::uint8_t marker)
    {
        if (first == end)
            FailForm(reader_.Path(), "a restart marker has nothing before it, behind " + Found());
        const bool isLast = (lines_.size() + 1) * kJpegBandRows >= height_;
        const std::size_t wanted =
            isLast ? std::size_t{ kEndOfImage } : kFirstRestart + lines_.size() % 8;
        if (marker != wanted)
            FailForm(reader_.Path(),
                     "another marker than the expected one stands behind " + Found());
        lines_.push_back(
            { static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end - 1) });
        ended_ = isLast;
    }

    JpegReader& reader_;
    std::uint32_t height_;
    JpegBandFinder finder_;
    std::vector<CompressedLine> lines_;
    bool ended_ = false;
};

// ---- the side file

PixelsPerInch ResolutionOrUsual(const std::string& path)
{
    const std::optional<PixelsPerInch> resolution = OpenJpegSource(path)->Form().resolution;
    if (!resolution)
        Warn(path, "tells no resolution: 300 pixels per inch are taken");
    return resolution.value_or(kUsualResolution);
}

// The library makes a side file beside a JPEG that it makes itself: here one that is thrown away.
void WriteSideFile(const OutputFile& side, const jpeg_decompress_struct& jpeg,
                   PixelsPerInch resolution, const std::vector<CompressedLine>& lines)
{
    const std::string& sidePath = side.WritingPath();
    const OutputFile scratch(sidePath.substr(0, sidePath.rfind('.')) + ".jpg", {}, side, ".jpg");
    const std::unique_ptr<JpegFileInterface> file(
        create_jpeg_file_object(scratch.WritingPath().c_str(), false));
    if (file == nullptr)
        throw std::bad_alloc();
    if (!file->ObjectStatus())
        throw FileFailure(side.Path(), "the side file can't be begun", file->TraceStatus());
    for (const CompressedLine& line : lines)
        file->StoreCompressedLinesBlock(line);
    file->StorePictureParams(resolution.x, resolution.y, 1.0, jpeg.image_height / resolution.y,
                             jpeg.image_width / resolution.x, jpeg.image_height, jpeg.image_width);
}

void RequirePlaces(const std::string& path)
{
    if (std::filesystem::file_size(path) > std::numeric_limits<std::uint32_t>::max())
        FailForm(path, "the file has 4 GiB or more, and an index has no places there");
}

} // namespace

void IndexJpeg(const std::string& path)
{
    JpegReader reader(path);
    RequirePlaces(path);
    const std::uint64_t scan = RequireForm(reader);
    const std::vector<CompressedLine> lines = Bands(reader, scan).ReadAll();
    const std::string sidePath = JpegSideFilePath(path);
    OutputFile side(sidePath, path, ".bin");
    RequireNoOtherSideFile(sidePath);
    WriteSideFile(side, reader.Jpeg(), ResolutionOrUsual(path), lines);
    RequireWritten(side, lines.size());
    side.Commit();
}

} // namespace tympan::tool
