#include "progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tympan::tool {

namespace {

// A tenth matters below ten only.
std::string Shortly(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), number < 9.95 ? "%.1f" : "%.0f", number);
    return text.data();
}

std::string ByteSpeed(double perSecond)
{
    constexpr std::array kUnits{ "B/s", "kB/s", "MB/s", "GB/s", "TB/s" };
    std::size_t unit = 0;
    for (; perSecond >= 999.5 && unit + 1 < kUnits.size(); ++unit)
        perSecond /= 1000.0;
    return Shortly(perSecond) + ' ' + kUnits.at(unit);
}

std::string Speed(double perSecond, ProgressUnit unit)
{
    switch (unit) {
    case ProgressUnit::Rows: return ", " + Shortly(perSecond) + " rows/s";
    case ProgressUnit::Bytes: return ", " + ByteSpeed(perSecond);
    case ProgressUnit::Shares: break;
    }
    return "";
}

// The larger unit's number and, where the smaller one still matters, that one's too.
std::string TimeLeft(double seconds)
{
    constexpr double kMostSeconds = 100.0 * 3600.0;
    if (seconds >= kMostSeconds)
        return ", days left";
    const long whole = std::max(1L, std::lround(std::ceil(seconds)));
    if (whole < 60)
        return ", " + std::to_string(whole) + " s left";
    if (whole < 3600)
        return ", " + std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s left";
    return ", " + std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) +
           " min left";
}

} // namespace

std::string ProgressText(const ProgressState& state)
{
    const auto total = static_cast<double>(state.total);
    const double done = std::min(static_cast<double>(state.done), total);
    std::string text = std::to_string(static_cast<int>(done / total * 100.0)) + '%';
    const double seconds = state.passed.count();
    if (done == 0.0 || !(seconds > 0.0))
        return text;
    const double perSecond = done / seconds;
    text += Speed(perSecond, state.unit);
    return done < total ? text + TimeLeft((total - done) / perSecond) : text;
}

} // namespace tympan::tool
