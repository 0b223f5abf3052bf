#include "sample_plates.h"

#include "names.h"
#include "progress.h"
#include "separation_bands.h"
#include "separations.h"
#include "tiff_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::uint32_t kLongestSide = 720; // pixels of a plate
constexpr std::uint32_t kGap = 30;
constexpr std::uint32_t kInks = 4;

PixelSize SizeOfPlate(PixelSize picture)
{
    return Fitted(picture, kLongestSide);
}

// The plates of a picture, made small together.
class PlatesSideBySide {
  public:
    PlatesSideBySide(const Picture& picture, PixelSize whole, double resolution,
                     const OutputFile& output)
        : picture_(picture), separations_(SeparationsOf(picture.Object())),
          size_(SizeOfPlate({ picture.Width(), picture.Height() })),
          writer_(output, { whole.width, whole.height, resolution, resolution },
                  { TiffColour::Ink, CmykInks() }),
          row_(std::size_t{ whole.width } * kInks)
    {
        for (std::size_t plate = 0; plate < separations_.size(); ++plate)
            averages_.emplace_back(ScaledSide::Whole(picture.Width(), size_.width),
                                   ScaledSide::Whole(picture.Height(), size_.height), 1,
                                   [this, plate](auto values) { Take(plate, values); });
    }

    void Write()
    {
        Progress progress("showing the plates of " + Shown(picture_.Path()), picture_.Height());
        SeparationBands bands(picture_, separations_, { 0, picture_.Height() });
        for (std::uint32_t row = 0; row < picture_.Height(); ++row) {
            for (std::size_t plate = 0; plate < averages_.size(); ++plate)
                averages_[plate].Add(row, 0, bands.Row(row, plate));
            progress.Advance(1);
        }
        writer_.Finish();
    }

  private:
    // The last plate completes a row.
    void Take(std::size_t plate, std::span<const std::uint8_t> values)
    {
        constexpr std::uint8_t kFullInk = 255;
        std::size_t place =
            plate * (size_.width + kGap) * kInks + static_cast<std::size_t>(separations_[plate]);
        for (const std::uint8_t value : values) {
            row_.at(place) = static_cast<std::uint8_t>(kFullInk - value);
            place += kInks;
        }
        if (plate + 1 == separations_.size())
            writer_.Write(row_);
    }

    const Picture& picture_;
    std::vector<ColorSeparationType> separations_;
    PixelSize size_; // of a plate
    TiffWriter writer_;
    std::vector<std::uint8_t> row_;
    std::vector<BoxAverage> averages_;
};

} // namespace

PixelSize SizeOfPlates(PixelSize picture)
{
    const PixelSize plate = SizeOfPlate(picture);
    return { kInks * plate.width + (kInks - 1) * kGap, plate.height };
}

void WritePlatesSideBySide(const Picture& picture, double resolution, const OutputFile& output)
{
    const PixelSize whole = SizeOfPlates({ picture.Width(), picture.Height() });
    PlatesSideBySide(picture, whole, resolution, output).Write();
}

} // namespace tympan::tool
