#include "options.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <utility>

namespace tympan::tool {

Option& Option::Required()
{
    option_->required();
    return *this;
}

Option& Option::Called(const char* value)
{
    option_->type_name(value);
    return *this;
}

Option& Option::Between(double least, double most)
{
    option_->check(CLI::Range(least, most));
    return *this;
}

Option& Option::Between(std::int32_t least, std::int32_t most)
{
    option_->check(CLI::Range(least, most));
    return *this;
}

Option& Option::Between(std::uint32_t least, std::uint32_t most)
{
    option_->check(CLI::Range(least, most));
    return *this;
}

Option& Option::OneOf(const std::vector<std::string>& values)
{
    option_->check(CLI::IsMember(values));
    return *this;
}

Option& Option::ExistingFolder()
{
    option_->check(CLI::ExistingDirectory);
    return *this;
}

Option& Option::NotEmpty()
{
    return Passing(
        [](const std::string& value) { return value.empty() ? "the value is empty" : ""; });
}

Option& Option::Passing(ValueCheck check)
{
    option_->check(CLI::Validator(std::move(check), ""));
    return *this;
}

Option& Option::SizeInBytes()
{
    option_->transform(CLI::AsSizeValue(false));
    return *this;
}

Option& Option::OneValueEach()
{
    option_->allow_extra_args(false);
    return *this;
}

Option& Option::Needs(const Option& other)
{
    option_->needs(other.option_);
    return *this;
}

Option& Option::NotWith(const Option& other)
{
    option_->excludes(other.option_);
    return *this;
}

Option& Option::TellDefault()
{
    option_->capture_default_str();
    return *this;
}

Option& Option::TellDefault(const char* value)
{
    option_->default_str(value);
    return *this;
}

Option& Option::WhenGiven(std::function<void()> note)
{
    option_->each([note = std::move(note)](const std::string&) { note(); });
    return *this;
}

template <class Value>
Option Options::Add(const char* names, Value& value, const char* help) const
{
    return Option(*command_->add_option(names, value, help));
}

template Option Options::Add(const char*, std::string&, const char*) const;
template Option Options::Add(const char*, std::vector<std::string>&, const char*) const;
template Option Options::Add(const char*, double&, const char*) const;
template Option Options::Add(const char*, std::optional<double>&, const char*) const;
template Option Options::Add(const char*, std::int32_t&, const char*) const;
template Option Options::Add(const char*, std::optional<std::int32_t>&, const char*) const;
template Option Options::Add(const char*, std::uint32_t&, const char*) const;
template Option Options::Add(const char*, std::optional<std::uint32_t>&, const char*) const;
template Option Options::Add(const char*, std::uint64_t&, const char*) const;

Option Options::AddFlag(const char* names, bool& isGiven, const char* help) const
{
    return Option(*command_->add_flag(names, isGiven, help));
}

void Options::AddFooter(const char* text) const
{
    command_->footer(text);
}

void Options::Run(std::function<void()> work) const
{
    command_->callback(std::move(work));
}

std::vector<std::string> Options::NamesGiven() const
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : command_->parse_order())
        names.push_back(option->get_name());
    return names;
}

} // namespace tympan::tool
