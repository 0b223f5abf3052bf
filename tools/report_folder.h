// The folder of a report, which takes its name when it is whole.
#pragma once

#include <string>

namespace tympan::tool {

/// A report that is written in a hidden folder beside its place: the page, its style, scripts and
/// data, and numbered images. `Commit` puts it in its place; without it the destructor, or a signal
/// that ends the program, removes it. There may be one at a time.
class ReportFolder {
  public:
    /// Makes the folder, with all that is the same in every report.
    /// \param path nothing, an empty folder, or an earlier report and nothing else
    /// \throws FileFailure for any other, and when the folder can't be made.
    explicit ReportFolder(const std::string& path);
    ReportFolder(const ReportFolder&) = delete;
    ReportFolder& operator=(const ReportFolder&) = delete;
    ~ReportFolder();

    /// As the person gave it; for messages.
    const std::string& Path() const { return path_; }
    /// Where a file is written that the report has under this name.
    std::string WritingPath(const std::string& name) const { return writing_ + "/" + name; }
    /// Where a picture may be written that isn't part of the report.
    std::string ScratchPath() const;
    /// The name of a further image.
    std::string NextImage();
    /// Whether a failure is one of the report's own files: then the report can't be written.
    bool Holds(const std::string& file) const;

    /// Gives the report its name in place of what is there.
    /// \throws FileFailure; what is there stays.
    void Commit();

  private:
    void WriteAssets() const;
    void Remove();

    std::string path_;
    std::string target_;    // the path behind symbolic links
    std::string temporary_; // beside it; empty once nothing is left in it
    std::string writing_;   // inside of that
    int handle_ = -1;       // of `writing_`
};

/// The data of a report, under this name.
inline constexpr char kReportData[] = "assets/data.js";

/// The file that every report has, and nothing else.
inline constexpr char kReportMarker[] = ".tympan-report";

/// Whether this is the name of something in a report's folder that is the report's.
bool IsReportsOwn(const std::string& name);

} // namespace tympan::tool
