// `tympan preview`: a picture as the screen shows it, as PNG.
#include "box_average.h"
#include "command.h"
#include "failure.h"
#include "jpeg_bands.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "png_file.h"
#include "preview_bands.h"
#include "progress.h"
#include "row_range.h"
#include "separation_bands.h"
#include "separations.h"
#include "tiff_plates.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
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
    std::uint32_t fit = std::numeric_limits<std::int32_t>::max();
    std::uint64_t maxMemory = std::uint64_t{ 4 } << 30U; ///< bytes
};

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

// Gives the rows in blue, green and red, from the top down.
using GiveRows = std::function<void(const TakePixels& take)>;

// Stores blue, green and red of a colour.
template <typename Place>
void PutColour(unsigned long packed, Place place)
{
    for (const unsigned int shift : { 16U, 8U, 0U })
        *place++ = static_cast<std::uint8_t>(packed >> shift);
}

// All separations together, as the library draws them.
GiveRows Composite(const Picture& picture, RowRange rows)
{
    const auto draw = [&picture](std::uint32_t first, std::uint32_t last, CDC& context) {
        picture.Object().Display(first, last, context);
        if (picture.Object().TraceStatus() != 0)
            throw RowsFailure(picture, { first, last + 1 });
    };
    return [=, &picture](const TakePixels& take) {
        DrawInBands({ rows.first, rows.end, picture.Width() }, draw, take);
    };
}

// Blue, green and red of the pixels of a JPEG.
void ShowDecoded(std::span<const std::uint8_t> row, std::size_t components,
                 std::span<std::uint8_t> bgr)
{
    auto place = bgr.begin();
    for (auto pixel = row.begin(); pixel != row.end();
         pixel += static_cast<std::ptrdiff_t>(components), place += 3) {
        if (components == 1)
            std::fill_n(place, 3, *pixel);
        else if (components == 3)
            std::reverse_copy(pixel, pixel + 3, place);
        else
            PutColour(PictureFileInterface::CalculatePixelAsRGB(&*pixel), place);
    }
}

// A JPEG as it is decoded.
GiveRows Decoded(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        JpegBands bands(picture, rows);
        std::vector<std::uint8_t> pixels(std::size_t{ picture.Width() } * 3);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            ShowDecoded(bands.Row(row), bands.Components(), pixels);
            take(row, 0, pixels);
        }
    };
}

// A TIFF in its own colours.
GiveRows Coloured(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        const TiffColours colours(picture);
        SeparationBands bands(picture, colours.Separations(), rows);
        std::vector<std::uint8_t> pixels(std::size_t{ picture.Width() } * 3);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            colours.Show(bands, row, pixels);
            for (std::size_t pixel = 0; pixel < pixels.size(); pixel += 3)
                std::swap(pixels[pixel], pixels[pixel + 2]);
            take(row, 0, pixels);
        }
    };
}

// A TIFF/IT picture, which is drawn from its first row on, whichever are wanted: on a bitmap of all
// of them.
GiveRows DrawnWhole(const Picture& picture, RowRange rows)
{
    return [=, &picture](const TakePixels& take) {
        PreviewBand whole(picture.Width(), rows.Count());
        whole.FillWithPaper();
        whole.MoveTo(0, rows.first);
        picture.Object().Display(0, rows.end - 1, whole.Context());
        picture.RequireNoFailure();
        for (std::uint32_t row = rows.first; row < rows.end; ++row)
            take(row, 0, whole.Row(row - rows.first));
    };
}

using Colour = std::array<std::uint8_t, 3>; // blue, green and red

std::array<Colour, 256> TintsOf(const ShownPlate& plate)
{
    std::array<Colour, 256> tints{};
    for (std::size_t value = 0; value < tints.size(); ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        if (plate.hasTint)
            PutColour(PictureFileInterface::CalculatePixelAsRGB(byte, plate.separation),
                      tints[value].begin());
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

GiveRows GiverOf(const Picture& picture, RowRange rows, const std::optional<ShownPlate>& plate)
{
    if (plate)
        return Plate(picture, rows, *plate);
    if (picture.AsTiff() != nullptr)
        return Coloured(picture, rows);
    if (picture.IsTiffIt())
        return DrawnWhole(picture, rows);
    return picture.AsJpeg() != nullptr ? Decoded(picture, rows) : Composite(picture, rows);
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
    const PixelSize target = Fitted(shown, options.fit);
    PngFile png(output, FormOf(picture, shown, target), written.colour);

    std::vector<std::uint8_t> pngRow(target.width * written.channels.size());
    BoxAverage average(shown, target, [&](std::span<const std::uint8_t> bgr) {
        auto sample = pngRow.begin();
        for (std::size_t pixel = 0; pixel < bgr.size(); pixel += 3)
            for (const std::size_t channel : written.channels)
                *sample++ = bgr[pixel + channel];
        png.Write(pngRow);
    });
    Progress progress("Drawing " + picture.Path(), shown.height);
    const GiveRows give = GiverOf(picture, rows, plate);
    give([&](std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels) {
        average.Add(row - rows.first, column, pixels);
        progress.Advance(column == 0 ? 1 : 0);
    });
    png.Finish();
}

// Whether nearly all of a huge picture is missing: a damaged header can claim more rows than anybody
// wants to see as paper.
bool IsHopeless(RowRange rows, std::uint32_t missing)
{
    constexpr std::uint32_t kMostMissing = 100000;
    constexpr std::uint32_t kLeastShare = 1000; // a thousandth
    return missing < rows.end && rows.end - missing > kMostMissing &&
           (missing - rows.first) < rows.Count() / kLeastShare;
}

void RequireMemory(const Picture& picture, RowRange rows, std::uint64_t most)
{
    const std::uint64_t bytes = PreviewBand::BytesOf(picture.Width(), rows.Count());
    if (picture.IsTiffIt() && bytes > most)
        throw FileFailure(picture.Path(),
                          "is drawn as a whole, which takes " + std::to_string(bytes) +
                              " bytes of memory",
                          {}, "Allow it by --max-memory, or draw fewer rows by --rows.");
}

void Preview(const PreviewOptions& options)
{
    if (options.gray && options.separation.empty())
        throw UsageFailure("--gray shows one separation: name it with --separation");
    RequireEnding(options.output, kEndings);
    const Picture picture = OpenPicture(options.file, options.asFormat);
    RequirePixels(picture);
    const auto plate = WantedPlate(picture, options);
    const RowRange rows = ParseRows(options.rows, picture.Height());
    RequireMemory(picture, rows, options.maxMemory);
    ShowTransparentAsPaper(picture);

    const auto missing = FirstMissingRow(picture);
    if (missing && (*missing <= rows.first || IsHopeless(rows, *missing)))
        throw MissingRowFailure(options.file, *missing, picture.Height());
    OutputFile output(options.output, options.file);
    WritePreview(picture, options, plate, rows, output);
    output.Commit();
    if (missing && *missing < rows.end) // written, for a person may want to see what is there
        throw MissingRowFailure(options.file, *missing, picture.Height());
}

} // namespace

void AddPreview(CLI::App& app)
{
    const auto options = std::make_shared<PreviewOptions>();
    CLI::App& command = *app.add_subcommand("preview", "Write a picture as the screen shows it");
    command.add_option("FILE", options->file, "The picture")->required();
    command.add_option("-o,--output", options->output, "The PNG file to write")->required();
    command
        .add_option("--separation", options->separation,
                    "Only this separation, in its tint: cyan, magenta, yellow, black, 0 to 3, or a "
                    "TIFF's channel")
        ->check(RefuseEmpty);
    command.add_flag("--gray", options->gray, "Show the separation in grey");
    command.add_option("--rows", options->rows, kRowsHelp)->check(RefuseEmpty);
    command
        .add_option("--fit", options->fit,
                    "Make the longer side at most N pixels, by averaging; never enlarges")
        ->check(CLI::Range(std::uint32_t{ 1 }, options->fit))
        ->default_str("");
    command
        .add_option("--max-memory", options->maxMemory,
                    "The most that a TIFF/IT picture, which is drawn as a whole, may take in "
                    "memory, such as 512MiB")
        ->transform(CLI::AsSizeValue(false))
        ->default_str("4GiB");
    AddAsOption(command, options->asFormat);
    command.footer(
        R"(Transparent colours of line work are shown as paper.
Rows that a cut CT file doesn't hold are shown without ink, and the exit status is 1.
Nothing is written when nearly all of a huge picture is missing, or when line work, a JPEG or
a TIFF has a bad row.
With --fit each pixel is the mean of a box of whole pixels, each of which counts once.

Example:
  tympan preview photo.ct -o photo.png --fit 1200
  tympan preview photo.ct -o cyan.png --separation cyan --gray --rows 0:500)");
    command.callback([options] { Guard(options->file, [&] { Preview(*options); }); });
}

} // namespace tympan::tool
