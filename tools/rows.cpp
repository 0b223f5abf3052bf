// `tympan rows`: one separation of a picture as a file of its own.
#include "command.h"
#include "failure.h"
#include "grey_files.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "row_range.h"
#include "separations.h"

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

struct RowsOptions {
    std::string file;
    std::string asFormat;
    std::string output;
    std::string separation;
    std::string rows;
    std::optional<double> resolution;
};

constexpr std::size_t kBandBytes = 4U << 20U;
constexpr double kLongestRow = 1U << 28U; // pixels of an enlarged row

// The rows wanted, at the file's own resolution or enlarged.
class RowSource {
  public:
    RowSource(const Picture& picture, CtFileInterface& ct, ColorSeparationType separation,
              RowRange rows)
        : picture_(picture), ct_(ct), separation_(separation), rows_(rows)
    {}
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    virtual WrittenForm Form() const = 0;
    virtual void WriteTo(RowWriter& writer) = 0;

  protected:
    const Picture& picture_;
    CtFileInterface& ct_;
    ColorSeparationType separation_;
    RowRange rows_;
};

class StoredRows : public RowSource {
  public:
    using RowSource::RowSource;

    WrittenForm Form() const override
    {
        return { picture_.Width(), rows_.Count(), ct_.ResolutionOnXScanAxis(),
                 ct_.ResolutionOnScanAxis() };
    }

    void WriteTo(RowWriter& writer) override
    {
        const std::size_t width = picture_.Width();
        const auto bandRows = static_cast<std::uint32_t>(
            std::max<std::size_t>(1, std::min<std::size_t>(kBandBytes / width, rows_.Count())));
        std::vector<std::uint8_t> band(width * bandRows);
        Progress progress("Reading " + picture_.Path(), rows_.Count());
        for (std::uint32_t row = rows_.first; row < rows_.end;) {
            const std::uint32_t count = std::min(bandRows, rows_.end - row);
            ReadBand(row, count, band);
            for (std::uint32_t i = 0; i < count; ++i)
                writer.Write({ band.data() + i * width, width });
            progress.Advance(count);
            row += count;
        }
    }

  private:
    void ReadBand(std::uint32_t row, std::uint32_t count, std::vector<std::uint8_t>& band)
    {
        unsigned int rowsInfo = 0;
        const unsigned long read =
            ct_.GetPictureRows(band.data(), row, row + count, rowsInfo, nullptr, separation_,
                               static_cast<unsigned long>(band.size()), false);
        if (read != std::uint64_t{ count } * picture_.Width())
            throw picture_.Failure();
    }
};

class EnlargedRows : public RowSource {
  public:
    EnlargedRows(const Picture& picture, CtFileInterface& ct, ColorSeparationType separation,
                 RowRange rows, double resolution)
        : RowSource(picture, ct, separation, rows),
          askedScan_(resolution / ct.ResolutionOnXScanAxis() * ct.ResolutionOnScanAxis()),
          askedXScan_(resolution / ct.ResolutionOnScanAxis() * ct.ResolutionOnXScanAxis()),
          horizontal_(askedScan_ / ct.ResolutionOnScanAxis()),
          vertical_(askedXScan_ / ct.ResolutionOnXScanAxis())
    {
        const double width = std::floor(horizontal_ * picture.Width() + 0.5);
        const double height = std::floor(vertical_ * picture.Height() + 0.5);
        if (width > kLongestRow || height > kLongestRow)
            throw UsageFailure("--resolution: the picture would be more than " +
                               std::to_string(static_cast<long>(kLongestRow)) +
                               " pixels wide or high");
        // The library refuses what isn't an enlargement, numbers that are none included.
        buffer_.resize(width >= 1.0 ? static_cast<std::size_t>(width) : 1);
        ReadRow(0);
        firstRow_ = FirstRowOf(rows.first);
        endRow_ = rows.end == picture.Height() ? static_cast<std::uint32_t>(height)
                                               : FirstRowOf(rows.end);
    }

    WrittenForm Form() const override
    {
        return { static_cast<std::uint32_t>(buffer_.size()), endRow_ - firstRow_,
                 ct_.ResolutionOnXScanAxis() * horizontal_,
                 ct_.ResolutionOnScanAxis() * vertical_ };
    }

    void WriteTo(RowWriter& writer) override
    {
        Progress progress("Reading " + picture_.Path(), endRow_ - firstRow_);
        for (std::uint32_t row = firstRow_; row < endRow_; ++row) {
            ReadRow(row);
            writer.Write(buffer_);
            progress.Advance(1);
        }
    }

  private:
    // The first enlarged row that repeats a row of the file. The library goes from enlarged rows to
    // the file's by a division of which it drops the fraction.
    std::uint32_t FirstRowOf(std::uint32_t fileRow) const
    {
        auto row = static_cast<std::uint32_t>(std::floor(fileRow * vertical_));
        while (static_cast<std::uint32_t>(row / vertical_) < fileRow)
            ++row;
        return row;
    }

    void ReadRow(std::uint32_t row)
    {
        const unsigned long read =
            ct_.GetPictureRow(buffer_.data(), row, separation_, askedScan_, askedXScan_,
                              static_cast<unsigned long>(buffer_.size()));
        if (read == buffer_.size())
            return;
        throw picture_.Failure(Advice());
    }

    std::string Advice() const
    {
        if (!std::isfinite(horizontal_) || !std::isfinite(vertical_) || horizontal_ <= 0.0 ||
            vertical_ <= 0.0)
            return "The header gives no size in inches: leave --resolution away.";
        const auto text = [](double value) {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%.10g", value);
            return std::string(digits.data());
        };
        return "--resolution has to be at least the file's: " + text(ct_.ResolutionOnXScanAxis()) +
               " along the width, " + text(ct_.ResolutionOnScanAxis()) + " along the height.";
    }

    // What the library is asked for: it takes the width's ratio from the resolution along the height,
    // and the other way round.
    double askedScan_;
    double askedXScan_;
    double horizontal_;
    double vertical_;
    std::vector<std::uint8_t> buffer_; // one row
    std::uint32_t firstRow_ = 0;       // of the enlarged picture
    std::uint32_t endRow_ = 0;
};

std::unique_ptr<RowSource> SourceOf(const Picture& picture, const RowsOptions& options,
                                    ColorSeparationType separation, RowRange rows)
{
    CtFileInterface* const ct = picture.AsCt();
    if (ct == nullptr)
        throw FileFailure(options.file, "separations can be read of CT pictures only");
    // Rows at the file's own resolution are the stored ones, though its header tells it a little
    // less.
    const auto isOwn = [&](double resolution) {
        return IsSameResolution(ct->ResolutionOnXScanAxis(), resolution) &&
               IsSameResolution(ct->ResolutionOnScanAxis(), resolution);
    };
    if (options.resolution && !isOwn(*options.resolution))
        return std::make_unique<EnlargedRows>(picture, *ct, separation, rows, *options.resolution);
    return std::make_unique<StoredRows>(picture, *ct, separation, rows);
}

void Rows(const RowsOptions& options)
{
    if (options.resolution && !std::isfinite(*options.resolution))
        throw UsageFailure("--resolution wants a number of pixels per inch");
    const ColorSeparationType separation = ParseSeparation(options.separation);
    const std::string ending = RequireEnding(options.output, GreyEndings());
    const Picture picture = OpenPicture(options.file, options.asFormat);
    RequirePixels(picture);
    RequireSeparation(options.file, picture.Object(), separation);
    const RowRange rows = ParseRows(options.rows, picture.Height());
    RequireRows(picture, rows.end);

    const auto source = SourceOf(picture, options, separation, rows);
    OutputFile output(options.output, options.file);
    const auto writer = MakeGreyFile(ending, output, source->Form());
    source->WriteTo(*writer);
    writer->Finish();
    output.Commit();
}

} // namespace

void AddRows(CLI::App& app)
{
    const auto options = std::make_shared<RowsOptions>();
    CLI::App& command = *app.add_subcommand("rows", "Write one separation as a grey picture");
    command.add_option("FILE", options->file, "The picture")->required();
    command
        .add_option("--separation", options->separation,
                    "The separation: cyan, magenta, yellow, black or 0 to 3")
        ->required();
    command
        .add_option(
            "-o,--output", options->output,
            "The file to write: .pgm, .png, .tif (255 is no ink), or .raw for the bytes alone")
        ->required();
    command.add_option("--rows", options->rows, kRowsHelp)->check(RefuseEmpty);
    command
        .add_option("--resolution", options->resolution,
                    "Enlarge to R pixels per inch by repeating pixels; not below the file's")
        ->check(CLI::Range(0.001, 1e6));
    AddAsOption(command, options->asFormat);
    command.footer(R"(Nothing is written when the file doesn't hold all the rows.
--rows counts the file's own rows, with --resolution too.

Example:
  tympan rows photo.ct --separation cyan -o cyan.tif
  tympan rows photo.ct --separation 3 -o black.raw --rows 100:200)");
    command.callback([options] { Guard(options->file, [&] { Rows(*options); }); });
}

} // namespace tympan::tool
