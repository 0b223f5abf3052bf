#include "diff_measure.h"

#include "progress.h"

#include <algorithm>

namespace tympan::tool {

namespace {

using Row = std::span<const std::uint8_t>;

std::uint8_t Distance(std::uint8_t one, std::uint8_t other)
{
    return one < other ? other - one : one - other;
}

class Comparison {
  public:
    Comparison(CanonicalPicture& a, CanonicalPicture& b) : a_(a), b_(b), ofPixels_(a.Width())
    {
        found_.separations.resize(a.Names().size());
    }

    // Gives, of each pixel, the greatest difference.
    Row CompareRow(std::uint32_t row)
    {
        std::fill(ofPixels_.begin(), ofPixels_.end(), std::uint8_t{ 0 });
        bool differs = false;
        for (std::size_t i = 0; i < found_.separations.size(); ++i) {
            const Row one = a_.Row(row, i);
            const Row other = b_.Row(row, i);
            if (std::equal(one.begin(), one.end(), other.begin())) // much faster than counting
                continue;
            differs = true;
            Count(one, other, found_.separations[i]);
        }
        if (differs)
            CountPixels(row);
        return ofPixels_;
    }

    const PictureDifference& Found() const { return found_; }

  private:
    void Count(Row one, Row other, SeparationDifference& separation)
    {
        std::uint8_t largest = 0;
        for (std::size_t x = 0; x < one.size(); ++x) {
            const std::uint8_t distance = Distance(one[x], other[x]);
            separation.samples += distance != 0 ? 1U : 0U;
            largest = std::max(largest, distance);
            ofPixels_[x] = std::max(ofPixels_[x], distance);
        }
        separation.largest = std::max<unsigned int>(separation.largest, largest);
    }

    void CountPixels(std::uint32_t row)
    {
        const auto same = std::count(ofPixels_.begin(), ofPixels_.end(), std::uint8_t{ 0 });
        found_.pixels += ofPixels_.size() - static_cast<std::size_t>(same);
        if (!found_.first)
            found_.first = FirstOf(row);
    }

    // Of a row that has one.
    DifferingSample FirstOf(std::uint32_t row)
    {
        const auto pixel = std::find_if(ofPixels_.begin(), ofPixels_.end(),
                                        [](std::uint8_t distance) { return distance != 0; });
        const auto column = static_cast<std::uint32_t>(pixel - ofPixels_.begin());
        DifferingSample sample{ row, column, 0, 0, 0 };
        for (;; ++sample.separation) {
            sample.a = a_.Row(row, sample.separation)[column];
            sample.b = b_.Row(row, sample.separation)[column];
            if (sample.a != sample.b)
                return sample;
        }
    }

    CanonicalPicture& a_;
    CanonicalPicture& b_;
    std::vector<std::uint8_t> ofPixels_; // of the row in hand
    PictureDifference found_;
};

} // namespace

PictureDifference Compare(CanonicalPicture& a, CanonicalPicture& b, const TakeDifferences& take)
{
    Comparison comparison(a, b);
    Progress progress("Comparing " + a.Path() + " with " + b.Path(), a.Height());
    for (std::uint32_t row = 0; row < a.Height(); ++row) {
        const Row differences = comparison.CompareRow(row);
        if (take)
            take(row, differences);
        progress.Advance(1);
    }
    a.RequireStillWhole();
    b.RequireStillWhole();
    return comparison.Found();
}

} // namespace tympan::tool
