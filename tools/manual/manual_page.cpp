#include "manual/manual_page.h"

#include "manual/footer_sections.h"

#include <tympan/tympan.h>

#include <algorithm>
#include <cctype>
#include <span>
#include <string_view>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::string_view kExitStatus = "EXIT STATUS";

std::string Escaped(char character)
{
    switch (character) {
    case '\\': return "\\e";
    case '-': return "\\-";
    case '\'': return "\\(aq";
    case '`': return "\\(ga";
    case '^': return "\\(ha";
    case '~': return "\\(ti";
    default: return { character };
    }
}

// Text as it stands, though a line begins with a point.
std::string Roff(std::string_view text)
{
    std::string escaped = text.substr(0, 1) == "." ? "\\&" : "";
    for (const char character : text)
        escaped += Escaped(character);
    return escaped;
}

std::string Bold(std::string_view text)
{
    return "\\fB" + Roff(text) + "\\fR";
}

std::string Italic(std::string_view text)
{
    return "\\fI" + Roff(text) + "\\fR";
}

bool IsVerbatim(const std::string& line)
{
    return line.rfind("  ", 0) == 0;
}

// Writes a page line by line.
class Page {
  public:
    explicit Page(const std::string& name)
    {
        Line(".TH " + Roff(name) + " 1 \"\" \"tympan " + tympan::Version() +
             "\" \"User commands\"");
        Line(".nh");
        Line(".ad l");
    }

    void Line(const std::string& roff) { roff_ += roff + '\n'; }
    void Section(std::string_view title) { Line(".SH " + std::string(title)); }
    const std::string& Text() const { return roff_; }

    // Lines of text are filled to paragraphs, indented ones stay as they are.
    void Body(const std::vector<std::string>& lines)
    {
        bool verbatim = false;
        for (const std::string& line : lines) {
            if (IsVerbatim(line) != verbatim && !line.empty())
                SetVerbatim(verbatim = !verbatim);
            if (line.empty())
                Line(verbatim ? "" : ".PP");
            else
                Line(Roff(line));
        }
        if (verbatim)
            SetVerbatim(false);
    }

  private:
    void SetVerbatim(bool verbatim) { Line(verbatim ? ".nf" : ".fi"); }

    std::string roff_;
};

std::string InSmallLetter(std::string text)
{
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

void WriteName(Page& page, const CommandFacts& command)
{
    std::string purpose = InSmallLetter(command.description);
    if (purpose.back() == '.')
        purpose.pop_back();
    page.Section("NAME");
    page.Line(Roff(command.page) + " \\- " + Roff(purpose));
}

std::string Usage(const OptionFacts& option)
{
    std::string usage = option.isArgument ? Italic(option.value)
                                          : Bold(option.names.back()) + ' ' + Italic(option.value);
    if (option.repeats)
        usage += "...";
    return option.isRequired ? usage : '[' + usage + ']';
}

// What must be given is told by name, and arguments.
std::string UsageOf(const CommandFacts& subcommand)
{
    std::string usage = Bold("tympan " + subcommand.name);
    for (const OptionFacts& option : subcommand.options)
        if (option.isRequired || option.isArgument)
            usage += ' ' + Usage(option);
    return usage + " [" + Italic("OPTIONS") + ']';
}

void WriteOption(Page& page, const OptionFacts& option)
{
    std::string names;
    for (const std::string& name : option.names)
        names += (names.empty() ? "" : ", ") + (option.isArgument ? Italic(name) : Bold(name));
    if (!option.isArgument && !option.value.empty())
        names += ' ' + Italic(option.value);
    page.Line(".TP");
    page.Line(names);
    page.Line(Roff(option.help) + (option.help.back() == '.' ? "" : "."));
    if (!option.conditions.empty())
        page.Line(Roff(option.conditions));
}

void WriteOptions(Page& page, const CommandFacts& command)
{
    page.Section("OPTIONS");
    for (const OptionFacts& option : command.options)
        WriteOption(page, option);
}

void WriteSections(Page& page, const CommandFacts& command)
{
    for (const FooterSection& section : SectionsOf(command.footer))
        if (!section.title.empty()) {
            page.Section(section.title);
            page.Body(section.lines);
        }
}

void WriteDescription(Page& page, const CommandFacts& command)
{
    const std::vector<std::string> lines = SectionsOf(command.footer).front().lines;
    page.Section("DESCRIPTION");
    page.Line(Roff(command.description) + (command.description.back() == '.' ? "" : "."));
    if (lines.empty())
        return;
    page.Line(".PP");
    page.Body(lines);
}

bool TellsExitStatus(const CommandFacts& command)
{
    const std::vector<FooterSection> sections = SectionsOf(command.footer);
    return std::any_of(sections.begin(), sections.end(),
                       [](const FooterSection& section) { return section.title == kExitStatus; });
}

void WriteExitStatus(Page& page, const CommandFacts& root)
{
    for (const FooterSection& section : SectionsOf(root.footer))
        if (section.title == kExitStatus) {
            page.Section(kExitStatus);
            page.Body(section.lines);
        }
}

void WriteSubcommands(Page& page, const CommandFacts& root)
{
    page.Section("SUBCOMMANDS");
    for (const CommandFacts& subcommand : root.subcommands) {
        page.Line(".TP");
        page.Line(Bold(subcommand.name));
        page.Line(Roff(subcommand.description) + '.');
    }
}

void WriteSeeAlso(Page& page, std::span<const CommandFacts> others)
{
    page.Section("SEE ALSO");
    for (const CommandFacts& other : others)
        page.Line(".BR " + Roff(other.page) + (&other == &others.back() ? " (1)" : " (1),"));
}

} // namespace

std::string CommandPage(const CommandFacts& root)
{
    Page page(root.page);
    WriteName(page, root);
    page.Section("SYNOPSIS");
    page.Line(Bold("tympan") + ' ' + Italic("SUBCOMMAND") + " [" + Italic("OPTIONS") + ']');
    WriteDescription(page, root);
    WriteSubcommands(page, root);
    WriteOptions(page, root);
    WriteSections(page, root);
    WriteSeeAlso(page, root.subcommands);
    return page.Text();
}

std::string SubcommandPage(const CommandFacts& root, const CommandFacts& subcommand)
{
    Page page(subcommand.page);
    WriteName(page, subcommand);
    page.Section("SYNOPSIS");
    page.Line(UsageOf(subcommand));
    WriteDescription(page, subcommand);
    WriteOptions(page, subcommand);
    WriteSections(page, subcommand);
    if (!TellsExitStatus(subcommand))
        WriteExitStatus(page, root);
    WriteSeeAlso(page, { &root, 1 });
    return page.Text();
}

} // namespace tympan::tool
