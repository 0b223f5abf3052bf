// The quick forms of the two ways from colour indexes to ink values. They take runs that have been
// found to name colours, and trust the lengths.
#pragma once

#include "core/pixel_colour.h"
#include "lw/run_sums.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tympan {

/// The order of the two bytes of a run in a stream.
enum class RunOrder { ColourFirst, LengthFirst };

/// Stores a run at `out` with a value as its colour. \return behind it.
inline std::uint8_t* StoreRun(std::uint8_t value, std::uint8_t length, RunOrder order,
                              std::uint8_t* out)
{
    out[order == RunOrder::ColourFirst ? 0 : 1] = value;
    out[order == RunOrder::ColourFirst ? 1 : 0] = length;
    return out + sizeof(Run);
}

/// Stores the bytes of the runs at `out`, which moves on.
inline void CopyRuns(std::span<const Run> runs, RunOrder order, std::uint8_t*& out)
{
    if (order == RunOrder::ColourFirst && !runs.empty())
        std::memcpy(out, runs.data(), runs.size_bytes());
    if (order == RunOrder::LengthFirst)
        for (std::size_t i = 0; i < runs.size(); ++i)
            StoreRun(runs[i].index, runs[i].length, RunOrder::LengthFirst, out + sizeof(Run) * i);
    out += runs.size_bytes();
}

/// Both ways by one set of the processor's instructions.
struct InkForm {
    const char* name;
    /// Stores as many bytes as the stretch has pixels. \return behind them.
    std::uint8_t* (*expand)(const RunStretch& stretch, const ByteTable& values, std::uint8_t* out);
    /// Stores the runs with values in place of the indexes, none of which is above `highest`.
    /// \return behind them.
    std::uint8_t* (*translate)(std::span<const Run> runs, const ByteTable& values,
                               std::uint8_t highest, RunOrder order, std::uint8_t* out);
};

/// The forms that the processor that runs this has, the fastest first. Never empty.
std::span<const InkForm> InkForms();

} // namespace tympan
