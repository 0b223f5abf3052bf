// The value of `--rows`.
#pragma once

#include <cstdint>
#include <string>

namespace tympan::tool {

/// Rows from `first` up to and without `end`, counted from 0.
struct RowRange {
    std::uint32_t first;
    std::uint32_t end;

    std::uint32_t Count() const { return end - first; }
};

/// Reads `A:B`, where either may be left out; all rows for an empty text.
/// \throws UsageFailure, telling the height, unless A is below B and B not above the height.
RowRange ParseRows(const std::string& text, std::uint32_t height);

/// How `--rows` is told in the help of a subcommand.
inline constexpr char kRowsType[] = "A:B";
inline constexpr char kRowsHelp[] =
    "Only rows A up to and without B, counted from 0; A: and :B go to the picture's end";

} // namespace tympan::tool
