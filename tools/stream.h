// What `tympan stream` is asked for, and the form of it that a file of its own makes.
#pragma once

#include "picture.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tympan::tool {

struct StreamOptions {
    std::string file;
    std::string asFormat;
    std::string output;
    std::string offsets;
    std::string separation;
    std::string lut;
    std::uint32_t copies = 1;
    std::uint32_t gap = 0;
    std::optional<unsigned int> white; ///< an ink value; with `indexes` an index
    bool lengthFirst = false;
    bool indexes = false;
    bool transparentAsPaper = false;
    std::uint64_t maxMemory = std::uint64_t{ 4 } << 30U; ///< bytes
};

/// Writes the stream of colour indexes, which serves all separations, with the tables that make ink
/// values of them.
/// \throws UsageFailure; FileFailure.
void StreamIndexes(const Picture& picture, const StreamOptions& options);

} // namespace tympan::tool
