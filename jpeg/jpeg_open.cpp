// Recognising and opening a JPEG file and its index.
#include "core/create_opened.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/format.h"
#include "core/whole_numbers.h"
#include "jpeg/jpeg_check.h"
#include "jpeg/jpeg_file.h"
#include "jpeg/jpeg_layout.h"

#include <array>
#include <cmath>
#include <memory>
#include <string_view>

namespace {

using tympan::Caught;

constexpr tympan::FailureRow kOpeningFailures[] = {
    { Caught::File, tympan::code::kFileFailed, nullptr },
    { Caught::MemoryAlloc, tympan::code::kFileFailed, nullptr },
    { Caught::OpenFile, tympan::code::kFileFailed, nullptr },
    { Caught::Anything, tympan::code::kJpegUnexpected, "General error!" },
};

constexpr tympan::FailureRow kFileFailures[] = { { Caught::File, 0, nullptr } };

constexpr std::string_view kLetters = "JFIF";

template <std::size_t size>
std::array<char, size> BytesAt(CFile& file, LONGLONG position)
{
    std::array<char, size> bytes{}; // what a short file doesn't hold
    file.Seek(position, CFile::begin);
    file.Read(bytes.data(), static_cast<UINT>(size));
    return bytes;
}

// The bytes of a row of all components, brought to a multiple of 4, and by 4 more unless it is one
// of 32.
unsigned int RowSizeOf(double bytes)
{
    const auto whole = tympan::CutToWhole<unsigned int>(bytes);
    return whole % 32 == 0 ? whole : whole + 4 - whole % 4;
}

// The field of the height has 16 bits. What stands in it for a higher picture follows from the size
// in units: so many times 65535 have to be added.
double LostHeight(double factor, double heightInUnits, double resolution)
{
    constexpr double kFieldMost = 65535.0;
    constexpr double kPerFieldMost = 1.5259021896696422e-05;
    constexpr std::uint32_t kLowestBits = 0xFF;
    const double times = factor * heightInUnits * resolution * kPerFieldMost;
    if (!std::isfinite(times))
        return 0.0;
    const auto whole = tympan::CutToWhole<std::int64_t>(times);
    return kFieldMost * static_cast<double>(whole & kLowestBits);
}

} // namespace

JpegFileInterface::JpegFileInterface()
{
    PictureParams(new JpegPictureParameters);
}

JpegFileInterface::~JpegFileInterface() = default;

JpegFileInterface* JpegFileInterface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateOpened(
        [] { return std::unique_ptr<JpegFileInterface>(new JpegFileInterface); }, fileName,
        inputFile);
}

JpegFileInterface* create_jpeg_file_object(const CString& fileName, bool inputFile)
{
    return JpegFileInterface::Create(fileName, inputFile);
}

bool JpegFileInterface::isM_SOI(CFile& file)
{
    return isJpegMarker(file, 0, tympan::marker::kStart);
}

bool JpegFileInterface::isJpegMarker(CFile& file, unsigned short offset, unsigned char marker)
{
    const auto bytes = BytesAt<2>(file, offset);
    return static_cast<unsigned char>(bytes[0]) == tympan::kMarkerPrefix &&
           static_cast<unsigned char>(bytes[1]) == marker;
}

bool JpegFileInterface::isJFIF(CFile& file)
{
    const auto bytes = BytesAt<kLetters.size()>(file, tympan::kJfifLetters);
    return std::string_view(bytes.data(), bytes.size()) == kLetters;
}

bool JpegFileInterface::isTypeOf(CFile& file)
{
    bool isJpeg = false;
    tympan::Guarded(tympan::NoTrace(), kFileFailures,
                    [&] { isJpeg = isM_SOI(file) && isJFIF(file); });
    return isJpeg;
}

tympan::Format tympan::JpegFormat()
{
    return {
        .name = "JPEG",
        .recognises = [](CFile& file, const CString&) { return JpegFileInterface::isTypeOf(file); },
        .make = [] { return std::unique_ptr<BasePictureIF>(new JpegFileInterface); },
        .check = JpegFileCheck(),
    };
}

bool JpegFileInterface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                        CFileException* fileError)
{
    bool opened = false;
    if (!fileName.IsEmpty())
        tympan::Guarded(Failures(), kOpeningFailures, [&] {
            if (!BasePictureIF::OpenPictureFile(fileName, inputFile, reopen, fileError))
                return;
            compressedBlocksInfo_.Open(fileName, IsPictureInputFile());
            if (inputFile)
                TakeIndexedSizes();
            opened = true;
        });
    if (!opened)
        ObjectStatus(false);
    return opened;
}

void JpegFileInterface::OpenCompressedBlocksInfoFile()
{
    compressedBlocksInfo_.Open(PictureFileName(), IsPictureInputFile());
}

// What the head leaves to the side file.
void JpegFileInterface::TakeIndexedSizes()
{
    PictureParameters& record = *PictureParams();
    const JpegCompBlocksInfo& index = compressedBlocksInfo_;
    const double height = record.HeightInPixels();
    const double width = record.WidthInPixels();
    const double resolution = PictureParameters::CalculateResolution(height, index.HeightInUnits());
    record.Resolution(
        { PictureParameters::CalculateResolution(width, index.WidthInUnits()), resolution });
    record.FileSizeUnitsFactor(index.FileSizeUnitsFactor());
    record.BitsPerSample(record.NumberOfSeparations() * 8);
    record.RowSize(RowSizeOf(record.NumberOfSeparations() * width));
    record.HeightInPixels(
        height + LostHeight(index.FileSizeUnitsFactor(), index.HeightInUnits(), resolution));
}

// The record is made here as one of a JPEG; only a derived class can have put another in its place.
const JpegPictureParameters& JpegFileInterface::JpegRecord() const
{
    static const JpegPictureParameters kNoTables;
    const auto* const record = dynamic_cast<const JpegPictureParameters*>(PictureParams());
    return record != nullptr ? *record : kNoTables;
}

unsigned short JpegFileInterface::RetrieveQuantizationTable(unsigned char*& table) const
{
    return JpegRecord().RetrieveQuantizationTableData(table);
}

unsigned short JpegFileInterface::RetrieveHuffmanTable(unsigned char*& table,
                                                       unsigned short& dcLength) const
{
    return JpegRecord().RetrieveHuffmanTableData(table, dcLength);
}

unsigned int JpegFileInterface::GetMcuNumber() const
{
    return compressedBlocksInfo_.McuNumber();
}
