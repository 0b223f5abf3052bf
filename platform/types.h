// The platform's basic types under the platform's names, with the platform's widths on every
// machine: what is 32 bits there is 32 bits here, `unsigned long` in the interface apart.
#pragma once

#include <cstdint>

using BOOL = int;                ///< `FALSE`, or any other value for true
using BYTE = std::uint8_t;       ///< 8 bits without a sign
using WORD = std::uint16_t;      ///< 16 bits without a sign
using DWORD = std::uint32_t;     ///< 32 bits without a sign
using LONG = std::int32_t;       ///< 32 bits with a sign
using UINT = std::uint32_t;      ///< 32 bits without a sign
using LONGLONG = std::int64_t;   ///< 64 bits with a sign
using ULONGLONG = std::uint64_t; ///< 64 bits without a sign

// Other libraries' headers make macros of these two names.
#if !defined(FALSE)
inline constexpr BOOL FALSE = 0; ///< no
#endif
#if !defined(TRUE)
inline constexpr BOOL TRUE = 1; ///< yes
#endif
