// The check of page files: a change of the bytes, and what is told of it.
#include "page_files.h"
#include "support/checking.h"

#include <gtest/gtest.h>

namespace {

using namespace tympan::test;
using tympan::Verdict;

// A page without a fault, of the window's sizes and place.
PageSample Sound()
{
    PageSample page = ThreeEntries();
    page.entries[1].width = "+.10000000E+01";
    return page;
}

constexpr std::size_t kFirst = 2048, kSecond = kFirst + 256, kThird = kSecond + 256;
constexpr std::size_t kEnd = kThird + 256;

const CheckCase kCases[] = {
    { "nothing", {}, {} },
    { "the common header", { { 1026, 1, "\1" } }, { "HEAD-0005 byte 1026" } },
    { "no number of entries", { { 1080, 6, "three " } }, { "PAGE-0001 byte 1080" } },
    { "a number cut to 16 bits", { { 1080, 6, "065539" } }, { "PAGE-0001 byte 1080" } },
    { "ends in the number", { { 1083, kToTheEnd, "" } }, {} },
    { "one entry too few", { { kThird, kToTheEnd, "" } }, { "PAGE-0002 byte 2560" } },
    { "a shape", { { kFirst, 1, "\4" } }, { "PAGE-0003 byte 2048" } },
    { "ends in an entry", { { kThird + 154, kToTheEnd, "" } }, { "PAGE-0004 byte 2714" } },
    { "a word for a number", { { kFirst + 96, 14, "left of middle" } }, { "PAGE-0005 byte 2144" } },
    { "a number beyond all",
      { { kFirst + 138, 14, "1e999         " } },
      { "PAGE-0005 byte 2186" } },
    { "a unit behind", { { kSecond + 98, 14, "2 inches      " } }, { "PAGE-0006 byte 2402" } },
    { "a short number", { { kSecond + 98, 14, "2             " } }, {} },
    { "no height", { { kFirst + 110, 14, std::string(14, '0') } }, { "PAGE-0007 byte 2158" } },
    { "a width below 0", { { kSecond + 126, 1, "-" } }, { "PAGE-0007 byte 2430" } },
    { "no path", { { kFirst + 2, 10, "          " } }, { "PAGE-0008 byte 2050" } },
    { "a missing picture", { { kFirst + 2, 1, "P" } }, { "PAGE-0009 byte 2050" } },
    { "a text", { { kFirst + 2, 10, "letter.txt" } }, { "PAGE-0010 byte 2050" } },
    { "a picture cut short", { { kFirst + 2, 10, "broken.ct " } }, { "PAGE-0011 byte 2050" } },
    { "a page",
      { { kFirst + 2, 10, std::string("file\0\0\0\0\0\0", 10) } },
      { "PAGE-0012 byte 2050" } },
    { "a page that is no container",
      { { kSecond + 2, 10, std::string("file\0\0\0\0\0\0", 10) } },
      { "PAGE-0012 byte 2306", "PAGE-0015 byte 2712" } },
    { "another width", { { kFirst + 124, 14, "+.10300000E+01" } }, { "PAGE-0013 byte 2158" } },
    { "a little wider", { { kFirst + 124, 14, "+.10090000E+01" } }, {} },
    { "beyond the left edge", { { kFirst + 96, 1, "-" } }, { "PAGE-0014 byte 2130" } },
    { "beyond the foot", { { kSecond + 84, 14, "+.70500000E+01" } }, { "PAGE-0014 byte 2388" } },
    { "at the foot", { { kSecond + 84, 14, "+.70000000E+01" } }, {} },
    { "turned beyond the foot",
      { { kFirst + 82, 14, "+.70000000E+01" }, { kFirst + 138, 14, "+.45000000E+02" } },
      { "PAGE-0014 byte 2130" } },
    { "a container outside", { { kThird + 152, 1, "\x9" } }, { "PAGE-0015 byte 2712" } },
    { "its own container", { { kThird + 152, 1, "\2" } }, { "PAGE-0015 byte 2712" } },
    { "a CT as container", { { kThird + 152, 1, { 0 } } }, { "PAGE-0015 byte 2712" } },
    { "a colour too high", { { kThird + 153, 2, "\2\3" } }, { "PAGE-0016 byte 2714" } },
    { "too many colours",
      { { kThird + 153, 32, std::string(32, '\1') } },
      { "PAGE-0017 byte 2713" } },
};

class PageCheck : public testing::Test {
  protected:
    PageCheck()
    {
        files_.Put("letter.txt", std::vector<unsigned char>(2000, 'a'));
        files_.Put("broken.ct", Edited(CtSample{}.Bytes(), { { 2060, kToTheEnd, "" } }));
    }
    CheckedBytes Checked(const std::vector<unsigned char>& bytes)
    {
        files_.Put("file", bytes);
        return CheckPath("file");
    }
    PageFiles files_;
};

TEST_F(PageCheck, TellsEachFaultAndItsPlace)
{
    for (const CheckCase& one : kCases) {
        SCOPED_TRACE(one.name);
        const auto checked = Checked(Edited(Sound().Bytes(), one.edits));
        EXPECT_EQ(checked.result.format, "Page");
        EXPECT_EQ(checked.findings, one.findings);
    }
}

TEST_F(PageCheck, SaysWhatIsWrongWithAPicture)
{
    const auto checked = Checked(PageSample{ .entries = { { .path = "broken.ct" } } }.Bytes());
    ASSERT_EQ(checked.sentences.size(), 1U);
    EXPECT_EQ(
        checked.sentences[0],
        "Entry 0 places \"broken.ct\", which is taken as CT and has 1 error, the first of them: "
        "The file has 2060 bytes, and its 3 rows need 2096: 0 whole rows and 3 separations of "
        "row 0 are there.");
}

TEST_F(PageCheck, LooksAtEachPictureOnce)
{
    const auto opens = [&](std::size_t entries) {
        files_.Put("file", PageSample{ .entries = std::vector<PageEntrySample>(entries) }.Bytes());
        const std::size_t before = files_.Watched().Count(FileOperation::open);
        EXPECT_EQ(CheckPath("file").result.verdict, Verdict::Valid);
        return files_.Watched().Count(FileOperation::open) - before;
    };
    EXPECT_EQ(opens(1000), opens(1));
}

TEST_F(PageCheck, NeverCallsAPageValidThatIsNotOpened)
{
    const auto bytes = Sound().Bytes();
    for (std::size_t length = 1086; length < kEnd - 256 + 155; ++length) {
        const auto checked = Checked(Edited(bytes, { { length, kToTheEnd, "" } }));
        EXPECT_FALSE(IsCalledValid(checked)) << length;
    }
    EXPECT_EQ(Checked(bytes).result.verdict, Verdict::Valid);
}

} // namespace
