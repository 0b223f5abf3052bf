// The part of `tympan import` that makes a JPEG file of the form whose bands of 8 rows the library
// hands out: of another JPEG's coefficients, or of the samples of any picture.
#include "failure.h"
#include "import_job.h"
#include "jpeg_bands.h"
#include "jpeg_coefficients.h"
#include "jpeg_side_file.h"
#include "jpeg_stream_writer.h"
#include "names.h"
#include "picture.h"
#include "progress.h"

#include <tympan/inspect.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

constexpr int kUsualQuality = 92;

void RequireJpegSize(const ImportJob& job)
{
    if (std::max(job.Form().width, job.Form().height) > kMostJpegSide)
        throw FileFailure(
            job.picture,
            "has " + std::to_string(job.Form().width) + " x " + std::to_string(job.Form().height) +
                " pixels; a JPEG file has room for " + std::to_string(kMostJpegSide) + " on a side",
            {}, "Give the output a name that ends in .ct.");
}

void TellWhatIsLeftOut(const ImportJob& job)
{
    if (!job.profile.empty())
        Warn(job.picture, "its colours are kept: --profile has no effect");
    if (job.Form().hasExif)
        Warn(job.picture, "its Exif data is left out");
    if (job.Form().profile.size() > kMostJpegProfile)
        Warn(job.picture, "its colour profile is left out: it is too large for a JPEG file");
}

// ---- of coefficients

/// \return whether it could be written.
bool IsCopied(JpegCoefficients& coefficients, const ImportJob& job, const OutputFile& output)
{
    coefficients.Start();
    JpegStreamWriter writer(output, job);
    JpegEncoder jpeg;
    jpeg.err = coefficients.Messages().Manager();
    const bool isWritten = coefficients.Messages().Do([&] {
        jpeg_create_compress(&jpeg);
        const bool areTwo = coefficients.Describe(jpeg);
        writer.Attach(jpeg, areTwo ? JpegTables::FirstAndOthers : JpegTables::Common);
        coefficients.Begin(jpeg);
        writer.WriteProfile(jpeg);
        jpeg_finish_compress(&jpeg);
    });
    if (isWritten)
        writer.Finish();
    else if (coefficients.Messages().Code() != JpegCoefficients::kTooLarge)
        throw UnreadableJpeg(job.picture, coefficients.Messages());
    return isWritten;
}

/// \return why they can't be copied; empty when they have been.
std::string CopyCoefficients(const ImportJob& job, const OutputFile& output)
{
    JpegCoefficients coefficients(job.picture);
    std::string why = coefficients.WhyNot();
    if (!why.empty() || IsCopied(coefficients, job, output))
        return why;
    return "its coefficients are too large for a baseline file";
}

// ---- of samples

struct Coding {
    SampleKind kind;
    J_COLOR_SPACE samples;
    JpegTables tables;
};
constexpr std::array kCodings{
    Coding{ SampleKind::Grey, JCS_GRAYSCALE, JpegTables::Common },
    Coding{ SampleKind::Rgb, JCS_RGB, JpegTables::FirstAndOthers }, // becomes YCbCr
    Coding{ SampleKind::CmykInk, JCS_CMYK, JpegTables::Common },    // marked as Adobe's
};

class Encoding {
  public:
    Encoding(const ImportJob& job, const OutputFile& output)
        : job_(job), path_(output.Path()), writer_(output, job), row_(job.Form().RowBytes())
    {
        jpeg_.err = messages_.Manager();
        Do([this] {
            jpeg_create_compress(&jpeg_);
            Begin();
        });
    }

    void Run()
    {
        for (std::uint32_t y = 0; y < job_.Form().height; ++y)
            WriteNextRow();
        Do([this] { jpeg_finish_compress(&jpeg_); });
        writer_.Finish();
    }

  private:
    template <typename Calls>
    void Do(const Calls& calls)
    {
        if (!messages_.Do(calls))
            throw FileFailure(path_, std::string("can't be compressed: ") + messages_.Text());
    }

    void Begin()
    {
        const SourceForm& form = job_.Form();
        const Coding& coding =
            *std::find_if(kCodings.begin(), kCodings.end(),
                          [&](const Coding& one) { return one.kind == form.kind; });
        jpeg_.image_width = form.width;
        jpeg_.image_height = form.height;
        jpeg_.input_components = static_cast<int>(SamplesPerPixel(form.kind));
        jpeg_.in_color_space = coding.samples;
        jpeg_set_defaults(&jpeg_);
        jpeg_set_quality(&jpeg_, job_.quality.value_or(kUsualQuality), TRUE);
        writer_.Attach(jpeg_, coding.tables);
        jpeg_start_compress(&jpeg_, TRUE);
        writer_.WriteProfile(jpeg_);
    }

    void WriteNextRow()
    {
        job_.source->ReadRow(row_);
        if (job_.Form().kind == SampleKind::CmykInk) // Adobe's are inverted
            std::transform(row_.begin(), row_.end(), row_.begin(),
                           [](std::uint8_t ink) { return static_cast<std::uint8_t>(255 - ink); });
        JSAMPROW rows[] = { row_.data() };
        Do([this, &rows] { jpeg_write_scanlines(&jpeg_, rows, 1); });
    }

    const ImportJob& job_;
    std::string path_;
    JpegMessages messages_;
    JpegStreamWriter writer_;
    JpegEncoder jpeg_;
    std::vector<std::uint8_t> row_;
};

// ---- reading what was written

void RequireIndex(const Picture& picture)
{
    const std::optional<JpegIndex> index = IndexOf(picture.Object());
    if (!index || !index->fitsFile)
        throw FileFailure(picture.Path(), "its index isn't whole", {}, kReportAdvice);
}

void RequireBands(const Picture& picture, const OutputFile& output)
{
    Progress progress("reading back " + Shown(output.Path()), picture.Height());
    JpegBands bands(picture, { 0, picture.Height() });
    for (std::uint32_t row = 0; row < picture.Height(); row += kJpegBandRows) {
        bands.Row(row);
        progress.Advance(kJpegBandRows);
    }
}

// Every band is there and can be decoded from what the library hands out.
void RequireDecodable(const OutputFile& output)
{
    try {
        const Picture picture = OpenPicture(output.WritingPath(), "jpeg");
        RequireIndex(picture);
        RequireBands(picture, output);
    } catch (const FileFailure& failure) {
        throw FileFailure(output.Path(),
                          "what was written doesn't read back: " + failure.WhatHappened(),
                          failure.Code(), kReportAdvice);
    }
}

} // namespace

unsigned int WriteJpeg(ImportJob& job, const OutputFile& output)
{
    RequireJpegSize(job);
    TellWhatIsLeftOut(job);
    job.source = WithoutPalette(std::move(job.source));
    const std::string why =
        job.Form().isJpeg ? CopyCoefficients(job, output) : "it is no JPEG file";
    if (why.empty() && job.quality)
        Warn(job.picture, "its coefficients are taken as they are: --quality has no effect");
    if (!why.empty() && job.Form().isJpeg)
        Warn(job.picture, "is decoded and encoded anew, which loses a little: " + why);
    if (!why.empty())
        Encoding(job, output).Run();
    RequireWritten(*job.side, job.Form().height);
    RequireDecodable(output);
    return static_cast<unsigned int>(SamplesPerPixel(job.Form().kind));
}

} // namespace tympan::tool
