// JSON that the command told.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tympan::test {

using nlohmann::ordered_json;

/// What stands in the text, with the keys of objects in their order. The one place that compiles a parser.
/// \throws nlohmann::ordered_json::parse_error, which fails the test
ordered_json ParsedJson(const std::string& text);

} // namespace tympan::test
