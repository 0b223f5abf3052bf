// What a benchmark here is: the library at some work, held against a limit that is measured in turn
// with it, so that a figure means the same on any machine.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tympan::bench {

/// One side of a comparison.
struct Contender {
    std::function<void()> run;       ///< timed; what it throws as a std::exception ends the figure
    std::function<void()> prepare{}; ///< called before each run, not timed; may be empty
};

struct Comparison {
    std::string what;
    Contender limit;
    Contender measured;
    std::optional<double>
        wanted{};    ///< the ratio, limit's time by library's; none is for the record
    int rounds = 31; ///< pairs of runs, of which the median counts
};

/// Has Google Benchmark run the comparison; its name there is `what`.
void Register(Comparison comparison);

/// Gathers the comparisons that were run and prints them at the end.
class FigureReporter : public benchmark::BenchmarkReporter {
  public:
    enum class Form { Table, Json };

    FigureReporter(Form form, std::FILE* out) : form_(form), out_(out) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

  private:
    struct Figure {
        std::string what;
        double limit; // seconds
        double measured;
        std::optional<double> wanted;
        std::string failure; // empty for a figure that stands
    };

    void PrintTable() const;
    void PrintJson() const;

    Form form_;
    std::FILE* out_;
    std::vector<Figure> figures_;
};

} // namespace tympan::bench
