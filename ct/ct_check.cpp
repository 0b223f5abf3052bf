// Holds the length of a CT file against what its header claims. Any byte is a pixel, so that there is
// nothing more to prove in the rows.
#include "ct/ct_check.h"

#include "core/header_check.h"
#include "core/header_layout.h"
#include "ct/ct_layout.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

namespace tympan {

Format CtFormat();

namespace {

constexpr CheckRule kRowsMissing{
    "TYM-CT-0001",
    Severity::Error,
    "The file ends before its rows do",
    "The header claims more rows than the file holds. The rows in front of the one that is told "
    "are whole.",
    "Get another copy of the file; this one was cut short, or its header has wrong sizes.",
};
constexpr CheckRule kBytesBehind{
    "TYM-CT-0002",
    Severity::Remark,
    "Bytes stand behind the last row",
    "The file is longer than its rows. Nothing reads the bytes behind them.",
    "See whether the sizes in the header are those of the picture.",
};
constexpr const CheckRule* kRules[] = { &kRowsMissing, &kBytesBehind };

constexpr std::uint64_t kBeyondAnyFile = std::numeric_limits<std::uint64_t>::max();

// Where the rows of a picture stand in its file.
class Rows {
  public:
    Rows(const CtLayout& layout, std::uint32_t height) : layout_(layout), height_(height) {}

    /// Behind the last pixel; the padding of an odd width needn't be there.
    std::uint64_t End() const
    {
        const auto last = layout_.Position(height_ - 1, layout_.separations - 1);
        return last ? *last + layout_.width : kBeyondAnyFile;
    }
    std::uint64_t EndWithPadding() const { return End() + layout_.width % 2; }

    /// How many stretches of a separation a file of that length holds whole, rows after rows.
    std::uint64_t WholeLines(std::uint64_t length) const
    {
        const std::uint64_t bytes = length - std::min(length, kCtFirstRow);
        const std::uint64_t whole = bytes / layout_.Stride();
        return bytes % layout_.Stride() >= layout_.width ? whole + 1 : whole;
    }

  private:
    const CtLayout& layout_;
    std::uint64_t height_;
};

void CheckLength(std::uint64_t length, const CtLayout& layout, std::uint32_t height,
                 Findings& findings)
{
    const Rows rows(layout, height);
    if (length < rows.End()) {
        const std::uint64_t lines = rows.WholeLines(length);
        const std::uint64_t firstMissing = lines / layout.separations;
        findings.Tell(kRowsMissing, { firstMissing, length }, [&] {
            const std::string needed = rows.End() == kBeyondAnyFile ? "more than any file has"
                                                                    : std::to_string(rows.End());
            return "The file has " + CountOf(length, "byte") + ", and its " +
                   CountOf(height, "row") + " need " + needed + ": " +
                   CountOf(firstMissing, "whole row") + " and " +
                   CountOf(lines % layout.separations, "separation") + " of row " +
                   std::to_string(firstMissing) + " are there.";
        });
    } else if (length > rows.EndWithPadding()) {
        findings.Tell(kBytesBehind, { {}, rows.EndWithPadding() }, [&] {
            return "The file has " + CountOf(length - rows.EndWithPadding(), "byte") +
                   " behind its last row, which should end it.";
        });
    }
}

// The format's test looks at so little that a file without separations passes it, an empty one too.
bool Accepts(CFile& file, const CString& fileName)
{
    PictureParameters record;
    return CtFormat().recognises(file, fileName) && record.Load(file);
}

void Prove(CFile& file, Findings& findings)
{
    const HeaderFacts facts = CheckHeader(FrontOf(file, kHeaderEnd), findings);
    PictureParameters record;
    if (facts.width == 0 || facts.height == 0 || facts.separations == 0 || !record.Load(file))
        return;
    const CtLayout layout(record);
    if (layout.width != 0 && layout.separations != 0) // of a file that hasn't changed meanwhile
        CheckLength(file.GetLength(), layout, facts.height, findings);
}

} // namespace

FormatCheck CtFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
