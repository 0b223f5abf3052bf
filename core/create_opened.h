// The one way in which a format's `Create` makes an object and opens it.
#pragma once

#include "core/failure_guard.h"
#include "platform/text.h"

#include <memory>

namespace tympan {

/// Opens `picture` on a file and gives it to the caller, also when its opening failed: the object
/// tells. Null when there is no object, or when the opening threw a file or memory failure.
template <typename Picture>
Picture* CreateOpened(std::unique_ptr<Picture> picture, const CString& fileName, bool inputFile)
{
    static constexpr FailureRow kNothingMade[] = {
        { Caught::File, 0, nullptr },
        { Caught::Memory, 0, nullptr },
    };
    if (picture == nullptr)
        return nullptr;
    const bool made = Guarded(NoTrace(), kNothingMade, [&] {
        picture->OpenPictureFile(fileName, inputFile, false, nullptr);
    });
    return made ? picture.release() : nullptr;
}

} // namespace tympan
