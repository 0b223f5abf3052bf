#include "heat_map_text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tympan::tool {

namespace {

struct Point {
    double x, y;
};
using Line = std::vector<Point>;

// A line of the pen, which bends towards its points and has a corner where one stands twice.
struct Stroke {
    char letter;
    bool isClosed;
    Line points; // in hundredths of a letter's height, y downwards
};

constexpr double kUnits = 100.0;
constexpr double kGap = 24.0; // between two letters
constexpr double kPen = 0.12; // of the letters' height

const std::vector<Stroke>& Strokes()
{
    static const std::vector<Stroke> kStrokes{
        { '0', true, { { 0, 0 }, { 58, 0 }, { 58, 100 }, { 0, 100 } } },
        { '1', false, { { 6, 24 }, { 34, 0 }, { 34, 0 }, { 34, 100 } } },
        { '2',
          false,
          { { 3, 28 }, { 3, 0 }, { 56, 0 }, { 56, 44 }, { 0, 100 }, { 0, 100 }, { 58, 100 } } },
        { '3', false, { { 3, 22 }, { 3, 0 }, { 54, 0 }, { 54, 46 }, { 22, 46 } } },
        { '3', false, { { 22, 46 }, { 58, 46 }, { 58, 100 }, { 0, 100 }, { 0, 76 } } },
        { '4', false, { { 45, 100 }, { 45, 0 }, { 45, 0 }, { 0, 72 }, { 0, 72 }, { 60, 72 } } },
        { '5',
          false,
          { { 53, 0 },
            { 7, 0 },
            { 7, 0 },
            { 4, 46 },
            { 4, 46 },
            { 20, 34 },
            { 58, 34 },
            { 58, 100 },
            { 0, 100 },
            { 0, 80 } } },
        { '6', false, { { 46, 0 }, { 16, 20 }, { 0, 46 }, { 0, 68 } } },
        { '6', true, { { 0, 38 }, { 58, 38 }, { 58, 100 }, { 0, 100 } } },
        { '7', false, { { 0, 0 }, { 58, 0 }, { 58, 0 }, { 18, 100 } } },
        { '8', true, { { 4, 0 }, { 54, 0 }, { 54, 46 }, { 4, 46 } } },
        { '8', true, { { 0, 46 }, { 58, 46 }, { 58, 100 }, { 0, 100 } } },
        { '9', true, { { 0, 0 }, { 58, 0 }, { 58, 62 }, { 0, 62 } } },
        { '9', false, { { 58, 32 }, { 58, 54 }, { 42, 80 }, { 12, 100 } } },
        { '%', true, { { 0, 0 }, { 36, 0 }, { 36, 44 }, { 0, 44 } } },
        { '%', true, { { 56, 56 }, { 92, 56 }, { 92, 100 }, { 56, 100 } } },
        { '%', false, { { 74, 0 }, { 18, 100 } } },
        { '>', false, { { 0, 24 }, { 54, 50 }, { 54, 50 }, { 0, 76 } } },
    };
    return kStrokes;
}

double WidthOf(char letter)
{
    switch (letter) {
    case '%': return 92.0;
    case ' ': return 20.0;
    default: return 58.0;
    }
}

Point Mix(const Point& from, const Point& to, double share)
{
    return { from.x + share * (to.x - from.x), from.y + share * (to.y - from.y) };
}

// Cuts the corners of a line, which makes it a curve when it is done some times.
Line WithCornersCut(const Line& line, bool isClosed)
{
    constexpr double kCut = 0.25;
    Line cut;
    if (!isClosed)
        cut.push_back(line.front());
    const std::size_t sides = line.size() - (isClosed ? 0 : 1);
    for (std::size_t i = 0; i < sides; ++i) {
        const Point& next = line[(i + 1) % line.size()];
        cut.push_back(Mix(line[i], next, kCut));
        cut.push_back(Mix(line[i], next, 1.0 - kCut));
    }
    if (!isClosed)
        cut.push_back(line.back());
    return cut;
}

// The line of a stroke in pixels.
Line Curve(const Stroke& stroke, double left, double top, double height)
{
    constexpr int kCuts = 4;
    Line line = stroke.points;
    for (int cut = 0; cut < kCuts; ++cut)
        line = WithCornersCut(line, stroke.isClosed);
    if (stroke.isClosed)
        line.push_back(line.front());
    for (Point& point : line)
        point = { left + point.x * height / kUnits, top + point.y * height / kUnits };
    return line;
}

double Distance(const Point& point, const Point& from, const Point& to)
{
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double length = x * x + y * y;
    const double along =
        length > 0.0 ? ((point.x - from.x) * x + (point.y - from.y) * y) / length : 0.0;
    const Point nearest = Mix(from, to, std::clamp(along, 0.0, 1.0));
    return std::hypot(point.x - nearest.x, point.y - nearest.y);
}

double Distance(const Point& point, const Line& line)
{
    double least = std::numeric_limits<double>::max();
    for (std::size_t i = 1; i < line.size(); ++i)
        least = std::min(least, Distance(point, line[i - 1], line[i]));
    return least;
}

// The strokes of a letter together, so that no pixel is laid twice.
void DrawLines(RgbImage& image, const std::vector<Line>& lines, const Point& from, const Point& to,
               double pen, const RgbColour& colour)
{
    const auto first = [&](double edge) { return static_cast<std::int64_t>(edge - pen); };
    for (std::int64_t row = first(from.y); row <= first(to.y + 2 * pen + 1); ++row)
        for (std::int64_t column = first(from.x); column <= first(to.x + 2 * pen + 1); ++column) {
            const Point middle{ static_cast<double>(column) + 0.5, static_cast<double>(row) + 0.5 };
            double distance = std::numeric_limits<double>::max();
            for (const Line& line : lines)
                distance = std::min(distance, Distance(middle, line));
            image.Lay(column, row, colour, std::clamp(pen / 2 + 0.5 - distance, 0.0, 1.0));
        }
}

} // namespace

RgbColour Between(const RgbColour& from, const RgbColour& to, double share)
{
    RgbColour colour{};
    for (std::size_t i = 0; i < colour.size(); ++i)
        colour[i] = static_cast<std::uint8_t>(std::lround(from[i] + share * (to[i] - from[i])));
    return colour;
}

RgbImage::RgbImage(std::uint32_t width, std::uint32_t height, const RgbColour& paper)
    : width_(width), height_(height), samples_(std::size_t{ width } * height * paper.size())
{
    for (std::size_t i = 0; i < samples_.size(); ++i)
        samples_[i] = paper[i % paper.size()];
}

void RgbImage::Lay(std::int64_t column, std::int64_t row, const RgbColour& colour, double share)
{
    if (column < 0 || column >= width_ || row < 0 || row >= height_)
        return;
    std::uint8_t* const place =
        &samples_[(static_cast<std::size_t>(row) * width_ + static_cast<std::size_t>(column)) *
                  colour.size()];
    const RgbColour laid = Between({ place[0], place[1], place[2] }, colour, share);
    std::copy(laid.begin(), laid.end(), place);
}

std::span<const std::uint8_t> RgbImage::Row(std::uint32_t row) const
{
    const std::size_t bytes = std::size_t{ width_ } * std::tuple_size_v<RgbColour>;
    return std::span(samples_).subspan(row * bytes, bytes);
}

double TextWidth(std::string_view text, double height)
{
    double units = text.empty() ? 0.0 : -kGap;
    for (const char letter : text)
        units += WidthOf(letter) + kGap;
    return units * height / kUnits;
}

void DrawText(RgbImage& image, std::string_view text, double left, double top, double height,
              const RgbColour& colour)
{
    for (const char letter : text) {
        std::vector<Line> lines;
        for (const Stroke& stroke : Strokes())
            if (stroke.letter == letter)
                lines.push_back(Curve(stroke, left, top, height));
        const double width = WidthOf(letter) * height / kUnits;
        DrawLines(image, lines, { left, top }, { left + width, top + height }, kPen * height,
                  colour);
        left += width + kGap * height / kUnits;
    }
}

} // namespace tympan::tool
