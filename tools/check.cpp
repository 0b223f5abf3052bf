// `tympan check`: proves picture files and tells all that is wrong with them.
#include "command.h"
#include "failure.h"
#include "jpeg_check.h"
#include "names.h"
#include "page_paths.h"
#include "picture.h"
#include "progress.h"
#include "standard_output.h"

#include <tympan/check.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

namespace {

struct CheckCommandOptions {
    std::vector<std::string> files;
    std::string asFormat;
    bool json = false;
    bool jsonLines = false;
    bool quiet = false;
    bool list = false;
    PathOptions paths;
};

// A file and what its check told.
struct Checked {
    std::string file;
    std::vector<Finding> findings;
    CheckResult result;

    bool Failed() const
    {
        return result.verdict == Verdict::Invalid || result.verdict == Verdict::Undetermined;
    }
};

constexpr std::string_view NameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Valid: return "valid";
    case Verdict::ValidWithRemarks: return "valid with remarks";
    case Verdict::Invalid: return "invalid";
    case Verdict::Undetermined: break;
    }
    return "undetermined";
}

constexpr std::string_view NameOf(Severity severity)
{
    return severity == Severity::Error ? "error" : "remark";
}

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
            line_.emplace("Checking " + file_, total);
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

Checked CheckOne(const std::string& file, const std::vector<std::string_view>& formats,
                 const CheckCommandOptions& asked)
{
    const std::unique_ptr<PagePaths> paths = UsePagePaths(file, asked.asFormat, asked.paths);
    Checked checked{ file, {}, {} };
    CheckProgressLine line(file);
    CheckOptions options;
    options.formats = FormatsOf(file, formats);
    options.progress = [&](std::uint64_t done, std::uint64_t total) { line.Reach(done, total); };
    checked.result = CheckFile(
        file.c_str(), [&](const Finding& finding) { checked.findings.push_back(finding); },
        options);
    if (checked.result.format == "JPEG" && checked.result.verdict != Verdict::Undetermined)
        CheckBands(checked);
    return checked;
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

Json AsJson(const CheckRule& rule)
{
    return { { "id", rule.id },         { "severity", NameOf(rule.severity) },
             { "title", rule.title },   { "meaning", rule.meaning },
             { "remedy", rule.remedy }, { "retired", rule.isRetired } };
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

// The remedy stands below the first finding of its rule.
void Print(const Checked& checked)
{
    const CheckResult& result = checked.result;
    std::cout << Shown(checked.file) << ": "
              << (result.format.empty() ? "" : std::string(result.format) + ", ")
              << NameOf(result.verdict) << '\n';
    std::set<std::string_view> told;
    for (const Finding& finding : checked.findings) {
        std::cout << "  " << NameOf(finding.rule->severity) << ' ' << finding.rule->id
                  << TextOf(finding.place) << ": " << Shown(finding.found) << '\n';
        if (told.insert(finding.rule->id).second)
            std::cout << "      " << finding.rule->remedy << '\n';
    }
    for (const RuleCount& one : result.counts)
        if (Untold(one) != 0)
            std::cout << "  and " << Untold(one) << " more of " << one.rule->id << '\n';
}

constexpr char kListIntroduction[] = R"(# What a check can find

`tympan check` names each finding by an identifier of this list. An identifier is permanent: it is
never given to anything else, and stays listed, as retired, when no check tells it any more.

An error makes a file invalid. A remark doesn't: the file is read as it was meant, but isn't what a
program should write. A file that can't be read, or that no format accepts, is undetermined.

This page is what `tympan check --list` writes.
)";

std::vector<const CheckRule*> AllRules()
{
    std::vector<const CheckRule*> rules = CheckRules();
    rules.push_back(&kBandRule);
    return rules;
}

void PrintList(const std::vector<const CheckRule*>& rules)
{
    std::cout << kListIntroduction;
    for (const CheckRule* const rule : rules)
        std::cout << "\n## " << rule->id << (rule->isRetired ? " (retired " : " (")
                  << NameOf(rule->severity) << "): " << rule->title << "\n\n"
                  << rule->meaning << "\n\nWhat to do: " << rule->remedy << '\n';
}

void List(bool asJson)
{
    if (!asJson) {
        PrintList(AllRules());
        return;
    }
    Json list = Json::array();
    for (const CheckRule* const rule : AllRules())
        list.push_back(AsJson(*rule));
    PrintIndented(list);
}

void CheckAll(const CheckCommandOptions& options)
{
    if (options.files.empty())
        throw UsageFailure("FILE is required");
    const std::vector<std::string_view> formats = FormatsFor(options.asFormat);
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : options.files) {
        const Checked checked = CheckOne(file, formats, options);
        failed = failed || checked.Failed();
        if (options.json)
            objects.push_back(AsJson(checked));
        else if (options.jsonLines)
            PrintOnOneLine(AsJson(checked));
        else if (!options.quiet || checked.Failed())
            Print(checked);
        std::cout.flush();
    }
    if (options.json)
        PrintIndented(objects);
    FinishStandardOutput();
    if (failed)
        throw FailuresReported();
}

void Check(const CheckCommandOptions& options)
{
    if (!options.list) {
        CheckAll(options);
        return;
    }
    List(options.json);
    FinishStandardOutput();
}

} // namespace

void AddCheck(CLI::App& app)
{
    const auto options = std::make_shared<CheckCommandOptions>();
    CLI::App& command = *app.add_subcommand("check", "Prove picture files, every row of them");
    CLI::Option* const files = command.add_option("FILE", options->files, "The pictures");
    CLI::Option* const json = command.add_flag("--json", options->json,
                                               "Write a JSON array with an object for each file");
    command
        .add_flag("--json-lines", options->jsonLines,
                  "Write a JSON object on a line as each file is done")
        ->excludes(json);
    command.add_flag("-q,--quiet", options->quiet, "Tell only of files that aren't valid");
    command
        .add_flag("--list", options->list, "List all that a check can find; with --json as JSON")
        ->excludes(files);
    AddAsOption(command, options->asFormat);
    AddPathOptions(command, options->paths);
    command.footer(
        R"(A file is valid, valid with remarks, invalid, or undetermined: then it can't be
read, or it is of no known format. The exit status is 1 if any is invalid or undetermined.
Of each kind of finding the first 100 of a file are told and the others counted.
Of a page the pictures that it places are proved too.

Example:
  tympan check map.lw
  tympan check --json-lines *.lw *.ct)");
    command.callback([options] { Check(*options); });
}

} // namespace tympan::tool
