#include "ink_measure.h"

#include "ink_histogram.h"
#include "line_work_rows.h"
#include "palette_use.h"
#include "progress.h"
#include "separation_bands.h"
#include "separations.h"
#include "tiff_plates.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <utility>

namespace tympan::tool {

namespace {

constexpr std::size_t kInkValues = kFullInk + 1;

// ---- what of a picture is ink

Inks Named(const Picture& picture, std::vector<ColorSeparationType> separations)
{
    Inks inks{ std::move(separations), {} };
    for (const ColorSeparationType separation : inks.separations)
        inks.names.push_back(NameOf(picture.Object(), separation));
    return inks;
}

// A sample behind the inks that the file has for alpha; the library tells it by the name alone.
bool IsAlpha(const Picture& picture, ColorSeparationType separation)
{
    return NameOf(picture.Object(), separation) ==
           "Alpha " + std::to_string(static_cast<int>(separation) + 1);
}

Inks InksOfTiff(const Picture& picture)
{
    const TiffFileInterface& tiff = *picture.AsTiff();
    if (IsOfInks(tiff)) {
        std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
        std::erase_if(separations, [&](auto one) { return IsAlpha(picture, one); });
        return Named(picture, std::move(separations));
    }
    if (tiff.GetPictureParams()->ColorSet() == RgbColorSet)
        return { { Cyan, Magenta, Yellow }, { NameOf(Cyan), NameOf(Magenta), NameOf(Yellow) } };
    const TiffColours colours(picture);
    if (colours.IsGrey())
        return { colours.Separations(), { NameOf(Black) } };
    throw FileFailure(picture.Path(), "a " + TiffKindName(tiff) + " TIFF stores no ink", {},
                      "`tympan export FILE -o RGB.tif` makes red, green and blue of it, and "
                      "`tympan import RGB.tif -o INK.ct` ink of these.");
}

// ---- by rows

void AddPlate(std::span<const std::uint8_t> plate, std::span<std::uint16_t> totals)
{
    for (std::size_t x = 0; x < plate.size(); ++x)
        totals[x] = static_cast<std::uint16_t>(totals[x] + (kFullInk - plate[x]));
}

// A picture's rows as they are counted. A plate has 255 for no ink.
class CountedRows {
  public:
    CountedRows(const Picture& picture, const Inks& inks)
        : inks_(inks), bands_(picture, inks.separations, { 0, picture.Height() }),
          plates_(inks.separations.size(), Histogram(kInkValues)),
          sums_(inks.separations.size() * kFullInk + 1), totals_(picture.Width())
    {}

    std::span<const std::uint16_t> Count(std::uint32_t row)
    {
        std::fill(totals_.begin(), totals_.end(), std::uint16_t{ 0 });
        for (std::size_t i = 0; i < plates_.size(); ++i) {
            const std::span<const std::uint8_t> plate = bands_.Row(row, i);
            plates_[i].Add(plate);
            AddPlate(plate, totals_);
        }
        sums_.Add(std::span<const std::uint16_t>(totals_));
        return totals_;
    }

    std::vector<SeparationInk> Separations() const
    {
        std::vector<SeparationInk> separations;
        for (std::size_t i = 0; i < plates_.size(); ++i) {
            InkCounts counts = plates_[i].Counts();
            std::reverse(counts.begin(), counts.end());
            separations.push_back({ inks_.names[i], std::move(counts) });
        }
        return separations;
    }

    InkCounts Totals() const { return sums_.Counts(); }

  private:
    const Inks& inks_;
    SeparationBands bands_;
    std::vector<Histogram> plates_;
    Histogram sums_;
    std::vector<std::uint16_t> totals_; // of a row
};

InkFigures MeasureRows(const Picture& picture, const Inks& inks, const TakeTotals& take)
{
    CountedRows rows(picture, inks);
    Progress progress("Measuring " + picture.Path(), picture.Height());
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        const std::span<const std::uint16_t> totals = rows.Count(row);
        if (take)
            take(row, 0, totals);
        progress.Advance(1);
    }
    return { std::uint64_t{ picture.Width() } * picture.Height(), rows.Separations(),
             rows.Totals() };
}

// ---- by runs

using ColourInks = std::array<std::uint8_t, 4>;

std::vector<ColourInks> InksOfColours(const Picture& picture)
{
    std::vector<ColourInks> inks(1); // indexes begin with 1
    for (unsigned int index = 1; index <= LineWorkRecord(picture).FileColorsNumber(); ++index)
        inks.push_back(InksOfColour(picture, index));
    return inks;
}

std::uint16_t TotalOf(const ColourInks& inks)
{
    return std::accumulate(inks.begin(), inks.end(), std::uint16_t{ 0 });
}

// Gives the total ink of runs in pieces, for a row of few runs may be very wide.
class RunTotals {
  public:
    RunTotals(const std::vector<ColourInks>& colours, const TakeTotals& take) : take_(take)
    {
        for (const ColourInks& inks : colours)
            totals_.push_back(TotalOf(inks));
        piece_.reserve(kPiecePixels);
    }

    void Give(std::uint32_t row, std::span<const LineWorkRun> runs)
    {
        std::uint32_t column = 0;
        for (const LineWorkRun& run : runs) {
            if (run.length == 0)
                continue;
            if (piece_.size() + run.length > kPiecePixels)
                column = GivePiece(row, column);
            piece_.insert(piece_.end(), run.length, totals_[run.colour]);
        }
        GivePiece(row, column);
    }

  private:
    static constexpr std::size_t kPiecePixels = 16384;

    // The column behind it.
    std::uint32_t GivePiece(std::uint32_t row, std::uint32_t column)
    {
        take_(row, column, piece_);
        column += static_cast<std::uint32_t>(piece_.size());
        piece_.clear();
        return column;
    }

    const TakeTotals& take_;
    std::vector<std::uint16_t> totals_; // of each colour
    std::vector<std::uint16_t> piece_;
};

InkFigures FiguresOf(const Inks& inks, const std::vector<ColourInks>& colours,
                     const std::vector<ColourUse>& uses)
{
    InkFigures figures;
    for (const std::string& name : inks.names)
        figures.separations.push_back({ name, InkCounts(kInkValues) });
    figures.totals.resize(inks.names.size() * kFullInk + 1);
    for (std::size_t index = 0; index < uses.size(); ++index) {
        const std::uint64_t pixels = uses[index].pixels;
        figures.pixels += pixels;
        figures.totals[TotalOf(colours[index])] += pixels;
        for (std::size_t i = 0; i < inks.separations.size(); ++i) {
            const auto ink = static_cast<std::size_t>(inks.separations[i]);
            figures.separations[i].counts[colours[index].at(ink)] += pixels;
        }
    }
    return figures;
}

InkFigures MeasureRuns(const Picture& picture, const Inks& inks, const TakeTotals& take)
{
    ShowTransparentAsPaper(picture);
    const std::vector<ColourInks> colours = InksOfColours(picture);
    RunTotals totals(colours, take);
    TakeRuns takeRuns;
    if (take)
        takeRuns = [&](std::uint32_t row, auto runs) { totals.Give(row, runs); };
    return FiguresOf(inks, colours, CountColours(picture, "Measuring", takeRuns));
}

} // namespace

unsigned int LeastOf(const InkCounts& counts)
{
    const auto found = std::find_if(counts.begin(), counts.end(), [](auto count) { return count; });
    return found == counts.end() ? 0 : static_cast<unsigned int>(found - counts.begin());
}

unsigned int GreatestOf(const InkCounts& counts)
{
    const auto found =
        std::find_if(counts.rbegin(), counts.rend(), [](auto count) { return count; });
    return found == counts.rend() ? 0 : static_cast<unsigned int>(counts.rend() - found - 1);
}

std::uint64_t SumOf(const InkCounts& counts)
{
    std::uint64_t sum = 0;
    for (std::size_t value = 0; value < counts.size(); ++value)
        sum += value * counts[value];
    return sum;
}

unsigned int Percentile999Of(const InkCounts& counts)
{
    const std::uint64_t pixels = std::accumulate(counts.begin(), counts.end(), std::uint64_t{ 0 });
    std::uint64_t above = 0;
    std::size_t value = counts.size();
    while (value > 0 && above + counts[value - 1] <= pixels / 1000)
        above += counts[--value];
    return value > 0 ? static_cast<unsigned int>(value - 1) : 0;
}

std::uint64_t PixelsOver(const InkCounts& counts, unsigned int percent)
{
    const std::size_t first = std::size_t{ percent } * kFullInk / 100 + 1;
    return first >= counts.size()
               ? 0
               : std::accumulate(counts.begin() + static_cast<std::ptrdiff_t>(first), counts.end(),
                                 std::uint64_t{ 0 });
}

Inks InksOf(const Picture& picture)
{
    if (picture.AsPage() != nullptr)
        throw FileFailure(picture.Path(), "a page has no ink of its own", {},
                          "Measure the pictures that it places; `tympan info FILE` names them.");
    picture.Rows(); // refuses a file without them
    return picture.AsTiff() != nullptr ? InksOfTiff(picture)
                                       : Named(picture, SeparationsOf(picture.Object()));
}

InkFigures MeasureInk(const Picture& picture, const TakeTotals& take)
{
    const Inks inks = InksOf(picture);
    return picture.AsLw() != nullptr ? MeasureRuns(picture, inks, take)
                                     : MeasureRows(picture, inks, take);
}

} // namespace tympan::tool
