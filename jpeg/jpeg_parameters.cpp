// The scan for markers, and what is taken out of the four segments that it finds.
//
// The frame header's table, behind its precision byte: height 2, width 2, components 1, and of each
// component identifier 1, sampling 1, quantization table 1. Numbers are big-endian.
#include "jpeg/jpeg_parameters.h"

#include "core/block_size.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/whole_numbers.h"
#include "jpeg/block_file.h"
#include "jpeg/jpeg_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

namespace {

constexpr std::size_t kHeadBlockBytes = std::min<std::size_t>(tympan::kBlockBytes, 4096);

// Of the payload of a frame header.
constexpr unsigned short kHeight = 0;
constexpr unsigned short kWidth = 2;
constexpr unsigned short kComponents = 4;
constexpr unsigned short kFirstIdentifier = 5;

constexpr unsigned short kSkipped = 3; // the length field and the byte behind it

constexpr tympan::FailureRow kAnyFailure[] = { { tympan::Caught::Anything, 0, nullptr } };
constexpr tympan::FailureRow kLoadFailures[] = {
    { tympan::Caught::LoadFailed, tympan::code::kJpegHeadRefused, nullptr },
};

// Goes over bytes of a file as if they came one by one, 0 where there are none.
class MarkerScan {
  public:
    MarkerScan(std::span<const unsigned char> bytes, std::uint32_t start)
        : bytes_(bytes), start_(start), position_(start)
    {}

    /// The position behind the marker, or 0.
    std::uint32_t Find(unsigned char marker)
    {
        while (position_ < tympan::kJpegScanEnd)
            if (Next() == tympan::kMarkerPrefix && Next() == marker)
                return position_ == tympan::kJpegScanEnd ? 0 : position_;
        return 0;
    }
    /// Behind the last byte that there was.
    std::uint32_t FileEnd() const
    {
        return std::min(position_, start_ + static_cast<std::uint32_t>(bytes_.size()));
    }

  private:
    unsigned char Next()
    {
        const std::uint32_t at = position_++ - start_;
        return at < bytes_.size() ? bytes_[at] : static_cast<unsigned char>(0);
    }

    std::span<const unsigned char> bytes_;
    std::uint32_t start_;
    std::uint32_t position_;
};

// Room for both tables of a length whose sum 16 bits don't hold is more than what is told: whoever
// goes by either length stays inside.
unsigned char* NewArray(std::size_t bytes)
{
    return new (std::nothrow) unsigned char[bytes];
}

} // namespace

unsigned short swap_bytes(unsigned short value)
{
    return static_cast<unsigned short>(value << 8U | value >> 8U);
}

unsigned short find_jpeg_marker(CFile& file, unsigned char marker, unsigned short startOffset)
{
    std::array<unsigned char, tympan::kJpegScanEnd + 1> bytes{}; // one may end behind the last
    file.Seek(startOffset, CFile::begin);
    if (startOffset >= tympan::kJpegScanEnd)
        return 0;
    const UINT count = file.Read(bytes.data(), static_cast<UINT>(bytes.size() - startOffset));
    MarkerScan scan({ bytes.data(), count }, startOffset);
    const std::uint32_t found = scan.Find(marker);
    file.Seek(scan.FileEnd(), CFile::begin);
    return static_cast<unsigned short>(found);
}

// ---- a table

JpegTable::~JpegTable() = default;

bool JpegTable::Load(CFile& file, unsigned short startOffset)
{
    const bool loaded = tympan::Guarded(tympan::NoTrace(), kAnyFailure, [&] {
        offset_ = find_jpeg_marker(file, marker_, startOffset);
        if (offset_ != 0)
            ReadSegment(file);
    });
    if (!loaded)
        length_ = 0;
    return loaded;
}

void JpegTable::ReadSegment(CFile& file)
{
    std::array<unsigned char, 2> field{};
    file.Seek(offset_, CFile::begin);
    file.Read(field.data(), static_cast<UINT>(field.size()));
    const auto length = static_cast<unsigned short>((field[0] << 8U | field[1]) - kSkipped);
    if (length == 0)
        throw new IllegalSizeException("Data");
    auto data = std::make_unique<unsigned char[]>(length);
    file.Seek(offset_ + kSkipped, CFile::begin);
    file.Read(data.get(), length);
    data_ = std::move(data);
    length_ = length;
}

unsigned short JpegTable::RetrieveWordValue(unsigned short index) const
{
    if (index + 1 >= length_)
        throw RetrieveValueException();
    return static_cast<unsigned short>(data_[index] << 8U | data_[index + 1U]);
}

unsigned char JpegTable::RetrieveByteValue(unsigned short index) const
{
    if (index >= length_)
        throw RetrieveValueException();
    return data_[index];
}

void JpegTable::CopyData(unsigned char* target) const
{
    if (target != nullptr)
        std::copy_n(data_.get(), length_, target);
}

unsigned short JpegTable::End() const
{
    return static_cast<unsigned short>(offset_ + length_ + kSkipped);
}

// ---- the record

JpegPictureParameters::JpegPictureParameters()
    : imageParamsTable_(tympan::marker::kBaselineFrame), huffmanDcTable_(tympan::marker::kHuffman),
      huffmanAcTable_(tympan::marker::kHuffman), quantizationTable_(tympan::marker::kQuantization)
{}

// Tables that look for no marker.
JpegPictureParameters::JpegPictureParameters(unsigned short currentOffset)
    : imageParamsTable_(0), huffmanDcTable_(0), huffmanAcTable_(0), quantizationTable_(0),
      currentOffset_(currentOffset)
{}

JpegPictureParameters::JpegPictureParameters(const JpegPictureParameters& other)
    : JpegPictureParameters(other.currentOffset_)
{}

JpegPictureParameters& JpegPictureParameters::operator=(const JpegPictureParameters& other)
{
    PictureParameters::operator=(other);
    return *this;
}

JpegPictureParameters::~JpegPictureParameters() = default;

bool JpegPictureParameters::Load(CFile& file)
{
    const bool loaded = tympan::Guarded(Failures(), kLoadFailures, [&] { LoadSegments(file); });
    if (!loaded)
        Clear();
    return loaded;
}

void JpegPictureParameters::LoadSegments(CFile& file)
{
    tympan::BlockFile head(file, kHeadBlockBytes);
    CurrentOffset(0);
    LoadQuantizationTable(head);
    LoadImageParameters(head);
    LoadHuffmanTable(head);
    Resolution({ CalculateResolution(WidthInPixels(), WidthInUnits()),
                 CalculateResolution(HeightInPixels(), HeightInUnits()) });
    RowSize(tympan::CutToWhole<unsigned int>(WidthInPixels()));
    BitsPerSample(NumberOfSeparations() * 8);
}

bool JpegPictureParameters::Save(CFile&) const
{
    return true;
}

void JpegPictureParameters::LoadQuantizationTable(CFile& file)
{
    quantizationTable_.Load(file, currentOffset_);
    currentOffset_ = quantizationTable_.End();
}

void JpegPictureParameters::LoadImageParameters(CFile& file)
{
    if (!imageParamsTable_.Load(file, currentOffset_))
        return;
    RetrieveFileSizeInPixels();
    RetrieveSeparationsInfo();
    currentOffset_ = imageParamsTable_.End();
}

// Which comes first is the DC one: the class that a table tells of itself isn't looked at.
void JpegPictureParameters::LoadHuffmanTable(CFile& file)
{
    for (JpegTable* const table : { &huffmanDcTable_, &huffmanAcTable_ }) {
        table->Load(file, currentOffset_);
        currentOffset_ = table->End();
    }
}

void JpegPictureParameters::RetrieveFileSizeInPixels()
{
    HeightInPixels(imageParamsTable_.RetrieveWordValue(kHeight));
    WidthInPixels(imageParamsTable_.RetrieveWordValue(kWidth));
}

void JpegPictureParameters::RetrieveSeparationsInfo()
{
    NumberOfSeparations(imageParamsTable_.RetrieveByteValue(kComponents));
    const int identifier = imageParamsTable_.RetrieveByteValue(kFirstIdentifier);
    Separation(0, static_cast<ColorSeparationType>(identifier - 1));
}

unsigned short JpegPictureParameters::RetrieveHuffmanTableData(unsigned char*& table,
                                                               unsigned short& dcLength) const
{
    const std::size_t bytes = std::size_t{ huffmanDcTable_.Length() } + huffmanAcTable_.Length();
    const auto told = static_cast<unsigned short>(bytes);
    table = nullptr;
    dcLength = 0;
    if (told == 0)
        return 0;
    table = NewArray(bytes);
    huffmanDcTable_.CopyData(table);
    huffmanAcTable_.CopyData(table != nullptr ? table + huffmanDcTable_.Length() : nullptr);
    dcLength = huffmanDcTable_.Length();
    return told;
}

unsigned short JpegPictureParameters::RetrieveQuantizationTableData(unsigned char*& table) const
{
    table = nullptr;
    if (quantizationTable_.Length() == 0)
        return 0;
    table = NewArray(quantizationTable_.Length());
    quantizationTable_.CopyData(table);
    return quantizationTable_.Length();
}
