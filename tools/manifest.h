// The manifest of a run: what became of each file, a line of JSON for each, in the order of the
// walk. It is written as the run goes on, and a later run goes by it to pass over what hasn't
// changed.
#pragma once

#include "batch_walk.h"
#include "standard_output.h"

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// A line: a file, how it was known then, and what its check came to.
struct ManifestLine {
    std::string path;
    FileState state;
    /// Of the file beside it that the check of a JPEG reads too; nothing when there was none.
    std::optional<FileState> sideFile;
    std::string sha256; ///< in digits; empty when it wasn't asked for
    Json outcome;       ///< the keys of `AsJson(Checked)` that `OutcomeOf` keeps
};

/// What of a file's object outlasts the run: verdict, format and the numbers of findings.
Json OutcomeOf(const Json& told);

/// The first line: what besides the files decides what their check comes to.
/// \param policySum of the policy's file; empty without one
Json ManifestHead(const std::string& asFormat, const std::string& policySum);

/// Writes beside the manifest's place, under its name with ".partial" behind it, each line as a
/// whole. An interrupted run leaves that file, to be gone by like a manifest.
class ManifestWriter {
  public:
    /// \throws FileFailure, naming the manifest; UsageFailure when it is "-".
    ManifestWriter(const std::string& path, const Json& head);
    ManifestWriter(const ManifestWriter&) = delete;
    ManifestWriter& operator=(const ManifestWriter&) = delete;
    ~ManifestWriter();

    /// Where it is written to meanwhile.
    const std::string& WritingPath() const { return writingPath_; }
    void Write(const ManifestLine& line);
    /// Brings the lines to the disk and gives the manifest its name.
    void Commit();

  private:
    void Open();
    void Put(const Json& line);

    std::string path_;
    std::string writingPath_;
    int file_ = -1;
};

/// Whether a path is one under which a manifest that isn't complete waits.
bool IsPartialOf(const std::string& partial, const std::string& manifest);

/// Reads a manifest side by side with a walk, and holds one line at a time. Lines that are torn, or
/// not in the order of a walk, count as missing: their files are checked again.
class ManifestReader {
  public:
    /// \throws FileFailure when it can't be read; UsageFailure when it is no manifest.
    explicit ManifestReader(const std::string& path);

    const std::string& Path() const { return path_; }
    /// The manifest's first line.
    const Json& Head() const { return head_; }
    /// The line of a path; null when there is none. Each path has to be behind the one before. The
    /// line lasts until the next call.
    const ManifestLine* Find(std::string_view path);

  private:
    void Advance();

    std::string path_;
    std::ifstream file_;
    Json head_;
    std::optional<ManifestLine> current_;
};

} // namespace tympan::tool
