// CString: stands in for the platform's text class of the same name, over std::string.
#pragma once

#include "platform/export.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <iosfwd>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

/// A text of single bytes that owns its characters. Counts and places are in bytes. Only what
/// allocates can fail, with std::bad_alloc or std::length_error.
class TYMPAN_API CString {
  public:
    CString() noexcept = default;
    /// A null pointer counts as the empty text, here and wherever else a `const char*` is taken.
    CString(const char* text) : text_(View(text)) {}
    /// The characters of the view, zero bytes among them too.
    explicit CString(std::string_view text) : text_(text) {}
    /// `repeat` times the character; nothing when `repeat` is not above 0.
    explicit CString(char character, int repeat = 1) : text_(Count(repeat), character) {}

    /// @{
    /// The characters with a terminator; they hold until the text is changed or destroyed.
    operator const char*() const noexcept { return text_.c_str(); }
    const char* GetString() const noexcept { return text_.c_str(); }
    /// @}
    /// The characters without a look for a terminator; they hold as long as those of GetString().
    std::string_view View() const noexcept { return text_; }

    /// The bytes of the text; the largest `int` for a longer one.
    int GetLength() const noexcept
    {
        constexpr std::size_t kLongest = std::numeric_limits<int>::max();
        return static_cast<int>(std::min(text_.size(), kLongest));
    }
    /// Whether the text has no byte.
    bool IsEmpty() const noexcept { return text_.empty(); }
    /// Makes it the empty text.
    void Empty() noexcept { text_.clear(); }

    /// Below 0, 0 or above 0 as this text stands before, beside or behind `other`, byte by byte.
    int Compare(const char* other) const noexcept { return text_.compare(View(other)); }

    /// The place of the last such character, or -1.
    int ReverseFind(char character) const noexcept
    {
        const std::size_t place = text_.rfind(character);
        return place == std::string::npos ? -1 : static_cast<int>(place);
    }

    /// The first `count` bytes. A place or count outside the text, here and in the next three, is
    /// brought into it.
    CString Left(int count) const { return Part(0, Count(count)); }
    /// The last `count` bytes.
    CString Right(int count) const
    {
        const std::size_t taken = std::min(Count(count), text_.size());
        return Part(text_.size() - taken, taken);
    }
    /// The bytes from a place on, which counts from 0.
    CString Mid(int first) const { return Part(Count(first), text_.size()); }
    /// As many of those as `count`.
    CString Mid(int first, int count) const { return Part(Count(first), Count(count)); }

    /// Cuts white space (blank, tab, line ends, form feed) off the end.
    CString& TrimRight() { return CutBehind(text_.find_last_not_of(" \t\n\v\f\r")); }
    /// Cuts that one character off the end, as often as it stands there.
    CString& TrimRight(char character) { return CutBehind(text_.find_last_not_of(character)); }

    /// @{
    /// Appends to the text.
    CString& operator+=(const CString& more) { return Append(more.text_); }
    CString& operator+=(const char* more) { return Append(View(more)); }
    CString& operator+=(char more) { return Append(std::string_view(&more, 1)); }
    /// @}

    /// @{
    /// A new text of both, the left one first.
    friend CString operator+(CString left, const CString& right)
    {
        return std::move(left += right);
    }
    friend CString operator+(CString left, const char* right) { return std::move(left += right); }
    friend CString operator+(CString left, char right) { return std::move(left += right); }
    friend CString operator+(const char* left, const CString& right)
    {
        return CString(left) + right;
    }
    friend CString operator+(char left, const CString& right) { return CString(left) + right; }
    /// @}

    /// @{
    /// Whether both have the same bytes.
    friend bool operator==(const CString& left, const CString& right) noexcept
    {
        return left.text_ == right.text_;
    }
    friend bool operator==(const CString& left, const char* right) noexcept
    {
        return left.text_ == View(right);
    }
    /// @}
    /// @{
    /// The order of the two, byte by byte, as of `Compare`.
    friend std::strong_ordering operator<=>(const CString& left, const CString& right) noexcept
    {
        return left.text_ <=> right.text_;
    }
    friend std::strong_ordering operator<=>(const CString& left, const char* right) noexcept
    {
        return left.View() <=> View(right);
    }
    /// @}

    /// Puts the bytes of the text out.
    template <typename Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                                        const CString& text)
    {
        return out << text.View();
    }

  private:
    static std::string_view View(const char* text) noexcept { return text ? text : ""; }
    static std::size_t Count(int count) noexcept
    {
        return static_cast<std::size_t>(std::max(count, 0));
    }

    CString Part(std::size_t first, std::size_t count) const
    {
        return CString(View().substr(std::min(first, text_.size()), count));
    }
    CString& CutBehind(std::size_t last)
    {
        text_.resize(last + 1); // npos + 1 is 0: nothing but what is cut
        return *this;
    }
    CString& Append(std::string_view more)
    {
        text_ += more;
        return *this;
    }

    std::string text_;
};
