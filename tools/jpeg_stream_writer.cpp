// Libjpeg writes a segment for each table; the library wants one for all of a kind, in its own order,
// and near the start. So its head, which always fits the first buffer, is written anew.
#include "jpeg_stream_writer.h"

#include "failure.h"
#include "jpeg_bands.h"
#include "jpeg_segments.h"
#include "names.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tympan::tool {

namespace {

using Bytes = std::span<const std::uint8_t>;

// ---- the resolution that a head can tell

struct Density {
    UINT8 unit;
    double x, y;
};

bool IsWhole(double number)
{
    return std::abs(number - std::round(number)) < 1e-6 * number;
}

Density DensityOf(PixelsPerInch resolution)
{
    const Density inches{ 1, resolution.x, resolution.y };
    const Density centimetres{ 2, resolution.x * kInchesPerCentimetre,
                               resolution.y * kInchesPerCentimetre };
    const auto isExact = [](const Density& one) { return IsWhole(one.x) && IsWhole(one.y); };
    return !isExact(inches) && isExact(centimetres) ? centimetres : inches;
}

UINT16 Rounded(double density)
{
    constexpr double kMost = 0xDAFF; // above it, bytes of it can look like a marker to the library
    return static_cast<UINT16>(std::clamp(std::round(density), 1.0, kMost));
}

// ---- the head

class Head {
  public:
    explicit Head(Bytes libjpegs) : segments_(JpegSegmentsOf(libjpegs)) {}

    std::size_t LibjpegsBytes() const { return segments_.back().End(); }

    std::vector<std::uint8_t> Arranged()
    {
        bytes_ = { 0xFF, 0xD8 };
        Copy(kJfif);
        Copy(kAdobe);
        Merge(kQuantizationTables);
        Copy(kBaselineFrame);
        Merge(kHuffmanTables, kDc);
        Merge(kHuffmanTables, kAc);
        // Behind what the library looks for: these could hold bytes like its marker.
        Copy(kColourProfile);
        Copy(kRestartInterval);
        Copy(kScan);
        return std::move(bytes_);
    }

  private:
    static constexpr unsigned int kDc = 0;
    static constexpr unsigned int kAc = 1;

    void Append(std::uint8_t marker, Bytes payload)
    {
        const std::size_t length = payload.size() + 2;
        bytes_.insert(bytes_.end(), { 0xFF, marker, static_cast<std::uint8_t>(length >> 8U),
                                      static_cast<std::uint8_t>(length) });
        bytes_.insert(bytes_.end(), payload.begin(), payload.end());
    }

    void Copy(std::uint8_t marker)
    {
        for (const JpegSegment& segment : segments_)
            if (segment.marker == marker)
                Append(marker, segment.payload);
    }

    // The first byte of a table has its class in the upper half, which is 0 for all others.
    void Merge(std::uint8_t marker, unsigned int tableClass = 0)
    {
        std::vector<std::uint8_t> tables;
        for (const JpegSegment& segment : segments_)
            if (segment.marker == marker && segment.payload.front() >> 4U == tableClass)
                tables.insert(tables.end(), segment.payload.begin(), segment.payload.end());
        Append(marker, tables);
    }

    std::vector<JpegSegment> segments_;
    std::vector<std::uint8_t> bytes_;
};

std::unique_ptr<JpegFileInterface> BeginJpeg(const OutputFile& output)
{
    std::unique_ptr<JpegFileInterface> file(
        create_jpeg_file_object(output.WritingPath().c_str(), false));
    if (file == nullptr)
        throw std::bad_alloc();
    if (!file->ObjectStatus())
        throw FileFailure(output.Path(), "the JPEG file can't be begun", file->TraceStatus());
    return file;
}

} // namespace

JpegStreamWriter::JpegStreamWriter(const OutputFile& output, const ImportJob& job)
    : job_(job), path_(output.Path()), file_(BeginJpeg(output)),
      progress_("importing " + Shown(job.picture), job.Form().height),
      buffer_((std::size_t{ 64 } << 10U) + 2 * job.Form().profile.size())
{
    destination_.init_destination = Begin;
    destination_.empty_output_buffer = TakeFull;
    destination_.term_destination = TakeRest;
    destination_.writer = this;
}

void JpegStreamWriter::Attach(jpeg_compress_struct& jpeg, JpegTables tables)
{
    for (int i = 0; i < jpeg.num_components; ++i) {
        jpeg_component_info& component = jpeg.comp_info[i];
        component.component_id = i + 1;
        component.h_samp_factor = component.v_samp_factor = 1;
        const int table = i > 0 && tables == JpegTables::FirstAndOthers ? 1 : 0;
        component.quant_tbl_no = component.dc_tbl_no = component.ac_tbl_no = table;
    }
    const Density density = DensityOf(job_.resolution);
    jpeg.write_JFIF_header = TRUE;
    jpeg.density_unit = density.unit;
    jpeg.X_density = Rounded(density.x);
    jpeg.Y_density = Rounded(density.y);
    jpeg.restart_in_rows = 1;
    jpeg.dest = &destination_;
}

void JpegStreamWriter::WriteProfile(jpeg_compress_struct& jpeg) const
{
    const std::vector<std::uint8_t>& profile = job_.Form().profile;
    if (!profile.empty() && profile.size() <= kMostJpegProfile)
        jpeg_write_icc_profile(&jpeg, profile.data(), static_cast<unsigned int>(profile.size()));
}

void JpegStreamWriter::Finish()
{
    const SourceForm& form = job_.Form();
    file_->StorePictureParams(job_.resolution.x, job_.resolution.y, 1.0,
                              form.height / job_.resolution.y, form.width / job_.resolution.x,
                              form.height, form.width);
    file_->ClosePictureFile();
    file_.reset(); // which writes the index
}

// ---- called by libjpeg

void JpegStreamWriter::Begin(j_compress_ptr jpeg)
{
    auto& destination = *static_cast<Destination*>(jpeg->dest);
    destination.next_output_byte = destination.writer->buffer_.data();
    destination.free_in_buffer = destination.writer->buffer_.size();
}

boolean JpegStreamWriter::TakeFull(j_compress_ptr jpeg)
{
    JpegStreamWriter& writer = *static_cast<Destination*>(jpeg->dest)->writer;
    JpegMessages::CallBack(reinterpret_cast<j_common_ptr>(jpeg),
                           [&] { writer.Take(writer.buffer_); });
    Begin(jpeg);
    return TRUE;
}

void JpegStreamWriter::TakeRest(j_compress_ptr jpeg)
{
    JpegStreamWriter& writer = *static_cast<Destination*>(jpeg->dest)->writer;
    JpegMessages::CallBack(reinterpret_cast<j_common_ptr>(jpeg), [&] {
        const std::size_t count = writer.buffer_.size() - jpeg->dest->free_in_buffer;
        writer.Take({ writer.buffer_.data(), count });
    });
}

// ---- what libjpeg has written

void JpegStreamWriter::Take(Bytes bytes)
{
    if (!bands_) {
        Head head(bytes);
        Write(head.Arranged());
        bytes = bytes.subspan(head.LibjpegsBytes());
        bands_.emplace(length_);
    }
    WriteScan(bytes);
}

void JpegStreamWriter::WriteScan(Bytes bytes)
{
    bands_->Read(bytes, [this](std::uint64_t first, std::uint64_t end, std::uint8_t /*marker*/) {
        StoreBand(first, end);
    });
    Write(bytes);
}

void JpegStreamWriter::Write(Bytes bytes)
{
    length_ += bytes.size();
    if (length_ > std::numeric_limits<std::uint32_t>::max())
        throw FileFailure(path_,
                          "the file would be 4 GiB or more, and its index has no places there", {},
                          "Import the picture in parts, or with a lower --quality.");
    file_->JpegFileHandle()->Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

void JpegStreamWriter::StoreBand(std::uint64_t first, std::uint64_t end)
{
    file_->StoreCompressedLinesBlock(
        { static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end - 1) });
    progress_.Advance(kJpegBandRows);
}

} // namespace tympan::tool
