// Where things stand in a line-work file beside the common header, and what a row is made of. The
// records of the colours follow the headers, and the rows them, one behind the other: a delimiter,
// runs, a delimiter.
//
// Everything is single bytes. A delimiter is two zeros; so where two rows meet there are four.
#pragma once

#include "core/header_layout.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tympan {

inline constexpr HeaderPlace kLwName{ 1, kHeaderFileType.offset - 1, FieldForm::Text, "name" };
inline constexpr HeaderPlace kLwColoursNumber{ kHeaderEnd, 1, FieldForm::Byte,
                                               "number of colours" };
inline constexpr std::int64_t kLwColours = kHeaderBytes;

// The record of a colour. The inks stand in the order of the separations.
inline constexpr HeaderPlace kLwColourNumber{ 0, 1, FieldForm::Byte, "number" };
inline constexpr HeaderPlace kLwColourFlags{ 1, 1, FieldForm::Byte, "transparency" };
inline constexpr std::array<HeaderPlace, 4> kLwColourInks{ {
    { 2, 1, FieldForm::Byte, "cyan" },
    { 3, 1, FieldForm::Byte, "magenta" },
    { 4, 1, FieldForm::Byte, "yellow" },
    { 5, 1, FieldForm::Byte, "black" },
} };
inline constexpr HeaderPlace kLwColourReserved{ 6, 12, FieldForm::Unread, "reserved" };
inline constexpr std::size_t kLwColourBytes = kLwColourReserved.End();

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
