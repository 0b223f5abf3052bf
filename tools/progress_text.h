// The line that tells how far long work is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tympan::tool {

/// What the steps of a work are, so that its speed can be told.
enum class ProgressUnit {
    Rows,
    Bytes,
    Shares, ///< parts of the work that have no size of their own
};

struct ProgressState {
    std::uint64_t done;  ///< steps
    std::uint64_t total; ///< above 0
    ProgressUnit unit;
    std::chrono::duration<double> passed; ///< since the work began
};

/// As "42%, 310 MB/s, 12 s left". The speed is that of the whole work so far, so that it is steady;
/// the time left assumes that it stays.
std::string ProgressText(const ProgressState& state);

} // namespace tympan::tool
