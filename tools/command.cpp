// The whole command with its subcommands, as the program parses it and its manual describes it.
#include "command.h"

#include "verbosity.h"

#include <tympan/tympan.h>

#include <CLI/CLI.hpp>

#include <string>

namespace tympan::tool {

namespace {

struct Subcommand {
    const char* name;
    const char* does; ///< what, as an order
    void (*declare)(const Options& command);
};

constexpr Subcommand kSubcommands[] = {
    { "info", "Tell what picture files are", DeclareInfo },
    { "check", "Prove picture files, every row of them", DeclareCheck },
    { "preview", "Write a picture as the screen shows it", DeclarePreview },
    { "rows", "Write one separation as a grey picture", DeclareRows },
    { "ink", "Tell how much ink pictures have", DeclareInk },
    { "hash", "Tell SHA-256 sums of pictures, whatever their format", DeclareHash },
    { "diff", "Compare the samples of two pictures, whatever their formats", DeclareDiff },
    { "palette", "Tell the colours of line work", DeclarePalette },
    { "import", "Turn a JPEG, PNG or TIFF picture into a CT, LW or JPEG file", DeclareImport },
    { "export", "Turn a picture into a CMYK, RGB or grey TIFF", DeclareExport },
    { "crop", "Cut a rectangle out of line work", DeclareCrop },
    { "stream", "Write line work as a run stream", DeclareStream },
    { "index", "Make the side files of pictures", DeclareIndex },
    { "page", "Write a page file that places pictures", DeclarePage },
    { "report", "Make a page for a browser over a folder of jobs", DeclareReport },
    { "thumbnail", "Write a small PNG of a picture, for file managers", DeclareThumbnail },
    { "sample", "Make a job for trial: a picture of each format, and a page", DeclareSample },
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
    for (const Subcommand& one : kSubcommands) {
        CLI::App& command = *app.add_subcommand(one.name, one.does);
        one.declare(Options(command));
        AddQuiet(command);
    }
}

} // namespace tympan::tool
