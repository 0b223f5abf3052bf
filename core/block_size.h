// How much of a file the readers take at a time.
#pragma once

#include <cstddef>

namespace tympan {

/// Bytes of a reader's block. Builds that hunt faults at block borders set it to a few bytes, so
/// that small files cross many of them.
#if defined(TYMPAN_BLOCK_SIZE)
inline constexpr std::size_t kBlockBytes = TYMPAN_BLOCK_SIZE;
#else
inline constexpr std::size_t kBlockBytes = 512U << 10U;
#endif

} // namespace tympan
