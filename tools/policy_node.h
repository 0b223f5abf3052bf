// A place in a policy's file, which can say what is wrong there.
#pragma once

#include "standard_output.h"

#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// All fail with a UsageFailure that names the file and the place, as `/rules/2/severity`.
class PolicyNode {
  public:
    /// \param where the place, as a JSON pointer; the value has to last as long as the node
    PolicyNode(const Json& value, std::string file, std::string where = {});

    const Json& Value() const { return *value_; }
    /// The member of an object; it has to be there.
    PolicyNode At(const std::string& key) const;
    bool Has(const std::string& key) const;
    /// The keys of an object, and nothing but an object.
    std::vector<std::string> Keys() const;
    /// What a list holds, which is not empty.
    std::vector<PolicyNode> Elements() const;

    std::string Text() const;
    std::vector<std::string> Texts() const;
    double Number() const;
    bool IsNumber() const { return value_->is_number(); }

    [[noreturn]] void Fail(const std::string& expected) const;

  private:
    void Require(bool isThat, const std::string& expected) const;

    const Json* value_;
    std::string file_;
    std::string where_;
};

} // namespace tympan::tool
