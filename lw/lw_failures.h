// What the operations on rows of line work leave of the failures that they catch.
#pragma once

#include "core/failure_codes.h"
#include "core/failure_guard.h"

namespace tympan {

inline constexpr char kLwNotOpened[] = "LWInterface:\n Error Opening LineWork file, aborting!";
inline constexpr char kLwNotExtracted[] =
    "LWInterface: Error Extracting LineWork RawBuffer, aborting!";

/// Of the operations that prove what they read: rows in ranges, original rows, run streams, display.
inline constexpr FailureRow kLwRowFailures[] = {
    { Caught::FileCorrupted, code::kLwCorrupted, nullptr },
    { Caught::File, code::kFileFailed, nullptr },
    { Caught::Anything, code::kLwUnexpected, kLwNotExtracted },
};

/// Of the sizes of run streams.
inline constexpr FailureRow kLwSizeFailures[] = {
    { Caught::Anything, code::kFileFailed,
      "LWInterface: Error counting LW buffer size, aborting!" },
};

/// A file that can't be opened or whose header is refused.
inline constexpr FailureRow kLwFileRefused{ Caught::Anything, code::kFileFailed,
                                            "LW File Interface:\n:Error Opening file, aborting!" };

} // namespace tympan
