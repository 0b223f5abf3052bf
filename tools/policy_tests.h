// The kinds of rules that a policy may have.
#pragma once

#include "policy.h"
#include "policy_node.h"

#include <string>

namespace tympan::tool {

/// The kinds' keys, for a message.
std::string PolicyTestKeys();
/// Whether a rule's member of this key says what is tested.
bool IsPolicyTestKey(const std::string& key);
/// \param value of that member
/// \throws UsageFailure when it isn't what the kind needs.
PolicyTest ReadPolicyTest(const std::string& key, const PolicyNode& value);

} // namespace tympan::tool
