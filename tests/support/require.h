// A claim that must hold whatever the bytes of a file are.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace tympan::test {

/// Ends the program when a claim doesn't hold, in a fuzz target as in a test.
inline void Require(bool holds, const char* claim)
{
    if (holds)
        return;
    std::fprintf(stderr, "Not so: %s\n", claim);
    std::abort();
}

} // namespace tympan::test
