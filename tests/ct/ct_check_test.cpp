// The check of CT files, and of the header that formats share: a change of the bytes, and what is told
// of it.
#include "support/checking.h"
#include "support/ct_samples.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tympan::test;
using tympan::Verdict;

// 10 pixels per inch; 24 bytes a row, a byte of padding for each separation.
constexpr CtSample kSample{ .width = 5, .inchesHigh = 0.3, .inchesWide = 0.5 };
constexpr std::size_t kEnd = 2048 + 3 * 24;

const CheckCase kCases[] = {
    { "nothing", {}, {} },
    { "without the last padding", { { kEnd - 1, 1, "" } }, {} },
    { "a pixel is missing", { { kEnd - 2, 2, "" } }, { "CT-0001 row 2 byte 2118" } },
    { "a row and a half", { { 2048 + 36, kToTheEnd, "" } }, { "CT-0001 row 1 byte 2084" } },
    { "no row at all", { { 2048, kToTheEnd, "" } }, { "CT-0001 row 0 byte 2048" } },
    { "no more than the header", { { 1080, kToTheEnd, "" } }, { "CT-0001 row 0 byte 1080" } },
    { "ends in the header", { { 1079, kToTheEnd, "" } }, { "HEAD-0001 byte 1079" } },
    { "bytes behind", { { kEnd, 0, "abc" } }, { "CT-0002 byte 2120" } },
    { "more rows than any file",
      { { 1056, 24, "+02147483647+02147483647" } },
      { "HEAD-0011 byte 1028", "CT-0001 row 0 byte 2120" } },
    { "three separations", { { 1025, 1, "\3" } }, { "HEAD-0002 byte 1025" } },
    { "a mask of two", { { 1027, 1, "\3" } }, { "HEAD-0003 byte 1027" } },
    { "neither", { { 1025, 3, { 2, 0, 0 } } }, { "HEAD-0002 byte 1025", "HEAD-0003 byte 1027" } },
    { "one, and a mask of four", { { 1025, 1, "\1" } }, { "HEAD-0004 byte 1025" } },
    { "reserved byte", { { 1026, 1, "\1" } }, { "HEAD-0005 byte 1026" } },
    { "reserved bits", { { 1027, 1, "\x1F" } }, { "HEAD-0005 byte 1027" } },
    { "unknown units", { { 1024, 1, "\7" } }, { "HEAD-0006 byte 1024" } },
    { "millimetres", { { 1024, 1, { 0 } } }, {} },
    { "height of 0", { { 1056, 12, "+00000000000" } }, { "HEAD-0007 byte 1056" } },
    { "height below 0", { { 1056, 12, "-00000000003" } }, { "HEAD-0007 byte 1056" } },
    { "height above all", { { 1056, 12, "+02147483648" } }, { "HEAD-0007 byte 1056" } },
    { "height in words", { { 1056, 12, "three pixels" } }, { "HEAD-0007 byte 1056" } },
    { "width of nothing", { { 1068, 12, std::string(12, '\0') } }, { "HEAD-0007 byte 1068" } },
    { "blanks around", { { 1068, 12, "   5        " } }, {} },
    { "a word behind", { { 1068, 12, "5 pixels    " } }, { "HEAD-0008 byte 1068" } },
    { "a fraction", { { 1068, 12, "5.25        " } }, { "HEAD-0008 byte 1068" } },
    { "no size in units", { { 1028, 14, "+.00000000E+00" } }, { "HEAD-0010 byte 1028" } },
    { "a size below 0", { { 1028, 14, "-.10000000E+01" } }, { "HEAD-0009 byte 1028" } },
    { "a size in words", { { 1042, 14, "half an inch  " } }, { "HEAD-0009 byte 1042" } },
    { "a size beyond numbers", { { 1042, 14, "+.10000000E999" } }, { "HEAD-0009 byte 1042" } },
    { "a unit behind", { { 1042, 14, "0.5 inches    " } }, { "HEAD-0008 byte 1042" } },
    { "resolutions differ", { { 1042, 14, "+.10000000E+01" } }, { "HEAD-0011 byte 1028" } },
};

TEST(CtCheck, TellsEachFaultAndItsPlace)
{
    for (const CheckCase& one : kCases) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(CheckBytes(Edited(kSample.Bytes(), one.edits), "CT").findings, one.findings);
    }
}

TEST(CtCheck, SaysHowMuchIsThere)
{
    const auto checked = CheckBytes(Edited(kSample.Bytes(), { { 2048 + 36, kToTheEnd, "" } }));
    ASSERT_EQ(checked.sentences.size(), 1U);
    EXPECT_EQ(checked.sentences[0],
              "The file has 2084 bytes, and its 3 rows need 2119: 1 whole row and "
              "2 separations of row 1 are there.");
}

TEST(CtCheck, RemarksAloneLeaveAFileValid)
{
    const auto bytes = kSample.Bytes();
    EXPECT_EQ(CheckBytes(bytes).result.verdict, Verdict::Valid);
    EXPECT_EQ(CheckBytes(Edited(bytes, { { 1024, 1, "\7" } })).result.verdict,
              Verdict::ValidWithRemarks);
    EXPECT_EQ(CheckBytes(Edited(bytes, { { 1024, 1, "\7" }, { 2100, 20, "" } })).result.verdict,
              Verdict::Invalid);
}

TEST(CtCheck, WhatIsCutShortIsNeverValid)
{
    for (std::size_t length = 0; length < kEnd - 1; ++length) {
        const auto checked = CheckBytes(Edited(kSample.Bytes(), { { length, kToTheEnd, "" } }));
        EXPECT_FALSE(IsCalledValid(checked)) << length;
        EXPECT_FALSE(checked.findings.empty()) << length;
    }
}

} // namespace
