// Checks files: what is wrong with them, where, and what to do about it.
#pragma once

#include "core/check_rule.h"
#include "platform/export.h"
#include "platform/text.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace tympan {

/// What a check comes to.
enum class Verdict {
    Valid,
    ValidWithRemarks,
    Invalid,     ///< an error was found
    Undetermined ///< the file could not be read, or no format accepts it, and no error was found
};

/// What a check found, in short.
struct CheckResult {
    Verdict verdict = Verdict::Undetermined; ///< what it comes to
    std::string_view format; ///< as in `FormatNames()`; empty when no format accepts the file
    /// The rules that were broken, in the order of their first breach, and how often each was.
    std::vector<RuleCount> counts;

    /// Of all rules together, told or not.
    std::uint64_t FindingsTotal() const
    {
        std::uint64_t total = 0;
        for (const RuleCount& one : counts)
            total += one.count;
        return total;
    }
};

/// How a file is to be checked.
struct CheckOptions {
    /// The formats that are asked, as in `FormatNames()`, or `kTiffItName`; empty: all. A single
    /// one is taken whatever the file looks like. A name that no format has accepts no file. The
    /// texts have to last as long as the check.
    std::vector<std::string_view> formats;
    /// Called now and then with the bytes that are checked and those of the file. May be empty.
    std::function<void(std::uint64_t done, std::uint64_t total)> progress;
};

/// Of one rule, so many findings of a file are given to the visitor; the others are counted.
inline constexpr std::uint64_t kFindingsToldOfEachRule = 100;

/// Checks a file by the first format that accepts it, to the end of what can be read. Its time is
/// linear in the file's size and its memory constant, whatever the file holds.
/// \param path of the file; the path resolver is asked for it.
/// \param visit is given each finding as it is found. May be empty.
/// \param options which formats are asked, and who is told of the progress.
/// \throws what `visit` and `options.progress` throw, which must be neither a file failure nor one of
///   memory. A file that can't be read is a finding.
TYMPAN_API CheckResult CheckFile(const CString& path,
                                 const std::function<void(const Finding& finding)>& visit,
                                 const CheckOptions& options = {});

/// The list of identifiers: the rules of all checks, retired ones too, those of a format together
/// and in the order of their numbers.
TYMPAN_API std::vector<const CheckRule*> CheckRules();

} // namespace tympan
