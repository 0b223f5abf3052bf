// `tympan check --policy`: what each kind of rule says of a picture, and what is wrong with a
// policy.
#include "tools/command_runner.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace tympan::test;
using testing::HasSubstr;

// Line work of 10 by 2 pixels at 10 pixels an inch, of all separations. The colour with the most
// ink has 3 * 200 + 20 of 255, which is 243.14 %.
struct PolicyFolder : TemporaryFolder {
    PolicyFolder()
    {
        LwPicture picture{ .width = 10, .height = 2, .inchesHigh = 0.2, .inchesWide = 1.0 };
        picture.colours = { { { 55, 55, 55, 235 } }, { { 245, 235, 225, 215 } } };
        picture.rows.assign(2, { { 1, 4 }, { 2, 6 } });
        WriteFile(*this / "a.lw", std::string(AsText(picture.Bytes())));
    }

    // The policy's part of the picture's object.
    ordered_json Judged(const std::string& rule) const
    {
        const Outcome outcome = Run(R"({ "name": "n", "rules": [ )" + rule + " ] }");
        const auto object = ParsedJson(outcome.out.substr(0, outcome.out.find('\n')));
        return object.at("policy");
    }
    Outcome Run(const std::string& policy) const
    {
        WriteFile(*this / "policy.json", policy);
        return RunPolicy(*this / "policy.json", "--json-lines");
    }
    Outcome RunPolicy(const std::string& policy, const std::string& form) const
    {
        return RunCommand({ "check", *this / "a.lw", form, "--policy", policy });
    }
};

struct RuleCase {
    const char* rule;  // without identifier and severity
    const char* found; // part of what is found; null when the rule is kept
};

const RuleCase kRuleCases[] = {
    { R"("least_resolution": 10)", nullptr },
    { R"("least_resolution": 10.5)", "is 10 pixels per inch; at least 10.5 was" },
    { R"("allowed_separations": ["Cyan", "magenta", "yellow", "BLACK"])", nullptr },
    { R"("allowed_separations": ["cyan", "magenta", "black"])", "the separation yellow" },
    { R"("most_total_ink": 243.2)", nullptr },
    { R"("most_total_ink": 243.1)", "a total ink of 243.14 %; at most 243.1 %" },
    { R"("names": "[a-z]\\.lw")", nullptr },
    { R"("names": "[a-z]")", "its name doesn't match [a-z]" },
    { R"("require": { "/width": { "minimum": 10, "maximum": 10 } })", nullptr },
    { R"("require": { "/width": { "maximum": 9.5 } })", "/width is 10; at most 9.5 was" },
    { R"("require": { "/height": { "minimum": 3 } })", "/height is 2; at least 3 was" },
    { R"("require": { "/format": { "equals": "CT" } })", R"(/format is "LW"; "CT" was)" },
    { R"("require": { "/index": { "one_of": ["ok", 3] } })", R"(one of ["ok",3] was)" },
    { R"("require": { "/index": { "one_of": ["ok", "none"] } })", nullptr },
    { R"("require": { "/separations/0": { "matches": "c.*" } })", nullptr },
    { R"("require": { "/separations/0": { "matches": "y" } })", "a text that matches y was" },
    { R"("require": { "/separations/4": { "matches": ".*" } })", "it has no /separations/4" },
    { R"("applies_to": { "format": ["CT", "TIFF"] }, "least_resolution": 1000)", nullptr },
};

TEST(Policy, RulesTellWhatBreaksThem)
{
    const PolicyFolder folder;
    for (const RuleCase& one : kRuleCases) {
        SCOPED_TRACE(one.rule);
        const auto policy = folder.Judged(R"({ "id": "A-1", "severity": "error", "why": "So.", )" +
                                          std::string(one.rule) + " }");
        EXPECT_EQ(policy.at("verdict"), one.found == nullptr ? "kept" : "against policy");
        ASSERT_EQ(policy.at("findings").size(), one.found == nullptr ? 0U : 1U);
        if (one.found == nullptr)
            continue;
        EXPECT_THAT(policy.at("findings").at(0).at("found"), HasSubstr(one.found));
        EXPECT_EQ(policy.at("findings").at(0).at("id"), "POLICY-A-1");
    }
}

TEST(Policy, AWarningIsToldAndKeepsThePicture)
{
    const PolicyFolder folder;
    const Outcome outcome = folder.Run(
        R"({ "name": "n", "rules": [ { "id": "A", "severity": "warning", "names": "b" } ] })");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("kept with warnings"));
}

TEST(Policy, APictureThatIsNotValidIsNotJudged)
{
    const PolicyFolder folder;
    WriteFile(folder / "a.lw", "no picture");
    EXPECT_EQ(folder.Judged(R"({ "id": "A", "severity": "error", "names": "b" })").at("verdict"),
              "not judged");
}

struct BadPolicy {
    const char* policy;
    const char* told;
};

const BadPolicy kBadPolicies[] = {
    { "{\n\"name\": }", "policy.json: at line 2: this is not JSON" },
    { "[]", "at /: an object with members was expected, not []" },
    { R"({"name": "n"})", R"(at /: an object with "rules" was expected)" },
    { R"({"name": "n", "rules": []})", "at /rules: a list that isn't empty" },
    { R"({"name": "n", "rules": [{"id": "a"}]})", "at /rules/0/id: capital letters" },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "bad"}]})", "at /rules/0/severity: " },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error"}]})", "one of least_resolution" },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "colour": 1}]})",
      "at /rules/0: " },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "names": "("}]})",
      "at /rules/0/names: a regular expression was expected" },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "names": "a", "most_total_ink": 1}]})",
      "at /rules/0: " },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "require": {"/a/b": {"is": 1}}}]})",
      "at /rules/0/require/~1a~1b: an object of equals" },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "require": {"a": {"equals": 1}}}]})",
      "a JSON pointer" },
    { R"({"name": "n", "rules": [{"id": "A", "severity": "error", "names": "a"},
                                 {"id": "A", "severity": "error", "names": "b"}]})",
      "at /rules/1/id: an identifier of its own" },
};

TEST(Policy, ABadOneIsToldWithThePlace)
{
    const PolicyFolder folder;
    for (const BadPolicy& one : kBadPolicies) {
        const Outcome outcome = folder.Run(one.policy);
        EXPECT_EQ(outcome.status, 2) << one.policy;
        EXPECT_THAT(outcome.err, HasSubstr(one.told)) << one.policy;
    }
    EXPECT_EQ(folder.RunPolicy(folder / "none.json", "--json-lines").status, 1);
}

struct ExampleCase {
    const char* file;
    const char* told; // by people's text, of the folder's line work
};

const ExampleCase kExampleCases[] = {
    { "newspaper",
      R"(  error POLICY-NEWS-LINE-WORK-RESOLUTION: its resolution is 10 pixels per inch; at least 600 was expected
      Edges of type show steps below that.
  error POLICY-NEWS-INK: a pixel has a total ink of 243.14 %; at most 240 % was expected
      More ink than that doesn't dry and sets off on the next page.
)" },
    { "archive-master",
      "  warning POLICY-MASTER-RESOLUTION: its resolution is 10 pixels per inch; at least 300 was "
      "expected\n" },
    { "screen-preview",
      R"(  error POLICY-SCREEN-FORMAT: /format is "LW"; "JPEG" was expected
  error POLICY-SCREEN-SIZE: /width is 10; at least 16 was expected
      The web server sends them as they are.
  warning POLICY-SCREEN-NAME: its name doesn't match preview-.+\.jpe?g
)" },
};

TEST(Policy, TheExamplesSayWhatTheyShould)
{
    const PolicyFolder folder;
    for (const ExampleCase& one : kExampleCases) {
        const std::string policy = std::string(TYMPAN_DOCS "/policies/") + one.file + ".json";
        EXPECT_EQ(folder.RunPolicy(policy, "-j1").out, folder / "a.lw" + ": LW, valid\n" + one.told)
            << one.file;
    }
}

} // namespace
