// `tympan import`: a JPEG, PNG or TIFF picture becomes a CT, an LW or a JPEG file.
#include "command.h"
#include "failure.h"
#include "import_job.h"
#include "jpeg_side_file.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "picture_source.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace tympan::tool {

namespace {

/// What an output can be.
struct Target {
    std::string_view format;
    unsigned int (*write)(ImportJob& job, const OutputFile& output);
};
constexpr Target kJpeg{ "JPEG", WriteJpeg };
constexpr std::array<std::string_view, 4> kEndings{ ".ct", ".lw", ".jpg", ".jpeg" };
constexpr std::array<Target, kEndings.size()> kTargets{ Target{ "CT", WriteCt },
                                                        Target{ "LW", WriteLw }, kJpeg, kJpeg };

constexpr char kFooter[] =
    R"(To a CT file: RGB and grey pictures become ink by the profile of a CMYK output,
relative colorimetric with black point compensation: the one given, else the
first found under color/icc in the system's data folders (Debian's libgs-common
installs one). The picture's colours are those of its own profile, else sRGB or
grey of gamma 2.2. A CMYK picture's plates are taken as they are, without colour
conversion. What is transparent is composed on white.

To an LW file: a bilevel or grey picture becomes the black plate as it is, but
that the value 64 becomes 63; how many pixels had it is told. A palette or RGB
picture of up to 255 colours that it really uses becomes four plates, its
colours converted as for CT, with flat black kept to the black plate. It is read
twice.

To a JPEG file whose rows can be read in bands of 8, with its side file .bin: a
grey, RGB (as YCbCr) or CMYK picture in its own colours. A JPEG picture becomes
one without loss when none of its components is subsampled; else it is encoded
anew, which is told. The colour profile is kept, Exif data isn't.

Examples:
  tympan import photo.jpg -o photo.ct --resolution 300
  tympan import page.tif -o page.lw
  tympan import camera.jpg -o photo.jpg

Environment:
  XDG_DATA_DIRS  the system's data folders, parted by colons (/usr/local/share:/usr/share))";

PixelsPerInch ResolutionFor(const ImportOptions& options, const SourceForm& form)
{
    if (options.resolution)
        return { *options.resolution, *options.resolution };
    return form.resolution.value_or(kUsualResolution);
}

std::string Shortly(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", number);
    return text.data();
}

// A header holds no side below a tenth of an inch, and none of 100 million inches.
void RequireInches(const ImportOptions& options, const SourceForm& form, PixelsPerInch resolution)
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
                          Shortly(height) + " inches, which its header can't hold",
                      {}, "Give a resolution from 1 to " + Shortly(most) + " with --resolution.");
}

// ---- reading what was written

bool IsAsWritten(const BasePictureIF& picture, const ImportJob& job, unsigned int separations)
{
    return picture.FileWidthInPixels() == job.Form().width &&
           picture.FileHeightInPixels() == job.Form().height &&
           picture.FileNumberOfSeparations() == separations &&
           IsSameResolution(picture.ResolutionOnXScanAxis(), job.resolution.x) &&
           IsSameResolution(picture.ResolutionOnScanAxis(), job.resolution.y);
}

void RequireReadsBack(const OutputFile& output, std::string_view format, const ImportJob& job,
                      unsigned int separations)
{
    const OpenedPicture opened = OpenAnyPicture(output.WritingPath().c_str());
    if (!opened.isOpen || opened.format != format ||
        !IsAsWritten(*opened.picture, job, separations))
        throw FileFailure(output.Path(),
                          "what was written doesn't read back as the picture that it should be", {},
                          kReportAdvice);
}

const Target& TargetOf(const std::string& output)
{
    const std::string ending = RequireEnding(output, kEndings);
    const auto* const found = std::find(kEndings.begin(), kEndings.end(), ending);
    return kTargets[static_cast<std::size_t>(found - kEndings.begin())];
}

ImportJob Open(const ImportOptions& options)
{
    ImportJob job;
    job.picture = options.picture;
    job.profile = options.profile;
    job.quality = options.quality;
    job.source = OpenPictureSource(options.picture);
    job.resolution = ResolutionFor(options, job.Form());
    for (const std::string& remark : job.Form().remarks)
        Warn(options.picture, remark);
    return job;
}

/// The side file of the output; null for a format that has none.
std::unique_ptr<OutputFile> BeginSideFile(const Target& target, const ImportOptions& options,
                                          const OutputFile& output)
{
    if (target.format != kJpeg.format)
        return nullptr;
    const std::string path = JpegSideFilePath(options.output);
    auto side = std::make_unique<OutputFile>(path, options.picture, output, ".bin");
    RequireNoOtherSideFile(path);
    return side;
}

} // namespace

void ImportPicture(const ImportOptions& options)
{
    const Target& target = TargetOf(options.output);
    if (options.quality && target.format != kJpeg.format)
        throw UsageFailure("--quality is for an output that is a JPEG file");
    if (options.resolution && std::isnan(*options.resolution)) // passes as within any range
        throw UsageFailure("--resolution wants a number of pixels per inch");
    ImportJob job = Guard(options.picture, [&] { return Open(options); });
    RequireInches(options, job.Form(), job.resolution);
    Guard(options.output, [&] {
        OutputFile output(options.output, options.picture, EndingOf(options.output));
        const std::unique_ptr<OutputFile> side = BeginSideFile(target, options, output);
        job.side = side.get();
        const unsigned int separations = target.write(job, output);
        RequireReadsBack(output, target.format, job, separations);
        OutputFile::CommitTogether({ side.get(), &output });
    });
}

void DeclareImport(const Options& command)
{
    const auto options = std::make_shared<ImportOptions>();
    command.Add("PICTURE", options->picture, "A JPEG, PNG or TIFF file").Required();
    command.Add("-o,--output", options->output, "The file to write, OUT.ct, OUT.lw or OUT.jpg")
        .Required()
        .Called("FILE");
    command
        .Add("--profile", options->profile,
             "ICC profile of the CMYK output, for RGB and grey pictures")
        .Called("FILE");
    command
        .Add("--resolution", options->resolution,
             "Pixels per inch, in place of the picture's own (else 300)")
        .Between(0.001, 1e6);
    command.Add("--quality", options->quality, "Of a JPEG file that is encoded anew, 1 to 100 (92)")
        .Between(1, 100);
    command.AddFooter(kFooter);
    command.Run([options] { ImportPicture(*options); });
}

} // namespace tympan::tool
