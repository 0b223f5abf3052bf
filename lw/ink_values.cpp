#include "lw/ink_values.h"

#include "core/failures.h"
#include "core/pixel_colour.h"
#include "lw/lw_parameters.h"
#include "lw/run_reader.h"

#include <algorithm>

namespace tympan {

namespace {

const InkForm& Fastest()
{
    static const InkForm& form = InkForms().front();
    return form;
}

} // namespace

void RequireSeparation(ColorSeparationType separation)
{
    if (!PictureParameters::IsSeparationIndexLegal(static_cast<unsigned int>(separation)))
        throw new IllegalSeparationException;
}

void RequireColour(int index, unsigned int colours)
{
    if (index < 1 || static_cast<unsigned int>(index) > colours)
        throw new IllegalColorIndexException;
}

InkValues::InkValues(const LwPictureParameters& record, ColorSeparationType separation)
    : separation_(separation), colours_(record.TableColorsNumber())
{
    values_[0] = kNoInk;
    for (unsigned int row = 0; row < colours_; ++row)
        values_[row + 1] = record.GetColor(static_cast<std::uint8_t>(row), separation);
}

bool InkValues::HasAll(std::span<const Run> runs) const
{
    return PictureParameters::IsSeparationIndexLegal(static_cast<unsigned int>(separation_)) &&
           AllNameColours(runs, colours_);
}

std::uint8_t InkValues::Of(const Run& run, RunReader& reader) const
{
    const bool hasPlate =
        PictureParameters::IsSeparationIndexLegal(static_cast<unsigned int>(separation_));
    if (!hasPlate || !(IsDelimiter(run) || AllNameColours({ &run, 1 }, colours_))) {
        reader.StandBehind(run);
        RequireSeparation(separation_);
        RequireColour(run.index, colours_);
    }
    return values_[run.index];
}

std::uint8_t* InkValues::Expand(const RunStretch& stretch, std::span<std::uint8_t> out,
                                RunReader& reader) const
{
    if (stretch.pixels <= out.size() && HasAll(stretch.runs))
        return Fastest().expand(stretch, values_, out.data());
    std::uint8_t* at = out.data();
    for (const Run& run : stretch.runs) {
        const auto room = static_cast<std::size_t>(out.data() + out.size() - at);
        at = std::fill_n(at, std::min<std::size_t>(run.length, room), Of(run, reader));
    }
    return at;
}

void InkValues::Translate(std::span<const Run> runs, RunOrder order, std::uint8_t*& out,
                          RunReader& reader) const
{
    if (HasAll(runs)) {
        out = Fastest().translate(runs, values_, colours_, order, out);
        return;
    }
    for (const Run& run : runs)
        out = StoreRun(Of(run, reader), run.length, order, out);
}

} // namespace tympan
