// The one way in which a format's `Create` makes an object and opens it.
#pragma once

#include "core/failure_guard.h"
#include "platform/text.h"

#include <memory>

namespace tympan {

/// Opens the object that `make` gives in a smart pointer on a file, and gives it to the caller, also
/// when its opening failed: the object tells. Null when making or opening it threw a file or memory
/// failure.
template <typename Make>
auto* CreateOpened(Make&& make, const CString& fileName, bool inputFile)
{
    static constexpr FailureRow kNothingMade[] = {
        { Caught::File, 0, nullptr },
        { Caught::Memory, 0, nullptr },
    };
    decltype(make()) picture;
    const bool made = Guarded(NoTrace(), kNothingMade, [&] {
        picture = make();
        picture->OpenPictureFile(fileName, inputFile, false, nullptr);
    });
    return made ? picture.release() : nullptr;
}

} // namespace tympan
