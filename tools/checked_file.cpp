#include "checked_file.h"

#include "batch_rules.h"
#include "failure.h"
#include "jpeg_check.h"
#include "names.h"
#include "picture.h"
#include "progress.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>

namespace tympan::tool {

namespace {

std::uint64_t Untold(const RuleCount& one)
{
    return one.count - std::min(one.count, kFindingsToldOfEachRule);
}

// Tells how far the check is; the length of the file comes with the first call.
class CheckProgressLine {
  public:
    explicit CheckProgressLine(const std::string& file) : file_(file) {}

    void Reach(std::uint64_t done, std::uint64_t total)
    {
        if (!line_)
            line_.emplace("Checking " + file_, total, ProgressUnit::Bytes);
        line_->Advance(done - done_);
        done_ = done;
    }

  private:
    const std::string& file_;
    std::uint64_t done_ = 0;
    std::optional<Progress> line_;
};

void CheckBands(Checked& checked)
{
    RuleCount bands{ &kBandRule, 0 };
    CheckJpegBands(checked.file, [&](const Finding& finding) {
        if (++bands.count <= kFindingsToldOfEachRule)
            checked.findings.push_back(finding);
    });
    if (bands.count == 0)
        return;
    checked.result.counts.push_back(bands);
    checked.result.verdict = Verdict::Invalid;
}

// What info and preview take for TIFF/IT is checked as that, though the TIFF library opens it too.
std::vector<std::string_view> FormatsOf(const std::string& file,
                                        const std::vector<std::string_view>& asked)
{
    try {
        if (asked.empty() && IsTiffItInTiff(file))
            return { kTiffItName };
    } catch (const FileFailure&) { // NOLINT(bugprone-empty-catch): the check tells it
    }
    return asked;
}

// ---- as JSON

Json AsJson(const Finding& finding)
{
    return { { "id", finding.rule->id },
             { "severity", NameOf(finding.rule->severity) },
             { "row", NumberOrNull(finding.place.row) },
             { "offset", NumberOrNull(finding.place.offset) },
             { "found", WithReplacements(finding.found) },
             { "remedy", finding.rule->remedy } };
}

// ---- as text

std::string TextOf(const Place& place)
{
    std::string text;
    if (place.row)
        text += ", row " + std::to_string(*place.row);
    if (place.offset)
        text += ", byte " + std::to_string(*place.offset);
    return text;
}

} // namespace

std::string_view NameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Valid: return "valid";
    case Verdict::ValidWithRemarks: return "valid with remarks";
    case Verdict::Invalid: return "invalid";
    case Verdict::Undetermined: break;
    }
    return "undetermined";
}

std::string_view NameOf(Severity severity)
{
    return severity == Severity::Error ? "error" : "remark";
}

std::vector<const CheckRule*> CommandRules()
{
    return { &kBandRule, &kEndedRule, &kFolderRule };
}

Checked NotChecked(const std::string& file, const CheckRule& rule, const std::string& found)
{
    return { file, { { &rule, {}, found } }, { Verdict::Undetermined, {}, { { &rule, 1 } } } };
}

Checked CheckPicture(const std::string& file, const FileCheckOptions& asked)
{
    const std::unique_ptr<PagePaths> paths = UsePagePaths(file, asked.asFormat, asked.paths);
    Checked checked{ file, {}, {} };
    CheckProgressLine line(file);
    CheckOptions options;
    options.formats = FormatsOf(file, FormatsFor(asked.asFormat));
    options.progress = [&](std::uint64_t done, std::uint64_t total) { line.Reach(done, total); };
    checked.result = CheckFile(
        file.c_str(), [&](const Finding& finding) { checked.findings.push_back(finding); },
        options);
    if (checked.result.format == "JPEG" && checked.result.verdict != Verdict::Undetermined)
        CheckBands(checked);
    return checked;
}

Json AsJson(const Checked& checked)
{
    const std::string_view format = checked.result.format;
    Json object = ObjectOf(checked.file);
    object["verdict"] = NameOf(checked.result.verdict);
    object["format"] = format.empty() ? Json(nullptr) : Json(format);
    object["findings"] = Json::array();
    for (const Finding& finding : checked.findings)
        object["findings"].push_back(AsJson(finding));
    object["findings_total"] = checked.result.FindingsTotal();
    object["counts"] = Json::object();
    for (const RuleCount& one : checked.result.counts)
        object["counts"][std::string(one.rule->id)] = one.count;
    return object;
}

void Print(std::ostream& out, const Checked& checked)
{
    const CheckResult& result = checked.result;
    out << Shown(checked.file) << ": "
        << (result.format.empty() ? "" : std::string(result.format) + ", ")
        << NameOf(result.verdict) << '\n';
    std::set<std::string_view> told;
    for (const Finding& finding : checked.findings) {
        out << "  " << NameOf(finding.rule->severity) << ' ' << finding.rule->id
            << TextOf(finding.place) << ": " << Shown(finding.found) << '\n';
        if (told.insert(finding.rule->id).second)
            out << "      " << finding.rule->remedy << '\n';
    }
    for (const RuleCount& one : result.counts)
        if (Untold(one) != 0)
            out << "  and " << Untold(one) << " more of " << one.rule->id << '\n';
}

} // namespace tympan::tool
