#include "core/resampling.h"

#include "core/whole_numbers.h"

#include <algorithm>

namespace tympan {

std::optional<std::uint64_t> RoundedLength(double length)
{
    constexpr double kNoMemoryHolds = 9223372036854775808.0; // 2 to the 63rd
    if (!(length < kNoMemoryHolds))
        return std::nullopt;
    return CutToWhole<std::uint64_t>(length + 0.5);
}

void Resample(const unsigned char* row, std::uint64_t width, double ratio, unsigned char* output,
              std::uint64_t outputWidth)
{
    if (ratio == 1.0 && outputWidth <= width) {
        std::copy_n(row, outputWidth, output);
        return;
    }
    const double step = 1.0 / ratio;
    double position = 0.0;
    for (std::uint64_t i = 0; i < outputWidth; ++i) {
        // Many steps add up their error.
        output[i] = row[std::min(CutToWhole<std::uint64_t>(position), width - 1)];
        position += step;
    }
}

} // namespace tympan
