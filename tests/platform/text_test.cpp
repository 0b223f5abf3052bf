// CString: cutting, searching, joining, and comparing with plain text without ambiguity.
#include "platform/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>

namespace {

struct TextCase {
    const char* name;
    CString (*made)();
    const char* expected;
};

const TextCase kTextCases[] = {
    { "a null pointer is the empty text", [] { return CString(nullptr); }, "" },
    { "a character repeated", [] { return CString('x', 3); }, "xxx" },
    { "a character repeated less than never", [] { return CString('x', -1); }, "" },
    { "Left", [] { return CString("abcd").Left(2); }, "ab" },
    { "Left of more than there is", [] { return CString("ab").Left(INT_MAX); }, "ab" },
    { "Left of a count below 0", [] { return CString("ab").Left(-1); }, "" },
    { "Right", [] { return CString("abcd").Right(3); }, "bcd" },
    { "Right of more than there is", [] { return CString("ab").Right(3); }, "ab" },
    { "Right of a count below 0", [] { return CString("ab").Right(INT_MIN); }, "" },
    { "Mid to the end", [] { return CString("abcd").Mid(1); }, "bcd" },
    { "Mid with a count", [] { return CString("abcd").Mid(1, 2); }, "bc" },
    { "Mid reaching past the end", [] { return CString("abcd").Mid(3, INT_MAX); }, "d" },
    { "Mid from behind the end", [] { return CString("ab").Mid(3, 1); }, "" },
    { "Mid from before the begin", [] { return CString("ab").Mid(-1, 1); }, "a" },
    { "TrimRight of white space", [] { return CString(" a b \t\r\n\v\f").TrimRight(); }, " a b" },
    { "TrimRight of nothing but white space", [] { return CString(" \t ").TrimRight(); }, "" },
    { "TrimRight of a character", [] { return CString("a00.000").TrimRight('0'); }, "a00." },
    { "TrimRight where there is none", [] { return CString("a ").TrimRight('0'); }, "a " },
    { "text + text", [] { return CString("a") + CString("b"); }, "ab" },
    { "text + plain text", [] { return CString("a") + "b"; }, "ab" },
    { "plain text + text", [] { return "a" + CString("b"); }, "ab" },
    { "text + character", [] { return CString("a") + 'b'; }, "ab" },
    { "character + text", [] { return 'a' + CString("b"); }, "ab" },
    { "text + null pointer", [] { return CString("a") + static_cast<const char*>(nullptr); }, "a" },
    { "appending its own characters",
      [] {
          CString text("abc");
          text += text;
          text += text.GetString();
          return text += '.';
      },
      "abcabcabcabc." },
    { "plain text assigned",
      [] {
          CString text("a");
          text = "b";
          return text;
      },
      "b" },
    { "emptied",
      [] {
          CString text("a");
          text.Empty();
          return text;
      },
      "" },
};

TEST(Text, HasTheExpectedCharacters)
{
    for (const TextCase& row : kTextCases) {
        const CString text = row.made();
        EXPECT_STREQ(text, row.expected) << row.name;
        EXPECT_EQ(text.GetLength(), static_cast<int>(std::string(row.expected).size())) << row.name;
        EXPECT_EQ(text.IsEmpty(), *row.expected == '\0') << row.name;
    }
}

struct OrderCase {
    const char* left;
    const char* right;
    int sign;
};

const OrderCase kOrderCases[] = {
    { "a", "a", 0 },  { "a", "b", -1 },    { "b", "a", 1 },     { "a", "ab", -1 },
    { "", "a", -1 },  { "", nullptr, 0 },  { "a", nullptr, 1 }, { "a", "A", 1 },
    { "B", "a", -1 }, { "z", "\xE4", -1 }, // bytes above 127 stand behind
};

TEST(Text, ComparesInEveryForm)
{
    for (const auto& [left, right, sign] : kOrderCases) {
        SCOPED_TRACE(std::string(left) + " against " + (right ? right : "null"));
        const CString text(left);
        const int compared = text.Compare(right);
        EXPECT_EQ((compared > 0) - (compared < 0), sign);
        EXPECT_EQ(text == CString(right), sign == 0);
        EXPECT_EQ(text == right, sign == 0);
        EXPECT_EQ(right == text, sign == 0);
        EXPECT_EQ(text != right, sign != 0);
        EXPECT_EQ(text < right, sign < 0);
        EXPECT_EQ(right<text, sign> 0);
        EXPECT_EQ(text >= CString(right), sign >= 0);
    }
}

TEST(Text, FindsTheLastCharacter)
{
    EXPECT_EQ(CString("a.b.c").ReverseFind('.'), 3);
    EXPECT_EQ(CString(".").ReverseFind('.'), 0);
    EXPECT_EQ(CString("abc").ReverseFind('.'), -1);
    EXPECT_EQ(CString().ReverseFind('.'), -1);
}

TEST(Text, CopiesAreTheirOwn)
{
    CString first("a");
    const CString copy = first;
    first += "b";
    EXPECT_EQ(copy, "a");
    EXPECT_EQ(first, "ab");
}

TEST(Text, GoesToAStreamAsItsCharacters)
{
    std::ostringstream out;
    out << CString("a") << CString(std::string_view("b\0c", 3));
    EXPECT_EQ(out.str(), std::string("ab\0c", 4));
}

} // namespace
