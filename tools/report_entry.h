// What a report tells of one file.
#pragma once

#include "page_paths.h"
#include "report_files.h"
#include "report_folder.h"
#include "standard_output.h"

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace tympan::tool {

/// Makes the entries of a report one after the other.
class ReportEntries {
  public:
    /// What has to be known of all of them.
    struct Wishes {
        PathOptions paths;               ///< where the pictures of pages are
        unsigned int limitPercent = 300; ///< the total ink above which the area is told
    };

    /// \param files all of the report, which outlive this
    ReportEntries(std::span<const ReportFile> files, const Wishes& wishes, ReportFolder& folder);

    /// Checks, measures and draws a file, by its place among all. What keeps it from being read or
    /// shown is part of the entry.
    /// \return nothing for a file that is no picture by its content or its name.
    /// \throws FileFailure when the report can't be written.
    std::optional<Json> EntryOf(std::size_t index);

  private:
    void AddPictures(const std::string& path, Json& entry);
    void AddPage(const class Picture& page, Json& entry);

    std::span<const ReportFile> files_;
    const Wishes& wishes_;
    ReportFolder& folder_;
    std::map<std::string, std::size_t> indices_; // by real path
};

} // namespace tympan::tool
