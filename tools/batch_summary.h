// What a run comes to: how many files there were of each kind, and how fast it went.
#pragma once

#include "batch_job.h"
#include "standard_output.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace tympan::tool {

class BatchSummary {
  public:
    BatchSummary() : begin_(Clock::now()) {}

    /// Counts a file by its object, of this run's check or an earlier one's.
    void Count(const Json& told);
    /// Counts on top of that.
    /// @{
    void CountChecked(std::uint64_t bytes) { bytes_ += bytes; }
    void CountUnchanged() { ++unchanged_; }
    void CountCrashed() { ++crashed_; }
    /// @}
    /// Counts what is no file to be checked.
    void CountSkipped() { ++skipped_; }

    /// Whether every picture is valid and keeps the policy, and every folder was read.
    bool AllIsWell() const { return invalid_ + undetermined_ + againstPolicy_ == 0; }

    /// The object that ends the lines of JSON.
    Json AsJson() const;
    /// A few lines for a person.
    std::string Text() const;

  private:
    using Clock = std::chrono::steady_clock;

    struct Row;
    static const Row kRows[];

    double Seconds() const;
    double BytesPerSecond() const;

    Clock::time_point begin_;
    std::uint64_t files_ = 0;
    std::uint64_t valid_ = 0;
    std::uint64_t remarks_ = 0;
    std::uint64_t invalid_ = 0;
    std::uint64_t undetermined_ = 0;
    std::uint64_t againstPolicy_ = 0;
    std::uint64_t skipped_ = 0;
    std::uint64_t unchanged_ = 0;
    std::uint64_t crashed_ = 0;
    std::uint64_t bytes_ = 0;
};

} // namespace tympan::tool
