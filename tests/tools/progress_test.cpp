// The line of progress, its text and what a terminal is sent of it.
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/progress_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace tympan::test {
namespace {

using tool::ProgressUnit;

struct TextCase {
    const char* name;
    std::uint64_t done, total;
    ProgressUnit unit;
    double seconds;
    const char* text;
};

constexpr std::uint64_t kMega = 1000000;

const TextCase kTextCases[] = {
    { "bytes", 4200 * kMega, 10000 * kMega, ProgressUnit::Bytes, 14.0, "42%, 300 MB/s, 20 s left" },
    { "few bytes", 90, 100, ProgressUnit::Bytes, 10.0, "90%, 9.0 B/s, 2 s left" },
    { "unit changes before four digits", 9996, 19992, ProgressUnit::Bytes, 10.0,
      "50%, 1.0 kB/s, 10 s left" },
    { "rows", 2600, 10400, ProgressUnit::Rows, 1.0, "25%, 2600 rows/s, 3 s left" },
    { "slow rows", 1, 3, ProgressUnit::Rows, 2.0, "33%, 0.5 rows/s, 4 s left" },
    { "shares have no speed", 1, 3, ProgressUnit::Shares, 2.0, "33%, 4 s left" },
    { "last moment", 999, 1000, ProgressUnit::Rows, 1.0, "99%, 999 rows/s, 1 s left" },
    { "a minute", 1, 61, ProgressUnit::Shares, 1.0, "1%, 1 min 0 s left" },
    { "some minutes", 1, 201, ProgressUnit::Shares, 1.0, "0%, 3 min 20 s left" },
    { "hours", 1, 3901, ProgressUnit::Shares, 1.0, "0%, 1 h 5 min left" },
    { "beyond all hours", 1, UINT64_MAX, ProgressUnit::Shares, 1.0, "0%, days left" },
    { "nothing done", 0, 10, ProgressUnit::Rows, 5.0, "0%" },
    { "no time passed", 5, 10, ProgressUnit::Rows, 0.0, "50%" },
    { "all done", 10, 10, ProgressUnit::Rows, 5.0, "100%, 2.0 rows/s" },
    { "more done than there was", 20, 10, ProgressUnit::Rows, 5.0, "100%, 2.0 rows/s" },
};

TEST(Progress, TellsShareSpeedAndTimeLeft)
{
    for (const TextCase& one : kTextCases)
        EXPECT_EQ(tool::ProgressText({ one.done, one.total, one.unit,
                                       std::chrono::duration<double>(one.seconds) }),
                  one.text)
            << one.name;
}

TEST(Progress, IsDrawnOnATerminalUnlessQuiet)
{
    constexpr std::uint32_t kNoisySide = 2000; // slow to compress
    const CtFolder folder(RandomCt(kNoisySide, kNoisySide));
    EXPECT_THAT(RunOnTerminal({ "preview", folder / "a.ct", "-o", folder / "a.png" }),
                testing::ContainsRegex("a\\.ct: [0-9]+%, [0-9.]+ rows/s, [0-9]+ s left"));
    EXPECT_EQ(RunOnTerminal({ "preview", "--quiet", folder / "a.ct", "-o", folder / "a.png" }), "");
}

} // namespace
} // namespace tympan::test
