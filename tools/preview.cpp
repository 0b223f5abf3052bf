// `tympan preview`: a picture as the screen shows it, as PNG.
#include "box_average.h"
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "page_paths.h"
#include "page_preview.h"
#include "picture.h"
#include "png_file.h"
#include "progress.h"
#include "row_range.h"
#include "separation_bands.h"
#include "separations.h"
#include "shown_rows.h"
#include "tiff_plates.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

struct PreviewOptions {
    std::string file;
    std::string asFormat;
    std::string output;
    std::string separation;
    bool gray = false;
    std::string rows;
    std::optional<std::uint32_t> fit;
    PathOptions paths;
    std::uint64_t maxMemory = std::uint64_t{ 4 } << 30U; ///< bytes
};

constexpr std::uint32_t kNoLimit = std::numeric_limits<std::int32_t>::max();
constexpr std::array<std::string_view, 1> kEndings{ ".png" };

// The one plate that is shown, in its tint, or in grey where it is no ink that has one.
struct ShownPlate {
    ColorSeparationType separation;
    bool hasTint;
};

// The place of a pixel's byte among blue, green and red that a plate's tint shows the plate in.
std::size_t ChannelOf(const ShownPlate& plate)
{
    constexpr std::array<std::size_t, 4> kChannels{ 2, 1, 0, 0 };
    return plate.hasTint ? kChannels.at(static_cast<std::size_t>(plate.separation)) : 0;
}

// What of each pixel is written, and in which order.
struct WrittenChannels {
    PngColour colour;
    std::vector<std::size_t> channels; // among blue, green and red
};

WrittenChannels ChannelsFor(const PreviewOptions& options, const std::optional<ShownPlate>& plate)
{
    if (options.gray && plate)
        return { PngColour::Grey, { ChannelOf(*plate) } };
    return { PngColour::Rgb, { 2, 1, 0 } };
}

// Of a TIFF's samples only the first four inks have tints.
std::optional<ShownPlate> WantedPlate(const Picture& picture, const PreviewOptions& options)
{
    if (options.separation.empty())
        return std::nullopt;
    picture.Rows(); // refuses a file without them
    const ColorSeparationType separation =
        SeparationNamed(options.file, picture.Object(), options.separation);
    const TiffFileInterface* const tiff = picture.AsTiff();
    return ShownPlate{ separation, tiff == nullptr || (IsOfInks(*tiff) && separation <= Black) };
}

std::array<BgrColour, 256> TintsOf(const ShownPlate& plate)
{
    std::array<BgrColour, 256> tints{};
    for (std::size_t value = 0; value < tints.size(); ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        if (plate.hasTint)
            tints[value] = BgrOf(PictureFileInterface::CalculatePixelAsRGB(byte, plate.separation));
        else
            tints[value].fill(byte);
    }
    return tints;
}

// One separation in its tint.
GiveRows Plate(const Picture& picture, RowRange rows, const ShownPlate& plate)
{
    return [=, &picture](const TakePixels& take) {
        const auto tints = TintsOf(plate);
        SeparationBands bands(picture, { plate.separation }, rows);
        std::vector<std::uint8_t> pixels(std::size_t{ picture.Width() } * 3);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            auto pixel = pixels.begin();
            for (const std::uint8_t value : bands.Row(row, 0))
                pixel = std::copy(tints[value].begin(), tints[value].end(), pixel);
            take(row, 0, pixels);
        }
    };
}

WrittenForm FormOf(const Picture& picture, PixelSize shown, PixelSize target)
{
    const AxisResolution resolution = AxisResolutionOf(picture.Object());
    return { target.width, target.height, resolution.alongWidth * target.width / shown.width,
             resolution.alongHeight * target.height / shown.height };
}

void WritePreview(const Picture& picture, const PreviewOptions& options,
                  const std::optional<ShownPlate>& plate, RowRange rows, const OutputFile& output)
{
    const WrittenChannels written = ChannelsFor(options, plate);
    const PixelSize shown{ picture.Width(), rows.Count() };
    const PixelSize target = Fitted(shown, options.fit.value_or(kNoLimit));
    PngFile png(output, FormOf(picture, shown, target), written.colour);

    std::vector<std::uint8_t> pngRow(target.width * written.channels.size());
    const auto across = ScaledSide::Whole(shown.width, target.width);
    const auto down = ScaledSide::Whole(shown.height, target.height);
    BoxAverage average(across, down, 3, [&](std::span<const std::uint8_t> bgr) {
        auto sample = pngRow.begin();
        for (std::size_t pixel = 0; pixel < bgr.size(); pixel += 3)
            for (const std::size_t channel : written.channels)
                *sample++ = bgr[pixel + channel];
        png.Write(pngRow);
    });
    Progress progress("Drawing " + picture.Path(), shown.height);
    const GiveRows give =
        plate ? HeldToItsRows(picture, Plate(picture, rows, *plate)) : ShownRows(picture, rows);
    give([&](std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels) {
        average.Add(row - rows.first, column, pixels);
        progress.Advance(column == 0 ? 1 : 0);
    });
    png.Finish();
}

void PreviewPicture(const Picture& picture, const PreviewOptions& options)
{
    RequirePixels(picture);
    const auto plate = WantedPlate(picture, options);
    const RowRange rows = ParseRows(options.rows, picture.Height());
    RequireMemory(picture, rows, options.maxMemory,
                  "Allow it by --max-memory, or draw fewer rows by --rows.");
    ShowTransparentAsPaper(picture);
    const std::optional<FileFailure> shortfall = ShortfallOf(picture, rows);
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    WritePreview(picture, options, plate, rows, output);
    output.Commit();
    if (shortfall) // written, for a person may want to see what is there
        throw FileFailure(*shortfall);
}

// A page whose header could be read: its entries are looked at one by one, so that one that is refused
// hides no other. Null for anything else.
const PageFileInterface* PageIn(const Opening& opening)
{
    constexpr unsigned long kEntryRefused = 90065;
    const auto* const page = dynamic_cast<const PageFileInterface*>(opening.opened.picture.get());
    const bool isRefused = opening.failure && opening.failure->Code() != kEntryRefused;
    return isRefused ? nullptr : page;
}

void PreviewPage(const PageFileInterface& page, const PreviewOptions& options,
                 const PagePaths& paths)
{
    if (options.gray || !options.separation.empty() || !options.rows.empty())
        throw UsageFailure(
            "--separation, --gray, --rows: a page is shown whole, in all its colours");
    WritePagePreview(
        { options.file, options.output, options.fit.value_or(kUsualPageFit), options.maxMemory },
        page, paths);
}

void Preview(const PreviewOptions& options)
{
    if (options.gray && options.separation.empty())
        throw UsageFailure("--gray shows one separation: name it with --separation");
    if (!IsDash(options.output))
        RequireEnding(options.output, kEndings);
    Opening opening = TryOpenPicture(options.file, options.asFormat, options.paths);
    if (const auto* const page = PageIn(opening))
        PreviewPage(*page, options, *opening.paths);
    else if (opening.failure)
        throw FileFailure(*opening.failure);
    else
        PreviewPicture({ options.file, std::move(opening.opened) }, options);
}

} // namespace

void DeclarePreview(const Options& command)
{
    const auto options = std::make_shared<PreviewOptions>();
    command.Add("FILE", options->file, "The picture").Required();
    command.Add("-o,--output", options->output, "The PNG file to write; - is standard output")
        .Required()
        .Called("FILE");
    command
        .Add("--separation", options->separation,
             "Only this separation, in its tint: cyan, magenta, yellow, black, 0 to 3, or a "
             "TIFF's channel")
        .Called(kSeparationType)
        .NotEmpty();
    command.AddFlag("--gray", options->gray, "Show the separation in grey");
    command.Add("--rows", options->rows, kRowsHelp).Called(kRowsType).NotEmpty();
    command
        .Add("--fit", options->fit,
             "Make the longer side at most N pixels, by averaging; never enlarges. A page is "
             "made 2000 without it")
        .Between(std::uint32_t{ 1 }, kNoLimit);
    command
        .Add("--max-memory", options->maxMemory,
             "The most that a page, or a TIFF/IT picture, which is drawn as a whole, may take "
             "in memory, such as 512MiB")
        .SizeInBytes()
        .TellDefault("4GiB");
    AddPathOptions(command, options->paths);
    AddAsOption(command, options->asFormat);
    command.AddFooter(
        R"(Transparent colours of line work are shown as paper.
Rows that a cut CT file doesn't hold are shown without ink, and the exit status is 1.
Nothing is written when nearly all of a huge picture is missing, or when line work, a JPEG or
a TIFF has a bad row.
With --fit each pixel is the mean of a box of whole pixels, each of which counts once.

The pictures of a page are laid on white paper in the order of its entries, each where its
offsets, its size (both in inches) and its angle say; CT windows show through the colours of
their line work, and where colours of line work are transparent, what is beneath shows. In the
place of a picture that can't be shown stands a grey box with a cross, and the exit status is 1.

Example:
  tympan preview photo.ct -o photo.png --fit 1200
  tympan preview photo.ct -o cyan.png --separation cyan --gray --rows 0:500
  tympan preview photo.ct -o - --fit 800 > small.png
  tympan preview page.pg -o page.png --map 'P:\JOBS=/srv/jobs')");
    command.Run([options] { Guard(options->file, [&] { Preview(*options); }); });
}

} // namespace tympan::tool
