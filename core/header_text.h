// Numbers as the text of the headers holds them, read alike whatever the locale of the process is.
#pragma once

#include <string_view>

namespace tympan {

/// The part of `text`, without the white space before it, that `FloatFromText` takes for a number;
/// empty when there is none.
std::string_view DecimalStart(std::string_view text);

/// The decimal number at the start of `text`, white space before it passed over: an optional sign,
/// digits with an optional point, an optional exponent. 0 when there is none; an infinity beyond
/// the range. Ends at the first byte that can't belong to it, a terminator included.
/// \throws std::bad_alloc.
double FloatFromText(std::string_view text);

/// The same for a whole number without point and exponent, held to the range of a 32-bit one.
double WholeFromText(std::string_view text);

} // namespace tympan
