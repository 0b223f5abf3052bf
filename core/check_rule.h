// What a check of a file can find: the rules, each with a permanent identifier, and what is told of
// a breach of one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tympan {

/// How bad a breach of a rule is.
enum class Severity {
    Error, ///< the file breaks its format
    Remark ///< the file is read as it was meant, but is not what a writer should write
};

/// A row of the list of identifiers. The texts last as long as the library is loaded.
struct CheckRule {
    std::string_view id;                 ///< such as "TYM-LW-0003"; never given to another rule
    Severity severity = Severity::Error; ///< of every breach
    std::string_view title;              ///< a line
    std::string_view meaning;            ///< what the finding says about the file
    std::string_view remedy;             ///< what a person can do
    bool isRetired = false;              ///< no check tells it any more; it stays listed
};

/// Where in a file. Rows count from 0, offsets are from the file's start.
struct Place {
    std::optional<std::uint64_t> row;    ///< none where the breach is of no row
    std::optional<std::uint64_t> offset; ///< in bytes; none where the breach is at no place
};

/// One breach of a rule.
struct Finding {
    const CheckRule* rule; ///< never null; lasts as long as the library is loaded
    Place place;           ///< where it was found
    std::string found;     ///< a sentence on what was found and what was expected
};

/// How often a rule was broken, told or not.
struct RuleCount {
    const CheckRule* rule; ///< never null; lasts as long as the library is loaded
    std::uint64_t count;   ///< breaches
};

} // namespace tympan
