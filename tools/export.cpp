// `tympan export`: a picture's plates become a TIFF that other programs show rightly.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "separation_bands.h"
#include "separations.h"
#include "tiff_writer.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kInks = 4;
constexpr std::array<std::string_view, 2> kEndings{ ".tif", ".tiff" };

constexpr char kFooter[] =
    R"(Four separations become a CMYK TIFF whose samples are ink (255 is full ink, the
inverse of a plate's bytes); one becomes a grey TIFF (255 is no ink, so white).
A JPEG of three becomes an RGB TIFF.
Transparent colours of line work become paper.

Example:
  tympan export photo.ct -o photo.tif
  tympan export map.lw -o map.tif
  tympan export photo.jpg -o photo.tif)";

struct Options {
    std::string file;
    std::string output;
    std::string asFormat;
};

WrittenForm FormOf(const Picture& picture)
{
    return { picture.Width(), picture.Height(), picture.Object().ResolutionOnXScanAxis(),
             picture.Object().ResolutionOnScanAxis() };
}

TiffColour ColourOf(std::size_t separations)
{
    switch (separations) {
    case 1: return TiffColour::Grey;
    case 3: return TiffColour::Rgb;
    default: return TiffColour::CmykInk;
    }
}

// One plate as it is, for 255 is white in a grey TIFF; three side by side, for a red of 255 is no
// cyan; four turned round, side by side.
void Compose(SeparationBands& bands, std::uint32_t row, std::size_t separations,
             std::vector<std::uint8_t>& samples)
{
    for (std::size_t i = 0; i < separations; ++i) {
        const std::span<const std::uint8_t> plate = bands.Row(row, i);
        for (std::size_t x = 0; x < plate.size(); ++x)
            samples[x * separations + i] =
                separations == kInks ? static_cast<std::uint8_t>(255 - plate[x]) : plate[x];
    }
}

void WriteRows(const Picture& picture, RowWriter& writer)
{
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    SeparationBands bands(picture, separations, { 0, picture.Height() });
    std::vector<std::uint8_t> samples(std::size_t{ picture.Width() } * separations.size());
    Progress progress("exporting " + Shown(picture.Path()), picture.Height());
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        Compose(bands, row, separations.size(), samples);
        writer.Write(samples);
        progress.Advance(1);
    }
}

void RequireWhole(const Picture& picture)
{
    RequirePixels(picture);
    RequireRows(picture, picture.Height());
}

void Export(const Options& options)
{
    RequireEnding(options.output, kEndings);
    const Picture picture = OpenPicture(options.file, options.asFormat);
    Guard(options.file, [&] { RequireWhole(picture); });
    ShowTransparentAsPaper(picture);
    OutputFile output(options.output, options.file);
    Guard(options.output, [&] {
        TiffWriter writer(output, FormOf(picture),
                          ColourOf(SeparationsOf(picture.Object()).size()));
        WriteRows(picture, writer);
        writer.Finish();
        RequireWhole(picture); // it may have been cut short meanwhile
        output.Commit();
    });
}

} // namespace

void AddExport(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("export", "Turns a picture into a CMYK, RGB or grey TIFF");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->file, "The picture")->required();
    command->add_option("-o,--output", options->output, "The TIFF file to write, OUT.tif")
        ->required();
    AddAsOption(*command, options->asFormat);
    command->footer(kFooter);
    command->callback([options] { Export(*options); });
}

} // namespace tympan::tool
