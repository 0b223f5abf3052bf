// What ends a subcommand, how it is told to the person, and the one place where the failures that
// the library throws become one of the command's.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tympan::tool {

/// A file that could not be read or written. Exit status 1.
class FileFailure : public std::exception {
  public:
    /// \param code what `TraceStatus` gave; none where no picture object was asked
    /// \param advice what the person can do about it; may be empty
    FileFailure(std::string file, std::string whatHappened,
                std::optional<unsigned long> code = std::nullopt, std::string advice = {});

    const std::string& File() const { return file_; }
    const std::string& WhatHappened() const { return whatHappened_; }
    const std::optional<unsigned long>& Code() const { return code_; }
    const std::string& Advice() const { return advice_; }
    const char* what() const noexcept override { return whatHappened_.c_str(); }

  private:
    std::string file_;
    std::string whatHappened_;
    std::optional<unsigned long> code_;
    std::string advice_;
};

/// Options that contradict each other, the file or this build. Exit status 2.
class UsageFailure : public std::exception {
  public:
    explicit UsageFailure(std::string whatHappened) : whatHappened_(std::move(whatHappened)) {}
    const char* what() const noexcept override { return whatHappened_.c_str(); }

  private:
    std::string whatHappened_;
};

/// Thrown when every failure has been told already and only exit status 1 is left to give.
struct FailuresReported {};

/// \name Advice that several failures give
/// @{
inline constexpr char kReportAdvice[] = "Please report this, with the picture.";
inline constexpr char kTryAgainAdvice[] = "Run it again when no other program writes the file.";
/// @}

/// The text of an `errno` value.
std::string ErrnoText(int error);

/// A failure of a call of the system, by its `errno`. Without an advice it gets the usual one for that.
FileFailure SystemFailure(std::string file, int error, std::string advice = {});

/// Tells a failure on standard error: `tympan: FILE: what happened (code N)`, a code of 0 left out,
/// and the advice on a further line.
void Report(const FileFailure& failure);
/// Tells something about a file that is no failure, unless --quiet was given.
void Warn(const std::string& file, const std::string& text);

/// Throws the failure in flight again as the command's own, with `file` in it, and destroys it if
/// it was thrown as a pointer. The command's own pass as they are. Call it inside a catch clause.
[[noreturn]] void RethrowAsFileFailure(const std::string& file);

/// Does `work` on a file. Whatever the library or the language throws out of it comes out as a
/// FileFailure of that file.
template <typename Work>
decltype(auto) Guard(const std::string& file, Work&& work)
{
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        RethrowAsFileFailure(file);
    }
}

} // namespace tympan::tool
