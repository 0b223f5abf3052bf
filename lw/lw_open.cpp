// Recognising, opening and proving an LW file.
#include "core/create_opened.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/format.h"
#include "core/header_text.h"
#include "core/whole_numbers.h"
#include "lw/lw_check.h"
#include "lw/lw_failures.h"
#include "lw/lw_file.h"
#include "lw/lw_layout.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <string_view>

namespace {

using tympan::Caught;
using tympan::FailureRow;
using tympan::Run;

constexpr int kNoRowsYet = 255;

constexpr FailureRow kProvingFailures[] = {
    { Caught::FileCorrupted, tympan::code::kLwCorrupted, nullptr },
    { Caught::Anything, tympan::code::kFileFailed, tympan::kLwNotOpened },
};

constexpr FailureRow kShortFile[] = { { Caught::ReadFile, 0, nullptr } };

double ResolutionOf(double pixels, double units)
{
    return units == 0.0 ? 0.0 : PictureParameters::CalculateResolution(pixels, units);
}

std::uint32_t WidthInHeader(CFile& file)
{
    std::array<char, tympan::kHeaderWidthInPixels.width> text{};
    file.Seek(tympan::kHeaderWidthInPixels.offset, CFile::begin);
    const unsigned int read = file.Read(text.data(), text.size());
    const double width = tympan::WholeFromText({ text.data(), read });
    return static_cast<std::uint32_t>(tympan::CutToWhole<std::int32_t>(width));
}

std::uint8_t ColoursInHeader(CFile& file)
{
    std::uint8_t colours = 0;
    file.Seek(tympan::kLwColoursNumber.offset, CFile::begin);
    file.Read(&colours, 1);
    return colours;
}

// The pixels of a row up to its delimiter, or up to the width.
std::uint64_t PixelsOfFirstRow(tympan::RunReader& reader, std::uint32_t width)
{
    std::uint64_t pixels = 0;
    while (pixels < width) {
        const Run run = reader.TakeOne();
        if (tympan::IsDelimiter(run))
            break;
        pixels += run.length;
    }
    return pixels;
}

} // namespace

LWFileInterface::LWFileInterface()
    : lwDataStartPosition_(kNoRowsYet), block_(std::make_unique<tympan::RunBlock>())
{
    PictureParams(new LwPictureParameters);
}

LWFileInterface::~LWFileInterface()
{
    DeallocateAll();
}

LWFileInterface* LWFileInterface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateOpened(
        [] { return std::unique_ptr<LWFileInterface>(new LWFileInterface); }, fileName, inputFile);
}

LWFileInterface* create_lw_file_object(const CString& fileName, bool inputFile)
{
    return LWFileInterface::Create(fileName, inputFile);
}

tympan::Format tympan::LwFormat()
{
    return {
        .name = "LW",
        .recognises = [](CFile& file, const CString&) { return LWFileInterface::isTypeOf(file); },
        .make = [] { return std::unique_ptr<BasePictureIF>(new LWFileInterface); },
        .check = LwFileCheck(),
    };
}

// The type's letters are not looked at: old writers left them out.
bool LWFileInterface::isTypeOf(CFile& file)
{
    constexpr std::uint64_t kMostRowsAreShorter = 4096; // bytes
    const std::uint32_t width = WidthInHeader(file);
    const auto start = static_cast<std::uint64_t>(tympan::LwFirstRow(ColoursInHeader(file)));
    bool fits = false;
    tympan::Guarded(tympan::NoTrace(), kShortFile, [&] {
        tympan::RunBlock block;
        tympan::RunReader reader(file, block, start, start + kMostRowsAreShorter);
        fits = tympan::IsDelimiter(reader.TakeOne()) && width != 0 &&
               PixelsOfFirstRow(reader, width) == width;
    });
    return fits;
}

bool LWFileInterface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                      CFileException* fileError)
{
    bool taken = false;
    bool sound = false;
    const bool cameBack = tympan::Guarded(Failures(), kProvingFailures, [&] {
        taken = BasePictureIF::OpenPictureFile(fileName, inputFile, reopen, fileError);
        if (!taken) {
            TakeNotOpened();
        } else if (inputFile) {
            sound = ProveRows();
        } else {
            DeallocateAll();
            lwDataStartPosition_ = kNoRowsYet;
            FileHandle().SeekToBegin();
            sound = true;
        }
    });
    if (cameBack && !taken)
        return false;
    return CloseUnlessSound(cameBack && sound);
}

void LWFileInterface::TakeNotOpened()
{
    if (TraceStatus() != 0)
        Failures().Leave(tympan::kLwFileRefused);
    ClosePictureFile();
    PictureParameters& record = *PictureParams();
    record.BitsPerSample(8);
    record.RowSize(tympan::CutToWhole<unsigned int>(record.WidthInPixels()));
    record.Resolution({ ResolutionOf(record.WidthInPixels(), record.WidthInUnits()),
                        ResolutionOf(record.HeightInPixels(), record.HeightInUnits()) });
}

bool LWFileInterface::FileValidityCheck()
{
    return ProveRowsOrClose(kProvingFailures);
}

bool LWFileInterface::ProveRowsOrClose(tympan::FailureTable failures)
{
    bool sound = false;
    const bool cameBack = tympan::Guarded(Failures(), failures, [&] { sound = ProveRows(); });
    return CloseUnlessSound(cameBack && sound);
}

bool LWFileInterface::CloseUnlessSound(bool sound)
{
    if (!sound) {
        ObjectStatus(false);
        ClosePictureFile();
    }
    return sound;
}

// How many rows the file can hold, and one more: the last isn't read, so it may be missing.
std::uint64_t LWFileInterface::MostRows(std::uint64_t fileLength) const
{
    const std::uint64_t fullRuns = Width().toReach / tympan::kLongestRun;
    const std::uint64_t rowBytes = 2 * tympan::kLwDelimiterBytes + fullRuns * sizeof(Run);
    const auto start = static_cast<std::uint64_t>(lwDataStartPosition_);
    return fileLength > start ? (fileLength - start) / rowBytes + 1 : 1;
}

// Walks all rows but the last: their lengths are what tells where the next one begins.
bool LWFileInterface::ProveRows()
{
    const LwPictureParameters& record = LwRecord();
    DeallocateAll();
    lwDataStartPosition_ = static_cast<int>(tympan::LwFirstRow(record.TableColorsNumber()));
    const auto rows = tympan::CutToWhole<std::uint64_t>(std::ceil(record.HeightInPixels()));
    const std::uint64_t length = FileHandle().GetLength();
    const std::uint64_t places = std::min(rows, MostRows(length));
    if (places == 0 || places > std::numeric_limits<std::size_t>::max() / sizeof(places))
        throw new MemoryAllocException;
    lwFileArray_.reset(new (std::nothrow) unsigned long long[static_cast<std::size_t>(places)]);
    if (lwFileArray_ == nullptr)
        throw new MemoryAllocException;

    tympan::RunReader reader(FileHandle(), *block_,
                             static_cast<std::uint64_t>(lwDataStartPosition_), length);
    lwFileArray_[0] = reader.Position();
    placesKnown_ = 1;
    while (placesKnown_ < places) {
        NoteSoundRows(reader, places);
        if (placesKnown_ < places) {
            ProveRow(reader);
            lwFileArray_[placesKnown_++] = reader.Position();
        }
    }
    if (placesKnown_ != rows) { // the file can't hold as many, unless it grows while it is walked
        ProveRow(reader);
        tympan::ThrowCouldNotRead();
    }
    return AllocateRowBuffer(tympan::CutToWhole<unsigned int>(2.0 * record.WidthInPixels()));
}

// Passes rows that are sound, and notes where the ones behind them begin.
void LWFileInterface::NoteSoundRows(tympan::RunReader& reader, std::uint64_t places)
{
    constexpr std::uint64_t kMostAtOnce = 256;
    std::array<std::uint32_t, kMostAtOnce> lengths{};
    const tympan::RowWidth width = Width();
    std::size_t passed = kMostAtOnce;
    while (passed == kMostAtOnce && width.IsWhole()) {
        const std::uint64_t wanted = std::min(kMostAtOnce, places - placesKnown_);
        passed = reader.TakeSoundRows(width.toReach,
                                      std::span(lengths).first(static_cast<std::size_t>(wanted)));
        for (const std::uint32_t runs : std::span(lengths).first(passed)) {
            const std::uint64_t bytes = (runs + tympan::kLwDelimiters) * sizeof(Run);
            lwFileArray_[placesKnown_] = lwFileArray_[placesKnown_ - 1] + bytes;
            ++placesKnown_;
        }
    }
}

void LWFileInterface::ProveRow(tympan::RunReader& reader) const
{
    const tympan::RowWidth width = Width();
    reader.TakeDelimiter();
    const std::uint64_t pixels = reader.TakeRow(width.toReach, [](const tympan::RunStretch&) {});
    reader.TakeDelimiter();
    width.Require(pixels);
}

// ---- what the operations on rows share

// The record is made here as an LW one; only a derived class can have put another in its place.
const LwPictureParameters& LWFileInterface::LwRecord() const
{
    static const LwPictureParameters kNoColours;
    const auto* const record = dynamic_cast<const LwPictureParameters*>(PictureParams());
    return record != nullptr ? *record : kNoColours;
}

tympan::RowWidth LWFileInterface::Width() const
{
    const PictureParameters* const record = PictureParams();
    return tympan::RowWidth(record != nullptr ? record->WidthInPixels() : 0.0);
}

/// The place of a row, or 0.
std::uint64_t LWFileInterface::PlaceOf(std::uint64_t row) const
{
    return row < placesKnown_ ? lwFileArray_[row] : 0;
}

// Where a row is expected to end, for the sake of how much is read at a time.
std::uint64_t LWFileInterface::EndOf(std::uint64_t row) const
{
    return row + 1 < placesKnown_ ? lwFileArray_[row + 1] : FileHandle().GetLength();
}

// A reader that stands at `firstRow` and expects to end behind the row before `endRow`.
tympan::RunReader LWFileInterface::ReaderOf(std::uint64_t firstRow, std::uint64_t endRow)
{
    const std::uint64_t place = PlaceOf(firstRow);
    if (place == 0)
        throw new OutOfRangeException;
    return { FileHandle(), *block_, place, endRow > firstRow ? EndOf(endRow - 1) : place };
}

void LWFileInterface::LwFileArray(unsigned long long* offsets)
{
    static_cast<void>(lwFileArray_.release());
    lwFileArray_.reset(offsets);
    placesKnown_ = offsets != nullptr
                       ? tympan::CutToWhole<std::uint64_t>(std::ceil(LwRecord().HeightInPixels()))
                       : 0;
}

void LWFileInterface::DeallocateAll()
{
    lwFileArray_.reset();
    placesKnown_ = 0;
}

void LWFileInterface::CalcTableTransparentColor()
{
    if (auto* const record = dynamic_cast<LwPictureParameters*>(PictureParams()))
        record->CalcTableTransparentColor();
}

unsigned char LWFileInterface::ColorsNumber() const
{
    return LwRecord().TableColorsNumber();
}

// ---- a reader of two bytes at a time, for derived classes

void LWFileInterface::ReadFile(unsigned char* buffer)
{
    if (FileHandle().Read(buffer, sizeof(Run)) < sizeof(Run))
        tympan::ThrowCouldNotRead();
}

void LWFileInterface::CheckRowDelimiters(unsigned char* buffer)
{
    ReadFile(buffer);
    if (!IsRowDelimiter(buffer))
        tympan::ThrowRowDelimiterMissing();
}

void LWFileInterface::CopyRowDelimiters(unsigned char* buffer, unsigned char*& out)
{
    CheckRowDelimiters(buffer);
    out = std::copy_n(buffer, sizeof(Run), out);
}

bool LWFileInterface::IsRowDelimiter(unsigned char* pair)
{
    return tympan::IsDelimiter({ pair[0], pair[1] });
}

void LWFileInterface::CheckRowIntegrity(int pixels)
{
    if (pixels != LwRecord().WidthInPixels())
        tympan::ThrowBadRowIntegrity();
}
