// Holds the library's speed against limits measured in the same run, and prints the ratios.
//
//   tympan_bench [--json] [options of Google Benchmark, such as --benchmark_filter=rows]
//
// A report, not a test: a ratio below the one wanted changes nothing in the exit status.
#include "bench/benches.h"
#include "bench/comparison.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <exception>
#include <string_view>

namespace {

using tympan::bench::BigPicture;
using tympan::bench::FigureReporter;
using tympan::bench::MadeOnce;
using tympan::bench::PictureSize;

// Each 192 MB: no cache of a processor holds them, or the bitmap that is made of them.
constexpr PictureSize kLarge{ 8000, 6000 };
constexpr PictureSize kWide{ 20000, 2400 };

// Takes the option out of the arguments, if it is there.
bool TakeOption(std::string_view option, int& argc, char** argv)
{
    char** const end = argv + argc;
    char** const kept = std::remove_if(
        argv + 1, end, [option](const char* argument) { return argument == option; });
    argc = static_cast<int>(kept - argv);
    *kept = nullptr;
    return kept != end;
}

void RegisterAll(const tympan::test::TemporaryFolder& folder)
{
    const auto large = MadeOnce<BigPicture>(folder.Path("large.ct"), kLarge);
    const auto wide = MadeOnce<BigPicture>(folder.Path("wide.ct"), kWide);
    tympan::bench::RegisterRows(kLarge, large);
    tympan::bench::RegisterRows(kWide, wide);
    tympan::bench::RegisterPreview(large, folder.Path(""));
    tympan::bench::RegisterColours();
    tympan::bench::RegisterLineWork(folder.Path(""));
    tympan::bench::RegisterJpeg(folder.Path(""));
    tympan::bench::RegisterTiff(folder.Path(""));
    tympan::bench::RegisterTiffIt(large, folder.Path(""));
    tympan::bench::RegisterGrowth(folder.Path(""));
}

} // namespace

int main(int argc, char** argv)
{
    const auto form =
        TakeOption("--json", argc, argv) ? FigureReporter::Form::Json : FigureReporter::Form::Table;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    try {
        const tympan::test::TemporaryFolder folder;
        RegisterAll(folder);
        FigureReporter reporter(form, stdout);
        benchmark::RunSpecifiedBenchmarks(&reporter);
        benchmark::Shutdown();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tympan_bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
