// One table tells the options of each subcommand, another what the value of each option is; the rest of
// the script is the same whatever they hold.
#include "manual/completions.h"

#include <utility>

namespace tympan::tool {

namespace {

constexpr char kStart[] =
    R"(# Completion of the command tympan for bash, made of what the command declares.

)";

constexpr char kEnd[] = R"sh(
# _tympan_propose KIND CHOICE...
_tympan_propose()
{
    local kind=$1
    shift
    case $kind in
        choice) mapfile -t COMPREPLY < <(compgen -W "$*" -- "$word") ;;
        file | folder)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -A "${kind/folder/directory}" -- "$word") ;;
    esac
}

_tympan()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} subcommand='' value
    ((COMP_CWORD > 1)) && subcommand=${COMP_WORDS[1]}
    # --as=ct comes as three words.
    if [[ $word == = ]]; then
        word=''
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    value=$(_tympan_value "$subcommand $before")
    if [[ -n $value ]]; then
        _tympan_propose $value
    elif [[ $word == -* ]]; then
        _tympan_propose choice "$(_tympan_options "$subcommand")"
    else
        _tympan_propose $(_tympan_value "$subcommand")
    fi
}

complete -F _tympan tympan
)sh";

std::string Joined(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

std::string Value(const OptionFacts& option)
{
    switch (option.kind) {
    case ValueKind::File: return "file";
    case ValueKind::Folder: return "folder";
    case ValueKind::Choice: return "choice " + Joined(option.choices);
    case ValueKind::None: break;
    }
    return "none";
}

std::string Case(const std::string& pattern, const std::string& words)
{
    return "        '" + pattern + "') echo '" + words + "' ;;\n";
}

std::string OptionsCase(const std::string& subcommand, const CommandFacts& command)
{
    std::vector<std::string> names;
    for (const OptionFacts& option : command.options)
        if (!option.isArgument)
            names.insert(names.end(), option.names.begin(), option.names.end());
    return Case(subcommand, Joined(names));
}

std::string ValueCases(const std::string& subcommand, const CommandFacts& command)
{
    const std::string before = subcommand + ' ';
    std::string cases;
    bool hasArgument = false;
    for (const OptionFacts& option : command.options)
        if (option.isArgument && !std::exchange(hasArgument, true))
            cases += Case(subcommand, Value(option));
        else if (!option.isArgument && !option.value.empty())
            for (const std::string& name : option.names)
                cases += Case(before + name, Value(option));
    return cases;
}

std::string Table(const std::string& comment, const std::string& function, const std::string& cases)
{
    return "# " + comment + '\n' + function + "()\n{\n    case $1 in\n" + cases + "    esac\n}\n";
}

} // namespace

std::string BashCompletion(const CommandFacts& root)
{
    std::string options = OptionsCase("", root);
    std::vector<std::string> names;
    std::string values;
    for (const CommandFacts& subcommand : root.subcommands) {
        const std::string& name = subcommand.name;
        names.push_back(name);
        options += OptionsCase(name, subcommand);
        values += ValueCases(name, subcommand);
    }
    values = Case("", "choice " + Joined(names)) + values;
    return kStart +
           Table("The options of a subcommand, or of the command alone.", "_tympan_options",
                 options) +
           '\n' +
           Table("What the value of an option is; without an option, what an argument is.",
                 "_tympan_value", values) +
           kEnd;
}

} // namespace tympan::tool
