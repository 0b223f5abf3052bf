// Proves every row of an LW file and every colour index in it, and goes on behind a bad row to the end
// of what can be read.
//
// One walk over the file's bytes, without a step back: so its time is linear and its memory constant
// whatever the bytes are.
#include "lw/lw_check.h"

#include "core/failure_guard.h"
#include "core/header_check.h"
#include "core/header_layout.h"
#include "lw/lw_layout.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tympan {

Format LwFormat();

namespace {

constexpr char kAnotherCopy[] = "Get another copy of the file, or write it anew from its source.";
constexpr char kCutShort[] = "Get another copy of the file; this one was cut short.";
constexpr char kNothingToDo[] =
    "Nothing has to be done; write the file anew if another program refuses it.";

constexpr CheckRule kOtherType{
    "TYM-LW-0001",
    Severity::Remark,
    "The file's type is not LW",
    "The two letters of the type, at byte 80, should be LW. Reading doesn't look at them.",
    kNothingToDo,
};
constexpr CheckRule kNoRows{
    "TYM-LW-0002",
    Severity::Error,
    "The file ends before its rows begin",
    "The rows stand behind the colour records, and the file ends in front of that place.",
    kCutShort,
};
constexpr CheckRule kColourNumber{
    "TYM-LW-0003",
    Severity::Remark,
    "A colour record has another number than its place",
    "Rows name colours by the place of their records. A program that goes by the numbers in the "
    "records would show other colours.",
    "See whether the picture has the right colours; if not, write the file anew.",
};
constexpr CheckRule kStartDelimiter{
    "TYM-LW-0004",
    Severity::Error,
    "A row does not begin with its delimiter",
    "Each row begins with two zero bytes. This one doesn't, so that bytes were changed, lost or "
    "added here or in the row before.",
    kAnotherCopy,
};
constexpr CheckRule kTooShort{
    "TYM-LW-0005",
    Severity::Error,
    "A row is shorter than the width",
    "The lengths of a row's runs have to add up to the picture's width. The row's delimiter comes "
    "before they do.",
    kAnotherCopy,
};
constexpr CheckRule kTooLong{
    "TYM-LW-0006",
    Severity::Error,
    "A row is longer than the width",
    "The lengths of a row's runs have to add up to the picture's width, and the delimiter has to "
    "follow. A run passes the width, or more runs stand behind it.",
    kAnotherCopy,
};
constexpr CheckRule kNoSuchColour{
    "TYM-LW-0007",
    Severity::Error,
    "A run names a colour that the table doesn't have",
    "The row's form is right, but the index of a run is above the number of colours. The row can't "
    "be shown or decoded.",
    kAnotherCopy,
};
constexpr CheckRule kNoColour{
    "TYM-LW-0008",
    Severity::Error,
    "A run has a length and no colour",
    "Colours count from 1. A run of index 0 that has pixels gives them no colour. The row can't be "
    "shown or decoded.",
    kAnotherCopy,
};
constexpr CheckRule kEmptyRuns{
    "TYM-LW-0009",
    Severity::Remark,
    "A row has runs of length 0",
    "Such a run holds no pixel. Reading passes over it; it only makes the file longer.",
    kNothingToDo,
};
constexpr CheckRule kRowsMissing{
    "TYM-LW-0010",
    Severity::Error,
    "The file ends before its rows do",
    "The header claims more rows than the file holds, or the last row has no end. Behind rows "
    "that are damaged it can also be that some could not be told apart.",
    kCutShort,
};
constexpr CheckRule kBytesBehind{
    "TYM-LW-0011",
    Severity::Remark,
    "Bytes stand behind the last row",
    "The file is longer than its rows. Nothing reads the bytes behind them.",
    "See whether the height in the header is that of the picture.",
};

constexpr const CheckRule* kRules[] = {
    &kOtherType,    &kNoRows,   &kColourNumber, &kStartDelimiter, &kTooShort,    &kTooLong,
    &kNoSuchColour, &kNoColour, &kEmptyRuns,    &kRowsMissing,    &kBytesBehind,
};

constexpr std::string_view kTypeLetters = "LW";
constexpr std::uint64_t kAllThatIsHeld = std::numeric_limits<std::int64_t>::max(); // pixels

// What the header says of the rows.
struct RowsClaim {
    std::uint64_t width;
    std::uint64_t height;
    unsigned int colours;
};

// Runs of one row that share a fault: the first of them, and how many there are.
struct Faulty {
    Run first{};
    std::uint64_t offset = 0;
    std::uint64_t count = 0;

    void Add(Run run, std::uint64_t at)
    {
        if (count++ == 0) {
            first = run;
            offset = at;
        }
    }
    std::string Others() const
    {
        return count > 1 ? " So " + std::string(count > 2 ? "do " : "does ") +
                               CountOf(count - 1, "further run") + " of the row."
                         : "";
    }
};

// Takes the bytes of the rows in their order. It holds the row that it stands in and no more.
//
// A row's runs go up to the next delimiter. Behind a bad row it looks for the next place where two
// rows meet: four zero bytes, at an odd distance too, for a file that lost or gained a byte.
class RowProof {
  public:
    RowProof(const RowsClaim& claim, std::uint64_t position, Findings& findings)
        : claim_(claim), position_(position), findings_(findings)
    {}

    bool IsDone() const { return row_ == claim_.height; }
    /// Of the next byte.
    std::uint64_t Position() const { return position_; }

    /// Takes as many as belong to rows.
    void Take(std::span<const std::uint8_t> bytes)
    {
        for (std::size_t at = PassPlainRuns(bytes); at < bytes.size() && !IsDone();) {
            TakeByte(bytes[at++]);
            at += PassPlainRuns(bytes.subspan(at));
        }
    }

    /// To be called when the file ends and the proof isn't done.
    void TellEnd()
    {
        if (step_ == Step::Runs)
            TellRuns();
        findings_.Tell(kRowsMissing, { row_, position_ }, [&] {
            const std::string where = "row " + std::to_string(row_) + " of " +
                                      std::to_string(claim_.height) + " (rows count from 0)";
            if (step_ != Step::Runs)
                return "The file ends where " + where + " was expected.";
            return "The file ends in " + where + ", behind " + std::to_string(pixels_) + " of " +
                   std::to_string(claim_.width) + " pixels.";
        });
    }

  private:
    enum class Step {
        Start,     // a row's first delimiter is next
        Runs,      // runs or a delimiter
        BehindEnd, // perhaps runs, perhaps the end of a bad row
        Search     // for four zero bytes
    };

    /// Takes runs without a fault that don't pass the width, and tells their bytes.
    std::size_t PassPlainRuns(std::span<const std::uint8_t> bytes)
    {
        if (step_ != Step::Runs || firstByte_)
            return 0;
        const std::uint64_t left = claim_.width - std::min(claim_.width, pixels_);
        std::uint64_t pixels = 0;
        std::size_t at = 0;
        for (; at + 1 < bytes.size(); at += sizeof(Run)) {
            const unsigned int fromFirst = bytes[at] - 1U; // wraps for index 0
            const unsigned int length = bytes[at + 1];
            if (fromFirst >= claim_.colours || length == 0 || pixels + length > left)
                break;
            pixels += length;
        }
        if (at != 0)
            lastLength_ = 1;
        pixels_ += pixels;
        position_ += at;
        return at;
    }

    void TakeByte(std::uint8_t byte)
    {
        ++position_;
        if (step_ == Step::Search) {
            SearchIn(byte);
        } else if (!firstByte_) {
            firstByte_ = byte;
        } else {
            const Run run{ *firstByte_, byte };
            firstByte_.reset();
            TakeRun(run, position_ - sizeof(Run));
        }
    }

    void TakeRun(Run run, std::uint64_t offset)
    {
        switch (step_) {
        case Step::Start:
            BeginRow();
            if (!IsDelimiter(run))
                TellStart(run, offset);
            break;
        case Step::Runs:
            if (IsDelimiter(run))
                EndRow(offset);
            else
                Count(run, offset);
            break;
        case Step::BehindEnd: GoOnBehindEnd(run, offset); break;
        case Step::Search: break; // goes by bytes
        }
    }

    void BeginRow()
    {
        step_ = Step::Runs;
        pixels_ = 0;
        behind_ = {};
        pixelsBehind_ = 0;
        overrun_.reset();
        lastLength_ = 1;
        hasBadStart_ = false;
        noSuchColour_ = noColour_ = empty_ = {};
    }

    void Count(Run run, std::uint64_t offset)
    {
        lastLength_ = run.length;
        if (pixels_ >= claim_.width) {
            overrun_ = overrun_.value_or(offset);
            behind_.Add(run, offset);
            pixelsBehind_ += run.length;
            return;
        }
        if (run.index > claim_.colours)
            noSuchColour_.Add(run, offset);
        if (run.index == 0)
            noColour_.Add(run, offset);
        if (run.length == 0)
            empty_.Add(run, offset);
        pixels_ += run.length;
        if (pixels_ > claim_.width)
            overrun_ = offset;
    }

    void EndRow(std::uint64_t offset)
    {
        TellRuns();
        const bool isSound = pixels_ == claim_.width && !overrun_;
        if (!isSound && !hasBadStart_)
            TellLength(offset);
        step_ = isSound ? Step::Start : HasDamagedEnd() ? Step::BehindEnd : Step::Search;
        zeroBytes_ = sizeof(Run) + (lastLength_ == 0 ? 1 : 0);
        ++row_;
    }

    // A single run behind the width may be what is left of the row's own delimiter. What ended the row
    // is then the delimiter of the next.
    bool HasDamagedEnd() const { return pixels_ == claim_.width && behind_.count == 1; }

    void GoOnBehindEnd(Run run, std::uint64_t offset)
    {
        if (IsDelimiter(run)) {
            step_ = Step::Search;
            zeroBytes_ += sizeof(Run);
        } else {
            BeginRow();
            Count(run, offset);
        }
    }

    // The last of the zero bytes are the delimiter of the row that begins with this byte.
    void SearchIn(std::uint8_t byte)
    {
        if (byte == 0) {
            ++zeroBytes_;
        } else if (zeroBytes_ < 2 * kLwDelimiterBytes) {
            zeroBytes_ = 0;
        } else {
            BeginRow();
            firstByte_ = byte;
        }
    }

    void TellStart(Run run, std::uint64_t offset)
    {
        hasBadStart_ = true;
        findings_.Tell(kStartDelimiter, { row_, offset }, [&] {
            return "The row begins with the bytes " + std::to_string(run.index) + " and " +
                   std::to_string(run.length) + "; two zero bytes were expected.";
        });
    }

    void TellLength(std::uint64_t offset)
    {
        const CheckRule& rule = overrun_ ? kTooLong : kTooShort;
        findings_.Tell(rule, { row_, overrun_.value_or(offset) }, [&] {
            return "The runs hold " + CountOf(pixels_ + pixelsBehind_, "pixel") + "; " +
                   std::to_string(claim_.width) + " were expected." + RunsBehind();
        });
    }

    std::string RunsBehind() const
    {
        if (behind_.count == 0)
            return "";
        return ' ' + CountOf(behind_.count, "run") + (behind_.count == 1 ? " stands" : " stand") +
               " behind the width.";
    }

    void TellRuns()
    {
        TellFaulty(kNoSuchColour, noSuchColour_, [&](Run run) {
            return "The run names colour " + std::to_string(run.index) + "; the table has " +
                   CountOf(claim_.colours, "colour") + ".";
        });
        TellFaulty(kNoColour, noColour_, [](Run run) {
            return "The run gives colour 0 to " + CountOf(run.length, "pixel") +
                   "; colours count from 1.";
        });
        TellFaulty(kEmptyRuns, empty_, [](Run run) {
            return "The run of colour " + std::to_string(run.index) +
                   " has length 0; at least 1 was expected.";
        });
    }

    template <typename Sentence>
    void TellFaulty(const CheckRule& rule, const Faulty& faulty, Sentence&& sentence)
    {
        if (faulty.count != 0)
            findings_.Tell(rule, { row_, faulty.offset },
                           [&] { return sentence(faulty.first) + faulty.Others(); });
    }

    const RowsClaim claim_;
    std::uint64_t position_;
    Findings& findings_;

    Step step_ = Step::Start;
    std::uint64_t row_ = 0;
    std::optional<std::uint8_t> firstByte_; // of a run whose second isn't there yet
    std::uint64_t zeroBytes_ = 0;           // side by side, while the search goes on

    // Of the row.
    std::uint64_t pixels_ = 0; // of the runs that reach the width
    Faulty behind_;            // runs behind those
    std::uint64_t pixelsBehind_ = 0;
    std::optional<std::uint64_t> overrun_; // offset of the first run that passes the width
    std::uint8_t lastLength_ = 1;
    bool hasBadStart_ = false;
    Faulty noSuchColour_, noColour_, empty_;
};

constexpr FailureRow kEndOfFile[] = { { Caught::ReadFile, 0, nullptr } };

std::span<const std::uint8_t> BytesOf(std::span<const Run> runs)
{
    return { reinterpret_cast<const std::uint8_t*>(runs.data()), runs.size_bytes() };
}

// A byte at the end of the file that makes no run where rows begin at even distances.
void TakeOddByte(CFile& file, RowProof& proof)
{
    std::uint8_t byte = 0;
    file.Seek(static_cast<LONGLONG>(proof.Position()), CFile::begin);
    if (file.Read(&byte, 1) == 1)
        proof.Take({ &byte, 1 });
}

void ProveRows(CFile& file, const RowsClaim& claim, Findings& findings)
{
    const std::uint64_t length = file.GetLength();
    const auto start = static_cast<std::uint64_t>(LwFirstRow(claim.colours));
    RowProof proof(claim, start, findings);
    RunBlock block;
    RunReader reader(file, block, start, length);
    Guarded(NoTrace(), kEndOfFile, [&] {
        while (!proof.IsDone()) {
            proof.Take(BytesOf(reader.Take(kAllThatIsHeld).runs));
            findings.Reached(proof.Position(), length);
        }
    });
    if (!proof.IsDone())
        TakeOddByte(file, proof);
    if (!proof.IsDone())
        proof.TellEnd();
    else if (proof.Position() < length)
        findings.Tell(kBytesBehind, { {}, proof.Position() }, [&] {
            return "The file has " + CountOf(length - proof.Position(), "byte") +
                   " behind its last row, which should end it.";
        });
}

std::string_view TypeIn(std::string_view front)
{
    return front.substr(std::min(front.size(), kHeaderFileType.offset), kHeaderFileType.width);
}

void CheckType(std::string_view front, Findings& findings)
{
    if (TypeIn(front) != kTypeLetters)
        findings.Tell(kOtherType, { {}, kHeaderFileType.offset }, [&] {
            return "The file's type is " + Quoted(TypeIn(front)) + "; \"LW\" was expected.";
        });
}

unsigned int ColoursIn(std::string_view front)
{
    constexpr std::size_t kPlace = kLwColoursNumber.offset;
    return front.size() > kPlace ? static_cast<unsigned char>(front[kPlace]) : 0U;
}

// Whether the file reaches to its rows.
bool CheckRoom(std::string_view front, unsigned int colours, Findings& findings)
{
    const auto firstRow = static_cast<std::size_t>(LwFirstRow(colours));
    if (front.size() >= firstRow)
        return true;
    findings.Tell(kNoRows, { {}, front.size() }, [&] {
        return "The file has " + CountOf(front.size(), "byte") + "; with " +
               CountOf(colours, "colour") + " its rows begin at byte " + std::to_string(firstRow) +
               ".";
    });
    return false;
}

void CheckColours(std::string_view front, unsigned int colours, Findings& findings)
{
    for (unsigned int i = 0; i < colours; ++i) {
        const std::size_t place = static_cast<std::size_t>(kLwColours) + kLwColourBytes * i;
        const unsigned int number = static_cast<unsigned char>(front[place]);
        if (number != i + 1)
            findings.Tell(kColourNumber, { {}, place }, [&] {
                return "The record of colour " + std::to_string(i + 1) + " has number " +
                       std::to_string(number) + ".";
            });
    }
}

// A file that says that it is line work is checked as such, though its first row may be damaged and
// nothing recognises it.
bool Accepts(CFile& file, const CString& fileName)
{
    return LwFormat().recognises(file, fileName) ||
           TypeIn(FrontOf(file, kHeaderEnd)) == kTypeLetters;
}

void Prove(CFile& file, Findings& findings)
{
    const auto mostInFront = static_cast<std::size_t>(LwFirstRow(kLwMostColours));
    const std::string front = FrontOf(file, mostInFront);
    const HeaderFacts facts = CheckHeader(front, findings);
    if (front.size() < kHeaderEnd)
        return;
    CheckType(front, findings);
    const unsigned int colours = ColoursIn(front);
    if (!CheckRoom(front, colours, findings))
        return;
    CheckColours(front, colours, findings);
    if (facts.width != 0 && facts.height != 0)
        ProveRows(file, { facts.width, facts.height, colours }, findings);
}

} // namespace

FormatCheck LwFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
