// Opens a TIFF as the picture object does and decodes its rows, one after the other.
#include "tiff/tiff_check.h"

#include "core/findings.h"
#include "core/whole_numbers.h"
#include "platform/claims.h"
#include "platform/failures.h"
#include "platform/file.h"
#include "platform/tiff_library.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_kind.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace tympan {

namespace {

constexpr char kAnotherCopy[] =
    "Get another copy of the file; this one is damaged or was cut short.";

constexpr CheckRule kNotOpened{
    "TYM-TIFF-0001",
    Severity::Error,
    "The file does not open as a TIFF",
    "Its header or its first directory can't be read. Nothing else can be checked.",
    kAnotherCopy,
};
constexpr CheckRule kUnknownKind{
    "TYM-TIFF-0002",
    Severity::Error,
    "The picture is of a kind that is not known",
    "Bits of a sample, samples of a pixel and photometric interpretation are none of those that "
    "are opened: 1 bit with 1 sample that is white at zero; 8 bits with 1 sample, RGB, YCbCr, or "
    "4 to 8 inks.",
    "Convert the picture to one of these kinds.",
};
constexpr CheckRule kNoRows{
    "TYM-TIFF-0003",
    Severity::Error,
    "No row can be read",
    "What the directory tells of the rows can't be true, or is a layout that is not read.",
    kAnotherCopy,
};
constexpr CheckRule kRowDamaged{
    "TYM-TIFF-0004",
    Severity::Error,
    "A row can't be decoded",
    "The strip or tile that holds the row is missing, cut short or damaged.",
    kAnotherCopy,
};
constexpr CheckRule kNotAllDecoded{
    "TYM-TIFF-0005",
    Severity::Remark,
    "Not all rows were checked",
    "The rows that are told were left out: too many before them were damaged, or the picture is so "
    "large for its file that decoding all of it would take too long.",
    "See whether the height in the file is that of the picture.",
};
constexpr const CheckRule* kRules[] = { &kNotOpened, &kUnknownKind, &kNoRows, &kRowDamaged,
                                        &kNotAllDecoded };

constexpr std::uint64_t kMostExpansion = 1024; // decoded bytes for each of the file
constexpr std::uint64_t kMostDamaged = Findings::kToldOfEach;

// What the system can't read says nothing of the file.
void PassOnSystemFailure()
{
    if (TiffSystemError() != 0)
        CFileException::ThrowErrno(TiffSystemError());
}

using OpenedTiff = std::unique_ptr<tiff, CloseTiff>;

// Null for what is no TIFF.
OpenedTiff OpenedBy(const CFile& file, const CString& name)
{
    OpenedTiff opened(TifffdOpen(file.m_hFile, name, "r"));
    if (opened == nullptr)
        PassOnSystemFailure();
    return opened;
}

std::string LibraryText()
{
    return std::string(TiffErrorMsg().View()) + '.';
}

void CheckKind(const tiff& file, Findings& findings)
{
    if (KindOf(file.BitsPerSample, file.SamplesPerPixel, file.PhotometricInterpretation) ==
        NoColorSet)
        findings.Tell(kUnknownKind, {}, [&] {
            return "The picture has " + CountOf(file.BitsPerSample, "bit") + " in a sample, " +
                   CountOf(file.SamplesPerPixel, "sample") + " in a pixel, and the photometric " +
                   "interpretation " + std::to_string(file.PhotometricInterpretation) + ".";
        });
}

// How many rows are decoded, so that the work keeps to the file's length.
std::uint64_t RowsToDecode(tiff& file, std::uint64_t length)
{
    const std::uint64_t bytes =
        Product(std::max(length, kFreeClaim / kMostExpansion), kMostExpansion).value_or(length);
    const auto rowBytes = static_cast<std::uint64_t>(TiffScanlineSize(&file));
    return std::min<std::uint64_t>(file.ImageLength, bytes / std::max<std::uint64_t>(rowBytes, 1));
}

void CheckRows(tiff& file, std::uint64_t length, Findings& findings)
{
    std::vector<std::uint8_t> row(static_cast<std::size_t>(TiffScanlineSize(&file)));
    const std::uint64_t end = RowsToDecode(file, length);
    std::uint64_t y = 0;
    for (std::uint64_t damaged = 0; y < end && damaged < kMostDamaged; ++y) {
        findings.Reached(length / end * y, length);
        if (TiffReadScanline(&file, row.data(), static_cast<unsigned int>(y), 0) == 1)
            continue;
        PassOnSystemFailure();
        ++damaged;
        findings.Tell(kRowDamaged, { y, {} }, LibraryText);
    }
    if (y < file.ImageLength)
        findings.Tell(kNotAllDecoded, { y, {} }, [&] {
            return CountOf(y, "row") + " of " + std::to_string(file.ImageLength) +
                   " were looked at.";
        });
    findings.Reached(length, length);
}

void Prove(CFile& file, Findings& findings)
{
    const OpenedTiff open = OpenedBy(file, file.GetFileTitle());
    if (open == nullptr) {
        findings.Tell(kNotOpened, {}, LibraryText);
        return;
    }
    CheckKind(*open, findings);
    if (TiffGivesRows(open.get()))
        CheckRows(*open, file.GetLength(), findings);
    else
        findings.Tell(kNoRows, {}, LibraryText);
}

// The library's own test would take a file that can't be read for one of another format.
bool Accepts(CFile& file, const CString& fileName)
{
    constexpr std::string_view kStarts[] = {
        { "II*\0", 4 }, { "MM\0*", 4 }, { "II+\0", 4 }, { "MM\0+", 4 }
    };
    std::array<char, 4> start{};
    file.Seek(0, CFile::begin);
    const UINT read = file.Read(start.data(), static_cast<UINT>(start.size()));
    const std::string_view bytes(start.data(), read);
    return std::find(std::begin(kStarts), std::end(kStarts), bytes) != std::end(kStarts) &&
           OpenedBy(file, fileName) != nullptr;
}

} // namespace

FormatCheck TiffFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
