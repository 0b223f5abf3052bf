#include "page_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tympan::tool {

namespace {

constexpr double kQuarter = 90.0;
constexpr int kQuarters = 4;

// Far outside of any page: what a file claims beyond is cut.
constexpr double kFarthest = 1099511627776.0; // 2^40

std::int64_t EdgeAt(double pixels)
{
    return static_cast<std::int64_t>(pixels > -kFarthest ? std::min(pixels, kFarthest)
                                                         : -kFarthest);
}

// A side of the page in proportion to the longer one.
std::uint32_t SideOf(double inches, double longerInches, double longerPixels)
{
    return static_cast<std::uint32_t>(
        std::max(std::round(longerPixels * (inches / longerInches)), 1.0));
}

struct Turn {
    double sine, cosine;
};

// Of an angle between -360 and 360 degrees.
Turn TurnOf(double degrees)
{
    const double radians = degrees / (2 * kQuarter) * std::numbers::pi;
    return { std::sin(radians), std::cos(radians) };
}

Turn TurnOf(int quarterTurns)
{
    constexpr std::array<Turn, kQuarters> kTurns{
        { { 0.0, 1.0 }, { 1.0, 0.0 }, { 0.0, -1.0 }, { -1.0, 0.0 } }
    };
    return kTurns.at(static_cast<std::size_t>(quarterTurns));
}

std::optional<int> QuarterTurnsOf(double degrees)
{
    const double quarters = std::fmod(degrees, kQuarters * kQuarter) / kQuarter;
    if (quarters != std::floor(quarters))
        return std::nullopt;
    return (static_cast<int>(quarters) + kQuarters) % kQuarters;
}

PixelBox NearestBox(const PlacementBounds& bounds, const PageFrame& page)
{
    const std::int64_t left = EdgeAt(std::round(bounds.left * page.acrossPerInch));
    const std::int64_t top = EdgeAt(std::round(bounds.top * page.downPerInch));
    const std::int64_t right = EdgeAt(std::round(bounds.right * page.acrossPerInch));
    const std::int64_t bottom = EdgeAt(std::round(bounds.bottom * page.downPerInch));
    return { left, top, std::max(right, left + 1), std::max(bottom, top + 1) };
}

PixelBox BoxAround(const PlacementBounds& bounds, const PageFrame& page)
{
    return { EdgeAt(std::floor(bounds.left * page.acrossPerInch)),
             EdgeAt(std::floor(bounds.top * page.downPerInch)),
             EdgeAt(std::ceil(bounds.right * page.acrossPerInch)),
             EdgeAt(std::ceil(bounds.bottom * page.downPerInch)) };
}

// What a pixel around a place has in common with a stretch that begins at 0.
double Overlap(double place, double length)
{
    const double common = std::min(place + 0.5, length) - std::max(place - 0.5, 0.0);
    return common > 0.0 ? common : 0.0; // of what is no number, too
}

} // namespace

PageFrame FrameOf(const PictureParameters& page, std::uint32_t longest)
{
    const double across = page.WidthInUnits();
    const double down = page.HeightInUnits();
    const double longer = std::max(across, down);
    const double counted = std::max(page.WidthInPixels(), page.HeightInPixels());
    const double pixels = counted >= 1.0 ? std::min<double>(longest, counted) : longest;
    const PixelSize size{ SideOf(across, longer, pixels), SideOf(down, longer, pixels) };
    return { size, size.width / across, size.height / down };
}

PixelBox Common(const PixelBox& one, const PixelBox& other)
{
    return { std::max(one.left, other.left), std::max(one.top, other.top),
             std::min(one.right, other.right), std::min(one.bottom, other.bottom) };
}

PixelBox BoxOf(const PageFrame& page)
{
    return { 0, 0, page.size.width, page.size.height };
}

PicturePlace::PicturePlace(const Placement& placement, const PageFrame& page)
    : page_(page), quarterTurns_(QuarterTurnsOf(placement.rotation))
{
    PlacementBounds bounds = BoundsOf(placement);
    Turn turn = TurnOf(std::fmod(placement.rotation, kQuarters * kQuarter));
    acrossInches_ = placement.width;
    downInches_ = placement.height;
    box_ = BoxAround(bounds, page);
    if (quarterTurns_) {
        box_ = NearestBox(bounds, page);
        turn = TurnOf(*quarterTurns_);
        bounds = { static_cast<double>(box_.left) / page.acrossPerInch,
                   static_cast<double>(box_.top) / page.downPerInch,
                   static_cast<double>(box_.right) / page.acrossPerInch,
                   static_cast<double>(box_.bottom) / page.downPerInch };
        const bool isUpright = *quarterTurns_ % 2 == 0;
        acrossInches_ = isUpright ? bounds.right - bounds.left : bounds.bottom - bounds.top;
        downInches_ = isUpright ? bounds.bottom - bounds.top : bounds.right - bounds.left;
    }
    sine_ = turn.sine;
    cosine_ = turn.cosine;
    middleX_ = bounds.left + (bounds.right - bounds.left) / 2;
    middleY_ = bounds.top + (bounds.bottom - bounds.top) / 2;
}

PicturePoint PicturePlace::PointAt(double x, double y) const
{
    const double right = x / page_.acrossPerInch - middleX_;
    const double down = y / page_.downPerInch - middleY_;
    return { (right * cosine_ - down * sine_) / acrossInches_ + 0.5,
             (right * sine_ + down * cosine_) / downInches_ + 0.5 };
}

double PicturePlace::ShareAt(const PicturePoint& point) const
{
    return Overlap(point.across * Across(), Across()) * Overlap(point.down * Down(), Down());
}

} // namespace tympan::tool
