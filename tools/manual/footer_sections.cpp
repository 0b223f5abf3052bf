#include "manual/footer_sections.h"

#include <array>
#include <sstream>
#include <string_view>

namespace tympan::tool {

namespace {

struct Heading {
    std::string_view line;
    std::string_view title;
};

constexpr std::array kHeadings{
    Heading{ "Example:", "EXAMPLES" },        Heading{ "Examples:", "EXAMPLES" },
    Heading{ "Exit status:", "EXIT STATUS" }, Heading{ "Files:", "FILES" },
    Heading{ "Environment:", "ENVIRONMENT" },
};

const Heading* HeadingIn(const std::string& line)
{
    for (const Heading& heading : kHeadings)
        if (line == heading.line)
            return &heading;
    return nullptr;
}

void DropEmptyEnds(std::vector<FooterSection>& sections)
{
    for (FooterSection& section : sections)
        while (!section.lines.empty() && section.lines.back().empty())
            section.lines.pop_back();
}

} // namespace

std::vector<FooterSection> SectionsOf(const std::string& footer)
{
    std::vector<FooterSection> sections(1);
    std::istringstream in(footer);
    for (std::string line; std::getline(in, line);)
        if (const Heading* const heading = HeadingIn(line))
            sections.push_back({ std::string(heading->title), {} });
        else
            sections.back().lines.push_back(line);
    DropEmptyEnds(sections);
    return sections;
}

} // namespace tympan::tool
