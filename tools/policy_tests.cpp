#include "policy_tests.h"

#include "folder_names.h"
#include "picture_facts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <regex>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

using Breach = std::optional<std::string>;
using ValueTest = std::function<Breach(const Json& value)>;

// The standard library's expressions go deeper with each character.
constexpr std::size_t kMostToMatch = 1000;

std::string Shorter(const Json& value)
{
    return OnOneLine(value).substr(0, kMostToMatch);
}

std::string Text(double number)
{
    return NumberText(number, 2);
}

std::regex ReadPattern(const PolicyNode& node)
{
    const std::string text = node.Text();
    if (text.size() > kMostToMatch)
        node.Fail("a pattern of at most " + std::to_string(kMostToMatch) + " characters");
    try {
        return std::regex(text, std::regex::ECMAScript | std::regex::optimize);
    } catch (const std::regex_error&) {
        node.Fail("a regular expression");
    }
}

bool Matches(const std::string& text, const std::regex& pattern)
{
    return text.size() <= kMostToMatch && std::regex_match(text, pattern);
}

// ---- the kinds that have a key of their own

// Headers hold sizes of few digits, and the resolution is worked out of them.
constexpr double kRounding = 0.005;

Breach ResolutionBelow(const Json& info, const char* key, double least)
{
    const Json& value = info.contains(key) ? info.at(key) : Json();
    if (!value.is_number())
        return "its resolution isn't known; at least " + Text(least) + " was expected";
    if (value.get<double>() >= least - kRounding)
        return std::nullopt;
    return "its resolution is " + Text(value.get<double>()) + " pixels per inch; at least " +
           Text(least) + " was expected";
}

PolicyTest ReadLeastResolution(const PolicyNode& node)
{
    return [least = node.Number()](const PolicySubject& subject) -> Breach {
        for (const char* const key : { "resolution_x", "resolution_y" })
            if (Breach breach = ResolutionBelow(subject.info, key, least))
                return breach;
        return std::nullopt;
    };
}

PolicyTest ReadAllowedSeparations(const PolicyNode& node)
{
    std::vector<std::string> allowed = node.Texts();
    std::transform(allowed.begin(), allowed.end(), allowed.begin(), InLowerCase);
    return [allowed = std::move(allowed)](const PolicySubject& subject) -> Breach {
        for (const Json& one : subject.info.value("separations", Json::array())) {
            const std::string name = one.is_string() ? one.get<std::string>() : OnOneLine(one);
            if (std::find(allowed.begin(), allowed.end(), InLowerCase(name)) == allowed.end())
                return "it has the separation " + name + ", which isn't allowed";
        }
        return std::nullopt;
    };
}

PolicyTest ReadMostTotalInk(const PolicyNode& node)
{
    return [most = node.Number()](const PolicySubject& subject) -> Breach {
        const double ink = subject.measureInk();
        if (ink <= most)
            return std::nullopt;
        return "a pixel has a total ink of " + Text(ink) + " %; at most " + Text(most) +
               " % was expected";
    };
}

PolicyTest ReadNames(const PolicyNode& node)
{
    return
        [pattern = ReadPattern(node), text = node.Text()](const PolicySubject& subject) -> Breach {
            const std::string name = subject.file.substr(subject.file.rfind('/') + 1);
            if (Matches(name, pattern))
                return std::nullopt;
            return "its name doesn't match " + text;
        };
}

// ---- "require": a value of the info, by its place

ValueTest ReadEquals(const PolicyNode& node)
{
    return [wanted = node.Value()](const Json& value) -> Breach {
        return value == wanted ? std::nullopt : Breach(Shorter(wanted));
    };
}

ValueTest ReadMinimum(const PolicyNode& node)
{
    return [least = node.Number()](const Json& value) -> Breach {
        if (value.is_number() && value.get<double>() >= least)
            return std::nullopt;
        return "at least " + Text(least);
    };
}

ValueTest ReadMaximum(const PolicyNode& node)
{
    return [most = node.Number()](const Json& value) -> Breach {
        if (value.is_number() && value.get<double>() <= most)
            return std::nullopt;
        return "at most " + Text(most);
    };
}

ValueTest ReadOneOf(const PolicyNode& node)
{
    node.Elements(); // a list, and not empty
    return [wanted = node.Value()](const Json& value) -> Breach {
        if (std::find(wanted.begin(), wanted.end(), value) != wanted.end())
            return std::nullopt;
        return "one of " + Shorter(wanted);
    };
}

ValueTest ReadMatches(const PolicyNode& node)
{
    return [pattern = ReadPattern(node), text = node.Text()](const Json& value) -> Breach {
        if (value.is_string() && Matches(value.get_ref<const std::string&>(), pattern))
            return std::nullopt;
        return "a text that matches " + text;
    };
}

template <typename Test>
struct Kind {
    const char* key;
    Test (*read)(const PolicyNode& value);
};

constexpr std::array<Kind<ValueTest>, 5> kValueTests{ {
    { "equals", ReadEquals },
    { "minimum", ReadMinimum },
    { "maximum", ReadMaximum },
    { "one_of", ReadOneOf },
    { "matches", ReadMatches },
} };

template <typename Kinds>
auto FindKind(const Kinds& kinds, const std::string& key)
{
    return std::find_if(kinds.begin(), kinds.end(),
                        [&](const auto& kind) { return kind.key == key; });
}

template <typename Kinds>
std::string KeysOf(const Kinds& kinds)
{
    std::string keys;
    for (const auto& kind : kinds)
        keys += std::string(keys.empty() ? "" : ", ") + kind.key;
    return keys;
}

// What holds of one place in the info.
struct Requirement {
    Json::json_pointer place;
    std::vector<ValueTest> tests;

    Breach BreachIn(const Json& info) const
    {
        if (!info.contains(place))
            return "it has no " + place.to_string();
        for (const ValueTest& test : tests)
            if (const Breach expected = test(info.at(place)))
                return place.to_string() + " is " + Shorter(info.at(place)) + "; " + *expected +
                       " was expected";
        return std::nullopt;
    }
};

Json::json_pointer ReadPlace(const std::string& text, const PolicyNode& node)
{
    try {
        return Json::json_pointer(text);
    } catch (const Json::exception&) {
        node.Fail("a JSON pointer such as \"/resolution_x\" as the key");
    }
}

Requirement ReadRequirement(const std::string& place, const PolicyNode& node)
{
    Requirement requirement{ ReadPlace(place, node), {} };
    for (const std::string& key : node.Keys()) {
        const auto kind = FindKind(kValueTests, key);
        if (kind == kValueTests.end())
            node.Fail("an object of " + KeysOf(kValueTests));
        requirement.tests.push_back(kind->read(node.At(key)));
    }
    return requirement;
}

PolicyTest ReadRequire(const PolicyNode& node)
{
    std::vector<Requirement> all;
    for (const std::string& place : node.Keys())
        all.push_back(ReadRequirement(place, node.At(place)));
    return [all = std::move(all)](const PolicySubject& subject) -> Breach {
        for (const Requirement& one : all)
            if (Breach breach = one.BreachIn(subject.info))
                return breach;
        return std::nullopt;
    };
}

constexpr std::array<Kind<PolicyTest>, 5> kTests{ {
    { "least_resolution", ReadLeastResolution },
    { "allowed_separations", ReadAllowedSeparations },
    { "most_total_ink", ReadMostTotalInk },
    { "names", ReadNames },
    { "require", ReadRequire },
} };

} // namespace

std::string PolicyTestKeys()
{
    return KeysOf(kTests);
}

bool IsPolicyTestKey(const std::string& key)
{
    return FindKind(kTests, key) != kTests.end();
}

PolicyTest ReadPolicyTest(const std::string& key, const PolicyNode& value)
{
    return FindKind(kTests, key)->read(value);
}

} // namespace tympan::tool
