#include "names.h"

#include "failure.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>

namespace tympan::tool {

namespace {

unsigned char ByteAt(std::string_view text, std::size_t place)
{
    return static_cast<unsigned char>(text[place]);
}

// The forms of a character of several bytes. The bounds of the second byte keep out longer forms
// than needed, surrogates, and what lies beyond the last character.
struct Form {
    unsigned char firstLow, firstHigh;
    std::size_t bytes;
    unsigned char secondLow, secondHigh;
};
constexpr std::array kForms{
    Form{ 0x00, 0x7F, 1, 0x00, 0x00 }, Form{ 0xC2, 0xDF, 2, 0x80, 0xBF },
    Form{ 0xE0, 0xE0, 3, 0xA0, 0xBF }, Form{ 0xE1, 0xEC, 3, 0x80, 0xBF },
    Form{ 0xED, 0xED, 3, 0x80, 0x9F }, Form{ 0xEE, 0xEF, 3, 0x80, 0xBF },
    Form{ 0xF0, 0xF0, 4, 0x90, 0xBF }, Form{ 0xF1, 0xF3, 4, 0x80, 0xBF },
    Form{ 0xF4, 0xF4, 4, 0x80, 0x8F },
};

bool IsBetween(unsigned char byte, unsigned char low, unsigned char high)
{
    return low <= byte && byte <= high;
}

// The bytes of the character at the start of `text`; 0 when there is none.
std::size_t CharacterBytes(std::string_view text)
{
    const auto* const form = std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) {
        return IsBetween(ByteAt(text, 0), one.firstLow, one.firstHigh);
    });
    if (form == kForms.end() || text.size() < form->bytes)
        return 0;
    if (form->bytes > 1 && !IsBetween(ByteAt(text, 1), form->secondLow, form->secondHigh))
        return 0;
    for (std::size_t place = 2; place < form->bytes; ++place)
        if (!IsBetween(ByteAt(text, place), 0x80, 0xBF))
            return 0;
    return form->bytes;
}

// Control characters, those of the second range too: a terminal may act on them.
bool IsControl(std::string_view character)
{
    const unsigned char first = ByteAt(character, 0);
    return first < 0x20 || first == 0x7F ||
           (character.size() == 2 && first == 0xC2 && ByteAt(character, 1) < 0xA0);
}

// Calls `character(part)` for each character of UTF-8 and `stray(byte)` for each byte of none.
template <typename Character, typename Stray>
void ForEachCharacter(std::string_view text, Character&& character, Stray&& stray)
{
    while (!text.empty()) {
        const std::size_t bytes = CharacterBytes(text);
        if (bytes == 0)
            stray(text[0]);
        else
            character(text.substr(0, bytes));
        text.remove_prefix(std::max<std::size_t>(bytes, 1));
    }
}

void AppendEncoded(std::string& result, std::string_view bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        result += { '%', kDigits[value >> 4U], kDigits[value & 15U] };
    }
}

bool MayBeShown(std::string_view text)
{
    bool plain = true;
    ForEachCharacter(
        text, [&](std::string_view character) { plain = plain && !IsControl(character); },
        [&](char) { plain = false; });
    return plain;
}

} // namespace

bool IsUtf8(std::string_view text)
{
    bool good = true;
    ForEachCharacter(
        text, [](std::string_view) {}, [&](char) { good = false; });
    return good;
}

std::string Shown(std::string_view text)
{
    if (MayBeShown(text))
        return std::string(text);
    std::string result;
    ForEachCharacter(
        text,
        [&](std::string_view character) {
            if (IsControl(character) || character == "%")
                AppendEncoded(result, character);
            else
                result += character;
        },
        [&](char stray) {
            AppendEncoded(result, { &stray, 1 });
        });
    return result;
}

std::string PercentEncoded(std::string_view text)
{
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string result;
    for (const char byte : text)
        if (kPlain.find(byte) != std::string_view::npos)
            result += byte;
        else
            AppendEncoded(result, { &byte, 1 });
    return result;
}

std::string WithReplacements(std::string_view text)
{
    std::string result;
    ForEachCharacter(
        text, [&](std::string_view character) { result += character; },
        [&](char) { result += "\xEF\xBF\xBD"; });
    return result;
}

std::string EndingOf(std::string_view path)
{
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t point = name.rfind('.');
    std::string ending(point == std::string_view::npos ? std::string_view() : name.substr(point));
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return ending;
}

std::string RequireEnding(const std::string& path, std::span<const std::string_view> allowed)
{
    std::string ending = EndingOf(path);
    if (std::find(allowed.begin(), allowed.end(), ending) != allowed.end())
        return ending;
    std::string names;
    for (const std::string_view one : allowed)
        names += (names.empty() ? "" : ", ") + std::string(one);
    throw UsageFailure(path + ": the output's name must end in " +
                       (allowed.size() > 1 ? "one of " : "") + names);
}

} // namespace tympan::tool
