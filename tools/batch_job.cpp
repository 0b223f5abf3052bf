#include "batch_job.h"

#include "batch_rules.h"
#include "failure.h"
#include "info_json.h"
#include "ink_measure.h"
#include "names.h"
#include "picture.h"
#include "sha256.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <sstream>

namespace tympan::tool {

namespace {

constexpr std::array<std::string_view, 7> kPictureEndings{ ".ct",  ".lw",   ".jpg", ".jpeg",
                                                           ".tif", ".tiff", ".pg" };

// By what a file that no format accepts is still known for a damaged picture. Line work and pages
// are accepted by their letters already.
struct Mark {
    std::size_t place;
    std::string_view bytes;
};

constexpr std::size_t kMarksEnd = 82;
constexpr std::array<Mark, 6> kMarks{ {
    { 0, { "\xFF\xD8", 2 } },
    { 0, { "II*\0", 4 } },
    { 0, { "MM\0*", 4 } },
    { 0, { "II+\0", 4 } },
    { 0, { "MM\0+", 4 } },
    { 80, { "CT", 2 } },
} };

bool HasMark(const std::string& path)
{
    std::string front(kMarksEnd, '\0');
    std::ifstream(path, std::ios::binary).read(front.data(), kMarksEnd);
    return std::any_of(kMarks.begin(), kMarks.end(), [&](const Mark& mark) {
        return front.compare(mark.place, mark.bytes.size(), mark.bytes) == 0;
    });
}

// An empty or overwritten file that is called a picture is a lost picture.
bool ShouldBePicture(const std::string& path)
{
    return std::find(kPictureEndings.begin(), kPictureEndings.end(), EndingOf(path)) !=
               kPictureEndings.end() ||
           HasMark(path);
}

bool IsOfNoFormat(const Checked& checked)
{
    constexpr std::string_view kNoFormatRule = "TYM-FILE-0002";
    return checked.result.counts.size() == 1 &&
           checked.result.counts.front().rule->id == kNoFormatRule;
}

double TotalInkOf(const std::string& path, const FileCheckOptions& options)
{
    constexpr double kPercent = 100.0;
    const Picture picture = OpenPicture(path, options.asFormat, options.paths);
    return GreatestOf(MeasureInk(picture).totals) * kPercent / kFullInk;
}

std::vector<PolicyFinding> Judge(const Checked& checked, const JobOptions& options)
{
    const FileCheckOptions& check = options.check;
    return options.policy->Judge({ checked.file, InfoOf(checked.file, check.asFormat, check.paths),
                                   [&] { return TotalInkOf(checked.file, check); } });
}

void HoldAgainstPolicy(const Checked& checked, const JobOptions& options, JobResult& result)
{
    if (options.policy == nullptr)
        return;
    if (checked.Failed()) {
        result.told["policy"] = PolicyNotJudged();
        return;
    }
    const std::vector<PolicyFinding> findings = Judge(checked, options);
    result.told["policy"] = AsJson(findings);
    if (options.telling == Telling::Text)
        result.text += TextOf(findings);
}

JobResult CheckedResult(const JobRequest& request, const JobOptions& options)
{
    const Checked checked = CheckPicture(request.path, options.check);
    JobResult result = ResultOf(checked, options);
    if (!request.isNamed && IsOfNoFormat(checked) && !ShouldBePicture(request.path))
        result.told["verdict"] = kNoPicture;
    return result;
}

JobResult ResultOrFinding(const JobRequest& request, const JobOptions& options)
{
    try {
        return Guard(request.path, [&] { return CheckedResult(request, options); });
    } catch (const FileFailure& failure) {
        const std::string found = "The check could not go on: " + failure.WhatHappened() + ".";
        return ResultOf(NotChecked(request.path, kEndedRule, found), options);
    }
}

} // namespace

std::string JobRequest::Encoded() const
{
    return (isNamed ? "+" : "-") + knownSum + '\0' + path;
}

JobRequest JobRequest::Decoded(const std::string& text)
{
    const std::size_t end = text.find('\0');
    return { text.substr(end + 1), text.front() == '+', text.substr(1, end - 1) };
}

std::string JobResult::Encoded() const
{
    return OnOneLine(Json::array({ told, text, sha256 }));
}

JobResult JobResult::Decoded(const std::string& text)
{
    Json parts = ParsedJson(text);
    return { std::move(parts[0]), parts[1].get<std::string>(), parts[2].get<std::string>() };
}

JobResult ResultOf(const Checked& checked, const JobOptions& options)
{
    JobResult result{ AsJson(checked), {}, {} };
    if (options.telling == Telling::Text) {
        std::ostringstream text;
        Print(text, checked);
        result.text = text.str();
    }
    HoldAgainstPolicy(checked, options, result);
    return result;
}

JobResult DoJob(const JobRequest& request, const JobOptions& options)
{
    std::string sum;
    try {
        if (options.withSums)
            sum = Sha256OfFile(request.path);
    } catch (const FileFailure&) { // NOLINT(bugprone-empty-catch): the check tells it
    }
    if (!sum.empty() && sum == request.knownSum)
        return { Json(nullptr), {}, std::move(sum) };
    JobResult result = ResultOrFinding(request, options);
    result.sha256 = std::move(sum);
    return result;
}

} // namespace tympan::tool
