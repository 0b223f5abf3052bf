#include "policy_node.h"

#include "failure.h"

#include <cstddef>
#include <utility>

namespace tympan::tool {

namespace {

constexpr std::size_t kMostShown = 60;

std::string Excerpt(const Json& value)
{
    const std::string text = OnOneLine(value);
    return text.size() <= kMostShown ? text : text.substr(0, kMostShown) + "...";
}

std::string EscapedForPointer(const std::string& key)
{
    std::string escaped;
    for (const char one : key)
        escaped += one == '~' ? "~0" : one == '/' ? "~1" : std::string(1, one);
    return escaped;
}

} // namespace

PolicyNode::PolicyNode(const Json& value, std::string file, std::string where)
    : value_(&value), file_(std::move(file)), where_(std::move(where))
{}

void PolicyNode::Fail(const std::string& expected) const
{
    throw UsageFailure(file_ + ": at " + (where_.empty() ? "/" : where_) + ": " + expected +
                       " was expected, not " + Excerpt(*value_));
}

void PolicyNode::Require(bool isThat, const std::string& expected) const
{
    if (!isThat)
        Fail(expected);
}

PolicyNode PolicyNode::At(const std::string& key) const
{
    Require(Has(key), "an object with \"" + key + "\"");
    return { value_->at(key), file_, where_ + '/' + EscapedForPointer(key) };
}

bool PolicyNode::Has(const std::string& key) const
{
    return value_->is_object() && value_->contains(key);
}

std::vector<std::string> PolicyNode::Keys() const
{
    Require(value_->is_object() && !value_->empty(), "an object with members");
    std::vector<std::string> keys;
    for (const auto& item : value_->items())
        keys.push_back(item.key());
    return keys;
}

std::vector<PolicyNode> PolicyNode::Elements() const
{
    Require(value_->is_array() && !value_->empty(), "a list that isn't empty");
    std::vector<PolicyNode> elements;
    for (const Json& element : *value_)
        elements.emplace_back(element, file_, where_ + '/' + std::to_string(elements.size()));
    return elements;
}

std::string PolicyNode::Text() const
{
    Require(value_->is_string() && !value_->get_ref<const std::string&>().empty(), "a text");
    return value_->get<std::string>();
}

std::vector<std::string> PolicyNode::Texts() const
{
    std::vector<std::string> texts;
    for (const PolicyNode& element : Elements())
        texts.push_back(element.Text());
    return texts;
}

double PolicyNode::Number() const
{
    Require(value_->is_number(), "a number");
    return value_->get<double>();
}

} // namespace tympan::tool
