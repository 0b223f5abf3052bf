// What both ways of showing a CT picture share, on a context and in a bitmap.
#pragma once

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/picture_parameters.h"

namespace tympan {

inline constexpr FailureRow kCtDisplayFailures[] = {
    { Caught::FileCorrupted, tympan::code::kCtCorrupted, nullptr },
    { Caught::Anything, tympan::code::kCtUnexpected,
      "CTInterface: Error Extracting CT RawBuffer, aborting!" },
};

/// The plates of the colour picture, in the order of its rule.
inline constexpr ColorSeparationType kCtColour[] = { Cyan, Magenta, Yellow, Black };

} // namespace tympan
