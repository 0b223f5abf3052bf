// Where the pictures stand on the page that `tympan sample` makes.
#pragma once

#include <tympan/inspect.h>

namespace tympan::tool {

/// Widths over heights.
struct SampleShapes {
    double photograph = 1.0;
    double drawing = 1.0;
    double plates = 1.0;
};

/// Inches, from the page's left and upper edge.
struct SampleBox {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
};

/// A landscape page about as wide as A4 and as high as its pictures want it.
struct SampleLayout {
    SizeInInches page;
    SampleBox photograph;   ///< large, on the left
    SampleBox drawing;      ///< beside it
    SampleBox window;       ///< the photograph once more, as large as covers the drawing
    SampleBox print;        ///< a small photograph, before it is turned
    double printTurn = 0.0; ///< degrees, counterclockwise
    SampleBox plates;       ///< along the foot
};

SampleLayout LayoutOf(const SampleShapes& shapes);

} // namespace tympan::tool
