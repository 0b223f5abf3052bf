#include "bench/comparison.h"

#include <algorithm>
#include <ctime>
#include <exception>
#include <memory>
#include <utility>

namespace tympan::bench {

namespace {

// How a comparison's numbers travel through Google Benchmark.
constexpr const char* kLimit = "limit";
constexpr const char* kLibrary = "library";
constexpr const char* kWanted = "wanted";

// The processor's time of this thread, what the system does for it included. Nothing here waits,
// for the files are in the page cache; so this is the time on the clock, less what other programs
// take.
double ProcessorSeconds()
{
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Measure(const Sides& sides, benchmark::State& state)
{
    std::vector<double> limit;
    std::vector<double> library;
    for (auto round : state) {
        static_cast<void>(round);
        limit.push_back(SecondsOf(sides.limit));
        library.push_back(SecondsOf(sides.measured));
        state.SetIterationTime(library.back());
    }
    state.counters[kLimit] = Median(std::move(limit));
    state.counters[kLibrary] = Median(std::move(library));
}

// A run for nothing: caches, page tables, clock rate.
void RunFirst(const Contender& contender)
{
    SecondsOf(contender);
    if (contender.verify)
        contender.verify();
}

void Run(const Comparison& comparison, benchmark::State& state)
{
    try {
        const Sides sides = comparison.make();
        RunFirst(sides.limit);
        RunFirst(sides.measured);
        Measure(sides, state);
        if (comparison.wanted)
            state.counters[kWanted] = *comparison.wanted;
    } catch (const std::exception& failure) {
        state.SkipWithError(failure.what());
    }
}

std::optional<double> CounterOf(const benchmark::BenchmarkReporter::Run& run, const char* name)
{
    const auto counter = run.counters.find(name);
    return counter == run.counters.end() ? std::nullopt
                                         : std::optional<double>(counter->second.value);
}

std::string Ratio(std::optional<double> ratio)
{
    char text[32] = "";
    if (ratio)
        std::snprintf(text, sizeof text, "%.2f", *ratio);
    return text;
}

std::string Time(double seconds)
{
    char text[32] = "";
    if (seconds < 1e-4)
        std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
    else
        std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
    return text;
}

} // namespace

double SecondsOf(const Contender& contender)
{
    if (contender.prepare)
        contender.prepare();
    const double start = ProcessorSeconds();
    contender.run();
    return ProcessorSeconds() - start;
}

void Register(Comparison comparison)
{
    const auto kept = std::make_shared<const Comparison>(std::move(comparison));
    benchmark::RegisterBenchmark(kept->what.c_str(),
                                 [kept](benchmark::State& state) { Run(*kept, state); })
        ->UseManualTime()
        ->Iterations(kept->rounds);
}

bool FigureReporter::ReportContext(const Context& context)
{
    const auto& load = context.cpu_info.load_avg;
    if (form_ == Form::Table)
        std::fprintf(out_, "%d processors, load %.2f\n", context.cpu_info.num_cpus,
                     load.empty() ? 0.0 : load.front());
    return true;
}

void FigureReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs)
        figures_.push_back({ run.run_name.function_name, CounterOf(run, kLimit).value_or(0.0),
                             CounterOf(run, kLibrary).value_or(0.0), CounterOf(run, kWanted),
                             run.error_occurred ? run.error_message : std::string() });
}

void FigureReporter::Finalize()
{
    form_ == Form::Json ? PrintJson() : PrintTable();
}

void FigureReporter::PrintTable() const
{
    std::fprintf(out_, "%-60s %12s %12s %6s %6s\n", "what", "limit", "library", "ratio", "wanted");
    for (const Figure& figure : figures_)
        if (figure.failure.empty())
            std::fprintf(out_, "%-60s %12s %12s %6s %6s\n", figure.what.c_str(),
                         Time(figure.limit).c_str(), Time(figure.measured).c_str(),
                         Ratio(figure.limit / figure.measured).c_str(),
                         Ratio(figure.wanted).c_str());
        else
            std::fprintf(out_, "%-60s failed: %s\n", figure.what.c_str(), figure.failure.c_str());
}

// The texts are this program's own, without anything that JSON would have escaped.
void FigureReporter::PrintJson() const
{
    const char* before = "[";
    for (const Figure& figure : figures_) {
        std::fprintf(out_, "%s\n  { \"what\": \"%s\", ", std::exchange(before, ","),
                     figure.what.c_str());
        if (figure.failure.empty())
            std::fprintf(
                out_, "\"limit_s\": %.9f, \"library_s\": %.9f, \"ratio\": %.4f, \"wanted\": %s }",
                figure.limit, figure.measured, figure.limit / figure.measured,
                figure.wanted ? Ratio(figure.wanted).c_str() : "null");
        else
            std::fprintf(out_, "\"error\": \"%s\" }", figure.failure.c_str());
    }
    std::fprintf(out_, "%s\n", figures_.empty() ? "[]" : "\n]");
}

} // namespace tympan::bench
