#include "report_files.h"

#include "batch_walk.h"
#include "failure.h"

#include <algorithm>
#include <filesystem>

namespace tympan::tool {

namespace {

namespace fs = std::filesystem;

// The path from the folder on that was asked for.
fs::path BelowAsked(const std::string& path, const std::vector<std::string>& asked)
{
    for (const std::string& folder : asked) {
        fs::path below = fs::path(path).lexically_normal().lexically_relative(
            fs::path(folder).lexically_normal());
        if (!below.empty() && *below.begin() != "..")
            return below;
    }
    return path;
}

bool IsHidden(const fs::path& below)
{
    return std::any_of(below.begin(), below.end(), [](const fs::path& name) {
        return name.string().starts_with('.') && name != ".";
    });
}

} // namespace

ReportFiles FindReportFiles(const std::vector<std::string>& asked)
{
    ReportFiles found;
    FileWalk walk(asked, true);
    while (const std::optional<WalkedEntry> entry = walk.Next()) {
        fs::path below = BelowAsked(entry->path, asked);
        if (entry->kind == WalkedEntry::Kind::UnreadableFolder) {
            Report(SystemFailure(entry->path, entry->error, "The report lacks what is in it."));
            found.areAll = false;
        } else if (entry->kind == WalkedEntry::Kind::Named) {
            found.files.push_back({ entry->path, entry->path, entry->state.size, true });
        } else if (entry->kind == WalkedEntry::Kind::File && !IsHidden(below)) {
            const std::string shown = asked.size() == 1 ? below.string() : entry->path;
            found.files.push_back({ entry->path, shown, entry->state.size });
        }
    }
    return found;
}

} // namespace tympan::tool
