// `tympan export`: a picture's plates become a TIFF that other programs show rightly.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "separation_bands.h"
#include "separations.h"
#include "tiff_plates.h"
#include "tiff_writer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::array<std::string_view, 2> kEndings{ ".tif", ".tiff" };

constexpr char kFooter[] =
    R"(Four separations become a CMYK TIFF whose samples are ink (255 is full ink, the
inverse of a plate's bytes); one becomes a grey TIFF (255 is no ink, so white).
A JPEG of three becomes an RGB TIFF. A TIFF becomes one of its inks, by their names, a grey
one, or one of the red, green and blue that it is shown in.
Transparent colours of line work become paper.

Example:
  tympan export photo.ct -o photo.tif
  tympan export map.lw -o map.tif
  tympan export photo.jpg -o photo.tif)";

struct ExportOptions {
    std::string file;
    std::string output;
    std::string asFormat;
};

WrittenForm FormOf(const Picture& picture)
{
    const AxisResolution resolution = AxisResolutionOf(picture.Object());
    return { picture.Width(), picture.Height(), resolution.alongWidth, resolution.alongHeight };
}

// What is written of a picture.
struct Exported {
    TiffSamples samples;
    std::vector<ColorSeparationType> separations; // that a row is made of
    /// Puts the samples of a row, together for each pixel.
    std::function<void(SeparationBands& bands, std::uint32_t row, std::span<std::uint8_t> samples)>
        compose;
};

// One plate as it is, for 255 is white in a grey TIFF; three side by side, for a red of 255 is no
// cyan; inks turned round, side by side.
Exported Plates(const TiffSamples& samples, const std::vector<ColorSeparationType>& separations)
{
    const bool isInk = samples.colour == TiffColour::Ink;
    const std::size_t count = separations.size();
    return { samples, separations, [=](SeparationBands& bands, std::uint32_t row, auto put) {
                for (std::size_t i = 0; i < count; ++i) {
                    const std::span<const std::uint8_t> plate = bands.Row(row, i);
                    for (std::size_t x = 0; x < plate.size(); ++x)
                        put[x * count + i] =
                            isInk ? static_cast<std::uint8_t>(255 - plate[x]) : plate[x];
                }
            } };
}

// A TIFF in the colours that it is shown in.
Exported Coloured(const TiffColours& colours)
{
    return { { TiffColour::Rgb, {} },
             colours.Separations(),
             [=](SeparationBands& bands, std::uint32_t row, auto put) {
                 colours.Show(bands, row, put);
             } };
}

TiffSamples SamplesOf(std::size_t separations)
{
    switch (separations) {
    case 1: return { TiffColour::Grey, {} };
    case 3: return { TiffColour::Rgb, {} };
    default: return { TiffColour::Ink, CmykInks() };
    }
}

std::vector<std::string> InksOf(const Picture& picture)
{
    std::vector<std::string> inks;
    for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
        inks.push_back(NameOf(picture.Object(), separation));
    return inks;
}

Exported ExportedOf(const Picture& picture)
{
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    if (picture.AsTiff() == nullptr)
        return Plates(SamplesOf(separations.size()), separations);
    if (IsOfInks(*picture.AsTiff()))
        return Plates({ TiffColour::Ink, InksOf(picture) }, separations);
    const TiffColours colours(picture);
    return colours.IsGrey() ? Plates({ TiffColour::Grey, {} }, separations) : Coloured(colours);
}

void WriteRows(const Picture& picture, const Exported& exported, RowWriter& writer)
{
    SeparationBands bands(picture, exported.separations, { 0, picture.Height() });
    std::vector<std::uint8_t> samples(std::size_t{ picture.Width() } * exported.samples.Count());
    Progress progress("exporting " + Shown(picture.Path()), picture.Height());
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        exported.compose(bands, row, samples);
        writer.Write(samples);
        progress.Advance(1);
    }
}

void RequireWhole(const Picture& picture)
{
    picture.Rows(); // refuses a file without them
    RequirePixels(picture);
    RequireRows(picture, picture.Height());
}

void Export(const ExportOptions& options)
{
    if (!IsDash(options.output))
        RequireEnding(options.output, kEndings);
    const Picture picture = OpenPicture(options.file, options.asFormat);
    Guard(options.file, [&] { RequireWhole(picture); });
    ShowTransparentAsPaper(picture);
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    Guard(options.output, [&] {
        const Exported exported = ExportedOf(picture);
        TiffWriter writer(output, FormOf(picture), exported.samples);
        WriteRows(picture, exported, writer);
        writer.Finish();
        RequireWhole(picture); // it may have been cut short meanwhile
        output.Commit();
    });
}

} // namespace

void DeclareExport(const Options& command)
{
    const auto options = std::make_shared<ExportOptions>();
    command.Add("FILE", options->file, "The picture").Required();
    command
        .Add("-o,--output", options->output,
             "The TIFF file to write, OUT.tif; - is standard output")
        .Required()
        .Called("FILE");
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Export(*options); });
}

} // namespace tympan::tool
