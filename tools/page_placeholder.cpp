#include "page_placeholder.h"

#include <algorithm>
#include <cmath>

namespace tympan::tool {

namespace {

constexpr double kBox = 232.0;
constexpr double kLine = 128.0;

} // namespace

Placeholder::Placeholder(const PicturePlace& place)
    : across_(place.Across()), down_(place.Down()), diagonal_(std::hypot(across_, down_)),
      halfLine_(std::clamp(std::min(across_, down_) / 300.0, 0.75, 2.0))
{}

BgrColour Placeholder::ColourAt(const PicturePoint& point) const
{
    const double x = point.across * across_;
    const double y = point.down * down_;
    const double fromEdge = std::min({ x, across_ - x, y, down_ - y });
    const double fromCross =
        std::min(std::abs(x * down_ - y * across_), std::abs((across_ - x) * down_ - y * across_)) /
        diagonal_;
    const double darkness = std::max(Darkness(fromEdge / 2), Darkness(fromCross));
    BgrColour colour{};
    colour.fill(static_cast<std::uint8_t>(std::lround(kBox + darkness * (kLine - kBox))));
    return colour;
}

// By the distance from the middle of a line, in pixels.
double Placeholder::Darkness(double fromLine) const
{
    const double darkness = halfLine_ + 0.5 - fromLine;
    return darkness > 0.0 ? std::min(darkness, 1.0) : 0.0;
}

} // namespace tympan::tool
