// Rows of one separation: the TIFF library's rows, taken apart.
#include "core/failure_codes.h"
#include "platform/tiff_library.h"
#include "tiff/sample_split.h"
#include "tiff/tiff_file.h"

namespace {

constexpr char kNoSeparation[] = "Zero color separation number.";
constexpr char kDiscrepancy[] = "Incorrect tiff parameters or incompatibility them (discrepancy).";

// The rows of a range, both ends included, as 32 bits count them backwards.
std::uint64_t RowsOf(unsigned int first, unsigned int last)
{
    return first <= last ? std::uint64_t{ last } - first + 1 : last - first + 1;
}

} // namespace

// How the samples of a row lie.
struct TiffFileInterface::Samples {
    std::uint32_t ofPixel = 0;
    std::uint32_t wanted = 0;
    std::uint32_t bytes = 0; // of one separation of a row

    bool IsThere() const { return wanted < ofPixel; }
};

TiffFileInterface::Samples TiffFileInterface::SamplesOf(ColorSeparationType separation) const
{
    const TiffFileParam& record = *GetPictureParams();
    const auto samples = static_cast<std::uint32_t>(record.ColorSeparation());
    return { samples, static_cast<std::uint32_t>(separation),
             samples == 0 ? 0 : record.RowSize() / samples };
}

// Also whether the record is still that of the file that is open, for the library fills whole rows.
bool TiffFileInterface::Fits(const unsigned char* buffer, unsigned int lastRow,
                             unsigned long bufferSize, std::uint64_t bytes) const
{
    const TiffFileParam& record = *GetPictureParams();
    return tiff_ != nullptr && buffer != nullptr && !(lastRow > record.HeightInPixels()) &&
           record.InitTiff() == 1 && bufferSize >= bytes &&
           record.RowSize() == static_cast<std::uint32_t>(TiffScanlineSize(tiff_.get()));
}

bool TiffFileInterface::ReadWhole(unsigned char* buffer, std::uint64_t row)
{
    return TiffReadScanline(tiff_.get(), buffer, static_cast<unsigned int>(row), 0) != -1;
}

bool TiffFileInterface::ReadToRowBuffer(std::uint64_t row)
{
    const unsigned int size = GetPictureParams()->RowSize();
    // What the file can't fill is refused before memory is taken for it.
    const bool hasRoom =
        TiffGivesRows(tiff_.get()) &&
        (CurrRowBuffer() == nullptr ? AllocateRowBuffer(size) : RowBufferHolds(size));
    if (hasRoom &&
        TiffReadScanline(tiff_.get(), CurrRowBuffer(), static_cast<unsigned int>(row), 0) == 1)
        return true;
    return FailAsLibrary(tympan::code::kTiffFailed);
}

bool TiffFileInterface::ReadSeparation(unsigned char* buffer, std::uint64_t row,
                                       const Samples& samples)
{
    if (!ReadToRowBuffer(row))
        return false;
    tympan::TakeSample({ CurrRowBuffer(), samples.bytes, samples.ofPixel, samples.wanted }, buffer);
    return true;
}

unsigned long TiffFileInterface::GetPictureRow(unsigned char* buffer, unsigned int row,
                                               ColorSeparationType separation, double, double,
                                               unsigned long bufferSize)
{
    const Samples samples = SamplesOf(separation);
    if (samples.ofPixel == 0)
        return Fail(tympan::code::kTiffFailed, kNoSeparation);
    if (!Fits(buffer, row, bufferSize, samples.bytes))
        return Fail(tympan::code::kTiffFailed, kDiscrepancy);
    if (samples.ofPixel == 1)
        return ReadWhole(buffer, row) ? 1 : FailAsLibrary(tympan::code::kTiffFailed);
    if (!samples.IsThere())
        return Fail(tympan::code::kTiffFailed, kNoSeparation);
    return ReadSeparation(buffer, row, samples);
}

unsigned long TiffFileInterface::GetPictureRows(unsigned char* buffer, unsigned int firstRow,
                                                unsigned int lastRow, unsigned int&, unsigned long*,
                                                ColorSeparationType separation,
                                                unsigned long bufferSize, bool)
{
    const Samples samples = SamplesOf(separation);
    if (samples.ofPixel == 0)
        return Fail(tympan::code::kTiffFailed, kNoSeparation);
    if (!Fits(buffer, lastRow, bufferSize, RowsOf(firstRow, lastRow) * samples.bytes))
        return Fail(tympan::code::kTiffFailed, kDiscrepancy);
    if (samples.ofPixel != 1 && !samples.IsThere())
        return 0;
    for (std::uint64_t row = firstRow; row <= lastRow; ++row, buffer += samples.bytes)
        if (!(samples.ofPixel == 1 ? ReadWhole(buffer, row) : ReadSeparation(buffer, row, samples)))
            return 0;
    return 1;
}

PictureRowsData* TiffFileInterface::GetPictureRow(const ColorSeparationType&, unsigned int, double,
                                                  double)
{
    return nullptr;
}

PictureRowsData* TiffFileInterface::GetPictureRows(const ColorSeparationType&, unsigned int,
                                                   unsigned int, bool)
{
    return nullptr;
}
