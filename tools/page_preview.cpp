#include "page_preview.h"

#include "failure.h"
#include "output_file.h"
#include "page_canvas.h"
#include "page_entry.h"
#include "page_geometry.h"
#include "page_layer.h"
#include "page_placeholder.h"
#include "picture.h"
#include "placed_layers.h"
#include "png_file.h"
#include "progress.h"
#include "shown_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

bool IsSize(double inches)
{
    return inches > 0.0 && std::isfinite(inches);
}

// Nothing for one whose numbers don't tell a place.
std::optional<PicturePlace> PlaceOf(const Placement& placement, const PageFrame& page)
{
    const PlacementBounds bounds = BoundsOf(placement);
    const auto isFinite = [](double number) { return std::isfinite(number); };
    const std::array numbers{ bounds.left, bounds.top, bounds.right, bounds.bottom };
    if (!IsSize(placement.width) || !IsSize(placement.height) || !isFinite(placement.rotation) ||
        !std::all_of(numbers.begin(), numbers.end(), isFinite))
        return std::nullopt;
    return PicturePlace(placement, page);
}

// How far the drawing of a page is, of which each entry has the same share.
class PageProgress {
  public:
    PageProgress(const std::string& file, std::size_t entries)
        : progress_("Drawing " + file, std::uint64_t{ entries } * kSteps, ProgressUnit::Shares)
    {}

    void BeginEntry() { told_ = 0; }
    void EndEntry() { TellSteps(kSteps); }
    void Tell(std::uint64_t done, std::uint64_t all) { TellSteps(done * kSteps / all); }

  private:
    static constexpr std::uint64_t kSteps = 1000;

    void TellSteps(std::uint64_t steps)
    {
        if (steps > told_)
            progress_.Advance(steps - std::exchange(told_, steps));
    }

    Progress progress_;
    std::uint64_t told_ = 0;
};

LayerRows WithProgress(const LayerRows& layer, PageProgress& progress)
{
    const auto told = [layer, &progress](RowRange rows) {
        return [give = layer.rows(rows), rows, &progress](const TakePixels& take) {
            give(
                [&](std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels) {
                    take(row, column, pixels);
                    progress.Tell(row - rows.first + 1, rows.Count());
                });
        };
    };
    return { layer.size, layer.channels, told };
}

class PageDrawing {
  public:
    PageDrawing(const PagePreview& wanted, const PageFrame& frame, const PictureParameters& record,
                const PagePaths& paths)
        : wanted_(wanted), frame_(frame), paths_(paths), canvas_(frame.size),
          page_(CString(wanted.file.c_str()), CFile::modeRead), pixelsPerInch_{
              record.WidthInPixels() / record.WidthInUnits(),
              record.HeightInPixels() / record.HeightInUnits()
          }
    {}

    const PageCanvas& Canvas() const { return canvas_; }
    bool HasFailed() const { return hasFailed_; }

    void DrawEntries(std::size_t count)
    {
        const std::size_t held = std::min(count, RoomForPageEntries(page_));
        PageProgress progress(wanted_.file, held);
        for (std::size_t index = 0; index < held; ++index) {
            progress.BeginEntry();
            DrawEntry(static_cast<unsigned short>(index), progress);
            progress.EndEntry();
        }
        if (held < count)
            Tell(FileFailure(wanted_.file, "the file ends before its entries do: it counts " +
                                               std::to_string(count) + " and holds " +
                                               std::to_string(held)));
    }

  private:
    void DrawEntry(unsigned short index, PageProgress& progress)
    {
        const PageEntryReading reading = ReadPageEntry(page_, index);
        if (index <= kHighestContainer)
            containers_.push_back(reading.placement);
        if (!reading.placement) {
            TellOfEntry(index, { wanted_.file, ProblemOf(reading, paths_) });
            return;
        }
        const Placement& placement = *reading.placement;
        std::optional<PicturePlace> place = PlaceOf(placement, frame_);
        try {
            Guard(placement.path.GetString(),
                  [&] { DrawPicture(index, placement, place, progress); });
        } catch (const FileFailure& failure) {
            TellOfEntry(index, failure);
            if (place)
                DrawPlaceholder(*place);
        }
    }

    // Finds the place, too, of a picture that has its own size.
    void DrawPicture(unsigned short index, const Placement& placement,
                     std::optional<PicturePlace>& place, PageProgress& progress)
    {
        const Picture picture = OpenPlaced(placement);
        if (!place)
            place = PlaceOf(WithOwnSize(placement, picture), frame_);
        if (!place)
            throw FileFailure(picture.Path(), "its place or its size on the page is no number");
        const std::optional<FileFailure> shortfall = ShortfallOf(picture, { 0, picture.Height() });
        const PixelBox shown = Common(place->Box(), BoxOf(frame_));
        if (!shown.IsEmpty())
            LayPicture(WithProgress(LayerOf(picture), progress), *place, shown,
                       MaskOf(index, placement, shown));
        if (shortfall)
            TellOfEntry(index, *shortfall);
    }

    Picture OpenPlaced(const Placement& placement) const
    {
        const std::string written = placement.path.GetString();
        const std::optional<std::string> path = paths_.Find(written);
        if (!path)
            throw FileFailure(written, "no such file", {},
                              "--root DIR and --map PREFIX=DIR tell where a page's pictures are.");
        Picture picture = OpenPicture(*path, "");
        if (dynamic_cast<const PageFileInterface*>(&picture.Object()) != nullptr)
            throw FileFailure(*path, "is a page; only pictures are shown on a page");
        RequirePixels(picture);
        RequireMemory(picture, { 0, picture.Height() }, wanted_.maxMemory,
                      "Allow it by --max-memory.");
        return picture;
    }

    // By its resolution, else by the page's.
    Placement WithOwnSize(Placement placement, const Picture& picture) const
    {
        const SizeInInches size =
            SizeInInchesOf(picture.Object())
                .value_or(SizeInInches{ picture.Height() / pixelsPerInch_.down,
                                        picture.Width() / pixelsPerInch_.across });
        placement.width = size.width;
        placement.height = size.height;
        return placement;
    }

    void LayPicture(const LayerRows& layer, const PicturePlace& place, const PixelBox& shown,
                    const std::optional<WindowMask>& mask)
    {
        DrawLayer(layer, place, shown,
                  [&](std::uint32_t column, std::uint32_t row, const std::uint8_t* pixel,
                      unsigned int share) {
                      const std::span<const std::uint8_t> bytes(pixel, layer.channels);
                      if (mask)
                          canvas_.LayThrough(mask->At(column, row), column, row, bytes, share);
                      else
                          canvas_.Lay(column, row, bytes, share);
                  });
    }

    static unsigned int Part(unsigned int share, unsigned int ofAll)
    {
        constexpr unsigned int kAll = 255;
        return (share * ofAll + kAll / 2) / kAll;
    }

    // What a window leaves open of a box of the page; nothing for another entry, and, with a message,
    // for a window whose container can't be had.
    std::optional<WindowMask> MaskOf(unsigned short index, const Placement& placement,
                                     const PixelBox& shown)
    {
        if (placement.type != PlacementType::ctWindow)
            return std::nullopt;
        const unsigned int container = placement.container.value_or(kHighestContainer + 1);
        try {
            if (container >= index || !containers_[container])
                throw FileFailure(wanted_.file, "there is no picture in front of it there");
            return MaskBy(*containers_[container], placement.colours, shown);
        } catch (const FileFailure& failure) {
            const bool isPage = failure.File() == wanted_.file;
            TellOfEntry(index, { wanted_.file,
                                 "it is shown whole, for its container, entry " +
                                     std::to_string(container) + ", can't be used: " +
                                     (isPage ? "" : failure.File() + ": ") + failure.WhatHappened(),
                                 failure.Code(), failure.Advice() });
            return std::nullopt;
        }
    }

    WindowMask MaskBy(const Placement& container, std::span<const std::uint8_t> colours,
                      const PixelBox& shown) const
    {
        return Guard(container.path.GetString(), [&] {
            const Picture lineWork = OpenPlaced(container);
            RequireLineWork(lineWork, "a container");
            const auto own = PlaceOf(container, frame_);
            const auto place = own ? own : PlaceOf(WithOwnSize(container, lineWork), frame_);
            if (!place)
                throw FileFailure(lineWork.Path(),
                                  "its place or its size on the page is no number");
            WindowMask mask(shown);
            DrawLayer(WindowOf(lineWork, colours), *place, shown,
                      [&](std::uint32_t column, std::uint32_t row, const std::uint8_t* pixel,
                          unsigned int share) {
                          for (std::uint8_t& channel : mask.At(column, row))
                              channel = static_cast<std::uint8_t>(Part(share, *pixel++));
                      });
            return mask;
        });
    }

    void DrawPlaceholder(const PicturePlace& place)
    {
        const Placeholder placeholder(place);
        ForEachCovered(place, Common(place.Box(), BoxOf(frame_)),
                       [&](std::uint32_t column, std::uint32_t row, const PicturePoint& point,
                           unsigned int share) {
                           canvas_.Lay(column, row, placeholder.ColourAt(point), share);
                       });
    }

    void Tell(const FileFailure& failure)
    {
        hasFailed_ = true;
        Report(failure);
    }

    void TellOfEntry(unsigned short index, const FileFailure& failure)
    {
        const std::string file = failure.File() == wanted_.file ? "" : ", " + failure.File();
        Tell({ wanted_.file,
               "entry " + std::to_string(index) + file + ": " + failure.WhatHappened(),
               failure.Code(), failure.Advice() });
    }

    struct Density {
        double across, down;
    };

    const PagePreview& wanted_;
    PageFrame frame_;
    const PagePaths& paths_;
    PageCanvas canvas_;
    CFile page_;
    Density pixelsPerInch_;                            // as the page counts them
    std::vector<std::optional<Placement>> containers_; // entries that a window can name
    bool hasFailed_ = false;
};

PageFrame RequiredFrame(const PagePreview& wanted, const PictureParameters& record)
{
    if (!IsSize(record.WidthInUnits()) || !IsSize(record.HeightInUnits()))
        throw FileFailure(wanted.file, "the page has no size", {}, kCheckAdvice);
    const PageFrame frame = FrameOf(record, wanted.fit);
    if (!IsSize(frame.acrossPerInch) || !IsSize(frame.downPerInch))
        throw FileFailure(wanted.file, "the page is too small to be shown", {}, kCheckAdvice);
    const std::uint64_t bytes = PageCanvas::MostBytesOf(frame.size);
    if (bytes > wanted.maxMemory)
        throw FileFailure(wanted.file,
                          "a page of " + std::to_string(frame.size.width) + " x " +
                              std::to_string(frame.size.height) + " pixels takes up to " +
                              std::to_string(bytes) + " bytes of memory",
                          {}, "Allow it by --max-memory, or make it smaller by --fit.");
    return frame;
}

void Write(const PageCanvas& canvas, const PageFrame& frame, const OutputFile& output)
{
    PngFile png(output,
                { frame.size.width, frame.size.height, frame.acrossPerInch, frame.downPerInch },
                PngColour::Rgb);
    std::vector<std::uint8_t> rgb(std::size_t{ frame.size.width } * 3);
    for (std::uint32_t row = 0; row < frame.size.height; ++row) {
        const std::span<const std::uint8_t> bgr = canvas.Row(row);
        std::copy(bgr.begin(), bgr.end(), rgb.begin());
        for (std::size_t pixel = 0; pixel < rgb.size(); pixel += 3)
            std::swap(rgb[pixel], rgb[pixel + 2]);
        png.Write(rgb);
    }
    png.Finish();
}

} // namespace

void WritePagePreview(const PagePreview& wanted, const PageFileInterface& page,
                      const PagePaths& paths)
{
    const PictureParameters& record = *page.PictureParams();
    const PageFrame frame = RequiredFrame(wanted, record);
    OutputFile output(wanted.output, wanted.file, {}, Dash::IsStandardOutput);
    PageDrawing drawing(wanted, frame, record, paths);
    drawing.DrawEntries(page.GetEntriesNumber());
    Write(drawing.Canvas(), frame, output);
    output.Commit();
    if (drawing.HasFailed()) // written, for a person may want to see what is there
        throw FailuresReported{};
}

} // namespace tympan::tool
