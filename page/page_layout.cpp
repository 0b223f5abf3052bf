// Entries of a page file out of bytes and into bytes, by the one table of their fields.
#include "page/page_layout.h"

#include "core/header_text.h"
#include "platform/file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace tympan {

namespace {

constexpr PlacementType kTypes[] = { PlacementType::picture, PlacementType::ctWindow,
                                     PlacementType::lineWork };
constexpr int kMostExponent = 99;

std::string_view AsText(std::span<const std::uint8_t> bytes)
{
    return { reinterpret_cast<const char*>(bytes.data()), bytes.size() };
}

[[noreturn]] void Refuse(const std::string& name, const std::string& reason)
{
    throw std::invalid_argument(name + ": " + reason);
}

std::string TwoDigits(int number)
{
    return { static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10) };
}

// As "+.12500000E+02"; nothing for what two digits of exponent don't do for.
std::optional<std::string> NumberText(double value)
{
    constexpr int kBehindFirstDigit = 7;
    if (!std::isfinite(value))
        return std::nullopt;
    std::array<char, 32> digits{}; // as "1.2500000e+01"
    const char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::abs(value),
                      std::chars_format::scientific, kBehindFirstDigit)
            .ptr;
    const char* const exponentAt = std::find(digits.data(), digits.data() + digits.size(), 'e') + 1;
    int exponent = 0;
    std::from_chars(exponentAt + (*exponentAt == '+' ? 1 : 0), end, exponent);
    exponent += value != 0.0 ? 1 : 0; // the point stands in front of the first digit
    if (std::abs(exponent) > kMostExponent)
        return std::nullopt;
    return std::string(value < 0.0 ? "-." : "+.") + digits[0] +
           std::string(digits.data() + 2, kBehindFirstDigit) + (exponent < 0 ? "E-" : "E+") +
           TwoDigits(std::abs(exponent));
}

void RefusePath(const CString& path, const std::string& name)
{
    const std::string_view text = path.View();
    if (text.empty() || text.find('\0') != std::string_view::npos)
        Refuse(name, "the path is empty or holds a zero byte.");
    if (text.size() > kLongestPlacedPath)
        Refuse(name, "the path has " + std::to_string(text.size()) + " bytes; an entry holds " +
                         std::to_string(kLongestPlacedPath) + ".");
}

void RefuseWindow(const Placement& placement, const std::string& name)
{
    const bool isWindow = placement.type == PlacementType::ctWindow;
    if (!isWindow && (placement.container || !placement.colours.empty()))
        Refuse(name, "only a CT window has a container and colours.");
    if (isWindow && placement.container.value_or(kHighestContainer + 1) > kHighestContainer)
        Refuse(name, "a CT window's container is an entry from 0 to " +
                         std::to_string(kHighestContainer) + ".");
    if (placement.colours.size() > kMostWindowColours)
        Refuse(name, std::to_string(placement.colours.size()) + " colours; a CT window holds " +
                         std::to_string(kMostWindowColours) + ".");
    if (std::count(placement.colours.begin(), placement.colours.end(), 0) != 0)
        Refuse(name, "colours count from 1; 0 ends their list.");
}

} // namespace

std::optional<PlacementType> PlacementTypeOf(std::uint8_t typeByte)
{
    const auto* const type =
        std::find_if(std::begin(kTypes), std::end(kTypes),
                     [&](PlacementType one) { return static_cast<std::uint8_t>(one) == typeByte; });
    return type == std::end(kTypes) ? std::nullopt : std::optional(*type);
}

WindowFields WindowFieldsIn(std::span<const std::uint8_t> bytes)
{
    WindowFields window;
    if (bytes.empty())
        return window;
    window.container = bytes.front();
    const auto listed = bytes.subspan(1);
    const auto end = std::find(listed.begin(), listed.end(), 0);
    window.colours = listed.first(static_cast<std::size_t>(end - listed.begin()));
    const bool isEnded = end != listed.end();
    window.isWhole = isEnded || bytes.size() >= kEntryWindow.width;
    window.length = 1 + window.colours.size() + (isEnded ? 1 : 0);
    return window;
}

CString EntryPathIn(std::string_view bytes)
{
    return CString(bytes.substr(0, bytes.find('\0')));
}

bool EntryRecord::IsWhole(PlacementType type) const
{
    if (held < kEntryWindow.offset + ShiftOf(type))
        return false;
    return type != PlacementType::ctWindow || Window().isWhole;
}

std::string_view EntryRecord::NumberText(const EntryNumber& number, PlacementType type) const
{
    return AsText(bytes).substr(number.offset + ShiftOf(type), number.width);
}

WindowFields EntryRecord::Window() const
{
    const std::size_t end = std::max(held, kEntryWindow.offset);
    return WindowFieldsIn(std::span(bytes).first(end).subspan(kEntryWindow.offset));
}

Placement EntryRecord::Read(PlacementType type) const
{
    Placement placement;
    placement.type = type;
    placement.path = EntryPathIn(AsText(bytes).substr(kEntryPath.offset, kEntryPath.width));
    for (const EntryNumber& number : kEntryNumbers)
        placement.*number.value = FloatFromText(NumberText(number, type));
    if (type == PlacementType::ctWindow) {
        const WindowFields window = Window();
        placement.container = window.container;
        const auto kept = window.KeptColours();
        placement.colours.assign(kept.begin(), kept.end());
    }
    return placement;
}

EntryRecord ReadEntryRecord(CFile& page, std::size_t index)
{
    EntryRecord record;
    page.Seek(static_cast<LONGLONG>(PlaceOfPageEntry(index)), CFile::begin);
    record.held = page.Read(record.bytes.data(), static_cast<UINT>(record.bytes.size()));
    return record;
}

std::array<std::uint8_t, kPageEntryBytes> EntryBytes(const Placement& placement,
                                                     const std::string& name)
{
    RefusePath(placement.path, name);
    RefuseWindow(placement, name);
    std::array<std::uint8_t, kPageEntryBytes> bytes{};
    const auto put = [&](std::size_t offset, std::string_view text) {
        std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    bytes[kEntryType.offset] = static_cast<std::uint8_t>(placement.type);
    put(kEntryPath.offset, placement.path.View());
    for (const EntryNumber& number : kEntryNumbers) {
        const auto text = tympan::NumberText(placement.*number.value);
        if (!text)
            Refuse(name, "its " + std::string(number.name) + " has no text of " +
                             std::to_string(number.width) + " characters.");
        put(number.offset + ShiftOf(placement.type), *text);
    }
    if (placement.container)
        bytes[kEntryContainer.offset] = static_cast<std::uint8_t>(*placement.container);
    put(kEntryColours.offset, AsText(placement.colours));
    return bytes;
}

} // namespace tympan
