// Line work on a device context: a colour for each run, drawn in stretches of pixels.
#include "core/colour_pattern.h"
#include "core/pixel_colour.h"
#include "core/whole_numbers.h"
#include "lw/lw_failures.h"
#include "lw/lw_file.h"
#include "lw/row_range.h"
#include "lw/run_reader.h"
#include "platform/gdi_spans.h"

#include <algorithm>
#include <array>
#include <span>

namespace {

using tympan::ColourPattern;
using tympan::kBytesOfPixel;
using tympan::Run;
using tympan::ScreenColour;

// What each colour of a table looks like with the separations that a picture has. Index 0, which has
// no pixels, is white.
class ScreenColours {
  public:
    explicit ScreenColours(const LwPictureParameters& record) : colours_(record.TableColorsNumber())
    {
        for (const ColorSeparationType separation : kSeparations)
            isLookedUp_ = isLookedUp_ || record.SeparationExists(separation);
        for (unsigned int index = 0; index < shown_.size(); ++index)
            shown_[index] = ColourPattern(ColourOf(record, index));
    }

    // A picture without separations has no use for the table.
    bool Has(Run run) const
    {
        return !isLookedUp_ || tympan::IsDelimiter(run) || run.index - 1U < colours_;
    }
    const ColourPattern& Of(Run run) const { return shown_[run.index]; }

  private:
    static constexpr ColorSeparationType kSeparations[] = { Cyan, Magenta, Yellow, Black };

    static ScreenColour ColourOf(const LwPictureParameters& record, unsigned int index)
    {
        std::array<unsigned char, PictureParameters::kSlots> pixel{};
        pixel.fill(tympan::kNoInk);
        for (const ColorSeparationType separation : kSeparations)
            if (index != 0 && record.SeparationExists(separation))
                pixel[static_cast<std::size_t>(separation)] =
                    record.GetColor(static_cast<unsigned char>(index - 1), separation);
        return ScreenColour::Of(PictureFileInterface::CalculatePixelAsRGB(pixel.data()));
    }

    unsigned int colours_;
    bool isLookedUp_ = false;
    std::array<ColourPattern, 256> shown_{};
};

// Gathers the pixels of a row that a context can show, and draws many of them at a time.
class RowOnScreen {
  public:
    RowOnScreen(HDC dc, const tympan::DrawableArea& area) : dc_(dc), area_(area) {}

    void Begin(std::uint64_t row)
    {
        row_ = static_cast<std::int64_t>(row);
        column_ = 0;
        isShown_ = row_ >= area_.top && row_ < area_.bottom;
    }

    void Add(std::uint8_t pixels, const ColourPattern& pattern)
    {
        const std::int64_t first = std::max(column_, area_.left);
        column_ += pixels;
        const std::int64_t end = std::min(column_, area_.right);
        if (!isShown_ || first >= end)
            return;
        if (waiting_ + kMostStored > bytes_.size())
            Draw();
        if (waiting_ == 0)
            waitingFrom_ = first;
        const auto count = static_cast<std::size_t>(end - first);
        pattern.Store(bytes_.data() + waiting_, count);
        waiting_ += count * kBytesOfPixel;
    }

    void Draw()
    {
        tympan::SetPixelSpan(dc_, waitingFrom_, row_, { bytes_.data(), waiting_ });
        waiting_ = 0;
    }

  private:
    static constexpr std::size_t kMostStored = 256 * kBytesOfPixel; // of the longest run
    static_assert(256 % ColourPattern::kPixels == 0);

    HDC dc_;
    tympan::DrawableArea area_;
    bool isShown_ = false;
    std::int64_t row_ = 0;
    std::int64_t column_ = 0; // of the next run
    std::array<std::uint8_t, 16 * kMostStored> bytes_{};
    std::size_t waiting_ = 0; // bytes
    std::int64_t waitingFrom_ = 0;
};

// Up to the first run whose colour isn't in the table, which is returned; null where there is none.
const Run* DrawRuns(std::span<const Run> runs, const ScreenColours& colours, RowOnScreen& drawn)
{
    for (const Run& run : runs) {
        if (!colours.Has(run))
            return &run;
        drawn.Add(run.length, colours.Of(run));
    }
    return nullptr;
}

} // namespace

// Delimiters are passed over as runs without pixels: the one in front of a row and the one behind the
// row before it.
void LWFileInterface::Display(unsigned long firstRow, unsigned long lastRow, CDC& dc)
{
    tympan::Guarded(Failures(), tympan::kLwRowFailures, [&] {
        const HDC hdc = dc.GetSafeHdc();
        const ScreenColours colours(LwRecord());
        RowOnScreen drawn(hdc, tympan::DrawableAreaOf(hdc));
        const tympan::RowWidth width = Width();
        const std::uint64_t endRow = tympan::Sum(lastRow, 1).value_or(lastRow);
        ForEachRow(firstRow, endRow, [&](tympan::RunReader& reader, std::uint64_t row) {
            drawn.Begin(row);
            const std::uint64_t pixels =
                reader.TakeRow(width.toReach, [&](const tympan::RunStretch& stretch) {
                    const Run* const refused = DrawRuns(stretch.runs, colours, drawn);
                    drawn.Draw();
                    if (refused != nullptr) {
                        reader.StandBehind(*refused);
                        throw new ::IllegalColorIndexException;
                    }
                });
            width.Require(pixels);
        });
    });
}
