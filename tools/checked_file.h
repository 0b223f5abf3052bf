// The check of one file, by the library and by what the command adds to it, and how it is told.
#pragma once

#include "page_paths.h"
#include "standard_output.h"

#include <tympan/check.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// As "valid with remarks".
std::string_view NameOf(Verdict verdict);
/// As "error".
std::string_view NameOf(Severity severity);

/// The rules that the command adds to the library's.
std::vector<const CheckRule*> CommandRules();

/// How files are checked, whichever they are.
struct FileCheckOptions {
    std::string asFormat; ///< a value of `--as`
    PathOptions paths;    ///< where a page's pictures are
};

/// A file and what its check told.
struct Checked {
    std::string file;
    std::vector<Finding> findings;
    CheckResult result;

    bool Failed() const
    {
        return result.verdict == Verdict::Invalid || result.verdict == Verdict::Undetermined;
    }
};

/// \throws UsageFailure for a format that this build doesn't read; FileFailure when the file can't
/// be looked at any more.
Checked CheckPicture(const std::string& file, const FileCheckOptions& options);

/// What is told of a file whose check could not be done: one finding, and no verdict.
Checked NotChecked(const std::string& file, const CheckRule& rule, const std::string& found);

/// The object that `--json` writes.
Json AsJson(const Checked& checked);

/// A line for the file and one for each finding; the remedy stands below the first of its rule.
void Print(std::ostream& out, const Checked& checked);

} // namespace tympan::tool
