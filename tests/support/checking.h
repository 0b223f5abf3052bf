// Checks bytes as a file, and tells the findings in a short form.
#pragma once

#include "platform/memory_files.h"
#include "tympan/check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::test {

/// As "LW-0005 row 1 byte 2098".
inline std::string ShortForm(const Finding& finding)
{
    std::string text(finding.rule->id.substr(4));
    if (finding.place.row)
        text += " row " + std::to_string(*finding.place.row);
    if (finding.place.offset)
        text += " byte " + std::to_string(*finding.place.offset);
    return text;
}

struct CheckedBytes {
    CheckResult result;
    std::vector<std::string> findings;
    std::vector<std::string> sentences;
};

inline CheckedBytes CheckPath(const char* path, const CheckOptions& options = {})
{
    const std::vector<const CheckRule*> rules = CheckRules();
    CheckedBytes checked;
    checked.result = CheckFile(
        path,
        [&](const Finding& finding) {
            EXPECT_EQ(std::count(rules.begin(), rules.end(), finding.rule), 1) << finding.rule->id;
            checked.findings.push_back(ShortForm(finding));
            checked.sentences.push_back(finding.found);
        },
        options);
    return checked;
}

/// \param format the format to take the bytes as; empty to ask the formats
inline CheckedBytes CheckBytes(const std::vector<unsigned char>& bytes,
                               std::string_view format = {})
{
    MemoryFileSystem files;
    files.Put("file", std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    const ScopedFileSystem scoped(files);
    CheckOptions options;
    if (!format.empty())
        options.formats = { format };
    return CheckPath("file", options);
}

/// A change of a file's bytes.
struct Edit {
    std::size_t at;
    std::size_t cut; ///< so many bytes go
    std::string put; ///< and these come
};

inline std::vector<unsigned char> Edited(std::vector<unsigned char> bytes,
                                         const std::vector<Edit>& edits)
{
    for (const Edit& edit : edits) {
        const std::size_t cut = std::min(edit.cut, bytes.size() - edit.at);
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(edit.at);
        bytes.insert(bytes.erase(at, at + static_cast<std::ptrdiff_t>(cut)), edit.put.begin(),
                     edit.put.end());
    }
    return bytes;
}

inline constexpr std::size_t kToTheEnd = ~std::size_t{ 0 };

/// A fault and all that the check has to tell of it.
struct CheckCase {
    const char* name;
    std::vector<Edit> edits;
    std::vector<std::string> findings;
};

inline bool IsCalledValid(const CheckedBytes& checked)
{
    return checked.result.verdict == Verdict::Valid ||
           checked.result.verdict == Verdict::ValidWithRemarks;
}

} // namespace tympan::test
