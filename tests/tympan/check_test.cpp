// The frame of the checks: the list of identifiers, verdicts, and how many findings are told.
#include "core/row_access.h"
#include "support/checking.h"
#include "support/ct_samples.h"
#include "support/lw_samples.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <random>

namespace {

using namespace tympan::test;
using tympan::CheckRule;
using tympan::Verdict;

// An identifier that goes from the list, or comes twice, would mean two things in old and new logs.
TEST(CheckRules, NumbersOfAFormatGoUpFromOneWithoutAGap)
{
    std::map<std::string_view, int> last;
    for (const CheckRule* const rule : tympan::CheckRules()) {
        SCOPED_TRACE(rule->id);
        const std::string_view family = rule->id.substr(0, rule->id.rfind('-') + 1);
        const std::string number = std::to_string(++last[family]);
        EXPECT_EQ(rule->id, std::string(family) + std::string(4 - number.size(), '0') + number);
        EXPECT_TRUE(family.starts_with("TYM-"));
        EXPECT_FALSE(rule->title.empty());
        for (const std::string_view text : { rule->meaning, rule->remedy })
            EXPECT_TRUE(text.ends_with('.')) << text;
    }
    EXPECT_TRUE(last.contains("TYM-FILE-"));
    EXPECT_TRUE(last.contains("TYM-HEAD-"));
    EXPECT_TRUE(last.contains("TYM-CT-"));
    EXPECT_TRUE(last.contains("TYM-LW-"));
}

TEST(Check, AFileThatIsNoPictureIsUndetermined)
{
    for (const std::string& bytes : { std::string(), std::string("a letter"),
                                      std::string(5000, '\0'), std::string(5000, ' ') }) {
        SCOPED_TRACE(bytes.size());
        const auto checked = CheckBytes({ bytes.begin(), bytes.end() });
        EXPECT_EQ(checked.result.verdict, Verdict::Undetermined);
        EXPECT_EQ(checked.result.format, "");
        EXPECT_EQ(checked.findings, std::vector<std::string>{ "FILE-0002" });
    }
}

TEST(Check, AFileThatCannotBeReadIsUndetermined)
{
    for (const char* const path : { "/no/such/file", "/tmp", "/dev/null", "" }) {
        SCOPED_TRACE(path);
        const CheckedBytes checked = CheckPath(path);
        EXPECT_EQ(checked.result.verdict, Verdict::Undetermined);
        EXPECT_EQ(checked.findings, std::vector<std::string>{ "FILE-0001" });
    }
}

TEST(Check, ANamedFormatIsTakenWhateverTheFileLooksLike)
{
    const std::vector<unsigned char> zeros(5000, 0);
    for (const char* const format : { "CT", "LW" }) {
        EXPECT_EQ(CheckBytes(zeros, format).result.format, format);
        EXPECT_EQ(CheckBytes(zeros, format).result.verdict, Verdict::Invalid);
    }
    EXPECT_EQ(CheckBytes(zeros, "unheard of").findings, std::vector<std::string>{ "FILE-0002" });
}

// Each operation that fails in turn, and all behind it. Closing comes when the verdict stands.
TEST(Check, ADiskThatFailsNeverGivesAValidFile)
{
    const std::vector<unsigned char> pictures[] = { CtSample{}.Bytes(), LwPicture{}.Bytes() };
    for (std::size_t i = 0; i < 6; ++i) {
        MemoryFileSystem memory;
        memory.Put("file", AsText(pictures[i % 2]));
        WatchedFileSystem files(memory);
        const tympan::ScopedFileSystem scoped(files);
        constexpr FileOperation kKinds[] = { FileOperation::open, FileOperation::readAt,
                                             FileOperation::size };
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(i * 1000 + number);
            files.Fail(kKinds[i / 2], number, EIO);
            const CheckedBytes checked = CheckPath("file");
            if (!files.HasFailed()) {
                EXPECT_GT(number, 1U);
                break;
            }
            EXPECT_EQ(checked.result.verdict, Verdict::Undetermined);
            EXPECT_TRUE(checked.findings.back().starts_with("FILE-0001"));
        }
    }
}

TEST(Check, OfEachRuleAHundredAreToldAndAllAreCounted)
{
    LwPicture picture{ .width = 5, .height = 151 };
    picture.rows.assign(151, { { 3, 5 } });
    picture.rows[150] = { { 1, 4 } };
    const CheckedBytes checked = CheckBytes(picture.Bytes());
    std::map<std::string_view, std::uint64_t> counts;
    for (const auto& one : checked.result.counts)
        counts[one.rule->id] = one.count;
    EXPECT_EQ(counts["TYM-LW-0007"], 150U);
    EXPECT_EQ(counts["TYM-LW-0005"], 1U);
    const auto told =
        std::count_if(checked.findings.begin(), checked.findings.end(),
                      [](const std::string& one) { return one.starts_with("LW-0007"); });
    EXPECT_EQ(told, 100);
    EXPECT_EQ(checked.result.FindingsTotal(), 150U + 1U + checked.result.counts.size() - 2);
}

TEST(Check, SaysHowFarItIs)
{
    MemoryFileSystem files;
    const auto bytes = LwPicture{}.Bytes();
    files.Put("file", AsText(bytes));
    const tympan::ScopedFileSystem scoped(files);
    std::uint64_t reached = 0;
    tympan::CheckOptions options;
    options.progress = [&](std::uint64_t done, std::uint64_t total) {
        EXPECT_GE(done, reached);
        EXPECT_EQ(total, bytes.size());
        reached = done;
    };
    CheckPath("file", options);
    EXPECT_EQ(reached, bytes.size());
}

// Changed bytes of any kind, most of them in the header: what a check calls valid, the library reads.
TEST(Check, WhatIsCalledValidOpensAndHasItsRows)
{
    const std::vector<unsigned char> pictures[] = { CtSample{}.Bytes(), LwPicture{}.Bytes() };
    std::mt19937 random(7);
    int valid = 0;
    for (int i = 0; i < 3000; ++i) {
        std::vector<unsigned char> bytes = pictures[i % 2];
        for (auto changes = random() % 4; changes != 0; --changes) {
            const std::size_t at =
                random() % 3 != 0 ? 1024 + random() % 57 : random() % bytes.size();
            bytes[at] ^= static_cast<unsigned char>(1U << random() % 8);
        }
        MemoryFileSystem files;
        files.Put("file", AsText(bytes));
        const tympan::ScopedFileSystem scoped(files);
        const CheckedBytes checked = CheckPath("file");
        EXPECT_EQ(checked.result.counts.empty(), checked.result.verdict == Verdict::Valid);
        if (!IsCalledValid(checked))
            continue;
        ++valid;
        const tympan::OpenedPicture opened = tympan::OpenAnyPicture("file");
        ASSERT_TRUE(opened.isOpen) << i;
        EXPECT_EQ(opened.format, checked.result.format) << i;
        auto& rows = dynamic_cast<PictureFileInterface&>(*opened.picture);
        const auto height = static_cast<unsigned int>(rows.FileHeightInPixels());
        std::vector<unsigned char> pixels(rows.FileWidthInPixels() * height);
        unsigned int done = 0;
        rows.GetPictureRows(pixels.data(), 0, height, done, nullptr, rows.FileSeparation(0),
                            static_cast<unsigned long>(pixels.size()), false);
        EXPECT_EQ(rows.TraceStatus(), 0U) << i;
    }
    EXPECT_GT(valid, 500);
    EXPECT_LT(valid, 2500);
}

} // namespace
