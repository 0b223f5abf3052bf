// TIFF/IT line work on a device context.
#include "core/colour_pattern.h"
#include "core/pixel_colour.h"
#include "core/whole_numbers.h"
#include "platform/gdi_spans.h"
#include "tiff/busy_cursor.h"
#include "tiff/tiff_it_failures.h"
#include "tiff/tiff_it_lw.h"
#include "tiff/tiff_it_runs.h"
#include "tiff/tiff_it_strips.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using tympan::ColourPattern;
using tympan::kBytesOfPixel;

constexpr tympan::FailureRow kLwDisplayFailures[] = {
    { tympan::Caught::FileCorrupted, tympan::code::kTiffNotOpened, nullptr },
    { tympan::Caught::Anything, tympan::code::kTiffFailed, "TiffInterface: Error Extracting Tiff" },
};

// Gathers pixels that lie side by side, as far as a context shows them, and draws many at a time.
class PixelGatherer {
  public:
    explicit PixelGatherer(HDC dc) : dc_(dc), area_(tympan::DrawableAreaOf(dc)) {}

    /// Pixels of one colour from column `first` up to `end`.
    void Add(std::uint64_t row, std::uint64_t first, std::uint64_t end,
             const ColourPattern& pattern)
    {
        const auto y = static_cast<std::int64_t>(row);
        std::int64_t x = std::max(static_cast<std::int64_t>(first), area_.left);
        const std::int64_t endShown = std::min(static_cast<std::int64_t>(end), area_.right);
        if (x >= endShown || y < area_.top || y >= area_.bottom)
            return;
        if (y != row_ || x != column_)
            Draw();
        row_ = y;
        while (x < endShown) {
            const std::int64_t count = std::min(endShown - x, kMostAtOnce);
            Store(x, static_cast<std::size_t>(count), pattern);
            x += count;
        }
        column_ = x;
    }

    void Draw()
    {
        if (waiting_ != 0)
            tympan::SetPixelSpan(dc_, waitingFrom_, row_, { bytes_.data(), waiting_ });
        waiting_ = 0;
    }

  private:
    static constexpr std::int64_t kMostAtOnce = 1024; // pixels
    static_assert(kMostAtOnce % ColourPattern::kPixels == 0);

    void Store(std::int64_t x, std::size_t count, const ColourPattern& pattern)
    {
        if (waiting_ + kMostAtOnce * kBytesOfPixel > bytes_.size())
            Draw();
        if (waiting_ == 0)
            waitingFrom_ = x;
        pattern.Store(bytes_.data() + waiting_, count);
        waiting_ += count * kBytesOfPixel;
    }

    HDC dc_;
    tympan::DrawableArea area_;
    std::int64_t row_ = 0;
    std::int64_t column_ = 0; // behind what was added last
    std::int64_t waitingFrom_ = 0;
    std::size_t waiting_ = 0; // bytes
    std::array<std::uint8_t, 8 * kMostAtOnce * kBytesOfPixel> bytes_{};
};

} // namespace

void TiffItLwP1Interface::Display(unsigned long, unsigned long, CDC& dc)
{
    const tympan::BusyCursor busy;
    tympan::Guarded(Failures(), kLwDisplayFailures, [&] {
        const double heightAsTold = PictureParams()->HeightInPixels();
        const auto width = tympan::CutToWhole<std::uint64_t>(PictureParams()->WidthInPixels());
        const auto height = tympan::CutToWhole<std::uint64_t>(std::ceil(heightAsTold));
        PixelGatherer pixels(dc.GetSafeHdc());
        std::uint64_t column = 0;
        tympan::RunAllowance allowance(FileHandle().GetLength());
        const std::span<const StripInfo> strips = Strips();
        for (std::size_t s = 0; s < strips.size(); ++s) {
            if (strips[s].RowsPerStrip < heightAsTold)
                continue;
            std::array<ColourPattern, 256> patterns{};
            for (unsigned int colour = 0; colour < patterns.size(); ++colour) {
                unsigned char inks[4];
                patterns[colour] =
                    ColourPattern(tympan::ScreenColour::Of(CalculatePixelAsRGB3(GetColor(
                        static_cast<unsigned char>(s), static_cast<unsigned char>(colour), inks))));
            }
            tympan::StripBytes bytes(FileHandle(), strips[s].Offset + tympan::kLwStripLead);
            tympan::ForEachRun(bytes, width, height, column, [&](const tympan::PlacedRun& run) {
                const tympan::RunReach reach(run, width);
                const ColourPattern& pattern = patterns[run.colour];
                pixels.Add(run.row, run.column, reach.end, pattern);
                if (reach.passes && run.row + 1 < height)
                    pixels.Add(run.row + 1, 0, reach.behind, pattern);
            });
            pixels.Draw();
            allowance.Take(bytes.Position() - strips[s].Offset);
        }
    });
}
