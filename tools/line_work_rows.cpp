#include "line_work_rows.h"

#include "separation_bands.h"
#include "separations.h"

#include <algorithm>

namespace tympan::tool {

namespace {

constexpr unsigned char kNoInk = 255;
constexpr std::size_t kRunBytes = 2;
constexpr std::size_t kDelimiterBytes = 2; // in front of a row

} // namespace

LineWorkRows::LineWorkRows(const Picture& picture)
    : picture_(picture), lineWork_(RequireLineWork(picture, "taken as runs"))
{}

std::span<const LineWorkRun> LineWorkRows::Row(std::uint32_t row)
{
    bytes_.resize(lineWork_.GetLWBufferSize(row, row, 1, 0, false));
    const unsigned int count =
        bytes_.empty() ? 0 : lineWork_.GetOriginalPictureRow(bytes_.data(), row, false);
    if (count == 0)
        throw RowsFailure(picture_, { row, row + 1 });
    const unsigned int colours = LineWorkRecord(picture_).FileColorsNumber();
    runs_.clear();
    for (std::size_t run = 0; run < count; ++run) {
        const std::uint8_t* const bytes = &bytes_[kDelimiterBytes + run * kRunBytes];
        if (bytes[1] != 0 && (bytes[0] == 0 || bytes[0] > colours))
            throw FileFailure(picture_.Path(),
                              "row " + std::to_string(row) + " has a colour that its table hasn't",
                              {}, kCheckAdvice);
        runs_.push_back({ bytes[0], bytes[1] });
    }
    return runs_;
}

const LwPictureParameters& LineWorkRecord(const Picture& picture)
{
    return dynamic_cast<const LwPictureParameters&>(*picture.Object().PictureParams());
}

std::array<std::uint8_t, 4> InksOfColour(const Picture& picture, unsigned int index)
{
    std::array<std::uint8_t, 4> inks{};
    for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
        inks.at(static_cast<std::size_t>(separation)) = static_cast<std::uint8_t>(
            kNoInk -
            LineWorkRecord(picture).GetColor(static_cast<unsigned char>(index - 1), separation));
    return inks;
}

std::optional<unsigned int> PaperIndex(const LwPictureParameters& record)
{
    constexpr std::array kInks{ Cyan, Magenta, Yellow, Black };
    for (unsigned int row = 0; row < record.FileColorsNumber(); ++row)
        if (std::all_of(kInks.begin(), kInks.end(), [&](ColorSeparationType separation) {
                return record.GetColor(static_cast<unsigned char>(row), separation) == kNoInk;
            }))
            return row + 1;
    return std::nullopt;
}

} // namespace tympan::tool
