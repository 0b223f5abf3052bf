// Each subcommand is a case of its own with the descriptions that `_arguments` takes.
#include "manual/completions.h"

#include <sstream>

namespace tympan::tool {

namespace {

constexpr char kStart[] = R"(#compdef tympan
# Completion of the command tympan for zsh, made of what the command declares.

_tympan()
{
    local curcontext=$curcontext state line
    local -a subcommands
    subcommands=(
)";

constexpr char kEnd[] = R"(            esac ;;
    esac
}

_tympan "$@"
)";

constexpr char kFurther[] = " \\\n                    ";

// Text in single quotes, with what `_arguments` and `_describe` would take for their own signs.
std::string Escaped(const std::string& text, const std::string& signs)
{
    std::string escaped;
    for (const char character : text)
        if (character == '\'') {
            escaped += "'\\''";
        } else {
            if (signs.find(character) != std::string::npos)
                escaped += '\\';
            escaped += character;
        }
    return escaped;
}

std::string Action(const OptionFacts& option)
{
    switch (option.kind) {
    case ValueKind::File: return "_files";
    case ValueKind::Folder: return "_files -/";
    case ValueKind::Choice: break;
    case ValueKind::None: return " ";
    }
    std::string choices;
    for (const std::string& choice : option.choices)
        choices += (choices.empty() ? "" : " ") + choice;
    return '(' + choices + ')';
}

std::string ValuePart(const OptionFacts& option)
{
    std::ostringstream part;
    if (!option.value.empty())
        part << ':' << Escaped(option.value, ":\\") << ':' << Action(option);
    return part.str();
}

// "-o+" and "--output=" take their value behind them or as the next word.
std::string NamePart(const OptionFacts& option, const std::string& name)
{
    if (option.value.empty())
        return name;
    return name + (name[1] == '-' ? '=' : '+');
}

std::string Excluded(const OptionFacts& option)
{
    std::string names;
    for (const std::string& name : option.names)
        names += (names.empty() ? "" : " ") + name;
    return option.repeats ? "*" : '(' + names + ')';
}

std::string Described(const OptionFacts& option)
{
    std::ostringstream lines;
    if (option.isArgument)
        lines << kFurther << '\'' << (option.repeats ? "*" : "") << ValuePart(option) << '\'';
    else
        for (const std::string& name : option.names)
            lines << kFurther << '\'' << Excluded(option) << NamePart(option, name) << '['
                  << Escaped(option.help, "[]:\\") << ']' << ValuePart(option) << '\'';
    return lines.str();
}

std::string Arguments(const CommandFacts& command)
{
    std::string line = "_arguments -C -s";
    for (const OptionFacts& option : command.options)
        line += Described(option);
    return line;
}

} // namespace

std::string ZshCompletion(const CommandFacts& root)
{
    std::ostringstream described, cases;
    for (const CommandFacts& subcommand : root.subcommands) {
        const std::string& name = subcommand.name;
        described << "        '" << name << ':' << Escaped(subcommand.description, ":\\") << "'\n";
        cases << "                " << name << ")\n                    " << Arguments(subcommand)
              << " ;;\n";
    }
    std::ostringstream script;
    script << kStart << described.str() << "    )\n    " << Arguments(root) << kFurther
           << "'1:subcommand:->subcommand'" << kFurther << "'*::argument:->argument'\n"
           << "    case $state in\n        subcommand) _describe subcommand subcommands ;;\n"
           << "        argument)\n            case $line[1] in\n"
           << cases.str() << kEnd;
    return script.str();
}

} // namespace tympan::tool
