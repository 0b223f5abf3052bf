#include "page_arguments.h"

#include "failure.h"

#include <tympan/inspect.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace tympan::tool {

namespace {

std::vector<std::string_view> Split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

template <typename Number>
std::optional<Number> NumberIn(std::string_view text)
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

// Finite numbers; none at all when one isn't.
std::vector<double> NumbersIn(std::string_view text, char separator)
{
    std::vector<double> numbers;
    for (const std::string_view part : Split(text, separator)) {
        const std::optional<double> number = NumberIn<double>(part);
        if (!number || !std::isfinite(*number))
            return {};
        numbers.push_back(*number);
    }
    return numbers;
}

} // namespace

InchSize ParseSize(const std::string& value)
{
    const std::vector<double> sides = NumbersIn(value, 'x');
    if (sides.size() != 2 || std::min(sides[0], sides[1]) <= 0.0)
        throw UsageFailure("--size " + value + ": the form is WxH in inches, as 8.5x11");
    return { sides[0], sides[1] };
}

PlaceArgument ParsePlace(const std::string& value)
{
    const std::size_t at = value.rfind('@');
    const std::vector<double> numbers =
        at == std::string::npos || at == 0 ? std::vector<double>()
                                           : NumbersIn(std::string_view(value).substr(at + 1), ',');
    const std::size_t count = numbers.size();
    if (count != 2 && count != 4 && count != 5)
        throw UsageFailure("--place " + value +
                           ": the form is FILE@X,Y, FILE@X,Y,W,H or "
                           "FILE@X,Y,W,H,ROT, in inches and "
                           "degrees");
    PlaceArgument place{ value.substr(0, at), numbers[0], numbers[1], std::nullopt, 0.0 };
    if (count > 2)
        place.size = InchSize{ numbers[2], numbers[3] };
    if (place.size && std::min(place.size->width, place.size->height) <= 0.0)
        throw UsageFailure("--place " + value + ": width and height must be above 0");
    if (count > 4)
        place.rotation = numbers[4];
    return place;
}

WindowArgument ParseWindow(const std::string& value)
{
    const std::size_t colon = value.find(':');
    const std::optional<unsigned int> container =
        NumberIn<unsigned int>(std::string_view(value).substr(0, colon));
    if (colon == std::string::npos || !container)
        throw UsageFailure("--window " + value + ": the form is N:C1,C2...");
    WindowArgument window{ *container, {} };
    for (const std::string_view part : Split(std::string_view(value).substr(colon + 1), ',')) {
        const std::optional<std::uint8_t> colour = NumberIn<std::uint8_t>(part);
        if (!colour || *colour == 0)
            throw UsageFailure("--window " + value + ": colours are numbers from 1 to 255");
        window.colours.push_back(*colour);
    }
    if (window.colours.size() > kMostWindowColours)
        throw UsageFailure("--window " + value + ": an entry holds " +
                           std::to_string(kMostWindowColours) + " colours at most");
    return window;
}

} // namespace tympan::tool
