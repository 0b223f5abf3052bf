// Holds the structure of a TIFF/IT file against its length, and the runs of line work against its size
// and colours. It reads by what the picture objects read by, which it replaces: no TIFF/IT object
// should be open meanwhile.
#include "core/failure_codes.h"
#include "core/findings.h"
#include "core/whole_numbers.h"
#include "platform/failures.h"
#include "platform/file.h"
#include "tiff/tiff_check.h"
#include "tiff/tiff_it_access.h"
#include "tiff/tiff_it_failures.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_runs.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tympan {

namespace {

constexpr char kAnotherCopy[] =
    "Get another copy of the file; this one is damaged or was cut short.";
constexpr char kOtherProgram[] = "Write the file anew by a program that writes this kind.";

constexpr CheckRule kHeader{
    "TYM-TIFFIT-0001",
    Severity::Error,
    "The file does not begin as a TIFF",
    "It begins with 8 bytes: a byte order, the number 42, and the even place of the first "
    "directory. Nothing else can be checked.",
    "See whether the file is a TIFF/IT file at all.",
};
constexpr CheckRule kCutShort{
    "TYM-TIFFIT-0002",
    Severity::Error,
    "A directory or its values are not in the file",
    "A directory, or the values that one of its fields points at, reach over the end of the file.",
    kAnotherCopy,
};
constexpr CheckRule kFieldType{
    "TYM-TIFFIT-0003",
    Severity::Error,
    "A field has an unknown type",
    "Types of values are 1 to 5. One field of another type, anywhere in the file, keeps it from "
    "being opened.",
    kOtherProgram,
};
constexpr CheckRule kEndless{
    "TYM-TIFFIT-0004",
    Severity::Error,
    "The directories have no end",
    "The chain of directories leads back into itself, or there are more directories, fields or "
    "values than the file has room for.",
    kAnotherCopy,
};
constexpr CheckRule kNeither{
    "TYM-TIFFIT-0005",
    Severity::Error,
    "The file is neither continuous tone nor line work",
    "The field BitsPerSample of the first directory has four values in the one and one value in "
    "the other. Other kinds are not read.",
    "See whether the file is of a kind that another program reads.",
};
constexpr CheckRule kNoSize{
    "TYM-TIFFIT-0006",
    Severity::Error,
    "The picture has no size",
    "Width and length are at least 1, and are told by one 16-bit or 32-bit number each.",
    kOtherProgram,
};
constexpr CheckRule kNoStrip{
    "TYM-TIFFIT-0007",
    Severity::Error,
    "No strip holds the whole picture",
    "Only strips are drawn whose RowsPerStrip is the picture's height or more.",
    "Write the file anew with all rows in one strip.",
};
constexpr CheckRule kSeveralStrips{
    "TYM-TIFFIT-0008",
    Severity::Error,
    "Several strips count as the whole picture",
    "Each of them is drawn over the one before. A strip that RowsPerStrip has no value for counts "
    "as the whole picture.",
    "Write the file anew with all rows in one strip.",
};
constexpr CheckRule kStripOutside{
    "TYM-TIFFIT-0009",
    Severity::Error,
    "A strip reaches over the end of the file",
    "The file is shorter than the strip's place and its bytes: of continuous tone four for each "
    "pixel.",
    kAnotherCopy,
};
constexpr CheckRule kCompressed{
    "TYM-TIFFIT-0010",
    Severity::Error,
    "The picture is compressed",
    "The bytes of continuous tone are drawn as they stand. Compressed ones show no picture.",
    "Write the file anew without compression.",
};
constexpr CheckRule kNoColours{
    "TYM-TIFFIT-0011",
    Severity::Error,
    "Line work has no colour table",
    "The directory has no field ColorTable of bytes, so that all of the picture is drawn white.",
    kOtherProgram,
};
constexpr CheckRule kColourPart{
    "TYM-TIFFIT-0012",
    Severity::Remark,
    "The colour table ends inside a colour",
    "Each colour has 20 bytes. What is left behind the last whole one is not read.",
    kOtherProgram,
};
constexpr CheckRule kColourMissing{
    "TYM-TIFFIT-0013",         Severity::Error, "A run has a colour that is not in the table",
    "The run is drawn white.", kOtherProgram,
};
constexpr CheckRule kRunPasses{
    "TYM-TIFFIT-0014",
    Severity::Error,
    "A run passes the end of its row",
    "The rest of it is drawn at the start of the next row.",
    kOtherProgram,
};
constexpr CheckRule kNoLength{
    "TYM-TIFFIT-0015",
    Severity::Remark,
    "A run has the length 0",
    "Such a run holds no pixel; it only makes the file longer.",
    "Nothing has to be done; write the file anew if another program refuses it.",
};
constexpr CheckRule kRowsMissing{
    "TYM-TIFFIT-0016",
    Severity::Error,
    "The file ends before its rows do",
    "The runs that are there don't make up the picture's height.",
    kAnotherCopy,
};
constexpr CheckRule kNotInkBytes{
    "TYM-TIFFIT-0017",
    Severity::Error,
    "Continuous tone is not made of bytes of ink side by side",
    "Whatever the fields say, four bytes are drawn for each pixel, as cyan, magenta, yellow and "
    "black. Other samples show another picture than the file's.",
    "Write the file anew with separated colours of 8 bits in one plane.",
};
constexpr const CheckRule* kRules[] = {
    &kHeader,        &kCutShort,      &kFieldType,    &kEndless,     &kNeither,     &kNoSize,
    &kNoStrip,       &kSeveralStrips, &kStripOutside, &kCompressed,  &kNoColours,   &kColourPart,
    &kColourMissing, &kRunPasses,     &kNoLength,     &kRowsMissing, &kNotInkBytes,
};

// What the display takes for granted of continuous tone. TIFF has all of these as 16-bit numbers.
struct ToneField {
    const char* name;
    std::uint16_t tag;
    std::uint16_t expected; // as each value
    const CheckRule* rule;
};

constexpr ToneField kToneFields[] = {
    { "Compression", tag::kCompression, 1, &kCompressed },
    { "BitsPerSample", tag::kBitsPerSample, 8, &kNotInkBytes },
    { "PhotometricInterpretation", tag::kPhotometric, 5, &kNotInkBytes },
    { "PlanarConfiguration", tag::kPlanarConfiguration, 1, &kNotInkBytes },
};

// The field that counts: the last one. Null where there is none.
const IfdEntry* LastOf(std::uint16_t tag, std::span<const IfdEntry> entries)
{
    const auto last = std::find_if(entries.rbegin(), entries.rend(),
                                   [&](const IfdEntry& entry) { return entry.Tag == tag; });
    return last == entries.rend() ? nullptr : &*last;
}

// What a code of the reader says of the file.
struct CodeRule {
    unsigned long code;
    const CheckRule* rule;
    const char* text;
};

constexpr CodeRule kCodeRules[] = {
    { code::kTiffItShortRead, &kCutShort, kTiffItShortReadText },
    { code::kTiffItNeitherKind, &kNeither, kTiffItNeitherKindText },
    { code::kTiffItVersion, &kHeader, kTiffItVersionText },
    { code::kTiffItOddOffset, &kHeader, kTiffItOddOffsetText },
    { code::kTiffItFieldType, &kFieldType, kTiffItFieldTypeText },
    { code::kTiffFailed, &kEndless, "The directories, fields and values don't fit the file." },
    { 0, &kNeither, "There is no field BitsPerSample in a first directory." },
};

using Reader = std::unique_ptr<TiffItP1Interface>;

// What the system can't read says nothing of the file.
std::optional<TiffItKind> KindOf(const Reader& reader, CFile& file)
{
    const std::optional<TiffItKind> kind = TiffItAccess::KindOf(*reader, file);
    if (reader->TraceStatus() == code::kFileFailed)
        AfxThrowFileException(CFileException::genericException);
    return kind;
}

Reader MakeReader()
{
    return TiffItAccess::Make(TiffItKind::ContinuousTone);
}

class TiffItCheck {
  public:
    TiffItCheck(CFile& file, Findings& findings)
        : file_(file), findings_(findings), length_(file.GetLength())
    {}

    void Check()
    {
        const Reader reader = MakeReader();
        const std::optional<TiffItKind> kind = KindOf(reader, file_);
        if (!kind)
            return TellCode(reader->TraceStatus());
        facts_ = TiffItAccess::Facts();
        if (facts_.width == 0 || facts_.height == 0)
            return findings_.Tell(kNoSize, {}, [&] {
                return "The picture is told to have " + CountOf(facts_.height, "row") + " of " +
                       CountOf(facts_.width, "pixel") + ".";
            });
        const std::optional<std::size_t> strip = TheStrip();
        if (*kind == TiffItKind::ContinuousTone)
            CheckTone(strip);
        else
            CheckWork(strip);
    }

  private:
    // A short file has no header; the reader gives that the code of any short read.
    void TellCode(unsigned long code)
    {
        const auto* const row = std::find_if(std::begin(kCodeRules), std::end(kCodeRules),
                                             [&](const CodeRule& one) { return one.code == code; });
        if (row == std::end(kCodeRules))
            return;
        const bool isHeader = code == code::kTiffItShortRead && length_ < kTiffHeaderBytes;
        findings_.Tell(isHeader ? kHeader : *row->rule, {}, [&] { return std::string(row->text); });
    }

    // The one strip that is drawn.
    std::optional<std::size_t> TheStrip()
    {
        std::optional<std::size_t> first;
        for (std::size_t s = 0; s < facts_.strips.size(); ++s) {
            if (facts_.strips[s].RowsPerStrip < facts_.height)
                continue;
            if (first)
                findings_.Tell(kSeveralStrips, { {}, facts_.strips[s].Offset }, [&] {
                    return "Strip " + std::to_string(s) +
                           " counts as the whole picture, as strip " + std::to_string(*first) +
                           " does.";
                });
            else
                first = s;
        }
        if (!first)
            findings_.Tell(kNoStrip, {}, [&] {
                return "Of " + CountOf(facts_.strips.size(), "strip") + " none has " +
                       CountOf(facts_.height, "row") + ".";
            });
        return first;
    }

    void CheckReach(const StripInfo& strip, std::uint64_t bytes)
    {
        if (strip.Offset > length_ || bytes > length_ - strip.Offset)
            findings_.Tell(kStripOutside, { {}, strip.Offset }, [&] {
                return "The strip needs " + CountOf(bytes, "byte") +
                       " from here on; the file has " + CountOf(length_, "byte") + ".";
            });
    }

    void CheckToneField(const ToneField& field)
    {
        const IfdEntry* const entry = LastOf(field.tag, facts_.directories.back().Entries());
        const auto* const values =
            entry == nullptr ? nullptr : std::get_if<std::vector<std::uint16_t>>(&entry->Data);
        if (values == nullptr)
            return;
        const auto other = std::find_if(values->begin(), values->end(), [&](std::uint16_t value) {
            return value != field.expected;
        });
        if (other != values->end())
            findings_.Tell(*field.rule, {}, [&] {
                return std::string("The field ") + field.name + " has the value " +
                       std::to_string(*other) + "; " + std::to_string(field.expected) +
                       " was expected.";
            });
    }

    void CheckTone(std::optional<std::size_t> strip)
    {
        for (const ToneField& field : kToneFields)
            CheckToneField(field);
        const std::uint64_t pixels = std::uint64_t{ facts_.width } * facts_.height;
        if (strip)
            CheckReach(facts_.strips[*strip],
                       Product(pixels, kCtPixelBytes).value_or(~std::uint64_t{ 0 }));
    }

    // The colours of the directory of the strip's number.
    std::size_t CountColours(std::size_t strip)
    {
        const IfdEntry* const table =
            strip < facts_.directories.size()
                ? LastOf(tag::kColorTable, facts_.directories[strip].Entries())
                : nullptr;
        const auto* const bytes =
            table == nullptr ? nullptr : std::get_if<std::vector<std::uint8_t>>(&table->Data);
        if (bytes == nullptr || bytes->size() < kColourRecordBytes) {
            findings_.Tell(kNoColours, {}, [] { return "No colour was found."; });
            return 0;
        }
        if (bytes->size() % kColourRecordBytes != 0)
            findings_.Tell(kColourPart, { {}, table->ValueOffset }, [&] {
                return CountOf(bytes->size() % kColourRecordBytes, "byte") + " behind " +
                       CountOf(bytes->size() / kColourRecordBytes, "colour") + ".";
            });
        return bytes->size() / kColourRecordBytes;
    }

    void CheckWork(std::optional<std::size_t> strip)
    {
        if (!strip)
            return;
        const StripInfo& work = facts_.strips[*strip];
        CheckReach(work, work.ByteCount);
        CheckRuns(work, CountColours(*strip));
    }

    void CheckRuns(const StripInfo& strip, std::size_t colours)
    {
        StripBytes bytes(file_, strip.Offset + kLwStripLead);
        std::uint64_t column = 0;
        std::uint64_t row = 0;
        const RunsEnd end =
            ForEachRun(bytes, facts_.width, facts_.height, column, [&](const PlacedRun& run) {
                if (run.row != row)
                    findings_.Reached(std::min(run.offset, length_), length_);
                row = run.row;
                CheckRun(run, colours);
            });
        if (end == RunsEnd::EndOfFile)
            findings_.Tell(kRowsMissing, { row, length_ }, [&] {
                return "The last run is in row " + std::to_string(row) + " of " +
                       std::to_string(facts_.height) + ".";
            });
    }

    void CheckRun(const PlacedRun& run, std::size_t colours)
    {
        const Place place{ run.row, run.offset };
        if (run.colour >= colours && colours != 0)
            findings_.Tell(kColourMissing, place, [&] {
                return "The run has the colour " + std::to_string(run.colour) + "; the table has " +
                       CountOf(colours, "colour") + ".";
            });
        if (run.length == 0)
            findings_.Tell(kNoLength, place, [] { return "The run has no pixel."; });
        if (RunReach(run, facts_.width).passes)
            findings_.Tell(kRunPasses, place, [&] {
                return "The run of " + CountOf(run.length, "pixel") + " begins at pixel " +
                       std::to_string(run.column) + " of a row of " + std::to_string(facts_.width) +
                       ".";
            });
    }

    CFile& file_;
    Findings& findings_;
    std::uint64_t length_;
    TiffItFacts facts_{};
};

bool Accepts(CFile& file, const CString&)
{
    return KindOf(MakeReader(), file).has_value();
}

void Prove(CFile& file, Findings& findings)
{
    TiffItCheck(file, findings).Check();
}

} // namespace

FormatCheck TiffItFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
