// `tympan export`: a CT picture becomes a TIFF that other programs show rightly.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "separations.h"
#include "tiff_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kInks = 4;
constexpr std::array<std::string_view, 2> kEndings{ ".tif", ".tiff" };

constexpr char kFooter[] =
    R"(Four separations become a CMYK TIFF whose samples are ink (255 is full ink, the
inverse of a CT's bytes); one becomes a grey TIFF (255 is no ink, so white).

Example:
  tympan export photo.ct -o photo.tif)";

struct Options {
    std::string file;
    std::string output;
    std::string asFormat;
};

/// The rows of all separations, read in bands of limited size.
class PlateBands {
  public:
    PlateBands(const Picture& picture, std::vector<ColorSeparationType> separations)
        : picture_(picture), width_(picture.Width()), separations_(std::move(separations)),
          rows_(std::clamp<std::size_t>(kBandBytes / (width_ * separations_.size()), 1,
                                        picture.Height())),
          planes_(separations_.size(), std::vector<std::uint8_t>(width_ * rows_))
    {}

    /// The bytes of a row of one separation; holds until the next call for another row.
    const std::uint8_t* Row(std::uint32_t row, std::size_t separation)
    {
        if (row >= end_)
            ReadBand(row);
        return planes_[separation].data() + (row - first_) * width_;
    }

  private:
    static constexpr std::size_t kBandBytes = 4U << 20U;

    void ReadBand(std::uint32_t row)
    {
        first_ = row;
        end_ = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(std::uint64_t{ row } + rows_, picture_.Height()));
        for (std::size_t i = 0; i < separations_.size(); ++i) {
            unsigned int rowsInfo = 0;
            picture_.Rows().GetPictureRows(planes_[i].data(), first_, end_, rowsInfo, nullptr,
                                           separations_[i],
                                           static_cast<unsigned long>(planes_[i].size()), false);
            picture_.RequireNoFailure();
        }
    }

    const Picture& picture_;
    std::size_t width_;
    std::vector<ColorSeparationType> separations_;
    std::size_t rows_; // of a band
    std::vector<std::vector<std::uint8_t>> planes_;
    std::uint32_t first_ = 0;
    std::uint32_t end_ = 0;
};

WrittenForm FormOf(const Picture& picture)
{
    return { picture.Width(), picture.Height(), picture.Object().ResolutionOnXScanAxis(),
             picture.Object().ResolutionOnScanAxis() };
}

// One plate as it is, for 255 is white in a grey TIFF; four turned round, side by side.
void Compose(PlateBands& bands, std::uint32_t row, std::size_t separations,
             std::vector<std::uint8_t>& samples)
{
    for (std::size_t i = 0; i < separations; ++i) {
        const std::uint8_t* const plate = bands.Row(row, i);
        for (std::size_t x = 0; x * separations < samples.size(); ++x)
            samples[x * separations + i] =
                separations == kInks ? static_cast<std::uint8_t>(255 - plate[x]) : plate[x];
    }
}

void WriteRows(const Picture& picture, RowWriter& writer)
{
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    PlateBands bands(picture, separations);
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
    if (picture.AsCt() == nullptr)
        throw FileFailure(options.file, "is a " + std::string(picture.Format()) +
                                            " file; only CT files can be exported");
    Guard(options.file, [&] { RequireWhole(picture); });
    OutputFile output(options.output, options.file);
    Guard(options.output, [&] {
        const bool inInks = picture.Object().FileNumberOfSeparations() == kInks;
        TiffWriter writer(output, FormOf(picture), inInks ? TiffColour::CmykInk : TiffColour::Grey);
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
        app.add_subcommand("export", "Turns a CT file into a CMYK or grey TIFF");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->file, "A CT file")->required();
    command->add_option("-o,--output", options->output, "The TIFF file to write, OUT.tif")
        ->required();
    AddAsOption(*command, options->asFormat);
    command->footer(kFooter);
    command->callback([options] { Export(*options); });
}

} // namespace tympan::tool
