// What the tests of files say about failures that are thrown as pointers.
#pragma once

#include "platform/failures.h"

#include <gtest/gtest.h>

namespace tympan::test {

/// The cause of the `CFileException*` that the work throws, -1 when it throws none. The failure is
/// destroyed.
template <typename Work>
int ThrownCause(Work&& work)
{
    try {
        work();
    } catch (CFileException* thrown) {
        const int cause = thrown->m_cause;
        thrown->Delete();
        return cause;
    }
    return -1;
}

} // namespace tympan::test
