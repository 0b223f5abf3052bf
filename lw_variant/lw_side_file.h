// The side file of line work: its name, and the size of a run stream that it keeps.
//
//   0      a size in bytes as decimal text, a signed number of 32 bits
//   then   zeros, up to 100 bytes in all
//
// A file of 0 bytes has no size.
#pragma once

#include "platform/text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tympan {

inline constexpr std::size_t kLwSideFileBytes = 100;
using LwSideFileContent = std::array<char, kLwSideFileBytes>;

CString LwSideFileName(const CString& pictureName);

/// What a side file holds that keeps `size`: 0 for a size that 32 bits don't hold.
std::uint32_t KeptLwSize(std::uint64_t size);
LwSideFileContent LwSideFileOf(std::uint64_t size);

/// The number at the start of the text, as `atol` finds it; 0 without one, and for one that neither
/// a signed nor an unsigned number of 32 bits holds.
std::uint32_t LwSizeIn(std::string_view content);

/// Whether these are the bytes of a side file of line work, one without a size included.
bool IsLwSideFile(std::string_view content);

} // namespace tympan
