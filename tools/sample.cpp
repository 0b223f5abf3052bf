// `tympan sample`: a small job of a photograph and a drawing, in each of the formats, and a page that
// shows them.
#include "command.h"
#include "failure.h"
#include "import_job.h"
#include "jpeg_side_file.h"
#include "line_work_rows.h"
#include "names.h"
#include "output_file.h"
#include "page_writer.h"
#include "picture.h"
#include "picture_source.h"
#include "sample_layout.h"
#include "sample_plates.h"
#include "tiff_it_writer.h"
#include "verbosity.h"

#include <tympan/inspect.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

namespace files = std::filesystem;

constexpr char kFooter[] =
    R"(Makes these files in DIR, of any photograph and any drawing that `tympan import` takes, and
replaces those that are there:
  photograph.ct       the photograph as ink
  print.jpg           the photograph in its own colours, with its side file print.bin
  plates.tif          the plates of photograph.ct side by side, each in its ink
  drawing.lw          the drawing, of up to 255 colours
  photograph-it.tif   photograph.ct as TIFF/IT
  drawing-it.tif      drawing.lw as TIFF/IT
  page.pg             a page with the first four, and the photograph once more, seen
                      through a colour of the drawing
The page names its pictures as they stand beside it, so that the folder can be moved.

Example:
  tympan sample job --photo photo.jpg --line-work map.png
  tympan preview job/page.pg -o page.png)";

constexpr char kPhotograph[] = "photograph.ct";
constexpr char kPrint[] = "print.jpg";
constexpr char kPlates[] = "plates.tif";
constexpr char kDrawing[] = "drawing.lw";
constexpr char kPhotographIt[] = "photograph-it.tif";
constexpr char kDrawingIt[] = "drawing-it.tif";
constexpr char kPage[] = "page.pg";
constexpr std::array kFiles{ kPhotograph,   kPrint,     kPlates, kDrawing,
                             kPhotographIt, kDrawingIt, kPage };

struct SampleOptions {
    std::string folder;
    std::string photograph;
    std::string drawing;

    std::string In(const char* name) const { return files::path(folder) / name; }
};

// ---- the folder

void MakeFolder(const std::string& folder)
{
    std::error_code error;
    files::create_directories(folder, error);
    if (error)
        throw FileFailure(folder, "can't be made: " + error.message());
}

void RequireOtherFiles(const SampleOptions& options)
{
    for (const char* const name : kFiles)
        for (const std::string& input : { options.photograph, options.drawing }) {
            std::error_code ignored;
            if (files::equivalent(input, options.In(name), ignored))
                throw UsageFailure(input + ": is one of the files to be made; give another DIR");
        }
}

// ---- pictures

double ShapeOf(PixelSize size)
{
    return static_cast<double>(size.width) / size.height;
}

/// The pictures that are given, and where they are to stand.
struct Job {
    explicit Job(const SampleOptions& asked)
        : options(asked), photograph(SizeOf(asked.photograph)), drawing(SizeOf(asked.drawing)),
          plates(SizeOfPlates(photograph)),
          layout(LayoutOf({ ShapeOf(photograph), ShapeOf(drawing), ShapeOf(plates) }))
    {}

    static PixelSize SizeOf(const std::string& picture)
    {
        const std::unique_ptr<PictureSource> source = OpenPictureSource(picture);
        return { source->Form().width, source->Form().height };
    }

    const SampleOptions& options;
    PixelSize photograph, drawing, plates;
    SampleLayout layout;
};

// The resolution by which a picture is as large as its place; a picture of a side that its header
// can't hold keeps its own.
std::optional<double> ResolutionFor(PixelSize size, const SampleBox& box)
{
    constexpr double kLeastInches = 0.1;
    if (std::min(box.width, box.height) < kLeastInches)
        return std::nullopt;
    return size.width / box.width;
}

/// Writes a file of the folder that is made of a picture in it.
template <typename Write>
void MakeOf(const Picture& picture, const std::string& path, const Write& write)
{
    Guard(path, [&] {
        OutputFile output(path, picture.Path());
        write(picture, output);
        output.Commit();
    });
}

void MakePictures(const Job& job)
{
    const SampleOptions& options = job.options;
    ImportPicture({ options.photograph,
                    options.In(kPhotograph),
                    {},
                    ResolutionFor(job.photograph, job.layout.photograph),
                    {} });
    ImportPicture({ options.photograph,
                    options.In(kPrint),
                    {},
                    ResolutionFor(job.photograph, job.layout.print),
                    {} });
    ImportPicture({ options.drawing,
                    options.In(kDrawing),
                    {},
                    ResolutionFor(job.drawing, job.layout.drawing),
                    {} });
    const Picture photograph = OpenPicture(options.In(kPhotograph), {});
    const Picture drawing = OpenPicture(options.In(kDrawing), {});
    MakeOf(photograph, options.In(kPlates), [&](const Picture& picture, const OutputFile& output) {
        WritePlatesSideBySide(picture, job.plates.width / job.layout.plates.width, output);
    });
    MakeOf(photograph, options.In(kPhotographIt), WriteTiffItCt);
    MakeOf(drawing, options.In(kDrawingIt), WriteTiffItLw);
}

// ---- the page

/// How much of a picture a colour has.
struct ColourUse {
    double pixels = 0.0;
    double runs = 0.0;

    /// Lines have less of it than areas of as many pixels.
    double Breadth() const { return runs == 0.0 ? 0.0 : pixels * std::sqrt(pixels / runs); }
};

// By the colours' indexes.
std::vector<ColourUse> ColourUseOf(const Picture& drawing)
{
    std::vector<ColourUse> uses(LineWorkRecord(drawing).FileColorsNumber() + std::size_t{ 1 });
    LineWorkRows rows(drawing);
    for (std::uint32_t row = 0; row < drawing.Height(); ++row) {
        unsigned int before = 0;
        for (const LineWorkRun& run : rows.Row(row)) {
            uses[run.colour].pixels += run.length;
            uses[run.colour].runs += run.colour == before ? 0 : 1; // a file parts long ones
            before = run.colour;
        }
    }
    return uses;
}

// The broadest colour that isn't the paper; a drawing of one colour on paper is best seen through
// the paper.
std::uint8_t WindowColour(const Picture& drawing)
{
    std::vector<ColourUse> uses = ColourUseOf(drawing);
    const auto used = std::count_if(uses.begin(), uses.end(),
                                    [](const ColourUse& use) { return use.pixels != 0.0; });
    if (used > 2)
        uses.at(PaperIndex(LineWorkRecord(drawing)).value_or(0)) = {};
    const auto broadest =
        std::max_element(uses.begin(), uses.end(), [](const ColourUse& a, const ColourUse& b) {
            return a.Breadth() < b.Breadth();
        });
    return static_cast<std::uint8_t>(broadest - uses.begin());
}

Placement Placed(const char* name, const SampleBox& box,
                 PlacementType type = PlacementType::picture)
{
    Placement placement;
    placement.type = type;
    placement.path = name;
    placement.xOffset = box.x;
    placement.yOffset = box.y;
    placement.width = box.width;
    placement.height = box.height;
    return placement;
}

std::vector<Placement> PlacementsOf(const SampleLayout& layout, std::uint8_t windowColour)
{
    constexpr unsigned int kPlaceOfDrawing = 1;
    std::vector<Placement> placements{
        Placed(kPhotograph, layout.photograph),
        Placed(kDrawing, layout.drawing, PlacementType::lineWork),
        Placed(kPhotograph, layout.window, PlacementType::ctWindow),
        Placed(kPlates, layout.plates),
        Placed(kPrint, layout.print),
    };
    placements[2].container = kPlaceOfDrawing;
    placements[2].colours = { windowColour };
    placements[4].rotation = layout.printTurn;
    return placements;
}

void MakePage(const Job& job)
{
    const std::string path = job.options.In(kPage);
    const Picture drawing = OpenPicture(job.options.In(kDrawing), {});
    const std::vector<Placement> placements = PlacementsOf(job.layout, WindowColour(drawing));
    Guard(path, [&] {
        OutputFile output(path, job.options.photograph);
        WritePage(output, { job.layout.page }, placements);
        output.Commit();
    });
}

// ---- what to do next

void Tell(const SampleOptions& options)
{
    if (IsQuiet())
        return;
    std::cout << "Made in " << Shown(options.folder) << ":\n";
    for (const char* const name : kFiles)
        std::cout << "  " << name << '\n';
    const std::string page = Shown(options.In(kPage));
    std::cout << "See what the page holds, and what it looks like:\n"
              << "  tympan info " << page << "\n  tympan preview " << page << " -o page.png\n";
}

void MakeSample(const SampleOptions& options)
{
    RequireOtherFiles(options);
    const Job job(options);
    MakeFolder(options.folder);
    Guard(options.folder, [&] {
        MakePictures(job);
        MakePage(job);
    });
    Tell(options);
}

} // namespace

void DeclareSample(const Options& command)
{
    const auto options = std::make_shared<SampleOptions>();
    command.Add("DIR", options->folder, "Where to make it").Required().Called("DIR").NotEmpty();
    command.Add("--photo", options->photograph, "A JPEG, PNG or TIFF photograph")
        .Required()
        .Called("FILE");
    command.Add("--line-work", options->drawing, "A JPEG, PNG or TIFF drawing of up to 255 colours")
        .Required()
        .Called("FILE");
    command.AddFooter(kFooter);
    command.Run([options] { MakeSample(*options); });
}

} // namespace tympan::tool
