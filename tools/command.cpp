// The whole command with its subcommands, as the program parses it and its manual describes it.
#include "command.h"

#include "verbosity.h"

#include <tympan/tympan.h>

#include <array>
#include <string>

namespace tympan::tool {

namespace {

constexpr std::array kSubcommands{
    AddInfo,  AddCheck,   AddPreview, AddRows,      AddInk,    AddHash,
    AddDiff,  AddPalette, AddImport,  AddExport,    AddCrop,   AddStream,
    AddIndex, AddPage,    AddReport,  AddThumbnail, AddSample,
};

constexpr char kFooter[] = R"(`tympan SUBCOMMAND --help` tells more.

Examples:
  tympan import photo.jpg -o photo.ct
  tympan info photo.ct
  tympan check photo.ct map.lw
  tympan check -r archive --manifest archive.manifest
  tympan preview photo.ct -o photo.png --fit 1200
  tympan rows photo.ct --separation cyan -o cyan.tif
  tympan ink photo.ct --limit 280 --heat photo.png
  tympan hash photo.ct photo.tif
  tympan diff photo.ct photo.tif --image differences.png
  tympan palette map.lw
  tympan export photo.ct -o photo.tif
  tympan crop map.lw detail.lw --left 1001 --right 3000
  tympan stream map.lw -o map.runs --separation black
  tympan index map.lw
  tympan page job.pg --size 8.5x11 --resolution 300 --place photo.ct@1,1
  tympan report jobs -o jobs-report
  tympan sample job --photo photo.jpg --line-work map.png

Exit status:
  0  fine
  1  a file failed
  2  wrong usage; of diff also: the pictures can't be compared

Files:
  .tympan-*  an output that isn't complete yet, beside its place; one stays only when a run is
             killed, and may be removed then

Environment:
  TMPDIR  the folder in which an output for standard output waits until it is complete (/tmp))";

void AddQuiet(CLI::App& subcommand)
{
    subcommand.add_flag_callback("-q,--quiet", BeQuiet,
                                 "No progress, warnings or remarks: tell of failures only");
}

} // namespace

std::vector<CLI::App*> Subcommands(CLI::App& app)
{
    return app.get_subcommands([](const CLI::App*) { return true; });
}

void DeclareCommand(CLI::App& app)
{
    app.name("tympan");
    app.description("Reads, shows and converts the picture files of prepress work.");
    app.require_subcommand(0, 1); // that one is missing is told by main, after unknown words
    app.set_version_flag("--version", std::string("tympan ") + tympan::Version());
    app.footer(kFooter);
    for (const auto& add : kSubcommands)
        add(app);
    for (CLI::App* const subcommand : Subcommands(app))
        AddQuiet(*subcommand);
}

} // namespace tympan::tool
