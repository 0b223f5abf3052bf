// What stands on a page in the place of a picture that can't be shown.
#pragma once

#include "page_geometry.h"
#include "shown_rows.h"

namespace tympan::tool {

/// A light grey box with an edge and a cross, turned as the picture would be.
class Placeholder {
  public:
    explicit Placeholder(const PicturePlace& place);

    BgrColour ColourAt(const PicturePoint& point) const;

  private:
    double Darkness(double fromLine) const;

    double across_;
    double down_;
    double diagonal_;
    double halfLine_;
};

} // namespace tympan::tool
