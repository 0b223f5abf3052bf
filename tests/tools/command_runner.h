// Runs the command as a person or a script does, in a folder of its own.
#pragma once

#include "support/temporary_folder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tympan::test {

/// What a run of the command left.
struct Outcome {
    int status = -1; ///< exit status; minus the number of the signal that ended it
    std::string out;
    std::string err;
};

/// Limits that a run is held to; 0 for none.
struct Limits {
    std::uint64_t addressSpace = 0; ///< bytes
    std::uint64_t fileSize = 0;     ///< bytes of any file that it writes
};

/// Runs the command with these arguments and waits for it.
Outcome RunCommand(const std::vector<std::string>& arguments, const Limits& limits = {});

/// The same with arguments between blanks, those that begin with @ as files of the folder.
Outcome RunWords(const std::string& words, const TemporaryFolder& folder);

/// Where the command stands.
std::string CommandPath();

/// Runs any program that is found on the path, as `gm`.
Outcome RunProgram(const std::string& program, const std::vector<std::string>& arguments);

/// What a terminal is sent by a run whose output and errors go to it.
std::string RunOnTerminal(const std::vector<std::string>& arguments);

/// A run that goes on while the test looks at it.
class RunningCommand {
  public:
    explicit RunningCommand(const std::vector<std::string>& arguments, const Limits& limits = {});
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;
    /// Ends the run if it wasn't waited for.
    ~RunningCommand();

    void Signal(int number) const;
    /// How many bytes it has read by calls of the system so far.
    std::uint64_t BytesRead() const;
    Outcome Wait();

  private:
    friend Outcome RunProgram(const std::string& program,
                              const std::vector<std::string>& arguments);
    RunningCommand(const std::string& program, const std::vector<std::string>& arguments,
                   const Limits& limits);

    int process_ = -1;
    int out_ = -1; // a file without a name, read once the run is over
    int err_ = -1;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);

} // namespace tympan::test
