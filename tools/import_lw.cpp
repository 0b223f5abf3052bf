// The part of `tympan import` that makes an LW file: of a grey picture with the library's table of
// greys, of one of few colours with a table of those.
#include "cmyk_conversion.h"
#include "failure.h"
#include "import_job.h"
#include "names.h"
#include "progress.h"

#include <tympan/tympan.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kInks = 4;
constexpr std::size_t kMostColours = 255;
constexpr std::uint8_t kMissingGrey = 64; // the table of greys goes from 63 to 65

using Inks = std::array<std::uint8_t, kInks>; // 255 for no ink

// ---- colours

/// The colours that a picture uses, found by reading it once, and rows of their indexes.
class UsedColours {
  public:
    /// Reads the job's source to its end.
    explicit UsedColours(ImportJob& job)
        : kind_(job.Form().kind), palette_(job.Form().palette),
          values_(kind_ == SampleKind::Index ? 1U << 8U : 1U << 24U, kNone)
    {
        Progress progress("looking for the colours of " + Shown(job.picture), job.Form().height);
        std::vector<std::uint8_t> samples(job.Form().RowBytes());
        for (std::uint32_t y = 0; y < job.Form().height; ++y) {
            job.source->ReadRow(samples);
            Collect(samples, job.picture);
            progress.Advance(1);
        }
    }

    const std::vector<Rgb>& Colours() const { return colours_; }

    /// Gives each pixel the byte that `SetLWPictureRow` turns into its colour's index.
    /// \return whether all the colours are known.
    bool ToValues(std::span<const std::uint8_t> samples, std::span<std::uint8_t> values) const
    {
        const std::size_t step = SamplesPerPixel(kind_);
        const std::uint8_t* pixel = samples.data();
        for (std::uint8_t& value : values) {
            value = values_[PlaceOf(pixel)];
            pixel += step;
        }
        return std::find(values.begin(), values.end(), kNone) == values.end();
    }

  private:
    static constexpr std::uint8_t kNone = kMissingGrey; // the one value that no index needs

    std::size_t PlaceOf(const std::uint8_t* pixel) const
    {
        if (kind_ == SampleKind::Index)
            return pixel[0];
        return std::size_t{ pixel[0] } << 16U | std::size_t{ pixel[1] } << 8U | pixel[2];
    }

    Rgb ColourOf(const std::uint8_t* pixel) const
    {
        if (kind_ == SampleKind::Index)
            return palette_[pixel[0]];
        return { pixel[0], pixel[1], pixel[2] };
    }

    static std::uint8_t ValueFor(std::size_t index)
    {
        return static_cast<std::uint8_t>(index <= kMissingGrey ? index - 1 : index);
    }

    void Collect(const std::vector<std::uint8_t>& samples, const std::string& picture)
    {
        const std::size_t step = SamplesPerPixel(kind_);
        for (std::size_t at = 0; at < samples.size(); at += step)
            if (values_[PlaceOf(&samples[at])] == kNone)
                Add(&samples[at], picture);
    }

    void Add(const std::uint8_t* pixel, const std::string& picture)
    {
        if (colours_.size() == kMostColours)
            throw FileFailure(picture,
                              "has more than 255 colours, which is all that an LW file holds", {},
                              "Bring it to fewer colours first, without dithering; or import it "
                              "as a CT file.");
        colours_.push_back(ColourOf(pixel));
        values_[PlaceOf(pixel)] = ValueFor(colours_.size());
    }

    SampleKind kind_;
    std::vector<Rgb> palette_;
    std::vector<Rgb> colours_;         // from index 1 on
    std::vector<std::uint8_t> values_; // by the place of a pixel's samples
};

Inks PlatesOf(const std::uint8_t* ink)
{
    Inks plates{};
    std::transform(ink, ink + kInks, plates.begin(),
                   [](std::uint8_t amount) { return static_cast<std::uint8_t>(255 - amount); });
    return plates;
}

// Flat black is that of type and lines: one plate, so that nothing can be out of register.
std::vector<Inks> InksOf(const ImportJob& job, const std::vector<Rgb>& colours)
{
    constexpr Rgb kBlack{};
    constexpr Inks kPureBlack{ 255, 255, 255, 0 };
    SourceForm form = job.Form();
    form.kind = SampleKind::Rgb;
    const CmykConversion conversion(job.picture, form,
                                    job.profile.empty() ? FindCmykProfile() : job.profile);
    std::vector<Inks> inks;
    for (const Rgb& colour : colours) {
        Inks ink{};
        conversion.Convert(colour, ink);
        inks.push_back(colour == kBlack ? kPureBlack : PlatesOf(ink.data()));
    }
    return inks;
}

// ---- the header

/// The header of a picture of four separations, with a table of its own colours.
///
/// A colour's record is its index, a byte of flags (none), its ink on the four plates, and twelve
/// bytes of zeros.
class ColourHeader : public LwPictureParameters {
  public:
    /// \return false for sizes that the header can't hold.
    bool Write(CFile& file, const std::vector<Inks>& colours)
    {
        FileColorsNumber(static_cast<unsigned char>(colours.size()));
        file.Seek(kName, CFile::begin);
        SaveFileName(file);
        file.Seek(kType, CFile::begin);
        SaveFileType(file);
        if (!Save(file))
            return false;
        SaveLWNumberOfColors(file);
        file.Seek(kRecords, CFile::begin);
        WriteRecords(file, colours);
        return true;
    }

  private:
    static constexpr LONGLONG kName = 1;
    static constexpr LONGLONG kType = 80;
    static constexpr LONGLONG kRecords = 2048;
    static constexpr std::size_t kRecordBytes = 18;
    static constexpr std::size_t kInksInRecord = 2;

    static void WriteRecords(CFile& file, const std::vector<Inks>& colours)
    {
        std::vector<std::uint8_t> records(colours.size() * kRecordBytes);
        for (std::size_t i = 0; i < colours.size(); ++i) {
            std::uint8_t* const record = &records[i * kRecordBytes];
            record[0] = static_cast<std::uint8_t>(i + 1);
            std::copy(colours[i].begin(), colours[i].end(), record + kInksInRecord);
        }
        file.Write(records.data(), static_cast<UINT>(records.size()));
    }
};

// A record without separations, but with room for them.
void Describe(LwPictureParameters& record, const ImportJob& job, const OutputFile& output,
              unsigned int separations)
{
    const SourceForm& form = job.Form();
    record.WidthInPixels(form.width);
    record.HeightInPixels(form.height);
    record.WidthInUnits(form.width / job.resolution.x);
    record.HeightInUnits(form.height / job.resolution.y);
    record.NumberOfSeparations(separations);
    record.LwFileName(std::filesystem::path(output.Path()).stem().c_str());
}

// ---- writing

std::unique_ptr<LWFileInterface> BeginLw(const OutputFile& output)
{
    std::unique_ptr<LWFileInterface> lw(create_lw_file_object(output.WritingPath().c_str(), false));
    if (lw == nullptr)
        throw std::bad_alloc();
    if (!lw->ObjectStatus())
        throw FileFailure(output.Path(), "the LW file can't be begun", lw->TraceStatus());
    return lw;
}

/// Writes a row for each that `readRow` puts into the values it is given.
template <typename ReadRow>
void WriteRows(LWFileInterface& lw, const ImportJob& job, const ReadRow& readRow)
{
    Progress progress("importing " + Shown(job.picture), job.Form().height);
    std::vector<std::uint8_t> values(job.Form().width);
    for (std::uint32_t y = 0; y < job.Form().height; ++y) {
        readRow(values);
        lw.SetLWPictureRow(values.data(), lw.FileHandle(), values.size());
        progress.Advance(1);
    }
    lw.ClosePictureFile();
}

[[noreturn]] void FailHeader(const OutputFile& output)
{
    throw FileFailure(output.Path(), "the picture's sizes don't fit an LW header", {},
                      "Give another --resolution.");
}

unsigned int WriteGreys(const ImportJob& job, const OutputFile& output)
{
    if (!job.profile.empty())
        Warn(job.picture, "its greys are taken as they are: --profile has no effect");
    const auto lw = BeginLw(output);
    auto& record = dynamic_cast<LwPictureParameters&>(*lw->PictureParams());
    Describe(record, job, output, 1);
    record.SaveHader(lw->FileHandle());
    if (record.TraceStatus() != 0)
        FailHeader(output);
    std::uint64_t changed = 0;
    WriteRows(*lw, job, [&](std::vector<std::uint8_t>& values) {
        job.source->ReadRow(values);
        changed +=
            static_cast<std::uint64_t>(std::count(values.begin(), values.end(), kMissingGrey));
    });
    if (changed != 0)
        Warn(job.picture, std::to_string(changed) +
                              (changed == 1 ? " pixel of the value 64 becomes"
                                            : " pixels of the value 64 become") +
                              " 63: the greys of an LW file have no 64");
    return 1;
}

unsigned int WriteColours(ImportJob& job, const OutputFile& output)
{
    const UsedColours used(job);
    const std::vector<Inks> inks = InksOf(job, used.Colours());
    job.source = OpenPictureSource(job.picture); // from the first row again
    const auto lw = BeginLw(output);
    ColourHeader record;
    Describe(record, job, output, kInks);
    for (unsigned int slot = 0; slot < kInks; ++slot)
        record.Separation(slot, BasePictureIF::AvailableSeps(slot));
    if (!record.Write(lw->FileHandle(), inks))
        FailHeader(output);
    std::vector<std::uint8_t> samples(job.Form().RowBytes());
    WriteRows(*lw, job, [&](std::vector<std::uint8_t>& values) {
        job.source->ReadRow(samples);
        if (!used.ToValues(samples, values))
            throw FileFailure(job.picture, "has changed while it was read", {}, kTryAgainAdvice);
    });
    return kInks;
}

} // namespace

unsigned int WriteLw(ImportJob& job, const OutputFile& output)
{
    switch (job.Form().kind) {
    case SampleKind::Grey: return WriteGreys(job, output);
    case SampleKind::Index:
    case SampleKind::Rgb: return WriteColours(job, output);
    case SampleKind::CmykInk: break;
    }
    throw FileFailure(job.picture, "is CMYK, which becomes a CT file and no LW file", {},
                      "Give the output a name that ends in .ct; or import it as a bilevel, grey or "
                      "palette picture.");
}

} // namespace tympan::tool
