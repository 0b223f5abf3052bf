#include "text_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <iostream>

namespace tympan::tool {

namespace {

std::vector<std::size_t> WidthsOf(const std::vector<TableLine>& lines)
{
    std::vector<std::size_t> widths(lines.front().size());
    for (const TableLine& line : lines)
        for (std::size_t i = 0; i < std::min(line.size(), widths.size()); ++i)
            widths[i] = std::max(widths[i], line[i].size());
    return widths;
}

std::string TextOf(const TableLine& line, const std::vector<std::size_t>& widths)
{
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const std::size_t width = i < widths.size() ? widths[i] : 0;
        const std::string blanks(width - std::min(width, line[i].size()), ' ');
        text += "  " + (i == 0 ? line[i] + blanks : blanks + line[i]);
    }
    return text.erase(text.find_last_not_of(' ') + 1);
}

} // namespace

std::string PercentText(double part, double whole)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f %%", part / whole * 100.0);
    return text.data();
}

void PrintTable(const std::vector<TableLine>& lines)
{
    const std::vector<std::size_t> widths = WidthsOf(lines);
    for (const TableLine& line : lines)
        std::cout << TextOf(line, widths) << '\n';
}

} // namespace tympan::tool
