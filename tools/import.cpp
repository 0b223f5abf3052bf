// `tympan import`: a JPEG, PNG or TIFF picture becomes a CT file.
#include "cmyk_conversion.h"
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "picture_source.h"
#include "progress.h"

#include <tympan/tympan.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

constexpr double kUsualResolution = 300.0; // pixels per inch
constexpr std::size_t kInks = 4;
constexpr std::array<std::string_view, 1> kEndings{ ".ct" };

constexpr char kFooter[] =
    R"(RGB and grey pictures become ink by the profile of a CMYK output, relative
colorimetric with black point compensation: the one given, else the first found
under color/icc in the system's data folders (Debian's libgs-common installs
one). The picture's colours are those of its own profile, else sRGB or grey of
gamma 2.2. A CMYK picture's plates are taken as they are, without colour
conversion. What is transparent is composed on white.

Example:
  tympan import photo.jpg -o photo.ct --resolution 300)";

struct Options {
    std::string picture;
    std::string output;
    std::string profile;
    std::optional<double> resolution;
};

/// The four plates of a row, 255 for no ink.
class PlateRow {
  public:
    PlateRow(const Options& options, PictureSource& source)
        : source_(source), samples_(source.Form().RowBytes()),
          ink_(std::size_t{ source.Form().width } * kInks), plate_(source.Form().width)
    {
        const SourceForm& form = source.Form();
        if (form.kind != SampleKind::CmykInk)
            conversion_.emplace(options.picture, form,
                                options.profile.empty() ? FindCmykProfile() : options.profile);
        else if (!options.profile.empty())
            Warn(options.picture, "is CMYK already: --profile has no effect");
    }

    void ReadNext()
    {
        source_.ReadRow(conversion_ ? samples_ : ink_);
        if (conversion_)
            conversion_->Convert(samples_, ink_);
    }

    const std::vector<std::uint8_t>& Plate(std::size_t separation)
    {
        for (std::size_t x = 0; x < plate_.size(); ++x)
            plate_[x] = static_cast<std::uint8_t>(255 - ink_[x * kInks + separation]);
        return plate_;
    }

  private:
    PictureSource& source_;
    std::optional<CmykConversion> conversion_;
    std::vector<std::uint8_t> samples_;
    std::vector<std::uint8_t> ink_; // C, M, Y, K of each pixel
    std::vector<std::uint8_t> plate_;
};

PixelsPerInch ResolutionFor(const Options& options, const SourceForm& form)
{
    if (options.resolution)
        return { *options.resolution, *options.resolution };
    return form.resolution.value_or(PixelsPerInch{ kUsualResolution, kUsualResolution });
}

std::string Shortly(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", number);
    return text.data();
}

// A header holds no side below a tenth of an inch, and none of 100 million inches.
void RequireInches(const Options& options, const SourceForm& form, PixelsPerInch resolution)
{
    constexpr double kLeast = 0.1;
    constexpr double kEnd = 1e8;
    const double width = form.width / resolution.x;
    const double height = form.height / resolution.y;
    if (std::min(width, height) >= kLeast && std::max(width, height) < kEnd)
        return;
    const double most = std::floor(std::min(form.width, form.height) / kLeast);
    throw FileFailure(options.picture,
                      "at " + Shortly(resolution.x) + " x " + Shortly(resolution.y) +
                          " pixels per inch the picture measures " + Shortly(width) + " x " +
                          Shortly(height) + " inches, which a CT file can't hold",
                      {}, "Give a resolution from 1 to " + Shortly(most) + " with --resolution.");
}

// ---- writing

void Describe(CtFileInterface& ct, const SourceForm& form, PixelsPerInch resolution)
{
    PictureParameters record;
    record.WidthInPixels(form.width);
    record.HeightInPixels(form.height);
    record.NumberOfSeparations(kInks);
    for (unsigned int slot = 0; slot < kInks; ++slot)
        record.Separation(slot, BasePictureIF::AvailableSeps(slot));
    ct.StorePictureParams(&record);
    ct.FileWidthInUnits(form.width / resolution.x); // an assigned record doesn't carry these
    ct.FileHeightInUnits(form.height / resolution.y);
}

void WriteRows(CtFileInterface& ct, PlateRow& row, const SourceForm& form, const Options& options)
{
    Progress progress("importing " + Shown(options.picture), form.height);
    for (std::uint32_t y = 0; y < form.height; ++y) {
        row.ReadNext();
        for (unsigned int slot = 0; slot < kInks; ++slot) {
            const std::vector<std::uint8_t>& plate = row.Plate(slot);
            ct.SavePictureRow(plate.data(), y, BasePictureIF::AvailableSeps(slot), plate.size());
        }
        progress.Advance(1);
    }
}

void WriteCt(const OutputFile& output, const SourceForm& form, const Options& options,
             PlateRow& row)
{
    const std::unique_ptr<CtFileInterface> ct(
        create_ct_file_object(output.WritingPath().c_str(), false));
    if (ct == nullptr)
        throw std::bad_alloc();
    if (!ct->ObjectStatus())
        throw FileFailure(output.Path(), "the CT file can't be begun", ct->TraceStatus());
    Describe(*ct, form, ResolutionFor(options, form));
    if (!ct->SavePictureParams())
        throw FileFailure(output.Path(), "the picture's sizes don't fit a CT header");
    WriteRows(*ct, row, form, options);
    ct->ClosePictureFile();
}

// ---- reading what was written

bool IsAsWritten(const CtFileInterface& ct, const SourceForm& form, PixelsPerInch resolution)
{
    return ct.FileWidthInPixels() == form.width && ct.FileHeightInPixels() == form.height &&
           ct.FileNumberOfSeparations() == kInks &&
           IsSameResolution(ct.ResolutionOnXScanAxis(), resolution.x) &&
           IsSameResolution(ct.ResolutionOnScanAxis(), resolution.y);
}

void RequireReadsBack(const OutputFile& output, const SourceForm& form, PixelsPerInch resolution)
{
    const CString path(output.WritingPath().c_str());
    const std::unique_ptr<BasePictureIF> picture(create_picture_object(path));
    auto* const ct = dynamic_cast<CtFileInterface*>(picture.get());
    if (ct == nullptr || !ct->OpenPictureFile(path, true, false, nullptr) ||
        !IsAsWritten(*ct, form, resolution))
        throw FileFailure(output.Path(),
                          "what was written doesn't read back as the CT picture "
                          "that it should be",
                          {}, "Please report this, with the picture.");
}

void Import(const Options& options)
{
    RequireEnding(options.output, kEndings);
    if (options.resolution && std::isnan(*options.resolution)) // passes as within any range
        throw UsageFailure("--resolution wants a number of pixels per inch");
    const auto source = Guard(options.picture, [&] { return OpenPictureSource(options.picture); });
    const SourceForm& form = source->Form();
    const PixelsPerInch resolution = ResolutionFor(options, form);
    RequireInches(options, form, resolution);
    Guard(options.picture, [&] {
        PlateRow row(options, *source);
        OutputFile output(options.output, options.picture);
        Guard(options.output, [&] {
            WriteCt(output, form, options, row);
            RequireReadsBack(output, form, resolution);
            output.Commit();
        });
    });
}

} // namespace

void AddImport(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("import", "Turns a JPEG, PNG or TIFF picture into a CT file");
    const auto options = std::make_shared<Options>();
    command->add_option("PICTURE", options->picture, "A JPEG, PNG or TIFF file")->required();
    command->add_option("-o,--output", options->output, "The CT file to write, OUT.ct")->required();
    command->add_option("--profile", options->profile,
                        "ICC profile of the CMYK output, for RGB and grey pictures");
    command
        ->add_option("--resolution", options->resolution,
                     "Pixels per inch, in place of the picture's own (else 300)")
        ->check(CLI::Range(0.001, 1e6));
    command->footer(kFooter);
    command->callback([options] { Import(*options); });
}

} // namespace tympan::tool
