// `tympan palette`: the colours of line work, and how much of the picture has each.
#include "command.h"
#include "failure.h"
#include "ink_measure.h"
#include "line_work_rows.h"
#include "names.h"
#include "palette_use.h"
#include "picture.h"
#include "separations.h"
#include "standard_output.h"
#include "text_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

struct PaletteOptions {
    std::string file;
    std::string asFormat;
    bool json = false;
    bool csv = false;
};

constexpr char kFooter[] =
    R"(A colour has the ink of each separation, of which 255 is full ink, or is transparent there. It is
told in how many runs it occurs, and how much of the picture it covers; that a colour is unused; and
that it is the same as an earlier one: of the same inks, and transparent in the same separations.

--json and --csv have inks from 0 to 255. In JSON an ink is null where the colour is transparent, in
CSV it is `transparent`. CSV is that of RFC 4180, the first line has the names of the columns.

Example:
  tympan palette map.lw
  tympan palette map.lw --csv > colours.csv)";

using InkOrClear = std::optional<unsigned int>; // nothing where it is transparent

struct PaletteColour {
    unsigned int index; // from 1
    std::vector<InkOrClear> inks;
    ColourUse use;
    std::optional<unsigned int> sameAs; // the first of those alike
};

struct Palette {
    std::vector<std::string> separations;
    std::vector<PaletteColour> colours;
    std::uint64_t pixels = 0; // of the picture
};

std::vector<InkOrClear> InksOfIndex(const Picture& picture, unsigned int index)
{
    const LwPictureParameters& record = LineWorkRecord(picture);
    const auto row = static_cast<unsigned char>(index - 1);
    std::vector<InkOrClear> inks;
    for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
        inks.push_back(record.IsColorTransparent(row, separation)
                           ? InkOrClear()
                           : kFullInk - record.GetColor(row, separation));
    return inks;
}

std::optional<unsigned int> FirstAlike(const std::vector<PaletteColour>& colours,
                                       const std::vector<InkOrClear>& inks)
{
    const auto found = std::find_if(colours.begin(), colours.end(),
                                    [&](const PaletteColour& one) { return one.inks == inks; });
    return found == colours.end() ? std::nullopt : std::optional(found->index);
}

Palette ReadPalette(const Picture& picture)
{
    Palette palette;
    for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
        palette.separations.push_back(NameOf(separation));
    const std::vector<ColourUse> uses = CountColours(picture, "Counting the colours of");
    for (unsigned int index = 1; index < uses.size(); ++index) {
        std::vector<InkOrClear> inks = InksOfIndex(picture, index);
        const auto sameAs = FirstAlike(palette.colours, inks);
        palette.colours.push_back({ index, std::move(inks), uses[index], sameAs });
        palette.pixels += uses[index].pixels;
    }
    return palette;
}

// ---- as JSON and CSV

Json AsJson(const PaletteColour& colour)
{
    Json inks = Json::array();
    for (const InkOrClear& ink : colour.inks)
        inks.push_back(NumberOrNull(ink));
    return { { "index", colour.index },
             { "inks", inks },
             { "runs", colour.use.runs },
             { "pixels", colour.use.pixels },
             { "same_as", NumberOrNull(colour.sameAs) } };
}

void PrintJson(const std::string& file, const Palette& palette)
{
    Json object = ObjectOf(file);
    object["separations"] = palette.separations;
    object["pixels"] = palette.pixels;
    object["colors"] = Json::array();
    for (const PaletteColour& colour : palette.colours)
        object["colors"].push_back(AsJson(colour));
    PrintIndented(object);
}

void PrintCsvLine(const TableLine& cells) // none of which needs quotes
{
    for (std::size_t i = 0; i < cells.size(); ++i)
        std::cout << (i == 0 ? "" : ",") << cells[i];
    std::cout << "\r\n";
}

void PrintCsv(const Palette& palette)
{
    TableLine head{ "index" };
    head.insert(head.end(), palette.separations.begin(), palette.separations.end());
    head.insert(head.end(), { "runs", "pixels", "same_as" });
    PrintCsvLine(head);
    for (const PaletteColour& colour : palette.colours) {
        TableLine cells{ std::to_string(colour.index) };
        for (const InkOrClear& ink : colour.inks)
            cells.push_back(ink ? std::to_string(*ink) : "transparent");
        cells.push_back(std::to_string(colour.use.runs));
        cells.push_back(std::to_string(colour.use.pixels));
        cells.push_back(colour.sameAs ? std::to_string(*colour.sameAs) : "");
        PrintCsvLine(cells);
    }
}

// ---- as text

std::string RemarkOn(const PaletteColour& colour)
{
    std::string remark = colour.use.runs == 0 ? "unused" : "";
    if (colour.sameAs)
        remark += (remark.empty() ? "" : ", ") + ("same as " + std::to_string(*colour.sameAs));
    return remark;
}

TableLine LineOf(const PaletteColour& colour, std::uint64_t pixels)
{
    TableLine line{ std::to_string(colour.index) };
    for (const InkOrClear& ink : colour.inks)
        line.push_back(ink ? PercentText(*ink, kFullInk) : "transparent");
    const auto area = static_cast<double>(colour.use.pixels);
    line.insert(line.end(), { std::to_string(colour.use.runs), std::to_string(colour.use.pixels),
                              PercentText(area, static_cast<double>(pixels)), RemarkOn(colour) });
    return line;
}

void PrintText(const std::string& file, const Palette& palette)
{
    TableLine head{ "Index" };
    head.insert(head.end(), palette.separations.begin(), palette.separations.end());
    head.insert(head.end(), { "Runs", "Pixels", "Area" });
    std::vector<TableLine> lines{ head };
    for (const PaletteColour& colour : palette.colours)
        lines.push_back(LineOf(colour, palette.pixels));
    std::cout << Shown(file) << '\n';
    PrintTable(lines);
}

void PrintPalette(const PaletteOptions& options)
{
    const Picture picture = OpenPicture(options.file, options.asFormat);
    if (picture.AsLw() == nullptr)
        throw UsageFailure(options.file +
                           ": only line work (LW) has such a table of colours; it is a " +
                           std::string(picture.Format()) + " file");
    RequirePixels(picture);
    const Palette palette = ReadPalette(picture);
    if (options.json)
        PrintJson(options.file, palette);
    else if (options.csv)
        PrintCsv(palette);
    else
        PrintText(options.file, palette);
    FinishStandardOutput();
}

} // namespace

void DeclarePalette(const Options& command)
{
    const auto options = std::make_shared<PaletteOptions>();
    command.Add("FILE", options->file, "An LW file").Required();
    const Option json = command.AddFlag("--json", options->json, "Write a JSON object");
    command.AddFlag("--csv", options->csv, "Write comma-separated values").NotWith(json);
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Guard(options->file, [&] { PrintPalette(*options); }); });
}

} // namespace tympan::tool
