// The platform's basic types under the platform's names, with the platform's widths on every
// machine: what is 32 bits there is 32 bits here, `unsigned long` in the interface apart.
#pragma once

#include <cstdint>

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;

// Other libraries' headers make macros of these two names.
#if !defined(FALSE)
inline constexpr BOOL FALSE = 0;
#endif
#if !defined(TRUE)
inline constexpr BOOL TRUE = 1;
#endif
