// `tympan page`: writes a page file that places pictures.
#include "command.h"
#include "failure.h"
#include "folder_names.h"
#include "output_file.h"
#include "page_arguments.h"
#include "page_paths.h"
#include "page_writer.h"
#include "picture.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

constexpr char kFooter[] =
    R"(Offsets and sizes are in inches, from the page's left and upper edge to the box around
the picture; W and H are those of the picture before it is turned by ROT degrees,
counterclockwise. Without them the picture keeps its own size. The file itself says
nothing of units. The last @ ends the name of FILE.

--window makes a CT window of the placement in front of it: the picture shows where the
line work of entry N has one of the colours C1, C2... Entries count from 0, in the order
of their --place; N must be line work placed before, and a window lists 31 colours at most.

A picture under the folder of OUT.pg is entered by its path from there, so that the folder
can be moved. Any other FILE is entered as it is given, in 80 bytes at most, and must be
found again by --root or --map; it may be a path of another machine, as 'P:\JOBS\a.ct'.

Example:
  tympan page job.pg --size 8.5x11 --resolution 300 --place photo.ct@1,1
  tympan page job.pg --size 8.5x11 --resolution 300 --place map.lw@0,0 \
    --place photo.ct@2,3,4,3,90 --window 0:7,8)";

struct PageOptions {
    std::string output;
    std::string size;
    double resolution = 0.0; ///< pixels per inch
    std::vector<std::string> places;
    std::vector<std::string> windows;
    PathOptions paths;
};

// A picture to place, and the window that it is to be.
struct Place {
    PlaceArgument argument;
    std::optional<WindowArgument> window;
    std::string stored; ///< its path in the page
    std::string file;   ///< its path here
};

// ---- the options

void AddWindow(std::vector<Place>& places, const std::string& value)
{
    if (places.empty() || places.back().window)
        throw UsageFailure("--window " + value + ": goes behind the --place that it is for");
    places.back().window = ParseWindow(value);
}

// In the order in which they stand on the command line.
std::vector<Place> PlacesOf(const Options& command, const PageOptions& options)
{
    std::vector<Place> places;
    auto place = options.places.begin();
    auto window = options.windows.begin();
    for (const std::string& name : command.NamesGiven())
        if (name == "--place")
            places.push_back({ ParsePlace(*place++), {}, {}, {} });
        else if (name == "--window")
            AddWindow(places, *window++);
    if (places.size() > kMostPageEntries)
        throw UsageFailure("--place: a page has " + std::to_string(kMostPageEntries) +
                           " entries at most");
    return places;
}

// ---- the pictures

// How the page is to name a file.
std::string StoredPath(const std::string& file, const std::string& output)
{
    const std::string folder = RealPath(FolderOf(output));
    const std::string real = IsPlainFile(file) ? RealPath(file) : "";
    if (!IsInside(real, folder))
        return file;
    return std::filesystem::path(real).lexically_relative(folder).string();
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    std::error_code ignored;
    return std::filesystem::equivalent(one, other, ignored);
}

void RequireHeldPath(const Place& place)
{
    if (place.stored.size() > kLongestPlacedPath)
        throw UsageFailure("--place " + place.argument.file + ": the path has " +
                           std::to_string(place.stored.size()) + " bytes; an entry holds " +
                           std::to_string(kLongestPlacedPath));
}

// Finds each picture where a reader of the page will.
void FindFiles(std::vector<Place>& places, const PageOptions& options)
{
    const PagePaths paths(options.output, options.paths);
    for (Place& place : places) {
        const std::string& given = place.argument.file;
        place.stored = StoredPath(given, options.output);
        RequireHeldPath(place);
        const std::optional<std::string> found = paths.Find(place.stored);
        if (!found && !IsPlainFile(given))
            throw FileFailure(given, "no such picture file", {},
                              "The name goes up to the last @; --root and --map tell of other "
                              "folders.");
        if (!found || (IsPlainFile(given) && !IsSameFile(given, *found)))
            throw FileFailure(given, "the page wouldn't find it by that path", {},
                              "Put it under the page's folder, or name a folder that it is in "
                              "with --root or --map, here and wherever the page is read.");
        if (IsSameFile(*found, options.output))
            throw UsageFailure(options.output + ": the output is one of the pictures");
        place.file = *found;
    }
}

PlacementType TypeOf(const Place& place, const Picture& picture)
{
    if (picture.IsTiffIt() || picture.AsPage() != nullptr)
        throw FileFailure(place.argument.file,
                          "is a " + std::string(picture.Format()) +
                              " file, which can't be placed; a page places CT, LW, JPEG and TIFF "
                              "files");
    if (picture.AsLw() == nullptr)
        return place.window ? PlacementType::ctWindow : PlacementType::picture;
    if (place.window)
        throw UsageFailure("--window: " + place.argument.file +
                           " is line work, which can't be a CT window");
    return PlacementType::lineWork;
}

SizeInInches OwnSize(const Place& place, const Picture& picture)
{
    if (const auto size = SizeInInchesOf(picture.Object()))
        return *size;
    throw FileFailure(place.argument.file, "has no resolution, so that its size isn't known", {},
                      "Give its width and height: FILE@X,Y,W,H.");
}

void SetWindow(const WindowArgument& window, const std::vector<Placement>& before,
               Placement& placement)
{
    if (window.container >= before.size() || window.container > kHighestContainer ||
        before[window.container].type != PlacementType::lineWork)
        throw UsageFailure("--window " + std::to_string(window.container) +
                           ": is not the number of an entry with line work before it; entries "
                           "count from 0, and the number is 255 at most");
    placement.container = window.container;
    placement.colours = window.colours;
}

Placement PlacementFor(const Place& place, const std::vector<Placement>& before)
{
    const PlaceArgument& argument = place.argument;
    const Picture picture = OpenPicture(place.file, "");
    Placement placement;
    placement.type = TypeOf(place, picture);
    placement.path = place.stored.c_str();
    placement.xOffset = argument.x;
    placement.yOffset = argument.y;
    placement.rotation = argument.rotation;
    const SizeInInches size = argument.size
                                  ? SizeInInches{ argument.size->height, argument.size->width }
                                  : OwnSize(place, picture);
    placement.height = size.height;
    placement.width = size.width;
    if (place.window)
        SetWindow(*place.window, before, placement);
    return placement;
}

std::vector<Placement> PlacementsFor(const std::vector<Place>& places)
{
    std::vector<Placement> placements;
    placements.reserve(places.size());
    for (const Place& place : places)
        placements.push_back(
            Guard(place.argument.file, [&] { return PlacementFor(place, placements); }));
    return placements;
}

void Write(const PageOptions& options, std::vector<Place> places)
{
    const InchSize size = ParseSize(options.size);
    OutputFile output(options.output, "");
    FindFiles(places, options);
    WritePage(output, { { size.height, size.width }, options.resolution }, PlacementsFor(places),
              options.paths);
    output.Commit();
}

} // namespace

void DeclarePage(const Options& command)
{
    const auto options = std::make_shared<PageOptions>();
    command.Add("OUT", options->output, "The page file to write").Required();
    command.Add("--size", options->size, "Width and height of the page, in inches")
        .Required()
        .Called("WxH");
    command.Add("--resolution", options->resolution, "Pixels per inch of the page")
        .Required()
        .Between(0.001, 1e6);
    command
        .Add("--place", options->places, "A picture, its place, size and turn; may be given again")
        .OneValueEach()
        .Called("FILE@X,Y[,W,H[,ROT]]");
    command
        .Add("--window", options->windows,
             "Show the picture placed last through colours of the line "
             "work of entry N")
        .OneValueEach()
        .Called("N:C1,C2...");
    AddPathOptions(command, options->paths);
    command.AddFooter(kFooter);
    command.Run([options, command] {
        std::vector<Place> places = PlacesOf(command, *options);
        Guard(options->output, [&] { Write(*options, std::move(places)); });
    });
}

} // namespace tympan::tool
