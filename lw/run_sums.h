// What is asked of many runs at a time: how many of them hold so many pixels, whether all of them
// name colours, and where the first delimiter stands.
#pragma once

#include "lw/lw_layout.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// Runs that stand one behind the other in a row, and the sum of their lengths.
struct RunStretch {
    std::span<const Run> runs;
    std::uint64_t pixels = 0;
};

/// As few runs from the start of `runs` as hold `wanted` pixels or more; all of them when they hold
/// fewer. `expected` runs are likely not to hold them; the answer doesn't depend on it.
RunStretch RunsThatHold(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected = 0);
/// The same, run by run.
RunStretch RunsThatHoldPlain(std::span<const Run> runs, std::uint64_t wanted,
                             std::size_t expected = 0);

/// The same for a place inside a row, where no delimiter follows.
RunStretch RunsInsideThatHold(std::span<const Run> runs, std::uint64_t wanted,
                              std::size_t expected = 0);

/// The first of these by one set of the processor's instructions.
struct RunSumForm {
    const char* name;
    RunStretch (*runsThatHold)(std::span<const Run> runs, std::uint64_t wanted,
                               std::size_t expected);
};

/// The forms that the processor that runs this has, the fastest first; none for one that has only
/// the plain form.
std::span<const RunSumForm> RunSumForms();

/// Sound rows that stand one behind the other at the start of `runs`: a delimiter, runs of which the
/// last is what brings them to exactly `width` pixels, a delimiter. As many as `lengths` takes, which
/// receives the number of runs of each; there may be more of them than are found.
/// \return their number.
std::size_t SoundRows(std::span<const Run> runs, std::uint64_t width,
                      std::span<std::uint32_t> lengths);

/// Whether each of the runs has an index from 1 to `colours`.
bool AllNameColours(std::span<const Run> runs, unsigned int colours);

/// The runs in front of the first delimiter; all of them where there is none.
std::span<const Run> RunsBeforeDelimiter(std::span<const Run> runs);

} // namespace tympan
