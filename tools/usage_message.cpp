#include "usage_message.h"

#include "command.h"
#include "nearest_name.h"

#include <algorithm>
#include <vector>

namespace tympan::tool {

namespace {

bool IsOption(const std::string& word)
{
    return word.size() > 1 && word != "--" && word[0] == '-';
}

// "info, preview ... or export".
std::string Listed(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : name == names.back() ? " or " : ", ") + name;
    return list;
}

std::vector<std::string> SubcommandNames(CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* const subcommand : Subcommands(app))
        names.push_back(subcommand->get_name());
    return names;
}

std::vector<std::string> OptionNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::string Meant(const std::string& word, const std::vector<std::string>& names)
{
    const std::string nearest = NearestName(word, names);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

std::string UnknownSubcommand(CLI::App& app, const std::string& word)
{
    const std::vector<std::string> names = SubcommandNames(app);
    const std::string meant = Meant(word, names);
    return "there is no subcommand " + word +
           (meant.empty() ? "; there are " + Listed(names) : meant);
}

std::string UnknownOption(const CLI::App& app, const std::string& word)
{
    const std::string name = word.substr(0, word.find('='));
    return "there is no option " + name + Meant(name, OptionNames(app));
}

} // namespace

std::string UsageMessage(CLI::App& app, const CLI::Error& failure)
{
    const std::vector<std::string> unknown = app.remaining(true);
    const auto option = std::find_if(unknown.begin(), unknown.end(), IsOption);
    const std::vector<CLI::App*> given = app.get_subcommands();
    if (given.empty() && !unknown.empty() && option != unknown.begin())
        return UnknownSubcommand(app, unknown.front());
    if (option != unknown.end())
        return UnknownOption(given.empty() ? app : *given.front(), *option);
    return failure.what();
}

std::string MissingSubcommandMessage(CLI::App& app)
{
    return "name a subcommand: " + Listed(SubcommandNames(app));
}

std::string UsageAdvice(const CLI::App& app)
{
    const std::vector<CLI::App*> given = app.get_subcommands();
    if (given.empty())
        return "`tympan --help` tells what there is.";
    return "`tympan " + given.front()->get_name() + " --help` tells how it is used.";
}

} // namespace tympan::tool
