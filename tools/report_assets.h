// The page of a report and what belongs to it, which are the same in every report.
#pragma once

#include <span>
#include <string_view>

namespace tympan::tool {

struct ReportAsset {
    const char* name; ///< of the file in tools/report
    std::string_view text;
};

/// The page, its style and its scripts.
std::span<const ReportAsset> ReportAssets();

} // namespace tympan::tool
