#include "report_entry.h"

#include "checked_file.h"
#include "failure_json.h"
#include "folder_names.h"
#include "info_json.h"
#include "ink_measure.h"
#include "names.h"
#include "page_info.h"
#include "page_preview.h"
#include "picture.h"
#include "report_images.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string_view>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::uint32_t kPageSide = 1600; // pixels, before it is made smaller
constexpr std::uint64_t kMostMemory = std::uint64_t{ 4 } << 30U; // of a page as it is drawn

// A file of such a name is meant to be a picture, whatever is in it.
bool HasPictureEnding(const std::string& path)
{
    constexpr std::array<std::string_view, 7> kEndings{ ".ct",   ".lw",  ".pg",  ".jpg",
                                                        ".jpeg", ".tif", ".tiff" };
    return std::find(kEndings.begin(), kEndings.end(), EndingOf(path)) != kEndings.end();
}

Json ProblemOf(const FileFailure& failure)
{
    Json problem = AsJson(failure);
    problem["advice"] = WithReplacements(failure.Advice());
    return problem;
}

// What the check told, of the file as the report calls it.
void AddFindings(const Checked& checked, Json& entry)
{
    const Json told = AsJson(checked);
    for (const char* const key : { "verdict", "format", "findings", "findings_total", "counts" })
        entry[key] = told[key];
}

// What the header says, also of a file that is refused later on.
void AddHeader(const std::string& path, const PathOptions& paths, Json& entry)
{
    const Json info = InfoOf(path, "", paths);
    for (const char* const key :
         { "kind", "width", "height", "width_in", "height_in", "resolution", "resolution_x",
           "resolution_y", "separations", "index", "colors" })
        if (info.contains(key))
            entry[key] = info[key];
}

// ---- ink

double Percent(double part, double whole)
{
    return whole > 0.0 ? 100.0 * part / whole : 0.0;
}

double InkPercent(unsigned int ink)
{
    return Percent(ink, kFullInk);
}

Json AsJson(const SeparationInk& separation, std::uint64_t pixels)
{
    return { { "name", WithReplacements(separation.name) },
             { "coverage", Percent(static_cast<double>(SumOf(separation.counts)),
                                   static_cast<double>(pixels) * kFullInk) },
             { "least", InkPercent(LeastOf(separation.counts)) },
             { "greatest", InkPercent(GreatestOf(separation.counts)) } };
}

Json AsJson(const InkFigures& figures, unsigned int limitPercent)
{
    Json separations = Json::array();
    for (const SeparationInk& separation : figures.separations)
        separations.push_back(AsJson(separation, figures.pixels));
    const std::uint64_t over = PixelsOver(figures.totals, limitPercent);
    return {
        { "separations", std::move(separations) },
        { "total",
          { { "greatest", InkPercent(GreatestOf(figures.totals)) },
            { "percentile_99_9", InkPercent(Percentile999Of(figures.totals)) },
            { "limit", limitPercent },
            { "over", Percent(static_cast<double>(over), static_cast<double>(figures.pixels)) },
            { "pixels_over", over } } }
    };
}

// Nothing is added for a picture that stores no ink.
void AddInk(const Picture& picture, unsigned int limitPercent, Json& entry)
{
    try {
        RequireRows(picture, picture.Height());
        entry["ink"] = AsJson(MeasureInk(picture), limitPercent);
    } catch (const FileFailure&) { // NOLINT(bugprone-empty-catch): what is wrong is told already
    }
}

// ---- pages

// The corners of a placed picture in inches from the page's upper left corner; nothing for one whose
// place is no number.
Json OutlineOf(const Placement& placement)
{
    const PlacementBounds bounds = BoundsOf(placement);
    const double x = (bounds.left + bounds.right) / 2;
    const double y = (bounds.top + bounds.bottom) / 2;
    const double angle = placement.rotation / 180.0 * std::numbers::pi;
    Json corners = Json::array();
    for (const auto& [across, down] :
         { std::pair{ -0.5, -0.5 }, { 0.5, -0.5 }, { 0.5, 0.5 }, { -0.5, 0.5 } }) {
        const double right = across * placement.width;
        const double below = down * placement.height;
        corners.push_back({ x + right * std::cos(angle) + below * std::sin(angle),
                            y - right * std::sin(angle) + below * std::cos(angle) });
    }
    return std::isfinite(x + y + angle) ? corners : Json(nullptr);
}

// With the picture's own size where the entry has none.
Placement WithSize(Placement placement, const PlacedFile* file)
{
    const bool hasSize = placement.width > 0.0 && placement.height > 0.0;
    if (hasSize || file == nullptr || !file->header.is_object())
        return placement;
    placement.width = file->header.value("width_in", Json()).is_number()
                          ? file->header["width_in"].get<double>()
                          : 0.0;
    placement.height = file->header.value("height_in", Json()).is_number()
                           ? file->header["height_in"].get<double>()
                           : 0.0;
    return placement;
}

} // namespace

ReportEntries::ReportEntries(std::span<const ReportFile> files, const Wishes& wishes,
                             ReportFolder& folder)
    : files_(files), wishes_(wishes), folder_(folder)
{
    for (std::size_t index = 0; index < files_.size(); ++index)
        indices_.emplace(RealPath(files_[index].path), index);
}

std::optional<Json> ReportEntries::EntryOf(std::size_t index)
{
    const ReportFile& file = files_[index];
    const Checked checked = CheckPicture(file.path, { "", wishes_.paths });
    if (checked.result.format.empty() && !file.isNamed && !HasPictureEnding(file.path))
        return std::nullopt;
    Json entry = ObjectOf(file.shown);
    entry["id"] = index;
    entry["bytes"] = file.bytes;
    AddFindings(checked, entry);
    AddHeader(file.path, wishes_.paths, entry);
    for (const char* const image : { "thumb", "shown" })
        entry[image] = nullptr;
    entry["plates"] = Json::array();
    try {
        Guard(file.path, [&] { AddPictures(file.path, entry); });
    } catch (const FileFailure& failure) {
        if (folder_.Holds(failure.File()))
            throw;
        entry["problem"] = ProblemOf(failure);
    }
    return entry;
}

void ReportEntries::AddPictures(const std::string& path, Json& entry)
{
    const Picture picture = OpenPicture(path, "", wishes_.paths);
    if (picture.AsPage() != nullptr) {
        AddPage(picture, entry);
        return;
    }
    AddImages(picture, folder_, entry);
    AddInk(picture, wishes_.limitPercent, entry);
}

void ReportEntries::AddPage(const Picture& page, Json& entry)
{
    const std::vector<ToldEntry> told = TellEntries(page.Path(), *page.AsPage(), *page.Paths());
    Json placed = AsJson(told);
    for (std::size_t i = 0; i < told.size(); ++i) {
        const PlacedFile* const file = told[i].file.get();
        const auto index = file != nullptr ? indices_.find(RealPath(file->path)) : indices_.end();
        placed[i]["entry"] = index != indices_.end() ? Json(index->second) : Json(nullptr);
        placed[i]["outline"] =
            told[i].placement ? OutlineOf(WithSize(*told[i].placement, file)) : Json(nullptr);
    }
    entry["entries"] = std::move(placed);
    const std::string png = folder_.ScratchPath();
    try {
        WritePagePreview({ page.Path(), png, kPageSide, kMostMemory }, *page.AsPage(),
                         *page.Paths());
    } catch (const FailuresReported&) { // NOLINT(bugprone-empty-catch): the entries tell it too
    }
    AddImagesOf(png, folder_, entry);
}

} // namespace tympan::tool
