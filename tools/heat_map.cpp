#include "heat_map.h"

#include "ink_measure.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace tympan::tool {

namespace {

constexpr RgbColour kPaper{ 255, 255, 255 };
constexpr RgbColour kEdge{ 150, 150, 160 };
constexpr RgbColour kLettering{ 60, 60, 72 };
constexpr RgbColour kOverLimit{ 0, 229, 160 };

// From no ink to the most: in about even steps of lightness, so that more looks like more in grey too.
constexpr std::array<RgbColour, 10> kRamp{ {
    { 255, 255, 255 },
    { 254, 233, 178 },
    { 254, 201, 141 },
    { 253, 149, 103 },
    { 241, 96, 93 },
    { 205, 64, 113 },
    { 159, 47, 127 },
    { 114, 31, 129 },
    { 69, 16, 119 },
    { 24, 15, 62 },
} };

// Of a share of the ramp, from 0.0 on; above 1.0 it is the last.
RgbColour RampColour(double share)
{
    constexpr std::size_t kSteps = kRamp.size() - 1;
    const double place = std::min(share, 1.0) * kSteps;
    const std::size_t step = std::min(static_cast<std::size_t>(place), kSteps - 1);
    return Between(kRamp[step], kRamp[step + 1], place - static_cast<double>(step));
}

constexpr unsigned int kPercentOfInk = 100;

bool MayExceed(const HeatMapForm& form)
{
    return form.limitPercent < form.inks * kPercentOfInk;
}

// The total ink at the ramp's end.
unsigned int RampPercent(const HeatMapForm& form)
{
    return std::min(form.limitPercent, form.inks * kPercentOfInk);
}

std::array<RgbColour, 256> ColoursFor(const HeatMapForm& form)
{
    std::array<RgbColour, 256> colours{};
    const double end = RampPercent(form) * (kFullInk / double{ kPercentOfInk });
    for (std::size_t ink = 0; ink < colours.size(); ++ink)
        colours[ink] = RampColour(end > 0.0 ? static_cast<double>(ink * form.inks) / end : 0.0);
    return colours;
}

// ---- the legend

std::string PercentText(unsigned int percent)
{
    return std::to_string(percent) + "%";
}

// Draws the ramp and, where there can be any, the colour of what is above the limit.
class LegendDrawing {
  public:
    LegendDrawing(const HeatMapForm& form, const HeatMapLayout& layout)
        : form_(form), unit_(layout.unit), image_(layout.width, layout.legendHeight, kPaper),
          rampLeft_(layout.margin), rampEnd_(layout.width - layout.margin), top_(unit_)
    {
        const std::string over = "> " + PercentText(form.limitPercent);
        const auto overWidth = static_cast<std::uint32_t>(TextWidth(over, unit_)); // the box's too
        if (MayExceed(form)) {
            DrawBox(rampEnd_ - overWidth, rampEnd_, [](double) { return kOverLimit; });
            DrawText(image_, over, rampEnd_ - overWidth, LabelTop(), unit_, kLettering);
            rampEnd_ -= overWidth + 3 * unit_;
        }
        DrawBox(rampLeft_, rampEnd_, RampColour);
        DrawLabels();
    }

    const RgbImage& Image() const { return image_; }

  private:
    double LabelTop() const { return top_ + 2.2 * unit_; }

    // Colours by the share of the way from left to right, with an edge around.
    template <typename ColourAt>
    void DrawBox(std::uint32_t left, std::uint32_t end, const ColourAt& colourAt)
    {
        const std::uint32_t bottom = top_ + unit_ + unit_ / 2;
        for (std::uint32_t column = left; column < end; ++column) {
            const RgbColour colour = colourAt((column - left) / double(end - left));
            const bool isSide = column == left || column + 1 == end;
            for (std::uint32_t row = top_; row < bottom; ++row)
                image_.Lay(column, row,
                           isSide || row == top_ || row + 1 == bottom ? kEdge : colour);
        }
    }

    // The steps of the labels, so wide that these have room.
    unsigned int StepPercent() const
    {
        constexpr std::array kSteps{ 10U, 20U, 50U, 100U, 200U };
        const auto* const found = std::find_if(kSteps.begin(), kSteps.end(), [&](unsigned step) {
            return PlaceOf(step) - PlaceOf(0) >= kLabelUnits * unit_;
        });
        return found == kSteps.end() ? 2 * kSteps.back() : *found;
    }

    double PlaceOf(unsigned int percent) const
    {
        const double most = std::max(RampPercent(form_), 1U);
        return rampLeft_ + percent / most * (rampEnd_ - rampLeft_ - 1);
    }

    void DrawLabels()
    {
        const unsigned int end = RampPercent(form_);
        const unsigned int step = StepPercent();
        for (unsigned int percent = 0; percent < end; percent += step)
            if (PlaceOf(end) - PlaceOf(percent) >= kLabelUnits * unit_)
                DrawLabel(percent);
        DrawLabel(end);
    }

    void DrawLabel(unsigned int percent)
    {
        const double place = PlaceOf(percent);
        const std::uint32_t from = top_ + unit_ + unit_ / 2;
        for (std::uint32_t row = from; row < from + unit_ / 3; ++row)
            image_.Lay(std::lround(place), row, kEdge);
        const std::string text = PercentText(percent);
        DrawText(image_, text, place - TextWidth(text, unit_) / 2, LabelTop(), unit_, kLettering);
    }

    static constexpr double kLabelUnits = 5.5; // the room of a label

    const HeatMapForm& form_;
    std::uint32_t unit_;
    RgbImage image_;
    std::uint32_t rampLeft_;
    std::uint32_t rampEnd_;
    std::uint32_t top_;
};

} // namespace

HeatMapLayout::HeatMapLayout(const HeatMapForm& form)
    : unit(std::clamp(std::max(form.map.width, form.map.height) / 75, 11U, 24U)), margin(2 * unit),
      width(std::max(form.map.width, 24 * unit) + 2 * margin), left((width - form.map.width) / 2),
      legendHeight(5 * unit + unit / 2), height(margin + form.map.height + 1 + legendHeight)
{}

HeatMap::HeatMap(const OutputFile& output, const HeatMapForm& form)
    : form_(form), layout_(form), colours_(ColoursFor(form)),
      png_(output, { layout_.width, layout_.height, 0.0, 0.0 }, PngColour::Rgb),
      means_(ScaledSide::Whole(form.picture.width, form.map.width),
             ScaledSide::Whole(form.picture.height, form.map.height), 1,
             [this](auto means) { meanRow_.assign(means.begin(), means.end()); }),
      shares_(ScaledSide::Whole(form.picture.width, form.map.width),
              ScaledSide::Whole(form.picture.height, form.map.height), 1,
              [this](auto shares) { WriteMapRow(meanRow_, shares); })
{
    const RgbImage blank(layout_.width, 1, kPaper);
    for (std::uint32_t row = 0; row + 1 < layout_.margin; ++row)
        png_.Write(blank.Row(0));
    WriteEdge();
}

void HeatMap::Add(std::uint32_t row, std::uint32_t firstColumn,
                  std::span<const std::uint16_t> totals)
{
    plate_.resize(totals.size());
    const unsigned int inks = form_.inks;
    std::transform(totals.begin(), totals.end(), plate_.begin(), [=](unsigned int total) {
        return static_cast<std::uint8_t>((total + inks / 2) / inks);
    });
    means_.Add(row, firstColumn, plate_);
    const unsigned int limit = form_.limitPercent * kFullInk;
    std::transform(totals.begin(), totals.end(), plate_.begin(), [=](unsigned int total) {
        return static_cast<std::uint8_t>(total * kPercentOfInk > limit ? kFullInk : 0);
    });
    shares_.Add(row, firstColumn, plate_);
}

void HeatMap::WriteMapRow(std::span<const std::uint8_t> means, std::span<const std::uint8_t> shares)
{
    // A spot of a few pixels is marked too, so that it is found.
    constexpr double kLeastMark = 0.5;
    RgbImage row(layout_.width, 1, kPaper);
    row.Lay(std::int64_t{ layout_.left } - 1, 0, kEdge);
    for (std::size_t x = 0; x < means.size(); ++x) {
        const auto column = static_cast<std::int64_t>(layout_.left + x);
        row.Lay(column, 0, colours_[means[x]]);
        if (shares[x] != 0)
            row.Lay(column, 0, kOverLimit, std::max(shares[x] / double{ kFullInk }, kLeastMark));
    }
    row.Lay(std::int64_t{ layout_.left } + form_.map.width, 0, kEdge);
    png_.Write(row.Row(0));
}

void HeatMap::WriteEdge()
{
    RgbImage row(layout_.width, 1, kPaper);
    for (std::int64_t column = -1; column <= form_.map.width; ++column)
        row.Lay(layout_.left + column, 0, kEdge);
    png_.Write(row.Row(0));
}

void HeatMap::Finish()
{
    WriteEdge();
    const LegendDrawing legend(form_, layout_);
    for (std::uint32_t row = 0; row < layout_.legendHeight; ++row)
        png_.Write(legend.Image().Row(row));
    png_.Finish();
}

} // namespace tympan::tool
