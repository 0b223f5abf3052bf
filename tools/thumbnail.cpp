// `tympan thumbnail`: a small PNG of a picture or a page, as file managers ask for it.
#include "box_average.h"
#include "command.h"
#include "failure.h"
#include "output_file.h"
#include "page_preview.h"
#include "picture.h"
#include "png_file.h"
#include "preview_bands.h"
#include "shown_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

struct ThumbnailOptions {
    std::string file;
    std::string output;
    std::uint32_t size = 256; ///< pixels of the longer side
};

constexpr std::uint32_t kMostSize = 4096;
constexpr std::uint32_t kRowsPerPixel = 4;                       // where rows are left out
constexpr std::uint64_t kMostPixels = std::uint64_t{ 1 } << 28U; // read within seconds
constexpr std::uint64_t kMostMemory = std::uint64_t{ 1 } << 30U; // bytes; fits any page
constexpr char kPreviewAdvice[] = "`tympan preview FILE -o OUT.png --fit N` shows it.";

constexpr char kFooter[] =
    R"(A thumbnail keeps the shape of the picture and is never enlarged beyond its pixels. Of CT and line work
with many rows only some are read, evenly spaced: 4 for each pixel of the thumbnail.

A file that is damaged, cut short or too large to be shown in little time gives no thumbnail, and the exit
status is 1. A picture of a page that can't be shown is a grey box with a cross, and no failure: file
managers let a thumbnailer see the page's own file only.

Desktops call it as share/thumbnailers/tympan.thumbnailer says, for the types of
share/mime/packages/tympan.xml.

Example:
  tympan thumbnail photo.ct photo.png
  tympan thumbnail map.lw map.png --size 512)";

// The rows that are looked at. Where a row can be had without those in front of it, some are enough.
std::uint32_t RowsLookedAt(const Picture& picture, PixelSize target)
{
    const bool isByRows = picture.AsCt() != nullptr || picture.AsLw() != nullptr;
    return isByRows ? std::min(picture.Height(), target.height * kRowsPerPixel) : picture.Height();
}

// So many rows of a CT or of line work, evenly spaced, as if there were no others.
GiveRows SpacedRows(const Picture& picture, std::uint32_t count)
{
    const auto draw = [&picture](std::uint32_t first, std::uint32_t last, CDC& context) {
        picture.Object().Display(first, last, context);
        picture.RequireNoFailure();
    };
    return [=, &picture](const TakePixels& take) {
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto row = static_cast<std::uint32_t>((2 * i + 1) * picture.Height() /
                                                        (std::uint64_t{ 2 } * count));
            DrawInBands({ row, row + 1, picture.Width() }, draw,
                        [&](std::uint32_t, std::uint32_t column, auto pixels) {
                            take(static_cast<std::uint32_t>(i), column, pixels);
                        });
        }
    };
}

GiveRows RowsOf(const Picture& picture, std::uint32_t count)
{
    return count == picture.Height() ? ShownRows(picture, { 0, count })
                                     : HeldToItsRows(picture, SpacedRows(picture, count));
}

void RequireFewPixels(const Picture& picture, std::uint32_t rows)
{
    if (std::uint64_t{ picture.Width() } * rows > kMostPixels)
        throw FileFailure(picture.Path(),
                          "is too large for a thumbnail: " + std::to_string(rows) + " rows of " +
                              std::to_string(picture.Width()) + " pixels would have to be read",
                          {}, kPreviewAdvice);
}

void WriteThumbnail(const Picture& picture, PixelSize target, std::uint32_t rows,
                    const OutputFile& output)
{
    PngFile png(output, { .width = target.width, .height = target.height }, PngColour::Rgb);
    std::vector<std::uint8_t> rgb;
    BoxAverage average(ScaledSide::Whole(picture.Width(), target.width),
                       ScaledSide::Whole(rows, target.height), 3,
                       [&](std::span<const std::uint8_t> bgr) {
                           rgb.assign(bgr.begin(), bgr.end());
                           for (std::size_t pixel = 0; pixel < rgb.size(); pixel += 3)
                               std::swap(rgb[pixel], rgb[pixel + 2]);
                           png.Write(rgb);
                       });
    RowsOf(picture,
           rows)([&](std::uint32_t row, std::uint32_t column,
                     std::span<const std::uint8_t> pixels) { average.Add(row, column, pixels); });
    png.Finish();
}

void ThumbnailPicture(const Picture& picture, const ThumbnailOptions& options)
{
    RequirePixels(picture);
    RequireRows(picture, picture.Height());
    const PixelSize target = Fitted({ picture.Width(), picture.Height() }, options.size);
    const std::uint32_t rows = RowsLookedAt(picture, target);
    RequireFewPixels(picture, rows);
    RequireMemory(picture, { 0, picture.Height() }, kMostMemory, kPreviewAdvice);
    ShowTransparentAsPaper(picture);
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    WriteThumbnail(picture, target, rows, output);
    output.Commit();
}

void ThumbnailPage(const Picture& picture, const ThumbnailOptions& options)
{
    try {
        WritePagePreview({ options.file, options.output, options.size, kMostMemory },
                         *picture.AsPage(), *picture.Paths());
    } catch (const FailuresReported&) { // NOLINT(bugprone-empty-catch): boxes stand for pictures
    }
}

void Thumbnail(const ThumbnailOptions& options)
{
    const Picture picture = OpenPicture(options.file, {});
    if (picture.AsPage() != nullptr)
        ThumbnailPage(picture, options);
    else
        ThumbnailPicture(picture, options);
}

} // namespace

void DeclareThumbnail(const Options& command)
{
    const auto options = std::make_shared<ThumbnailOptions>();
    command.Add("FILE", options->file, "The picture or page").Required();
    // Its name needn't end in .png: file managers make names of their own.
    command.Add("OUT", options->output, "The PNG file to write; - is standard output").Required();
    command.Add("-s,--size", options->size, "Make the longer side at most N pixels; never enlarges")
        .Between(std::uint32_t{ 1 }, kMostSize)
        .TellDefault();
    command.AddFooter(kFooter);
    command.Run([options] { Guard(options->file, [&] { Thumbnail(*options); }); });
}

} // namespace tympan::tool
