#include "report_images.h"

#include "box_average.h"
#include "failure.h"
#include "jpeg_file.h"
#include "names.h"
#include "picture_source.h"
#include "separation_bands.h"
#include "separations.h"
#include "shown_rows.h"
#include "tiff_plates.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

// Pixels of the longer side.
constexpr std::uint32_t kThumbSide = 320;
constexpr std::uint32_t kShownSide = 1200;

constexpr std::uint64_t kMostMemory = std::uint64_t{ 4 } << 30U; // of a picture drawn as a whole

// A picture that is made smaller as its rows come.
class ReducedImage {
  public:
    ReducedImage(ReportFolder& folder, PixelSize picture, std::uint32_t longest, JpegColour colour)
        : name_(folder.NextImage()), size_(Fitted(picture, longest)),
          file_(folder.WritingPath(name_), folder.Path(), size_, colour),
          average_(ScaledSide::Whole(picture.width, size_.width),
                   ScaledSide::Whole(picture.height, size_.height),
                   static_cast<std::size_t>(colour),
                   [this](std::span<const std::uint8_t> row) { file_.Write(row); })
    {}

    void Add(std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels)
    {
        average_.Add(row, column, pixels);
    }

    /// What the data tells of it.
    Json Finish()
    {
        file_.Finish();
        return { { "file", name_ }, { "width", size_.width }, { "height", size_.height } };
    }

  private:
    std::string name_;
    PixelSize size_;
    JpegFile file_;
    BoxAverage average_;
};

PixelSize SizeOf(const Picture& picture)
{
    return { picture.Width(), picture.Height() };
}

void AddComposite(PixelSize size, const GiveRows& give, ReportFolder& folder, Json& entry)
{
    ReducedImage thumb(folder, size, kThumbSide, JpegColour::Bgr);
    ReducedImage shown(folder, size, kShownSide, JpegColour::Bgr);
    give([&](std::uint32_t row, std::uint32_t column, std::span<const std::uint8_t> pixels) {
        thumb.Add(row, column, pixels);
        shown.Add(row, column, pixels);
    });
    entry["thumb"] = thumb.Finish();
    entry["shown"] = shown.Finish();
}

// Of a TIFF's samples only inks are shown in a tint.
Json TintOf(const Picture& picture, ColorSeparationType separation)
{
    const TiffFileInterface* const tiff = picture.AsTiff();
    const bool hasTint = separation <= Black && (tiff == nullptr || IsOfInks(*tiff));
    return hasTint ? Json(NameOf(separation)) : Json(nullptr);
}

Json PlatesOf(const Picture& picture, ReportFolder& folder)
{
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    std::vector<std::unique_ptr<ReducedImage>> images;
    for (std::size_t i = 0; i < separations.size(); ++i)
        images.push_back(
            std::make_unique<ReducedImage>(folder, SizeOf(picture), kShownSide, JpegColour::Grey));
    SeparationBands bands(picture, separations, { 0, picture.Height() });
    for (std::uint32_t row = 0; row < picture.Height(); ++row)
        for (std::size_t i = 0; i < images.size(); ++i)
            images[i]->Add(row, 0, bands.Row(row, i));
    Json plates = Json::array();
    for (std::size_t i = 0; i < images.size(); ++i)
        plates.push_back({ { "name", WithReplacements(NameOf(picture.Object(), separations[i])) },
                           { "tint", TintOf(picture, separations[i]) },
                           { "picture", images[i]->Finish() } });
    return plates;
}

GiveRows RowsOf(PictureSource& source)
{
    return [&source](const TakePixels& take) {
        std::vector<std::uint8_t> row(source.Form().RowBytes());
        for (std::uint32_t y = 0; y < source.Form().height; ++y) {
            source.ReadRow(row);
            for (std::size_t pixel = 0; pixel < row.size(); pixel += 3)
                std::swap(row[pixel], row[pixel + 2]);
            take(y, 0, row);
        }
    };
}

} // namespace

void AddImages(const Picture& picture, ReportFolder& folder, Json& entry)
{
    const RowRange rows{ 0, picture.Height() };
    RequirePixels(picture);
    RequireMemory(picture, rows, kMostMemory, "`tympan preview` can be allowed more.");
    ShowTransparentAsPaper(picture);
    const std::optional<FileFailure> shortfall = ShortfallOf(picture, rows);
    AddComposite(SizeOf(picture), ShownRows(picture, rows), folder, entry);
    if (!picture.IsTiffIt())
        entry["plates"] = PlatesOf(picture, folder);
    if (shortfall) // shown, for a person may want to see what is there
        throw FileFailure(*shortfall);
}

void AddImagesOf(const std::string& png, ReportFolder& folder, Json& entry)
{
    const std::unique_ptr<PictureSource> source = OpenPngSource(png);
    const SourceForm& form = source->Form();
    AddComposite({ form.width, form.height }, RowsOf(*source), folder, entry);
}

} // namespace tympan::tool
