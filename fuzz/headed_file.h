// The files of the house begin with 2048 bytes, of which a reader looks at few. An input holds these
// few and what is behind the 2048, so that each of its bytes has a meaning.
#pragma once

#include "core/header_layout.h"
#include "fuzz/drawn.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tympan::fuzz {

using FileBytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kHeadBytes = 2048;
inline constexpr std::size_t kCounts = 6; // of colours or entries, behind the common header
inline constexpr HeaderPlace kLookedAt[] = {
    kHeaderNlwMark,
    kHeaderFileType,
    { kHeaderUnitsCode.offset, kHeaderEnd + kCounts - kHeaderUnitsCode.offset },
};

/// The file that an input stands for. An input that ends in the header's bytes is a file that ends
/// there.
inline FileBytes HeadedFile(Input input)
{
    Drawn drawn(input);
    FileBytes file;
    for (const HeaderPlace& place : kLookedAt) {
        const Input bytes = drawn.Bytes(place.width);
        if (bytes.empty())
            return file;
        file.resize(place.offset);
        file.insert(file.end(), bytes.begin(), bytes.end());
    }
    if (drawn.IsEmpty())
        return file;
    const Input rest = drawn.Rest();
    file.resize(kHeadBytes);
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

/// The input that stands for a file, of which what isn't looked at is lost.
inline FileBytes HeadedInput(Input file)
{
    FileBytes input;
    const auto append = [&](std::size_t offset, std::size_t width) {
        const Input bytes = file.subspan(std::min(offset, file.size()));
        const Input kept = bytes.first(std::min(width, bytes.size()));
        input.insert(input.end(), kept.begin(), kept.end());
    };
    for (const HeaderPlace& place : kLookedAt)
        append(place.offset, place.width);
    append(kHeadBytes, file.size());
    return input;
}

} // namespace tympan::fuzz
