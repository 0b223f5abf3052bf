#include "command_runner.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace tympan::test {

namespace {

constexpr int kNotStarted = 127;

int NamelessFile()
{
    std::string name = (std::filesystem::temp_directory_path() / "tympan-output-XXXXXX").string();
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0)
        throw std::system_error(errno, std::generic_category(), name);
    unlink(name.c_str());
    return file;
}

// The arguments as exec wants them; they last as long as the texts.
std::vector<char*> Pointers(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers{ const_cast<char*>(program.c_str()) };
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

std::string TakeAll(int file)
{
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t read = pread(file, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(read, 0)));
    close(file);
    return text;
}

bool Limit(int resource, std::uint64_t most)
{
    const rlimit limit{ most, most };
    return most == 0 || setrlimit(static_cast<__rlimit_resource_t>(resource), &limit) == 0;
}

// The child's part between fork and exec.
[[noreturn]] void Become(const std::vector<char*>& arguments, const Limits& limits, int out,
                         int err)
{
    const int input = open("/dev/null", O_RDONLY);
    const bool ready = dup2(input, STDIN_FILENO) >= 0 && dup2(out, STDOUT_FILENO) >= 0 &&
                       dup2(err, STDERR_FILENO) >= 0 && Limit(RLIMIT_AS, limits.addressSpace) &&
                       Limit(RLIMIT_FSIZE, limits.fileSize);
    // A sanitizer's report must not pass for the command's own exit status of a failed file.
    setenv("ASAN_OPTIONS", "exitcode=99", 1);
    // A coverage build's counters: no word of theirs among the command's, and none cut by a limit.
    setenv("GCOV_ERROR_FILE", "/dev/null", 1);
    if (limits.fileSize != 0)
        setenv("GCOV_PREFIX", "/dev/null", 1);
    if (ready)
        execvp(arguments[0], arguments.data());
    _exit(kNotStarted);
}

} // namespace

RunningCommand::RunningCommand(const std::vector<std::string>& arguments, const Limits& limits)
    : RunningCommand(TYMPAN_COMMAND, arguments, limits)
{}

RunningCommand::RunningCommand(const std::string& program,
                               const std::vector<std::string>& arguments, const Limits& limits)
    : out_(NamelessFile()), err_(NamelessFile())
{
    const std::vector<char*> pointers = Pointers(program, arguments);
    process_ = fork();
    if (process_ < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (process_ == 0)
        Become(pointers, limits, out_, err_);
}

RunningCommand::~RunningCommand()
{
    if (process_ < 0)
        return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    close(out_);
    close(err_);
}

void RunningCommand::Signal(int number) const
{
    kill(process_, number);
}

std::uint64_t RunningCommand::BytesRead() const
{
    std::ifstream counts("/proc/" + std::to_string(process_) + "/io");
    std::string name;
    std::uint64_t bytes = 0;
    counts >> name >> bytes; // "rchar: 123" is the first
    return bytes;
}

Outcome RunningCommand::Wait()
{
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return { WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), TakeAll(out_),
             TakeAll(err_) };
}

Outcome RunCommand(const std::vector<std::string>& arguments, const Limits& limits)
{
    return RunningCommand(arguments, limits).Wait();
}

Outcome RunWords(const std::string& words, const TemporaryFolder& folder)
{
    std::vector<std::string> arguments;
    std::istringstream in(words);
    for (std::string word; in >> word;)
        arguments.push_back(word[0] == '@' ? folder / word.substr(1) : word);
    return RunCommand(arguments);
}

std::string CommandPath()
{
    return TYMPAN_COMMAND;
}

Outcome RunProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    return RunningCommand(program, arguments, {}).Wait();
}

std::string RunOnTerminal(const std::vector<std::string>& arguments)
{
    const std::string program = TYMPAN_COMMAND;
    const std::vector<char*> pointers = Pointers(program, arguments);
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process < 0)
        throw std::system_error(errno, std::generic_category(), "forkpty");
    if (process == 0) {
        execvp(pointers[0], pointers.data());
        _exit(kNotStarted);
    }
    std::string sent;
    std::array<char, 4096> bytes{};
    for (ssize_t count = 0; (count = read(terminal, bytes.data(), bytes.size())) > 0;)
        sent.append(bytes.data(), static_cast<std::size_t>(count));
    close(terminal);
    waitpid(process, nullptr, 0);
    return sent;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("can't read " + path);
    return { std::istreambuf_iterator<char>(file), {} };
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
        throw std::runtime_error("can't write " + path);
}

} // namespace tympan::test
