// What differs between two pictures of the same size and the same separations.
#pragma once

#include "canonical_picture.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace tympan::tool {

struct SeparationDifference {
    std::uint64_t samples = 0; ///< that differ
    unsigned int largest = 0;  ///< by how much one does at most, 1 to 255; 0 without any
};

/// A sample that differs, and what it is in both pictures.
struct DifferingSample {
    std::uint32_t row;
    std::uint32_t column;
    std::size_t separation; ///< by its place in canonical order
    std::uint8_t a;
    std::uint8_t b;
};

struct PictureDifference {
    std::uint64_t pixels = 0; ///< of which some sample differs
    /// Of the topmost row with any, of its leftmost such pixel, in canonical order.
    std::optional<DifferingSample> first;
    std::vector<SeparationDifference> separations; ///< in canonical order
};

/// Takes, of each pixel of a row, by how much that sample differs that differs most. Rows come from
/// the top down.
using TakeDifferences =
    std::function<void(std::uint32_t row, std::span<const std::uint8_t> differences)>;

/// Compares all samples, in step and in bands.
/// \param a,b of the same size and the same separations
/// \param take may be empty
/// \throws FileFailure as `CanonicalPicture`.
PictureDifference Compare(CanonicalPicture& a, CanonicalPicture& b, const TakeDifferences& take);

} // namespace tympan::tool
