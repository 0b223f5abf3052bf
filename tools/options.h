// How a subcommand declares its options and arguments. The parser stands behind options.cpp: reading its
// headers takes a compiler longer than most sources of the command.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tympan::tool {

/// What wrong values of an option are told by: the message, or nothing for a good value.
using ValueCheck = std::function<std::string(const std::string& value)>;

/// One option or argument, which lives as long as its command. What it gives back is itself.
class Option {
  public:
    explicit Option(CLI::Option& option) : option_(&option) {}

    Option& Required();
    /// What stands for the value in the help, in place of its kind.
    Option& Called(const char* value);
    /// \name What it takes
    /// @{
    Option& Between(double least, double most);
    Option& Between(std::int32_t least, std::int32_t most);
    Option& Between(std::uint32_t least, std::uint32_t most);
    Option& OneOf(const std::vector<std::string>& values);
    Option& ExistingFolder();
    /// Not an empty value, which is a script's mistake.
    Option& NotEmpty();
    Option& Passing(ValueCheck check);
    /// Bytes, or a number of KiB, MiB ... with its unit.
    Option& SizeInBytes();
    /// Of an option that may be given again: one value each time.
    Option& OneValueEach();
    /// @}
    Option& Needs(const Option& other);
    Option& NotWith(const Option& other);
    /// Tells the variable's value, as it is now, as the default.
    Option& TellDefault();
    Option& TellDefault(const char* value);
    /// What is to be done when it is given.
    Option& WhenGiven(std::function<void()> note);

  private:
    CLI::Option* option_;
};

/// The options of a subcommand, as it declares them and as they were given. A value that can be copied:
/// all copies stand for the same subcommand.
class Options {
  public:
    explicit Options(CLI::App& command) : command_(&command) {}

    /// An option with a value, or an argument when the name has no dash.
    /// \tparam Value one of those that options.cpp lists
    /// \param names such as "-o,--output"
    /// \param value set when it is given; must live as long as the command
    template <class Value>
    Option Add(const char* names, Value& value, const char* help) const;
    Option AddFlag(const char* names, bool& isGiven, const char* help) const;
    /// What the help tells behind the options.
    void AddFooter(const char* text) const;
    /// What the subcommand does, once all its options are read.
    void Run(std::function<void()> work) const;

    /// The names of those given, one for each time, in the order of the command line.
    std::vector<std::string> NamesGiven() const;

  private:
    CLI::App* command_;
};

} // namespace tympan::tool
