// How much of a line-work picture has each of its colours, counted by runs.
#pragma once

#include "line_work_rows.h"
#include "picture.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

/// Where a colour of the table occurs.
struct ColourUse {
    std::uint64_t runs = 0; ///< those of length 0 don't count
    std::uint64_t pixels = 0;
};

/// Takes the runs of a row while they are counted.
using TakeRuns = std::function<void(std::uint32_t row, std::span<const LineWorkRun> runs)>;

/// Walks the rows once, run by run, whatever their width.
/// \param picture line work
/// \param work what the person is told of it, as "Measuring"
/// \param take may be empty
/// \return the use of each colour, by its index from 1; the place 0 is none.
/// \throws FileFailure for a row that isn't sound.
std::vector<ColourUse> CountColours(const Picture& picture, const std::string& work,
                                    const TakeRuns& take = {});

} // namespace tympan::tool
