// C libraries that leave a failure by a jump, which may not pass a frame whose objects have
// destructors.
#pragma once

#include <csetjmp>

namespace tympan::tool {

/// Runs calls of such a library, which own nothing, and ends a jump to `place`.
/// \return whether they came back without one.
template <typename Calls>
bool ComesBack(std::jmp_buf& place, const Calls& calls) noexcept
{
    if (setjmp(place) != 0) // NOLINT(cert-err52-cpp): the way of those libraries to fail
        return false;
    calls();
    return true;
}

} // namespace tympan::tool
