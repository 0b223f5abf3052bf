// Header numbers, held against the standard library's readers in its own locale.
#include "core/header_text.h"
#include "core/whole_numbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

const char* const kTexts[] = {
    "",
    " ",
    "+",
    "-",
    ".",
    "+.",
    "e5",
    "+.12500000E+02",
    "+00000001234",
    " \t12.5",
    "12.5E",
    "12.5E+",
    "12.5e-3x",
    "-0.75",
    "1.2.3",
    "--1",
    "+ 1",
    "1,5",
    "00000",
    "7 8",
    "99999999999999",
    "1e308",
    "-1e308",
};

TEST(HeaderText, ReadsFloatsAsTheStandardLibraryDoes)
{
    for (const char* text : kTexts)
        EXPECT_EQ(tympan::FloatFromText(text), std::atof(text)) << '"' << text << '"';
}

TEST(HeaderText, ReadsWholeNumbersAsTheStandardLibraryDoes)
{
    for (const char* text : kTexts)
        if (std::abs(std::atof(text)) < 1e9) {
            EXPECT_EQ(tympan::WholeFromText(text), std::atoi(text)) << '"' << text << '"';
        }
}

TEST(HeaderText, ReadsRandomTextsAsTheStandardLibraryDoes)
{
    constexpr char kLetters[] = "0123456789+-.eE 0123456789";
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 15, ' ');
        for (char& letter : text)
            letter = kLetters[random() % (sizeof kLetters - 1)];
        EXPECT_EQ(tympan::FloatFromText(text), std::atof(text.c_str())) << '"' << text << '"';
    }
}

TEST(HeaderText, EndsAtATerminatorAndAtTheField)
{
    EXPECT_EQ(tympan::FloatFromText(std::string_view("+.5\0007E+01", 9)), 0.5);
    EXPECT_EQ(tympan::WholeFromText(std::string_view("+12345", 3)), 12.0);
}

TEST(HeaderText, HoldsWhatIsTooLarge)
{
    EXPECT_EQ(tympan::FloatFromText("1e999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(tympan::FloatFromText("-1e999"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(tympan::WholeFromText("+99999999999"), 2147483647.0);
    EXPECT_EQ(tympan::WholeFromText("-99999999999"), -2147483648.0);
}

// A client may have set a locale in which the point is a comma.
TEST(HeaderText, DoesNotAskTheLocale)
{
    class Commas : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    EXPECT_EQ(tympan::FloatFromText("+.12500000E+02"), 12.5);
    std::locale::global(before);
}

TEST(WholeNumbers, AreCutAndHeldToTheirType)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(tympan::CutToWhole<std::uint32_t>(2.99), 2U);
    EXPECT_EQ(tympan::CutToWhole<std::int32_t>(-2.99), -2);
    EXPECT_EQ(tympan::CutToWhole<std::uint32_t>(-0.5), 0U);
    EXPECT_EQ(tympan::CutToWhole<std::uint32_t>(nan), 0U);
    EXPECT_EQ(tympan::CutToWhole<std::uint32_t>(inf), 4294967295U);
    EXPECT_EQ(tympan::CutToWhole<std::uint32_t>(4294967295.0), 4294967295U);
    EXPECT_EQ(tympan::CutToWhole<std::int32_t>(-inf), std::numeric_limits<std::int32_t>::lowest());
    EXPECT_EQ(tympan::CutToWhole<std::uint64_t>(18446744073709551616.0), ~std::uint64_t{ 0 });
    EXPECT_EQ(tympan::CutToWhole<std::int64_t>(9223372036854775808.0),
              std::numeric_limits<std::int64_t>::max());
}

TEST(WholeNumbers, ProductsAndSumsDoNotWrap)
{
    constexpr std::uint64_t kTop = ~std::uint64_t{ 0 };
    EXPECT_EQ(tympan::Product(1ULL << 32U, (1ULL << 32U) - 1), kTop - 0xFFFFFFFF);
    EXPECT_FALSE(tympan::Product(1ULL << 32U, 1ULL << 32U).has_value());
    EXPECT_EQ(tympan::Product(0, kTop), 0U);
    EXPECT_EQ(tympan::Sum(kTop - 1, 1), kTop);
    EXPECT_FALSE(tympan::Sum(kTop, 1).has_value());
}

} // namespace
