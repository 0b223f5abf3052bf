// The part of `tympan import` that makes a CT file.
#include "cmyk_conversion.h"
#include "failure.h"
#include "import_job.h"
#include "names.h"
#include "progress.h"

#include <tympan/tympan.h>

#include <optional>
#include <vector>

namespace tympan::tool {

namespace {

constexpr unsigned int kInks = 4;

/// The four plates of a row, 255 for no ink.
class PlateRow {
  public:
    explicit PlateRow(ImportJob& job)
        : source_(*job.source), samples_(source_.Form().RowBytes()),
          ink_(std::size_t{ source_.Form().width } * kInks), plate_(source_.Form().width)
    {
        if (source_.Form().kind != SampleKind::CmykInk)
            conversion_.emplace(job.picture, source_.Form(),
                                job.profile.empty() ? FindCmykProfile() : job.profile);
        else if (!job.profile.empty())
            Warn(job.picture, "is CMYK already: --profile has no effect");
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

void Describe(CtFileInterface& ct, const ImportJob& job)
{
    const SourceForm& form = job.Form();
    PictureParameters record;
    record.WidthInPixels(form.width);
    record.HeightInPixels(form.height);
    record.NumberOfSeparations(kInks);
    for (unsigned int slot = 0; slot < kInks; ++slot)
        record.Separation(slot, BasePictureIF::AvailableSeps(slot));
    ct.StorePictureParams(&record);
    ct.FileWidthInUnits(form.width / job.resolution.x); // an assigned record doesn't carry these
    ct.FileHeightInUnits(form.height / job.resolution.y);
}

void WriteRows(CtFileInterface& ct, PlateRow& row, const ImportJob& job)
{
    Progress progress("importing " + Shown(job.picture), job.Form().height);
    for (std::uint32_t y = 0; y < job.Form().height; ++y) {
        row.ReadNext();
        for (unsigned int slot = 0; slot < kInks; ++slot) {
            const std::vector<std::uint8_t>& plate = row.Plate(slot);
            ct.SavePictureRow(plate.data(), y, BasePictureIF::AvailableSeps(slot), plate.size());
        }
        progress.Advance(1);
    }
}

} // namespace

unsigned int WriteCt(ImportJob& job, const OutputFile& output)
{
    job.source = WithoutPalette(std::move(job.source));
    PlateRow row(job);
    const std::unique_ptr<CtFileInterface> ct(
        create_ct_file_object(output.WritingPath().c_str(), false));
    if (ct == nullptr)
        throw std::bad_alloc();
    if (!ct->ObjectStatus())
        throw FileFailure(output.Path(), "the CT file can't be begun", ct->TraceStatus());
    Describe(*ct, job);
    if (!ct->SavePictureParams())
        throw FileFailure(output.Path(), "the picture's sizes don't fit a CT header", {},
                          "Give another --resolution.");
    WriteRows(*ct, row, job);
    ct->ClosePictureFile();
    return kInks;
}

} // namespace tympan::tool
