// What every target does with its bytes: they become a file, in an exact block of memory, that is
// recognised and checked before the target asks its own format.
#pragma once

#include "core/factory.h"
#include "fuzz/drawn.h"
#include "platform/memory_files.h"
#include "support/require.h"
#include "tympan/check.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>

namespace tympan::fuzz {

using test::Require;

inline constexpr char kPath[] = "picture";

inline void Put(test::MemoryFileSystem& files, const char* path, Input bytes)
{
    const auto contents = std::as_bytes(bytes);
    files.Put(path, test::Bytes(contents.begin(), contents.end()));
}

/// Holds the code that an object has to those that it may have; 0 is always one.
template <typename Object>
void RequireCode(const Object& object, std::initializer_list<unsigned long> codes)
{
    const unsigned long code = object.TraceStatus();
    Require(code == 0 || std::find(codes.begin(), codes.end(), code) != codes.end(),
            "a failure's code is one that the operation has");
}

/// The verdict follows from the findings: from the errors of the file itself, which aren't those of
/// reading it.
inline CheckResult CheckedFile(const char* path, const CheckOptions& options = {})
{
    bool hasError = false;
    std::uint64_t told = 0;
    const CheckResult result = CheckFile(
        path,
        [&](const Finding& finding) {
            ++told;
            hasError |= finding.rule->severity == Severity::Error &&
                        finding.rule->id.substr(0, 8) != "TYM-FILE";
        },
        options);
    Require(hasError == (result.verdict == Verdict::Invalid), "a verdict follows from the errors");
    Require(told <= result.FindingsTotal(), "all findings that are told are counted");
    return result;
}

/// \param ask is given the files, and leaves none of them open.
template <typename Ask>
void WithFile(Input bytes, Ask&& ask)
{
    test::MemoryFileSystem files;
    Put(files, kPath, bytes);
    const ScopedFileSystem scoped(files);
    std::unique_ptr<BasePictureIF>(create_picture_object(kPath)).reset();
    CheckedFile(kPath);
    ask(files);
    Require(files.OpenCount() == 0, "all files are closed");
}

} // namespace tympan::fuzz
