// Where things stand in a line-work file behind the common header, and what a row is made of.
//
//   1080                       number of colours, one byte
//   2048 + 18 * (i - 1)        the record of colour i, from 1
//   2048 + 18 * colours        the rows, one behind the other: a delimiter, runs, a delimiter
//
// Everything is single bytes. A delimiter is two zeros; so where two rows meet there are four.
#pragma once

#include "core/header_layout.h"

#include <cstddef>
#include <cstdint>

namespace tympan {

inline constexpr std::int64_t kLwType = kHeaderFileType.offset; // "LW", behind the name
inline constexpr std::int64_t kLwColoursNumber = kHeaderEnd;
inline constexpr std::int64_t kLwColours = 2048;
inline constexpr std::size_t kLwColourBytes = 18;
inline constexpr std::size_t kLwMostColours = 255;

/// The index of a grey value in the table of a grey file. Index 0 stays free, so 256 greys have 255
/// indexes, and 64 goes with 63.
constexpr std::uint8_t LwIndexOfGrey(std::uint8_t grey)
{
    return static_cast<std::uint8_t>(grey < 64 ? grey + 1 : grey);
}
/// The grey value that stands for an index in that table.
constexpr std::uint8_t LwGreyOfIndex(std::uint8_t index)
{
    return static_cast<std::uint8_t>(index <= 64 ? index - 1 : index);
}

constexpr std::int64_t LwFirstRow(std::size_t colours)
{
    return kLwColours + static_cast<std::int64_t>(kLwColourBytes * colours);
}

/// One record of a row: the index of a colour, from 1, and a length in pixels.
struct Run {
    std::uint8_t index;
    std::uint8_t length;
};
static_assert(sizeof(Run) == 2 && alignof(Run) == 1);

inline constexpr std::uint64_t kLongestRun = 255;
inline constexpr std::uint64_t kLwDelimiterBytes = sizeof(Run);
inline constexpr std::size_t kLwDelimiters = 2; // of a row

constexpr bool IsDelimiter(Run run)
{
    return run.index == 0 && run.length == 0;
}

} // namespace tympan
