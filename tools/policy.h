// An institution's own rules for its pictures, beyond what makes a file valid: read from a file of
// JSON and held against what `tympan info --json` tells.
#pragma once

#include "standard_output.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// A picture that is judged.
struct PolicySubject {
    std::string file;
    Json info; ///< as `tympan info --json` tells it
    /// The greatest total ink of a pixel, in hundredths of full ink. It reads the picture.
    std::function<double()> measureInk;
};

enum class PolicySeverity {
    Error,   ///< the picture is against the policy
    Warning, ///< the picture is told and kept
};

/// What breaks a rule: a sentence's end behind the picture's name, or nothing when the rule is
/// kept.
using PolicyTest = std::function<std::optional<std::string>(const PolicySubject& subject)>;

struct PolicyRule {
    std::string id; ///< with "POLICY-" in front
    PolicySeverity severity = PolicySeverity::Error;
    std::string why;                  ///< what the institution says of it; may be empty
    std::vector<std::string> formats; ///< those it is for; empty for all
    PolicyTest breachOf;
};

struct PolicyFinding {
    const PolicyRule* rule; ///< the policy's
    std::string found;
};

class Policy {
  public:
    /// \throws FileFailure when the file can't be read; UsageFailure, naming the place in it, when
    /// it is no policy.
    explicit Policy(const std::string& path);

    /// Of the file's bytes, in digits: another sum is another policy.
    const std::string& Sum() const { return sum_; }
    /// The rules that the picture breaks, in the policy's order. Texts and rules last as long as
    /// the policy. A rule that can't be held against the picture counts as broken.
    std::vector<PolicyFinding> Judge(const PolicySubject& subject) const;

  private:
    std::string sum_;
    std::vector<PolicyRule> rules_;
};

/// What of a file's object the key `policy` holds.
Json AsJson(const std::vector<PolicyFinding>& findings);
/// The same of a picture that isn't valid, and not judged before it is mended.
Json PolicyNotJudged();
/// A line for each finding, as they stand below a file's.
std::string TextOf(const std::vector<PolicyFinding>& findings);
/// Whether that object of a file says that an error was found.
bool IsAgainstPolicy(const Json& policy);

} // namespace tympan::tool
