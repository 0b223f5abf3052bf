// How far long work is, for a person at a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tympan::tool {

/// Draws a line on standard error when that is a terminal and the work takes more than half a
/// second; wipes it out at the end.
class Progress {
  public:
    /// \param total the steps of the work, in any unit
    Progress(const std::string& what, std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Advance(std::uint64_t steps);

  private:
    using Clock = std::chrono::steady_clock;

    void Draw();

    std::string what_;
    std::uint64_t total_;
    std::uint64_t done_ = 0;
    Clock::time_point nextDrawing_;
    bool onTerminal_;
    bool drawn_ = false;
    int shownPercent_ = -1;
};

} // namespace tympan::tool
