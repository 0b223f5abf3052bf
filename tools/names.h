// File names as a person or a program that expects UTF-8 can be shown them, and their endings.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tympan::tool {

/// Whether the bytes are UTF-8: shortest forms only, no surrogates, nothing beyond U+10FFFF.
bool IsUtf8(std::string_view text);

/// The text as it may be shown on a terminal: unchanged when it is UTF-8 without control
/// characters; else the bytes that are not are percent-encoded, and `%` itself too.
std::string Shown(std::string_view text);

/// Every byte percent-encoded but the letters, digits and `-._~/`.
std::string PercentEncoded(std::string_view text);

/// The text with each byte that is not part of UTF-8 replaced by U+FFFD.
std::string WithReplacements(std::string_view text);

/// The ending of a name in lower case, with its point; empty without one.
std::string EndingOf(std::string_view path);

/// The ending of an output's name.
/// \throws UsageFailure, naming those allowed, when it is none of them.
std::string RequireEnding(const std::string& path, std::span<const std::string_view> allowed);

} // namespace tympan::tool
