#include "manual/command_facts.h"

#include "command.h"
#include "separations.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <set>
#include <sstream>
#include <string_view>

namespace tympan::tool {

namespace {

// What the help calls the value. CLI11 puts what its checks allow behind its own types: "TEXT:{ct,lw}",
// "INT:INT in [1 - 100]", "DIR:DIR".
std::string TypeOf(const CLI::Option& option)
{
    constexpr std::array<std::string_view, 6> kChecked{ "TEXT",  "INT", "UINT",
                                                        "FLOAT", "DIR", "FILE" };
    const std::string whole = option.get_type_name();
    const std::string head = whole.substr(0, whole.find(':'));
    return std::find(kChecked.begin(), kChecked.end(), head) != kChecked.end() ? head : whole;
}

// What stands between two marks in the whole type; empty without them.
std::string Between(const CLI::Option& option, std::string_view open, char close)
{
    const std::string whole = option.get_type_name();
    const std::size_t mark = whole.find(open);
    if (mark == std::string::npos)
        return "";
    const std::size_t start = mark + open.size();
    return whole.substr(start, whole.find(close, start) - start);
}

std::vector<std::string> ChoicesOf(const CLI::Option& option)
{
    std::istringstream in(Between(option, ":{", '}'));
    std::vector<std::string> choices;
    for (std::string choice; std::getline(in, choice, ',');)
        choices.push_back(choice);
    return choices;
}

std::vector<std::string> SeparationNames()
{
    return { NameOf(Cyan), NameOf(Magenta), NameOf(Yellow), NameOf(Black) };
}

void AddKind(OptionFacts& facts, const CLI::Option& option)
{
    const std::string type = TypeOf(option);
    facts.choices = type == kSeparationType ? SeparationNames() : ChoicesOf(option);
    if (!facts.choices.empty())
        facts.kind = ValueKind::Choice;
    else if (type == "DIR")
        facts.kind = ValueKind::Folder;
    else if (type == "FILE" || type == "TEXT")
        facts.kind = ValueKind::File;
}

std::vector<std::string> NamesOf(const CLI::Option& option)
{
    if (option.get_positional())
        return { option.get_name(true) };
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::string Listed(const std::set<CLI::Option*>& options)
{
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const CLI::Option* const option : options)
        names.push_back(option->get_name());
    return Listed(names);
}

std::string ConditionsOf(const CLI::Option& option)
{
    std::string sentences;
    const auto add = [&](const std::string& start, const std::string& what) {
        if (!what.empty())
            sentences += (sentences.empty() ? "" : " ") + start + what + ".";
    };
    if (option.get_required())
        sentences = "Required.";
    add("One of: ", Listed(ChoicesOf(option)));
    add("Range: ", Between(option, " in [", ']'));
    add("Default: ", option.get_default_str());
    add("Only with ", Listed(option.get_needs()));
    add("Not with ", Listed(option.get_excludes()));
    return sentences;
}

OptionFacts FactsOf(const CLI::Option& option)
{
    OptionFacts facts{};
    facts.names = NamesOf(option);
    facts.isArgument = option.get_positional();
    facts.isRequired = option.get_required();
    facts.repeats = option.get_items_expected_max() > 1;
    facts.help = option.get_description();
    facts.conditions = ConditionsOf(option);
    if (option.get_type_size() == 0)
        return facts;
    facts.value = facts.isArgument ? facts.names.front() : TypeOf(option);
    AddKind(facts, option);
    return facts;
}

std::vector<OptionFacts> OptionsOf(const CLI::App& app)
{
    std::vector<OptionFacts> facts;
    for (const CLI::Option* const option :
         app.get_options([](const CLI::Option* one) { return !one->get_group().empty(); }))
        facts.push_back(FactsOf(*option));
    std::stable_partition(facts.begin(), facts.end(),
                          [](const OptionFacts& one) { return one.isArgument; });
    return facts;
}

CommandFacts FactsOf(const CLI::App& app, const std::string& pagePrefix)
{
    return { app.get_name(),        pagePrefix + app.get_name(),
             app.get_description(), app.get_footer(),
             OptionsOf(app),        {} };
}

} // namespace

CommandFacts FactsOfCommand()
{
    CLI::App root;
    DeclareCommand(root);
    CommandFacts facts = FactsOf(root, "");
    for (const CLI::App* const subcommand : Subcommands(root))
        facts.subcommands.push_back(FactsOf(*subcommand, facts.name + '-'));
    return facts;
}

} // namespace tympan::tool
