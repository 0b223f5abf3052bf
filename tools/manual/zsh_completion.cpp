// Each subcommand is a case of its own with the specifications that `_arguments` takes.
#include "command.h"
#include "manual/completions.h"
#include "manual/option_facts.h"

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
        if (character == '\'')
            escaped += "'\\''";
        else
            escaped += (signs.find(character) == std::string::npos ? "" : "\\") +
                       std::string(1, character);
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
    return option.value.empty() ? "" : ":" + Escaped(option.value, ":\\") + ':' + Action(option);
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

std::string Specifications(const OptionFacts& option)
{
    if (option.isArgument)
        return kFurther + ("'" + std::string(option.repeats ? "*" : "")) + ValuePart(option) + '\'';
    std::string lines;
    for (const std::string& name : option.names)
        lines += kFurther + ("'" + Excluded(option)) + NamePart(option, name) + '[' +
                 Escaped(option.help, "[]:\\") + ']' + ValuePart(option) + '\'';
    return lines;
}

std::string Arguments(const CLI::App& app)
{
    std::string line = "_arguments -C -s";
    for (const OptionFacts& option : OptionsOf(app))
        line += Specifications(option);
    return line;
}

} // namespace

std::string ZshCompletion(CLI::App& root)
{
    std::string described, cases;
    for (const CLI::App* const subcommand : Subcommands(root)) {
        const std::string& name = subcommand->get_name();
        described +=
            "        '" + name + ':' + Escaped(subcommand->get_description(), ":\\") + "'\n";
        cases += "                " + name + ")\n                    " + Arguments(*subcommand) +
                 " ;;\n";
    }
    return kStart + described + "    )\n    " + Arguments(root) + kFurther +
           "'1:subcommand:->subcommand'" + kFurther + "'*::argument:->argument'\n" +
           "    case $state in\n        subcommand) _describe subcommand subcommands ;;\n"
           "        argument)\n            case $line[1] in\n" +
           cases + kEnd;
}

} // namespace tympan::tool
