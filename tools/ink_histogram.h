// How often each ink value occurs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

/// Pixels counted by value, from 0 on.
class Histogram {
  public:
    /// \param values how many there are
    explicit Histogram(std::size_t values) : values_(values), tables_(kTables * values) {}

    /// Counts each pixel of a row by its value, which is below the number of values.
    template <typename Value>
    void Add(std::span<const Value> row)
    {
        std::size_t x = 0;
        for (; x + kTables <= row.size(); x += kTables)
            for (std::size_t table = 0; table < kTables; ++table)
                ++tables_[table * values_ + row[x + table]];
        for (; x < row.size(); ++x)
            ++tables_[row[x]];
    }

    /// The pixels of each value.
    std::vector<std::uint64_t> Counts() const
    {
        std::vector<std::uint64_t> counts(values_);
        for (std::size_t i = 0; i < tables_.size(); ++i)
            counts[i % values_] += tables_[i];
        return counts;
    }

  private:
    // Neighbours are often equal, and a count can't go up again before it is stored. So pixels that
    // follow each other count in different tables.
    static constexpr std::size_t kTables = 4;

    std::size_t values_;
    std::vector<std::uint64_t> tables_;
};

} // namespace tympan::tool
