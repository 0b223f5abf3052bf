// `tympan rows`: one separation of a picture as a file of its own.
#include "command.h"
#include "failure.h"
#include "grey_files.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "row_range.h"
#include "separation_bands.h"
#include "separations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
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
    std::string format;
    std::string separation;
    std::string rows;
    std::optional<double> resolution;
};

constexpr double kLongestRow = 1U << 28U; // pixels

// The rows wanted, at the file's own resolution or another.
class RowSource {
  public:
    RowSource(const Picture& picture, ColorSeparationType separation, RowRange rows)
        : picture_(picture), object_(picture.Rows()), separation_(separation), rows_(rows)
    {}
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    virtual WrittenForm Form() const = 0;
    virtual void WriteTo(RowWriter& writer) = 0;

  protected:
    const Picture& picture_;
    PictureFileInterface& object_;
    ColorSeparationType separation_;
    RowRange rows_;
};

class StoredRows : public RowSource {
  public:
    using RowSource::RowSource;

    WrittenForm Form() const override
    {
        const AxisResolution own = AxisResolutionOf(object_);
        return { picture_.Width(), rows_.Count(), own.alongWidth, own.alongHeight };
    }

    void WriteTo(RowWriter& writer) override
    {
        SeparationBands bands(picture_, { separation_ }, rows_);
        Progress progress("Reading " + picture_.Path(), rows_.Count());
        for (std::uint32_t row = rows_.first; row < rows_.end; ++row) {
            writer.Write(bands.Row(row, 0));
            progress.Advance(1);
        }
    }
};

class ResampledRows : public RowSource {
  public:
    ResampledRows(const Picture& picture, ColorSeparationType separation, RowRange rows,
                  double resolution)
        : RowSource(picture, separation, rows), own_(AxisResolutionOf(object_)),
          askedScan_(resolution / own_.alongWidth * own_.alongHeight),
          askedXScan_(resolution / own_.alongHeight * own_.alongWidth),
          horizontal_(askedScan_ / own_.alongHeight), vertical_(askedXScan_ / own_.alongWidth)
    {
        const double width = std::floor(horizontal_ * picture.Width() + 0.5);
        const double height = std::floor(vertical_ * picture.Height() + 0.5);
        if (width > kLongestRow || height > kLongestRow)
            throw UsageFailure("--resolution: the picture would be more than " +
                               std::to_string(static_cast<long>(kLongestRow)) +
                               " pixels wide or high");
        buffer_.resize(width >= 1.0 ? static_cast<std::size_t>(width) : 1);
        if (picture.AsTiff() != nullptr && !HasRatios())
            throw FileFailure(picture.Path(), "can't be resampled", std::nullopt, Advice());
        if ((picture.AsJpeg() != nullptr || picture.AsTiff() != nullptr) && HasRatios())
            decoded_.emplace(picture, std::vector{ separation }, rows);
        // The library refuses what a format can't do, and numbers that are none.
        if (!decoded_ && !ReadRow(0))
            throw picture_.Failure(Advice());
        const auto wholeHeight = static_cast<std::uint32_t>(height);
        firstRow_ = std::min(FirstRowOf(rows.first), wholeHeight);
        endRow_ = std::min(FirstRowOf(rows.end), wholeHeight);
        if (width < 1.0 || firstRow_ == endRow_)
            throw UsageFailure("--resolution: no pixel of these rows is left at so low a one");
    }

    WrittenForm Form() const override
    {
        return { static_cast<std::uint32_t>(buffer_.size()), endRow_ - firstRow_,
                 own_.alongWidth * horizontal_, own_.alongHeight * vertical_ };
    }

    void WriteTo(RowWriter& writer) override
    {
        Progress progress("Reading " + picture_.Path(), endRow_ - firstRow_);
        for (std::uint32_t row = firstRow_; row < endRow_; ++row) {
            if (!ReadRow(row))
                throw RowFailure(picture_, FileRowOf(row));
            writer.Write(buffer_);
            progress.Advance(1);
        }
    }

  private:
    // The library goes from the output's rows to the file's by a division of which it drops the
    // fraction.
    std::uint32_t FileRowOf(std::uint32_t row) const
    {
        constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
        return static_cast<std::uint32_t>(std::min(row / vertical_, kMost));
    }

    // The first row of the output that comes from this row of the file or a later one.
    std::uint32_t FirstRowOf(std::uint32_t fileRow) const
    {
        auto row = static_cast<std::uint32_t>(std::floor(fileRow * vertical_));
        while (FileRowOf(row) < fileRow)
            ++row;
        return row;
    }

    bool HasRatios() const
    {
        return std::isfinite(horizontal_) && std::isfinite(vertical_) && horizontal_ > 0.0 &&
               vertical_ > 0.0;
    }

    // The pixels of a JPEG and a TIFF are repeated and dropped as those of line work are.
    void Resample(std::span<const std::uint8_t> pixels)
    {
        for (std::size_t x = 0; x < buffer_.size(); ++x) {
            const double column = static_cast<double>(x) / horizontal_;
            buffer_[x] = pixels[std::min(static_cast<std::size_t>(column), pixels.size() - 1)];
        }
    }

    // A CT tells the pixels stored, other formats those of the file's row.
    bool ReadRow(std::uint32_t row)
    {
        if (decoded_) {
            Resample(decoded_->Row(FileRowOf(row), 0));
            return true;
        }
        const std::size_t told = picture_.AsCt() != nullptr ? buffer_.size() : picture_.Width();
        return object_.GetPictureRow(buffer_.data(), row, separation_, askedScan_, askedXScan_,
                                     static_cast<unsigned long>(buffer_.size())) == told;
    }

    std::string Advice() const
    {
        if (!HasRatios())
            return "The header gives no size in inches: leave --resolution away.";
        if (picture_.AsCt() == nullptr)
            return {};
        const auto text = [](double value) {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%.10g", value);
            return std::string(digits.data());
        };
        return "--resolution has to be at least the file's: " + text(own_.alongWidth) +
               " along the width, " + text(own_.alongHeight) + " along the height.";
    }

    AxisResolution own_;
    // What the library is asked for: it takes the width's ratio from the resolution along the height,
    // and the other way round.
    double askedScan_;
    double askedXScan_;
    double horizontal_;
    double vertical_;
    std::optional<SeparationBands> decoded_; // a JPEG's and a TIFF's
    std::vector<std::uint8_t> buffer_;       // one row
    std::uint32_t firstRow_ = 0;             // of the output's whole picture
    std::uint32_t endRow_ = 0;
};

std::unique_ptr<RowSource> SourceOf(const Picture& picture, const RowsOptions& options,
                                    ColorSeparationType separation, RowRange rows)
{
    // Rows at the file's own resolution are the stored ones, though its header tells it a little
    // less.
    const AxisResolution own = AxisResolutionOf(picture.Object());
    const auto isOwn = [&](double resolution) {
        return IsSameResolution(own.alongWidth, resolution) &&
               IsSameResolution(own.alongHeight, resolution);
    };
    if (options.resolution && !isOwn(*options.resolution))
        return std::make_unique<ResampledRows>(picture, separation, rows, *options.resolution);
    return std::make_unique<StoredRows>(picture, separation, rows);
}

std::string WantedEnding(const RowsOptions& options)
{
    if (!options.format.empty())
        return "." + options.format;
    if (IsDash(options.output))
        throw UsageFailure("-o -: name what is to be written with --format");
    return RequireEnding(options.output, GreyEndings());
}

std::vector<std::string> Formats()
{
    std::vector<std::string> formats;
    for (const std::string_view ending : GreyEndings())
        formats.emplace_back(ending.substr(1));
    return formats;
}

void Rows(const RowsOptions& options)
{
    if (options.resolution && !std::isfinite(*options.resolution))
        throw UsageFailure("--resolution wants a number of pixels per inch");
    const std::string ending = WantedEnding(options);
    const Picture picture = OpenPicture(options.file, options.asFormat);
    picture.Rows(); // refuses a file without them
    RequirePixels(picture);
    const ColorSeparationType separation =
        SeparationNamed(options.file, picture.Object(), options.separation);
    const RowRange rows = ParseRows(options.rows, picture.Height());
    RequireRows(picture, rows.end);

    const auto source = SourceOf(picture, options, separation, rows);
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    const auto writer = MakeGreyFile(ending, output, source->Form());
    source->WriteTo(*writer);
    writer->Finish();
    RequireRows(picture, rows.end); // it may have been cut short meanwhile
    output.Commit();
}

} // namespace

void DeclareRows(const Options& command)
{
    const auto options = std::make_shared<RowsOptions>();
    command.Add("FILE", options->file, "The picture").Required();
    command
        .Add("--separation", options->separation,
             "The separation: cyan, magenta, yellow, black, 0 to 3, or a TIFF's channel")
        .Required()
        .Called(kSeparationType);
    command
        .Add("-o,--output", options->output,
             "The file to write: .pgm, .png, .tif (255 is no ink), or .raw for the bytes alone; "
             "- is standard output")
        .Required()
        .Called("FILE");
    command
        .Add("--format", options->format,
             "What to write, whatever the output's name ends in; -o - needs it")
        .OneOf(Formats());
    command.Add("--rows", options->rows, kRowsHelp).Called(kRowsType).NotEmpty();
    command
        .Add("--resolution", options->resolution,
             "Resample to R pixels per inch by repeating pixels, or but for a CT also by "
             "dropping them")
        .Between(0.001, 1e6);
    AddAsOption(command, options->asFormat);
    command.AddFooter(R"(Nothing is written when the file doesn't hold all the rows.
--rows counts the file's own rows, with --resolution too.
An RGB JPEG has its red as cyan, its green as magenta and its blue as yellow, for a red of
255 is no cyan; a grey one has black.
A TIFF has the separations that `tympan info` names. Its inks, greys and bits come as 255
for no ink; red, green, blue, Y, Cb, Cr and palette numbers come as they are stored.
Transparent colours of line work have the value that the library gives them, which no
other colour has: `tympan info` tells it. preview and export show them as paper.

Example:
  tympan rows photo.ct --separation cyan -o cyan.tif
  tympan rows photo.ct --separation 3 -o black.raw --rows 100:200
  tympan rows photo.jpg --separation cyan -o red.png
  tympan rows photo.ct --separation cyan -o - --format raw | sha256sum
  tympan rows label.tif --separation orange -o orange.tif)");
    command.Run([options] { Guard(options->file, [&] { Rows(*options); }); });
}

} // namespace tympan::tool
