// JSON values and their text. The one place that compiles the parser and the writer.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tympan::tool {

/// Keeps its keys in the order in which they were added.
using Json = nlohmann::ordered_json;

/// \throws Json::parse_error
Json ParsedJson(const std::string& text);

/// The value on one line without its end, all of it in ASCII.
std::string OnOneLine(const Json& value);
/// The value over several lines, without the end of the last, all of it in ASCII.
std::string Indented(const Json& value);

} // namespace tympan::tool
