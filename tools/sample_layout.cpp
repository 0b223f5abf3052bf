#include "sample_layout.h"

#include <algorithm>

namespace tympan::tool {

namespace {

constexpr double kPageWidth = 11.69;
constexpr double kMargin = 0.45;
constexpr double kGap = 0.3;
constexpr double kInner = kPageWidth - 2 * kMargin;

// The largest box of a shape inside one of this size, at its upper left corner.
SampleBox Inside(double shape, const SampleBox& around)
{
    const double width = std::min(around.width, around.height * shape);
    return { around.x, around.y, width, width / shape };
}

SampleBox Centred(SampleBox box, const SampleBox& around)
{
    box.x = around.x + (around.width - box.width) / 2;
    box.y = around.y + (around.height - box.height) / 2;
    return box;
}

// A box as large as `least`, or larger so that it covers another, as far as there is room for it on
// the page; with the same middle as that, where the page's edges allow it.
SampleBox Covering(const SampleBox& least, const SampleBox& covered, const SizeInInches& page)
{
    const double shape = least.width / least.height;
    const double width = std::max({ least.width, covered.width, covered.height * shape });
    SampleBox box =
        Inside(shape, { 0, 0, std::min(width, page.width), std::min(width / shape, page.height) });
    box = Centred(box, covered);
    box.x = std::clamp(box.x, 0.0, std::max(page.width - box.width, 0.0));
    box.y = std::clamp(box.y, 0.0, std::max(page.height - box.height, 0.0));
    return box;
}

} // namespace

SampleLayout LayoutOf(const SampleShapes& shapes)
{
    constexpr double kPhotographWidth = 6.5;
    constexpr double kMostHeight = 5.6;  // of photograph and drawing
    constexpr double kLeastHeight = 3.4; // that leaves room for the print
    constexpr double kPlatesHeight = 1.75;
    SampleLayout layout;
    layout.photograph =
        Inside(shapes.photograph, { kMargin, kMargin, kPhotographWidth, kMostHeight });
    const double height = std::max(layout.photograph.height, kLeastHeight);
    const double right = kMargin + layout.photograph.width + kGap;
    const SampleBox column{ right, kMargin, kPageWidth - kMargin - right, height };
    layout.drawing = Inside(shapes.drawing, column);
    layout.drawing.x = Centred(layout.drawing, column).x;
    layout.print = Inside(shapes.photograph, { 0, 0, 2.7, 2.0 });
    layout.printTurn = -7.0;
    const SampleBox foot{ kMargin, kMargin + height + kGap, kInner, kPlatesHeight };
    layout.plates = Inside(shapes.plates, foot);
    layout.plates.x = Centred(layout.plates, foot).x;
    layout.print.x = layout.photograph.x + layout.photograph.width - layout.print.width * 0.12;
    layout.print.y = kMargin + height - layout.print.height * 0.85;
    layout.page = { layout.plates.y + layout.plates.height + kMargin, kPageWidth };
    layout.window = Covering(layout.photograph, layout.drawing, layout.page);
    return layout;
}

} // namespace tympan::tool
