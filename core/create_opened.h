// The one way in which a format's `Create` makes an object and opens it.
#pragma once

#include "core/failure_guard.h"
#include "platform/text.h"

#include <memory>
#include <utility>

namespace tympan {

/// The failures at which most formats give no object; others pass on.
inline constexpr FailureRow kNotCreated[] = {
    { Caught::File, 0, nullptr },
    { Caught::Memory, 0, nullptr },
};

/// Gives the caller the object that `make` gives in a smart pointer, if `open(object)` says that it
/// is to be kept. Null otherwise, and when making or opening it threw a failure of the table.
template <typename Make, typename Open>
auto* CreateIfKept(Make&& make, Open&& open, FailureTable failures = kNotCreated)
{
    decltype(make()) picture;
    bool kept = false;
    Guarded(NoTrace(), failures, [&] {
        picture = make();
        kept = open(*picture);
    });
    return kept ? picture.release() : nullptr;
}

/// The same for an object that is kept also when its opening failed: the object tells.
template <typename Make>
auto* CreateOpened(Make&& make, const CString& fileName, bool inputFile,
                   FailureTable failures = kNotCreated)
{
    return CreateIfKept(
        std::forward<Make>(make),
        [&](auto& picture) {
            picture.OpenPictureFile(fileName, inputFile, false, nullptr);
            return true;
        },
        failures);
}

} // namespace tympan
