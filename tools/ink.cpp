// `tympan ink`: how much ink pictures have, and a map of where it is.
#include "command.h"
#include "failure.h"
#include "files_told.h"
#include "heat_map.h"
#include "ink_measure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "standard_output.h"
#include "text_table.h"

#include <array>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

namespace {

struct InkOptions {
    std::vector<std::string> files;
    std::string asFormat;
    bool json = false;
    unsigned int limitPercent = 300;
    std::string heat;
    std::uint32_t fit = 1600;
};

constexpr unsigned int kMostPercent = 800; // of eight inks, which is what a picture can have
constexpr std::uint32_t kMostFit = 20000;
constexpr std::array<std::string_view, 1> kEndings{ ".png" };

constexpr char kFooter[] =
    R"(Of each separation the coverage is told, and the least and the greatest ink that a pixel has.
The total ink of a pixel is that of all separations together: 400 % is all of four in full. It
is told at its greatest, at the 99.9th percentile (999 of 1000 pixels have no more), and as the
area that has more than --limit.

Line work is counted by its runs, so that a large page takes no longer than a small one of as
many runs; its transparent colours are paper. Grey pictures and bits are black ink. In an RGB
picture a red of 255 is no cyan, and so on. Palettes, YCbCr and TIFF/IT give no ink.

--json writes integers alone. The unit is the 255th part of full ink, also for total ink, and
`histogram` has the number of pixels of each value from 0 to 255. A coverage in percent is
  100 * sum / (255 * pixels)
and a percentage of any other value is 100 * value / 255.

Example:
  tympan ink photo.ct
  tympan ink --json *.ct *.lw
  tympan ink photo.ct --limit 280 --heat photo.png)";

// ---- as JSON

Json AsJson(const SeparationInk& separation)
{
    return { { "name", WithReplacements(separation.name) },
             { "sum", SumOf(separation.counts) },
             { "minimum", LeastOf(separation.counts) },
             { "maximum", GreatestOf(separation.counts) },
             { "histogram", separation.counts } };
}

Json AsJson(const InkFigures& figures, const InkOptions& options)
{
    Json object;
    object["pixels"] = figures.pixels;
    object["separations"] = Json::array();
    for (const SeparationInk& separation : figures.separations)
        object["separations"].push_back(AsJson(separation));
    object["total_ink"] = { { "maximum", GreatestOf(figures.totals) },
                            { "percentile_99_9", Percentile999Of(figures.totals) },
                            { "limit_percent", options.limitPercent },
                            { "pixels_over_limit",
                              PixelsOver(figures.totals, options.limitPercent) } };
    return object;
}

// ---- as text

std::string InkText(unsigned int ink)
{
    return PercentText(ink, kFullInk);
}

TableLine LineOf(const std::string& name, const InkCounts& counts, std::uint64_t pixels)
{
    const double full = static_cast<double>(pixels) * kFullInk;
    return { Shown(name), PercentText(static_cast<double>(SumOf(counts)), full),
             InkText(LeastOf(counts)), InkText(GreatestOf(counts)) };
}

void Print(const std::string& file, const InkFigures& figures, const InkOptions& options)
{
    std::vector<TableLine> lines{ { "", "Coverage", "Least", "Greatest" } };
    for (const SeparationInk& separation : figures.separations)
        lines.push_back(LineOf(separation.name, separation.counts, figures.pixels));
    lines.push_back(LineOf("Total ink", figures.totals, figures.pixels));
    const std::uint64_t over = PixelsOver(figures.totals, options.limitPercent);
    std::cout << Shown(file) << '\n';
    PrintTable(lines);
    std::cout << "  99.9 % of the pixels have at most " << InkText(Percentile999Of(figures.totals))
              << "\n  "
              << PercentText(static_cast<double>(over), static_cast<double>(figures.pixels))
              << " of the picture, " << over << " pixels, have more than " << options.limitPercent
              << " %\n";
}

// ---- measuring

InkFigures MeasureWithMap(const Picture& picture, const InkOptions& options)
{
    const PixelSize size{ picture.Width(), picture.Height() };
    const auto inks = static_cast<unsigned int>(InksOf(picture).separations.size());
    OutputFile output(options.heat, picture.Path());
    HeatMap map(output, { size, Fitted(size, options.fit), inks, options.limitPercent });
    InkFigures figures = MeasureInk(picture, [&](std::uint32_t row, std::uint32_t column,
                                                 auto totals) { map.Add(row, column, totals); });
    map.Finish();
    RequireRows(picture, picture.Height()); // it may have been cut short meanwhile
    output.Commit();
    return figures;
}

InkFigures Measure(const std::string& file, const InkOptions& options)
{
    const Picture picture = OpenPicture(file, options.asFormat);
    InksOf(picture); // refuses what has none
    RequirePixels(picture);
    RequireRows(picture, picture.Height());
    if (!options.heat.empty())
        return MeasureWithMap(picture, options);
    InkFigures figures = MeasureInk(picture);
    RequireRows(picture, picture.Height());
    return figures;
}

void RequireSensible(const InkOptions& options)
{
    if (options.heat.empty())
        return;
    RequireEnding(options.heat, kEndings);
    if (options.files.size() != 1)
        throw UsageFailure("--heat shows one picture: name a single FILE with it");
}

void Ink(const InkOptions& options)
{
    RequireSensible(options);
    TellOfFiles(options.files, options.json, [&](const std::string& file, Json& object) {
        const InkFigures figures = Guard(file, [&] { return Measure(file, options); });
        if (!options.json)
            Print(file, figures, options);
        object.update(AsJson(figures, options));
    });
}

} // namespace

void DeclareInk(const Options& command)
{
    const auto options = std::make_shared<InkOptions>();
    command.Add("FILE", options->files, "The pictures").Required();
    command.AddFlag("--json", options->json, "Write a JSON array with an object for each file");
    command
        .Add("--limit", options->limitPercent,
             "The total ink, in percent, above which the area is told")
        .Between(0U, kMostPercent)
        .TellDefault();
    const Option heat = command
                            .Add("--heat", options->heat,
                                 "Write a map of the total ink here, a PNG file with a legend")
                            .Called("FILE")
                            .NotEmpty();
    command
        .Add("--fit", options->fit,
             "Make the map's longer side at most N pixels, by averaging; never enlarges")
        .Needs(heat)
        .Between(1U, kMostFit)
        .TellDefault();
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Ink(*options); });
}

} // namespace tympan::tool
