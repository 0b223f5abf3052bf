// CT pictures on a device context, and the inks of single pixels.
#include "ct/ct_file.h"
#include "ct/ct_layout.h"
#include "ct/ct_screen.h"
#include "platform/gdi_spans.h"

#include <algorithm>
#include <vector>

namespace {

using tympan::Plates;

// The part of the rows from `first` to `last`, both included, that a context can show. A row that
// is asked for costs nothing when it can't be seen, however many there are.
tympan::CtArea ShownArea(HDC dc, unsigned long first, unsigned long last)
{
    const tympan::DrawableArea drawable = tympan::DrawableAreaOf(dc);
    const auto place = [](std::int64_t coordinate) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(coordinate, 0));
    };
    const std::uint64_t bottom = place(drawable.bottom);
    return { std::max<std::uint64_t>(first, place(drawable.top)),
             last < bottom ? last + std::uint64_t{ 1 } : bottom,
             static_cast<std::size_t>(place(drawable.left)),
             static_cast<std::size_t>(place(drawable.right)) };
}

// Draws the rows from `first` to `last`, both included, as far as they can be seen; `toBgr` makes the
// colours of a stretch.
template <typename ToBgr>
void DrawRows(CFile& file, const tympan::CtLayout& layout,
              std::span<const ColorSeparationType> wanted, HDC dc, unsigned long first,
              unsigned long last, ToBgr&& toBgr)
{
    const tympan::CtArea area = ShownArea(dc, first, last);
    if (area.firstRow >= area.endRow || area.firstColumn >= area.endColumn)
        return;
    tympan::CtBands bands(file, layout, wanted);
    std::vector<std::uint8_t> colours;
    bands.ForEachStretch(area, [&](std::uint64_t row, std::size_t column, const Plates& plates) {
        colours.resize(plates.count * 3);
        toBgr(plates, colours.data());
        tympan::SetPixelSpan(dc, static_cast<std::int64_t>(column), static_cast<std::int64_t>(row),
                             colours);
    });
    tympan::LeaveBehindRow(file, layout, wanted, area.endRow - 1);
}

} // namespace

void CtFileInterface::Display(unsigned long firstRow, unsigned long lastRow, CDC& dc)
{
    tympan::Guarded(Failures(), tympan::kCtDisplayFailures, [&] {
        DrawRows(FileHandle(), Layout(), tympan::kCtColour, dc.GetSafeHdc(), firstRow, lastRow,
                 tympan::PlatesToBgr);
    });
}

void CtFileInterface::Display(unsigned long firstRow, unsigned long lastRow, CDC* dc)
{
    if (dc != nullptr)
        Display(firstRow, lastRow, *dc);
}

void CtFileInterface::Display(unsigned long firstRow, unsigned long lastRow, CDC* dc,
                              ColorSeparationType separation)
{
    if (dc == nullptr)
        return;
    tympan::Guarded(Failures(), tympan::kCtDisplayFailures, [&] {
        const tympan::TintTable tints(separation);
        DrawRows(FileHandle(), Layout(), { &separation, 1 }, dc->GetSafeHdc(), firstRow, lastRow,
                 [&](const Plates& plates, std::uint8_t* bgr) {
                     tints.ToBgr(plates.plate[0], plates.count, bgr);
                 });
    });
}

unsigned long CtFileInterface::ExtractCMYKPixelInfo(unsigned long x, unsigned long y)
{
    const tympan::CtLayout layout = Layout();
    unsigned long inks = 0;
    for (const ColorSeparationType separation : tympan::kCtColour) {
        unsigned char byte = tympan::kNoInk;
        const auto position = layout.PositionOf(y, separation);
        if (position && x < layout.width) {
            FileHandle().Seek(static_cast<LONGLONG>(*position + x), CFile::begin);
            FileHandle().Read(&byte, 1);
        }
        inks = inks << 8U | (255UL - byte);
    }
    tympan::LeaveBehindRow(FileHandle(), layout, tympan::kCtColour, y);
    return inks;
}
