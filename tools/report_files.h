// The files that a report is made of.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tympan::tool {

struct ReportFile {
    std::string path;
    std::string shown; ///< what the report calls it: from the folder on, if only one was asked for
    std::uint64_t bytes = 0; ///< its size
    bool isNamed = false;    ///< by the person, and not found in a folder
};

struct ReportFiles {
    std::vector<ReportFile> files;
    bool areAll = true; ///< whether each folder could be read; one that couldn't has been told
};

/// All plain files of some folders and of those in them, in the order of their names; but no hidden
/// ones, and none of a report.
/// \param asked folders and files
ReportFiles FindReportFiles(const std::vector<std::string>& asked);

} // namespace tympan::tool
