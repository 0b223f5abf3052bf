// Runs of the command that must fail, as tables.
#pragma once

#include "tools/command_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <span>

namespace tympan::test {

struct RefusalCase {
    const char* arguments; // as RunWords takes them
    int status;
    const char* told; // on standard error
};

/// Each fails as its case says, and leaves the folder with as many files as it has.
inline void ExpectRefused(std::span<const RefusalCase> cases, const TemporaryFolder& folder)
{
    const std::size_t entries = folder.Entries();
    for (const RefusalCase& asked : cases) {
        SCOPED_TRACE(asked.arguments);
        const Outcome outcome = RunWords(asked.arguments, folder);
        EXPECT_EQ(outcome.status, asked.status) << outcome.err;
        EXPECT_THAT(outcome.err, testing::HasSubstr(asked.told));
        EXPECT_THAT(outcome.err, testing::StartsWith("tympan: "));
        EXPECT_EQ(folder.Entries(), entries) << "something was left behind";
    }
}

} // namespace tympan::test
