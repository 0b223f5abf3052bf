#include "row_range.h"

#include "failure.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace tympan::tool {

namespace {

// A number that is the whole of `text`; `absent` for no text.
std::optional<std::uint32_t> Number(std::string_view text, std::uint32_t absent)
{
    if (text.empty())
        return absent;
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace

RowRange ParseRows(const std::string& text, std::uint32_t height)
{
    if (text.empty())
        return { 0, height };
    const std::string told =
        "--rows " + text + ": the picture has " + std::to_string(height) + " rows; ";
    const std::size_t colon = text.find(':');
    const std::string_view whole(text);
    const auto first = Number(whole.substr(0, colon), 0);
    const auto end =
        colon == std::string::npos ? std::nullopt : Number(whole.substr(colon + 1), height);
    if (!first || !end)
        throw UsageFailure(told + "give two numbers as in 0:" + std::to_string(height));
    if (*first >= *end || *end > height)
        throw UsageFailure(told + "A must be below B and B at most " + std::to_string(height));
    return { *first, *end };
}

} // namespace tympan::tool
