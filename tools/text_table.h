// Tables for a person: columns of numbers under their heads.
#pragma once

#include <string>
#include <vector>

namespace tympan::tool {

/// Two decimals, such as "12.50 %".
std::string PercentText(double part, double whole);

/// The cells of a line; a line may have fewer than others.
using TableLine = std::vector<std::string>;

/// Writes a table to standard output, set in from the left.
/// \param lines the head first; all but the first cell stand at the right of their column, and what is
///   behind the last column of the head stands at the left.
void PrintTable(const std::vector<TableLine>& lines);

} // namespace tympan::tool
