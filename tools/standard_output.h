// What goes to standard output for a program: JSON, in ASCII and with the file names as they can be
// told there.
#pragma once

#include "json_text.h"

#include <cmath>
#include <optional>
#include <string>

namespace tympan::tool {

/// An object that begins with the file's name, as `file`; and, when that isn't UTF-8, as `file_raw`,
/// percent-encoded.
Json ObjectOf(const std::string& file);
/// Adds a path under a key in the same way, the raw form under the key with `_raw` behind it.
void AddPath(Json& object, const std::string& key, const std::string& path);

template <typename Number>
Json NumberOrNull(const std::optional<Number>& number)
{
    return number ? Json(*number) : Json(nullptr);
}

/// Null for a number that isn't finite.
inline Json NumberOrNull(double number)
{
    return std::isfinite(number) ? Json(number) : Json(nullptr);
}

/// Writes a value over several lines.
void PrintIndented(const Json& value);
/// Writes a value on a line of its own.
void PrintOnOneLine(const Json& value);

/// \throws FileFailure when standard output could not take all that was written.
void FinishStandardOutput();

} // namespace tympan::tool
