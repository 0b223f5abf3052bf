#include "palette_use.h"

#include "progress.h"

namespace tympan::tool {

std::vector<ColourUse> CountColours(const Picture& picture, const std::string& work,
                                    const TakeRuns& take)
{
    std::vector<ColourUse> uses(std::size_t{ LineWorkRecord(picture).FileColorsNumber() } + 1);
    LineWorkRows rows(picture);
    Progress progress(work + " " + picture.Path(), picture.Height());
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        const std::span<const LineWorkRun> runs = rows.Row(row);
        for (const LineWorkRun& run : runs) {
            if (run.length == 0) // of these the index may be none of the table's
                continue;
            ++uses[run.colour].runs;
            uses[run.colour].pixels += run.length;
        }
        if (take)
            take(row, runs);
        progress.Advance(1);
    }
    return uses;
}

} // namespace tympan::tool
