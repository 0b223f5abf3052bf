// CArray: values by place, and places outside refused.
#include "platform/array.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace {

TEST(Array, KeepsValuesInOrder)
{
    CArray<CString, const CString&> texts;
    EXPECT_TRUE(texts.IsEmpty());
    EXPECT_EQ(texts.Add("a"), 0);
    EXPECT_EQ(texts.Add("b"), 1);
    texts[0] += "!";
    texts.GetAt(1) = texts[0];
    EXPECT_EQ(texts.GetSize(), 2);
    EXPECT_EQ(texts.GetAt(0), "a!");
    EXPECT_EQ(texts[1], "a!");
    texts.RemoveAll();
    EXPECT_EQ(texts.GetSize(), 0);
}

TEST(Array, TakesAValueOfItsOwn)
{
    CArray<CString> texts;
    texts.Add("a text too long to stand in the object itself");
    for (int i = 0; i < 20; ++i)
        texts.Add(texts[0]); // while it grows
    for (const CString& text : texts)
        EXPECT_EQ(text, "a text too long to stand in the object itself");
}

TEST(Array, RefusesPlacesOutside)
{
    CArray<int, int> numbers;
    numbers.Add(1);
    using Place = std::numeric_limits<std::ptrdiff_t>;
    for (const std::ptrdiff_t place :
         { std::ptrdiff_t{ 1 }, std::ptrdiff_t{ -1 }, Place::max(), Place::min() })
        EXPECT_THROW(numbers[place], std::out_of_range) << place;
}

} // namespace
