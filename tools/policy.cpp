#include "policy.h"

#include "failure.h"
#include "names.h"
#include "policy_node.h"
#include "policy_tests.h"
#include "sha256.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string_view>
#include <utility>

namespace tympan::tool {

namespace {

constexpr char kKept[] = "kept";
constexpr char kKeptWithWarnings[] = "kept with warnings";
constexpr char kAgainst[] = "against policy";

constexpr std::array kPolicyKeys{ "$schema", "name", "rules" };
constexpr std::array kRuleKeys{ "id", "severity", "why", "applies_to" };

std::string ReadWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file.is_open() || file.bad())
        throw SystemFailure(path, errno);
    return text;
}

Json Parse(const std::string& path, const std::string& text)
{
    try {
        return ParsedJson(text);
    } catch (const Json::parse_error& failure) {
        const auto end =
            text.begin() + static_cast<std::ptrdiff_t>(std::min(failure.byte, text.size()));
        throw UsageFailure(path + ": at line " +
                           std::to_string(1 + std::count(text.begin(), end, '\n')) +
                           ": this is not JSON");
    }
}

PolicySeverity ReadSeverity(const PolicyNode& node)
{
    const std::string text = node.Text();
    if (text != "error" && text != "warning")
        node.Fail("\"error\" or \"warning\"");
    return text == "error" ? PolicySeverity::Error : PolicySeverity::Warning;
}

// Capital letters and digits, in parts with a hyphen between each two.
bool IsId(std::string_view text)
{
    constexpr std::string_view kSigns = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
    return !text.empty() && text.front() != '-' && text.back() != '-' &&
           text.find("--") == std::string_view::npos &&
           text.find_first_not_of(kSigns) == std::string_view::npos;
}

std::string ReadId(const PolicyNode& node)
{
    const std::string text = node.Text();
    if (text.size() > 100 || !IsId(text))
        node.Fail("capital letters and digits with hyphens between");
    return "POLICY-" + text;
}

// The one member of a rule that says what is tested.
PolicyTest ReadTest(const PolicyNode& rule)
{
    PolicyTest test;
    for (const std::string& key : rule.Keys()) {
        if (std::find(kRuleKeys.begin(), kRuleKeys.end(), key) != kRuleKeys.end())
            continue;
        if (!IsPolicyTestKey(key) || test)
            rule.Fail("one of " + PolicyTestKeys() +
                      ", and nothing else beside \"id\", "
                      "\"severity\", \"why\" and \"applies_to\",");
        test = ReadPolicyTest(key, rule.At(key));
    }
    if (!test)
        rule.Fail("one of " + PolicyTestKeys());
    return test;
}

std::vector<std::string> ReadFormats(const PolicyNode& node)
{
    if (node.Keys() != std::vector<std::string>{ "format" })
        node.Fail("an object with \"format\" alone");
    return node.At("format").Texts();
}

PolicyRule ReadRule(const PolicyNode& node)
{
    return { ReadId(node.At("id")), ReadSeverity(node.At("severity")),
             node.Has("why") ? node.At("why").Text() : "",
             node.Has("applies_to") ? ReadFormats(node.At("applies_to"))
                                    : std::vector<std::string>(),
             ReadTest(node) };
}

std::vector<PolicyRule> ReadRules(const PolicyNode& policy)
{
    for (const std::string& key : policy.Keys())
        if (std::find(kPolicyKeys.begin(), kPolicyKeys.end(), key) == kPolicyKeys.end())
            policy.Fail("an object of \"name\" and \"rules\"");
    policy.At("name").Text();
    std::vector<PolicyRule> rules;
    std::set<std::string> ids;
    for (const PolicyNode& node : policy.At("rules").Elements()) {
        rules.push_back(ReadRule(node));
        if (!ids.insert(rules.back().id).second)
            node.At("id").Fail("an identifier of its own");
    }
    return rules;
}

bool IsFor(const PolicyRule& rule, const Json& info)
{
    const std::string format = info.value("format", "");
    return rule.formats.empty() ||
           std::find(rule.formats.begin(), rule.formats.end(), format) != rule.formats.end();
}

std::optional<std::string> BreachOf(const PolicyRule& rule, const PolicySubject& subject)
{
    try {
        return rule.breachOf(subject);
    } catch (const FileFailure& failure) {
        return "it can't be judged: " + failure.WhatHappened();
    } catch (const std::regex_error&) {
        return "it can't be judged: the pattern takes too much work on this text";
    }
}

const char* NameOf(PolicySeverity severity)
{
    return severity == PolicySeverity::Error ? "error" : "warning";
}

const char* VerdictOf(const std::vector<PolicyFinding>& findings)
{
    const bool isAgainst =
        std::any_of(findings.begin(), findings.end(), [](const PolicyFinding& finding) {
            return finding.rule->severity == PolicySeverity::Error;
        });
    return isAgainst ? kAgainst : findings.empty() ? kKept : kKeptWithWarnings;
}

} // namespace

Policy::Policy(const std::string& path)
{
    const std::string text = ReadWhole(path);
    Sha256 sum;
    sum.Add({ reinterpret_cast<const unsigned char*>(text.data()), text.size() });
    sum_ = HexOf(sum.Finish());
    const Json json = Parse(path, text);
    rules_ = ReadRules(PolicyNode(json, path));
}

std::vector<PolicyFinding> Policy::Judge(const PolicySubject& subject) const
{
    std::vector<PolicyFinding> findings;
    for (const PolicyRule& rule : rules_)
        if (IsFor(rule, subject.info))
            if (std::optional<std::string> breach = BreachOf(rule, subject))
                findings.push_back({ &rule, std::move(*breach) });
    return findings;
}

Json AsJson(const std::vector<PolicyFinding>& findings)
{
    Json list = Json::array();
    for (const PolicyFinding& finding : findings)
        list.push_back({ { "id", finding.rule->id },
                         { "severity", NameOf(finding.rule->severity) },
                         { "found", WithReplacements(finding.found) },
                         { "why", finding.rule->why } });
    return { { "verdict", VerdictOf(findings) }, { "findings", std::move(list) } };
}

Json PolicyNotJudged()
{
    return { { "verdict", "not judged" }, { "findings", Json::array() } };
}

std::string TextOf(const std::vector<PolicyFinding>& findings)
{
    std::string text;
    for (const PolicyFinding& finding : findings) {
        const PolicyRule& rule = *finding.rule;
        text += "  " + std::string(NameOf(rule.severity)) + ' ' + rule.id + ": " +
                Shown(finding.found) + '\n';
        if (!rule.why.empty())
            text += "      " + Shown(rule.why) + '\n';
    }
    return text;
}

bool IsAgainstPolicy(const Json& policy)
{
    return policy.is_object() && policy.value("verdict", "") == kAgainst;
}

} // namespace tympan::tool
