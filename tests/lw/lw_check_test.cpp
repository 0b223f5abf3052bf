// The check of LW files: a change of the bytes, and what is told of it; and bytes of any kind.
#include "support/checking.h"
#include "support/lw_samples.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tympan::test;
using tympan::Verdict;

// Rows of 8 bytes from 2084 on; 10 and 4 pixels per inch along width and height, made 10 and 10.
LwPicture Sample()
{
    LwPicture picture{ .width = 10, .height = 4, .inchesHigh = 0.4, .inchesWide = 1.0 };
    picture.rows.assign(4, { { 1, 4 }, { 2, 6 } });
    return picture;
}

const CheckCase kCases[] = {
    { "nothing", {}, {} },
    { "another type", { { 80, 2, "CT" } }, { "LW-0001 byte 80" } },
    { "ends behind the header", { { 1080, kToTheEnd, "" } }, { "LW-0002 byte 1080" } },
    { "ends in the colours", { { 2060, kToTheEnd, "" } }, { "LW-0002 byte 2060" } },
    { "another colour number", { { 2066, 1, "\7" } }, { "LW-0003 byte 2066" } },
    { "a mask of two", { { 1027, 1, "\3" } }, { "HEAD-0003 byte 1027" } },
    { "first start", { { 2084, 1, "\1" } }, { "LW-0004 row 0 byte 2084" } },
    { "a start damaged", { { 2101, 1, "\1" } }, { "LW-0004 row 2 byte 2100" } },
    { "a start lost", { { 2100, 2, "" } }, { "LW-0004 row 2 byte 2100" } },
    { "an end damaged", { { 2098, 2, { 0, 1 } } }, { "LW-0006 row 1 byte 2098" } },
    { "an end lost", { { 2098, 2, "" } }, { "LW-0004 row 2 byte 2100" } },
    { "a run too short", { { 2095, 1, "\3" } }, { "LW-0005 row 1 byte 2098" } },
    { "a run too long", { { 2095, 1, "\5" } }, { "LW-0006 row 1 byte 2096" } },
    { "a run far too long", { { 2095, 1, "\xC8" } }, { "LW-0006 row 1 byte 2094" } },
    { "a run lost", { { 2094, 2, "" } }, { "LW-0005 row 1 byte 2096" } },
    { "a run of zeros", { { 2094, 2, { 0, 0 } } }, { "LW-0005 row 1 byte 2094" } },
    { "a last run of zeros", { { 2096, 2, { 0, 0 } } }, { "LW-0005 row 1 byte 2096" } },
    { "a run more", { { 2098, 0, "\1\3" } }, { "LW-0006 row 1 byte 2098" } },
    { "an empty run", { { 2094, 0, { 1, 0 } } }, { "LW-0009 row 1 byte 2094" } },
    { "an empty run at the end", { { 2098, 0, { 1, 0 } } }, { "LW-0006 row 1 byte 2098" } },
    { "no such colour", { { 2096, 1, "\3" } }, { "LW-0007 row 1 byte 2096" } },
    { "no such colours", { { 2094, 3, "\3\4\3" } }, { "LW-0007 row 1 byte 2094" } },
    { "no colour", { { 2094, 1, { 0 } } }, { "LW-0008 row 1 byte 2094" } },
    { "no such colour in the last row", { { 2112, 1, "\3" } }, { "LW-0007 row 3 byte 2112" } },
    { "two bad rows",
      { { 2087, 1, "\3" }, { 2105, 1, "\7" } },
      { "LW-0005 row 0 byte 2090", "LW-0006 row 2 byte 2104" } },
    { "a byte lost",
      { { 2095, 1, "" } },
      { "LW-0007 row 1 byte 2096", "LW-0009 row 1 byte 2096", "LW-0005 row 1 byte 2098" } },
    { "a byte gained",
      { { 2095, 0, "\2" } },
      { "LW-0007 row 1 byte 2096", "LW-0009 row 1 byte 2098", "LW-0005 row 1 byte 2100" } },
    { "where rows meet",
      { { 2098, 4, "\1\1\1\1" } },
      { "LW-0006 row 1 byte 2098", "LW-0010 row 3 byte 2116" } },
    { "ends in a row", { { 2103, kToTheEnd, "" } }, { "LW-0010 row 2 byte 2103" } },
    { "ends between rows", { { 2108, kToTheEnd, "" } }, { "LW-0010 row 3 byte 2108" } },
    { "the last end is missing", { { 2114, 2, "" } }, { "LW-0010 row 3 byte 2114" } },
    { "more rows than any file",
      { { 1056, 12, "+02147483647" } },
      { "HEAD-0011 byte 1028", "LW-0010 row 4 byte 2116" } },
    { "rows wider than any",
      { { 1068, 12, "+02147483647" } },
      { "HEAD-0011 byte 1028", "LW-0005 row 0 byte 2090", "LW-0005 row 1 byte 2098",
        "LW-0005 row 2 byte 2106", "LW-0005 row 3 byte 2114" } },
    { "bytes behind", { { 2116, 0, "abc" } }, { "LW-0011 byte 2116" } },
};

TEST(LwCheck, TellsEachFaultAndItsPlace)
{
    for (const CheckCase& one : kCases) {
        SCOPED_TRACE(one.name);
        const CheckedBytes checked = CheckBytes(Edited(Sample().Bytes(), one.edits));
        EXPECT_EQ(checked.findings, one.findings);
        EXPECT_EQ(checked.result.format, "LW");
    }
}

TEST(LwCheck, SaysWhatWasFoundAndExpected)
{
    const auto bytes =
        Edited(Sample().Bytes(), { { 2094, 3, "\3\4\3" }, { 2105, 1, "\7" }, { 2114, 0, "\1\1" } });
    const std::vector<std::string> expected{
        "The run names colour 3; the table has 2 colours. So does 1 further run of the row.",
        "The runs hold 11 pixels; 10 were expected.",
        "The runs hold 11 pixels; 10 were expected. 1 run stands behind the width.",
    };
    EXPECT_EQ(CheckBytes(bytes).sentences, expected);
}

TEST(LwCheck, WhatIsCutShortIsNeverValid)
{
    const auto whole = Sample().Bytes();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto checked = CheckBytes(Edited(whole, { { length, kToTheEnd, "" } }));
        EXPECT_FALSE(IsCalledValid(checked)) << length;
        EXPECT_FALSE(checked.findings.empty()) << length;
    }
}

// Byte after byte by the letter of the format.
bool RowsAreSound(const LwPicture& picture, const std::vector<unsigned char>& bytes)
{
    std::size_t at = picture.Start();
    const auto take = [&] {
        at += 2;
        return at <= bytes.size() ? LwRun{ bytes[at - 2], bytes[at - 1] } : LwRun{ 0, 255 };
    };
    constexpr LwRun kDelimiter{ 0, 0 };
    for (unsigned int row = 0; row < picture.height; ++row) {
        if (take() != kDelimiter)
            return false;
        for (unsigned int pixels = 0; pixels != picture.width;) {
            const LwRun run = take();
            pixels += run.length;
            if (run.index == 0 || run.index > picture.colours.size() || pixels > picture.width)
                return false;
        }
        if (take() != kDelimiter)
            return false;
    }
    return true;
}

TEST(LwCheck, FindsAnErrorExactlyWhereThereIsOne)
{
    std::mt19937 random(5);
    int sound = 0;
    for (int i = 0; i < 4000; ++i) {
        const auto width = 1 + static_cast<unsigned int>(random() % 600);
        const auto height = 1 + static_cast<unsigned int>(random() % 8);
        LwPicture picture = RandomPicture(random, width, height, 1 + random() % 255,
                                          kLwRuns[random() % std::size(kLwRuns)]);
        picture.inchesHigh = height / 10.0;
        picture.inchesWide = width / 10.0;
        auto bytes = picture.Bytes();
        for (auto flips = random() % 3; flips != 0; --flips)
            bytes[picture.Start() + random() % (bytes.size() - picture.Start())] ^=
                static_cast<unsigned char>(1U << random() % 8);
        const bool isSound = RowsAreSound(picture, bytes);
        sound += isSound ? 1 : 0;
        const CheckedBytes checked = CheckBytes(bytes);
        EXPECT_EQ(IsCalledValid(checked), isSound) << "picture " << i;
        EXPECT_EQ(checked.result.verdict == Verdict::Valid, checked.findings.empty());
    }
    EXPECT_GT(sound, 1000);
    EXPECT_LT(sound, 3000);
}

// Bytes of one value behind a header that claims the largest picture.
TEST(LwCheck, ReadsHostileFilesOnce)
{
    for (const int fill : { 0, 1, 255 }) {
        LwPicture picture = Sample();
        picture.width = 2147483647;
        picture.height = 2147483647;
        auto bytes = picture.Header();
        bytes.resize(3'000'001, static_cast<unsigned char>(fill));
        MemoryFileSystem files;
        files.Put("file", AsText(bytes));
        WatchedFileSystem watched(files);
        const tympan::ScopedFileSystem scoped(watched);
        const CheckedBytes checked = CheckPath("file");
        EXPECT_EQ(checked.result.verdict, Verdict::Invalid);
        EXPECT_LE(checked.result.FindingsTotal(), 10U);
        EXPECT_LE(watched.ByteCount(FileOperation::readAt), 2 * bytes.size());
    }
}

} // namespace
