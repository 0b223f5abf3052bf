// Where the pictures of a page fall on the pixels that the page is drawn on.
#pragma once

#include "box_average.h"

#include <tympan/inspect.h>

#include <cstdint>
#include <optional>

namespace tympan::tool {

/// The page as it is drawn: its paper, and pixels per inch along both sides.
struct PageFrame {
    PixelSize size;
    double acrossPerInch = 0.0;
    double downPerInch = 0.0;
};

/// A page of a shape, as large as `longest` allows, but never larger than the page counts pixels,
/// where it does.
/// \param page a record with sizes above 0
PageFrame FrameOf(const PictureParameters& page, std::uint32_t longest);

/// A box of pixels, which may reach beyond the page.
struct PixelBox {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;  ///< without this column
    std::int64_t bottom = 0; ///< without this row

    std::int64_t Width() const { return right - left; }
    std::int64_t Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
};

PixelBox Common(const PixelBox& one, const PixelBox& other);
PixelBox BoxOf(const PageFrame& page);

/// A place on a placed picture: from 0 at its left and upper edge to 1 at the right and the lower
/// one, beyond which it lies outside.
struct PicturePoint {
    double across = 0.0;
    double down = 0.0;
};

/// Where a picture falls. What is turned by quarters only, or not at all, begins and ends between
/// pixels: at the nearest edges, and on one pixel at least.
class PicturePlace {
  public:
    /// \param placement with a size above 0; all its numbers finite
    PicturePlace(const Placement& placement, const PageFrame& page);

    /// The pixels that it may cover, the part outside of the page included.
    const PixelBox& Box() const { return box_; }
    /// How often it is turned counterclockwise by a right angle; nothing for any other angle.
    const std::optional<int>& QuarterTurns() const { return quarterTurns_; }

    /// Its sides before it is turned, in pixels of the page.
    double Across() const { return acrossInches_ * page_.acrossPerInch; }
    double Down() const { return downInches_ * page_.downPerInch; }

    /// The place on the picture of a point on the page, in pixels from the page's upper left corner.
    PicturePoint PointAt(double x, double y) const;
    /// How much of the pixel around a place on the picture lies on the picture, from 0 to 1: edges
    /// are smooth.
    double ShareAt(const PicturePoint& point) const;

  private:
    PageFrame page_;
    PixelBox box_;
    std::optional<int> quarterTurns_;
    double sine_;
    double cosine_;
    double middleX_; // inches
    double middleY_;
    double acrossInches_;
    double downInches_;
};

} // namespace tympan::tool
