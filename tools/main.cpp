// The command: reads the options, runs one subcommand and tells what became of it.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"

#include <tympan/tympan.h>

#include <array>
#include <iostream>
#include <new>
#include <string>

namespace {

using tympan::tool::ExitStatus;

constexpr std::array kSubcommands{
    tympan::tool::AddInfo,   tympan::tool::AddPreview, tympan::tool::AddRows,
    tympan::tool::AddImport, tympan::tool::AddExport,  tympan::tool::AddCrop,
    tympan::tool::AddStream, tympan::tool::AddCheck,   tympan::tool::AddIndex,
    tympan::tool::AddPage,   tympan::tool::AddSample,
};

constexpr char kFooter[] = R"(Examples:
  tympan import photo.jpg -o photo.ct
  tympan info photo.ct
  tympan check photo.ct map.lw
  tympan preview photo.ct -o photo.png --fit 1200
  tympan rows photo.ct --separation cyan -o cyan.tif
  tympan export photo.ct -o photo.tif
  tympan crop map.lw detail.lw --left 1001 --right 3000
  tympan stream map.lw -o map.runs --separation black
  tympan index map.lw
  tympan page job.pg --size 8.5x11 --resolution 300 --place photo.ct@1,1
  tympan sample job --photo photo.jpg --line-work map.png

Exit status: 0 fine, 1 a file failed, 2 wrong usage.
`tympan SUBCOMMAND --help` tells more.)";

void Declare(CLI::App& app)
{
    app.name("tympan");
    app.require_subcommand(0, 1); // that one is missing is told by Run, after unknown words
    app.set_version_flag("--version", std::string("tympan ") + tympan::Version());
    app.footer(kFooter);
    for (const auto& add : kSubcommands)
        add(app);
}

// "info, preview ... or export".
std::string Subcommands(const CLI::App& app)
{
    const auto all = app.get_subcommands([](const CLI::App*) { return true; });
    std::string names;
    for (const CLI::App* const one : all)
        names += (names.empty() ? "" : one == all.back() ? " or " : ", ") + one->get_name();
    return names;
}

ExitStatus TellWrongUsage(const std::string& text)
{
    std::cerr << "tympan: " << tympan::tool::Shown(text)
              << "\n  `tympan --help` and `tympan SUBCOMMAND --help` tell how it is used.\n";
    return ExitStatus::WrongUsage;
}

ExitStatus Run(int argc, char** argv)
{
    CLI::App app("Reads, shows and converts the picture files of prepress work.");
    try {
        Declare(app);
        app.parse(argc, argv);
        if (app.get_subcommands().empty())
            return TellWrongUsage("name a subcommand: " + Subcommands(app));
        return ExitStatus::Fine;
    } catch (const CLI::Success& asked) { // --help and --version
        app.exit(asked);
        std::cout.flush();
        return std::cout ? ExitStatus::Fine : ExitStatus::FileFailed;
    } catch (const CLI::Error& failure) {
        return TellWrongUsage(failure.what());
    } catch (const tympan::tool::UsageFailure& failure) {
        return TellWrongUsage(failure.what());
    } catch (const tympan::tool::FileFailure& failure) {
        tympan::tool::Report(failure);
    } catch (const tympan::tool::FailuresReported&) { // NOLINT(bugprone-empty-catch)
    } catch (const std::bad_alloc&) {
        std::cerr << "tympan: not enough memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "tympan: " << tympan::tool::Shown(failure.what()) << '\n';
    }
    return ExitStatus::FileFailed;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        tympan::tool::HandleEndingSignals();
        return static_cast<int>(Run(argc, argv));
    } catch (...) {
        return static_cast<int>(ExitStatus::FileFailed);
    }
}
