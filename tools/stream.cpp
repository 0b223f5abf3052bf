// `tympan stream`: line work as the run stream that places it, one separation in parts or all of them as
// indexes.
#include "stream.h"

#include "command.h"
#include "failure.h"
#include "names.h"
#include "offsets_file.h"
#include "output_file.h"
#include "picture.h"
#include "plain_file.h"
#include "progress.h"
#include "row_range.h"
#include "separation_bands.h"
#include "separations.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

constexpr unsigned int kNoInk = 255;

constexpr char kFooter[] =
    R"(A row is the bytes 0 0, white that brings the width to a multiple of 4096, the copies
with gaps between them, and 0 0. A run is two bytes: ink value (255 is no ink), length.
Transparent colours have the value that the library gives them, which no other colour has:
`tympan info` tells it. Only line work (LW) has runs.

With --indexes a run has the colour's index, from 1, in place of an ink value, and one stream
serves all separations. --lut writes what makes ink values of it: for each separation of the
picture, in its order, a byte for each colour, that of index 1 first.

Example:
  tympan stream map.lw -o map.runs --separation black --offsets map.offsets
  tympan stream label.lw -o sheet.runs --separation cyan --copies 3 --gap 120
  tympan stream map.lw -o map.indexes --indexes --lut map.lut)";

// Some rows of the stream.
struct StreamBand {
    std::uint32_t endRow;
    std::span<const std::uint8_t> bytes;
    std::span<const unsigned long> offsets; // of each row, the first one's as the library gave it
};

// The run stream of a picture, made in bands.
class RunStream {
  public:
    RunStream(const Picture& picture, ColorSeparationType separation, const StreamOptions& options)
        : picture_(picture), lineWork_(RequireLineWork(picture, "made a stream")),
          separation_(separation), options_(options)
    {}

    /// The rows from `firstRow` on, as many as make a band; the bands are asked for in order. A band
    /// holds until the next call.
    ///
    /// Whether the library divides a row's last run can hang on the number of runs before the row
    /// being odd. As runs of length 0 alone make it so, it hangs on the row before and on no other:
    /// behind an odd number that row is made once more, and its bytes are left out.
    StreamBand From(std::uint32_t firstRow)
    {
        const std::uint32_t again = oddRuns_ ? 1 : 0;
        const RowRange rows = Measure(firstRow - again, again + 1);
        Make(rows);
        oddRuns_ = bytes_ / kRunBytes % 2 != 0;
        const auto offsets = std::span<const unsigned long>(offsets_).subspan(again);
        return { rows.end,
                 std::span<const std::uint8_t>(buffer_.get(), bytes_).subspan(offsets.front()),
                 offsets };
    }

  private:
    // As many rows as fit a band, but at least `least`, and room for them.
    RowRange Measure(std::uint32_t first, std::uint32_t least)
    {
        const std::uint32_t most = picture_.Height() - first;
        auto count = static_cast<std::uint32_t>(
            std::clamp<std::uint64_t>(kBandBytes / rowBytes_, least, most));
        std::uint64_t size = SizeOf({ first, first + count });
        while (size > kBandBytes && count > least) {
            count = std::max(least, count / 2);
            size = SizeOf({ first, first + count });
        }
        if (size > kMostBytes)
            throw UsageFailure("--copies: a row of the stream would take more than " +
                               std::to_string(kMostBytes) + " bytes");
        if (size > room_) {
            buffer_.reset(new std::uint8_t[size]); // not filled, for most is never written
            room_ = size;
        }
        rowBytes_ = size / count + 1;
        return { first, first + count };
    }

    // Where the library counts in 32 bits, sound rows can have more bytes than it can tell.
    std::uint64_t SizeOf(RowRange rows) const
    {
        const auto sizeOf = [&](std::uint32_t copies, std::uint32_t gap) -> std::uint64_t {
            return lineWork_.GetLWBufferSize(rows.first, rows.end - 1, copies, gap, true);
        };
        const std::uint64_t size = sizeOf(options_.copies, options_.gap);
        if (size != 0)
            return size;
        if (sizeOf(1, 0) == 0)
            throw RowsFailure(picture_, rows);
        return std::numeric_limits<std::uint64_t>::max();
    }

    void Make(RowRange rows)
    {
        offsets_.resize(rows.Count());
        unsigned char* end = buffer_.get();
        unsigned long* endOffset = offsets_.data();
        const auto white = static_cast<unsigned char>(options_.white.value_or(kNoInk));
        if (lineWork_.GetLWPictureRows(end, rows.first, rows.end - 1, endOffset, 0, separation_,
                                       options_.gap, options_.copies, white, 0,
                                       !options_.lengthFirst) != rows.end)
            throw RowsFailure(picture_, rows);
        bytes_ = static_cast<std::size_t>(end - buffer_.get());
    }

    static constexpr std::uint64_t kRunBytes = 2;
    static constexpr std::uint64_t kBandBytes = 8U << 20U;
    static constexpr std::uint64_t kMostBytes = 1U << 30U; // of a row
    static constexpr std::uint64_t kFirstGuess = 64U << 10U;

    const Picture& picture_;
    LWFileInterface& lineWork_;
    ColorSeparationType separation_;
    const StreamOptions& options_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::uint64_t room_ = 0;
    std::size_t bytes_ = 0; // of the band
    std::vector<unsigned long> offsets_;
    std::uint64_t rowBytes_ = kFirstGuess; // of a row of the band before, about
    bool oddRuns_ = false;
};

void WriteStream(const Picture& picture, RunStream& stream, PlainFile& file, OffsetsFile& offsets)
{
    Progress progress("Writing the stream of " + picture.Path(), picture.Height());
    std::uint64_t written = 0;
    for (std::uint32_t row = 0; row < picture.Height();) {
        const StreamBand band = stream.From(row);
        for (const unsigned long offset : band.offsets)
            offsets.Write(written + (offset - band.offsets.front()));
        file.Write(band.bytes);
        written += band.bytes.size();
        progress.Advance(band.endRow - row);
        row = band.endRow;
    }
}

// Outputs of one name would take each other's place.
void RequireOtherNames(const StreamOptions& options)
{
    const auto whole = [](const std::string& path) {
        std::error_code error;
        return std::filesystem::weakly_canonical(path, error);
    };
    std::vector<std::filesystem::path> taken{ whole(options.output) };
    for (const std::string& path : { options.offsets, options.lut }) {
        if (path.empty())
            continue;
        if (std::find(taken.begin(), taken.end(), whole(path)) != taken.end())
            throw UsageFailure(path + ": each output needs a file of its own");
        taken.push_back(whole(path));
    }
}

void RequireWidth(const Picture& picture, const StreamOptions& options)
{
    constexpr std::uint64_t kMostPixels = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t gaps = options.copies - std::uint64_t{ 1 };
    if (picture.Width() * std::uint64_t{ options.copies } + gaps * options.gap > kMostPixels)
        throw UsageFailure("--copies, --gap: a row of the stream would be more than " +
                           std::to_string(kMostPixels) + " pixels wide");
}

void StreamSeparation(const Picture& picture, const StreamOptions& options)
{
    const ColorSeparationType separation = ParseSeparation(options.separation);
    RunStream stream(picture, separation, options);
    RequireSeparation(options.file, picture.Object(), separation);
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    OffsetsFile offsets(options.offsets, options.file);
    PlainFile file(output);
    WriteStream(picture, stream, file, offsets);
    file.Finish();
    offsets.Finish();
    OutputFile::CommitTogether({ offsets.Output(), &output });
}

void Stream(const StreamOptions& options)
{
    if (options.indexes == !options.separation.empty())
        throw UsageFailure("name the separation by --separation, or ask for all by --indexes");
    if (!options.separation.empty())
        ParseSeparation(options.separation);
    RequireOtherNames(options);
    const Picture picture = OpenPicture(options.file, options.asFormat);
    RequireLineWork(picture, "made a stream");
    RequireWidth(picture, options);
    options.indexes ? StreamIndexes(picture, options) : StreamSeparation(picture, options);
}

} // namespace

void DeclareStream(const Options& command)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    const auto options = std::make_shared<StreamOptions>();
    command.Add("IN", options->file, "An LW file").Required();
    command
        .Add("-o,--output", options->output,
             "The file to write, of bytes alone; - is standard output")
        .Required()
        .Called("FILE");
    const Option separation = command
                                  .Add("--separation", options->separation,
                                       "The separation: cyan, magenta, yellow, black or 0 to 3")
                                  .Called(kSeparationType)
                                  .NotEmpty();
    const Option indexes =
        command
            .AddFlag("--indexes", options->indexes,
                     "Give colour indexes, for all separations, in place of one's ink values")
            .NotWith(separation);
    command.Add("--copies", options->copies, "Copies of the picture side by side")
        .Between(std::int32_t{ 1 }, kMost)
        .TellDefault("1");
    command.Add("--gap", options->gap, "White pixels between each two copies")
        .Between(std::int32_t{ 0 }, kMost)
        .TellDefault("0");
    command
        .Add("--white", options->white,
             "The ink value of white (255); with --indexes its index (that of the first "
             "colour without ink)")
        .Between(0, 255);
    command.AddFlag("--length-first", options->lengthFirst,
                    "Give each run as length, value in place of value, length");
    command
        .Add("--offsets", options->offsets,
             "Write the place of each row in the output here, a decimal number a line")
        .Called("FILE")
        .NotEmpty();
    command.Add("--lut", options->lut, "Write the tables of ink values here")
        .Called("FILE")
        .Needs(indexes)
        .NotEmpty();
    command
        .AddFlag("--transparent-as-paper", options->transparentAsPaper,
                 "In the tables, let transparent colours have no ink")
        .Needs(indexes);
    command
        .Add("--max-memory", options->maxMemory,
             "The most that --indexes may hold in memory, such as 512MiB")
        .Needs(indexes)
        .SizeInBytes()
        .TellDefault("4GiB");
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Guard(options->file, [&] { Stream(*options); }); });
}

} // namespace tympan::tool
