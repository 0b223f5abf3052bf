// How far long work is, for a person at a terminal.
#pragma once

#include "progress_text.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace tympan::tool {

/// Draws a line on standard error when that is a terminal and the work takes more than half a
/// second, unless --quiet was given; wipes it out at the end.
class Progress {
  public:
    /// \param total the steps of the work, in the unit given
    Progress(const std::string& what, std::uint64_t total, ProgressUnit unit = ProgressUnit::Rows);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Advance(std::uint64_t steps);

  private:
    using Clock = std::chrono::steady_clock;

    void Draw(Clock::time_point now);

    std::string what_;
    std::uint64_t total_;
    std::uint64_t done_ = 0;
    ProgressUnit unit_;
    Clock::time_point begin_;
    Clock::time_point nextDrawing_;
    bool isShown_;
    bool drawn_ = false;
};

} // namespace tympan::tool
