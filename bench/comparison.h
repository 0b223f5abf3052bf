// What a benchmark here is: the library at some work, held against a limit that is measured in turn
// with it, so that a figure means the same on any machine.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tympan::bench {

/// One side of a comparison.
struct Contender {
    std::function<void()> run;       ///< timed; what it throws as a std::exception ends the figure
    std::function<void()> prepare{}; ///< called before each run, not timed; may be empty
    std::function<void()> verify{};  ///< called once, after a first run that isn't timed; throws a
                                     ///< std::exception when that did wrong work; may be empty
};

struct Sides {
    Contender limit;
    Contender measured;
};

struct Comparison {
    std::string what;
    std::function<Sides()> make; ///< called when its turn comes; what it made goes with that turn
    /// The ratio, limit's time by library's; none is for the record.
    std::optional<double> wanted{};
    int rounds = 31; ///< pairs of runs, of which the median counts
};

/// The contender's time for one run: the processor's, in seconds.
double SecondsOf(const Contender& contender);

/// What several comparisons share, made when the first of them asks for it.
template <typename T>
using Source = std::function<std::shared_ptr<const T>()>;

template <typename T, typename... Arguments>
Source<T> MadeOnce(Arguments... arguments)
{
    const auto made = std::make_shared<std::shared_ptr<const T>>();
    return [=] {
        if (*made == nullptr)
            *made = std::make_shared<const T>(arguments...);
        return *made;
    };
}

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
