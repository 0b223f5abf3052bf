// What a worker does with one file of a run, and how that is asked for and told.
#pragma once

#include "checked_file.h"
#include "policy.h"
#include "standard_output.h"

#include <string>
#include <string_view>

namespace tympan::tool {

/// The verdict on a file that nobody named and that has nothing of a picture.
inline constexpr std::string_view kNoPicture = "not a picture";

struct JobRequest {
    std::string path;
    bool isNamed = false; ///< named by the person, so that it should be a picture
    std::string knownSum; ///< what its sum was when it was last found sound; empty when not known

    std::string Encoded() const;
    static JobRequest Decoded(const std::string& text);
};

struct JobResult {
    Json told;          ///< as `--json-lines` writes it; null when the file has its known sum
    std::string text;   ///< the same for a person, when that is asked for
    std::string sha256; ///< in digits, when that is asked for

    std::string Encoded() const;
    static JobResult Decoded(const std::string& text);
};

/// How files are told.
enum class Telling { JsonLines, Text };

struct JobOptions {
    FileCheckOptions check;
    bool withSums = false;
    Telling telling = Telling::Text;
    const Policy* policy = nullptr; ///< may be null; lasts as long as the jobs
};

/// Checks a file and holds it against the policy. A file that can't be read, or ends its check in
/// any way but a crash, is a finding.
JobResult DoJob(const JobRequest& request, const JobOptions& options);

/// The result for a file whose check ended before it could tell one, and for a folder.
JobResult ResultOf(const Checked& checked, const JobOptions& options);

} // namespace tympan::tool
