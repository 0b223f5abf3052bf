#include "output_file.h"

#include "failure.h"
#include "signals_held.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::array kEndingSignals{ SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU };
constexpr char kStandardOutput[] = "standard output";
constexpr char kTemporaryAdvice[] = "Let TMPDIR name a folder in which you can write.";

// The names that a signal's handler removes, or null. A subcommand has three outputs at most.
std::array<std::atomic<const char*>, 3> unfinished{};
static_assert(std::atomic<const char*>::is_always_lock_free);

extern "C" void RemoveUnfinishedAndEnd(int signal)
{
    for (const auto& one : unfinished)
        if (const char* const path = one.load())
            unlink(path);
    raise(signal); // by now its default action, which comes when this returns
}

void ReplaceForSignals(const char* before, const char* after)
{
    for (auto& one : unfinished)
        if (const char* found = before; one.compare_exchange_strong(found, after))
            return;
}

void RememberForSignals(const std::string& path)
{
    ReplaceForSignals(nullptr, path.c_str());
}

void ForgetForSignals(const std::string& path)
{
    ReplaceForSignals(path.c_str(), nullptr);
}

void RequireOtherFile(const std::string& output, const struct stat& there, const std::string& input)
{
    struct stat read {};
    if (stat(input.c_str(), &read) == 0 && read.st_dev == there.st_dev &&
        read.st_ino == there.st_ino)
        throw UsageFailure(output + ": the output is the input file; give it another name");
}

// What stands at the output's place must be a plain file that the person may write: renaming would
// replace anything.
void RequireReplaceable(const std::string& path, const std::string& input)
{
    struct stat there {};
    if (stat(path.c_str(), &there) != 0) {
        if (errno == ENOENT)
            return;
        throw SystemFailure(path, errno);
    }
    if (S_ISDIR(there.st_mode))
        throw FileFailure(path, "is a folder", {}, "Give the name of a file in it.");
    if (!S_ISREG(there.st_mode))
        throw FileFailure(path, "is not a plain file", {},
                          "Outputs take their name when they are whole, so only a plain file can "
                          "be one.");
    RequireOtherFile(path, there, input);
    if (access(path.c_str(), W_OK) != 0)
        throw SystemFailure(path, errno, "The file that is there is protected against writing.");
}

void RequireDash(Dash dash)
{
    if (dash == Dash::Refused)
        throw UsageFailure("-: this output can't go to standard output; give the name of a file "
                           "(`./-` is one of that name)");
    if (isatty(STDOUT_FILENO) == 1)
        throw UsageFailure(
            "-: standard output is a terminal; send it to a file or a program, as by "
            "`> FILE`");
}

// Where symbolic links lead, so that the link stays and its file is replaced.
std::string BehindLinks(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error))
        return path;
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    if (error)
        throw FileFailure(path, "is a symbolic link that leads nowhere: " + error.message(), {},
                          "Remove the link, or give another name.");
    return target.string();
}

// Where the output of this name is written meanwhile, with the slash at the end.
std::string WritingFolder(const std::string& target)
{
    if (!target.empty())
        return target.substr(0, target.rfind('/') + 1);
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error)
        throw FileFailure(kStandardOutput, "no folder for temporary files: " + error.message(), {},
                          kTemporaryAdvice);
    return folder / "";
}

// Short whatever the output's name is.
std::string TemporaryName()
{
    static std::random_device random;
    constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuv";
    std::string name = ".tympan-";
    for (int digit = 0; digit < 10; ++digit)
        name += kDigits[random() % 32];
    return name;
}

// A file that takes the place of another has its mode, where that can be had.
void KeepMode(const std::string& replaced, int file)
{
    struct stat there {};
    if (stat(replaced.c_str(), &there) == 0 && fchmod(file, there.st_mode & 07777U) != 0)
        return; // the umask's mode is a mode too
}

void Synchronise(const std::string& path, const std::string& shownPath)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const int error = file < 0 || fsync(file) != 0 ? errno : 0;
    if (file >= 0)
        close(file);
    if (error != 0)
        throw SystemFailure(shownPath, error);
}

void CopyToStandardOutput(const std::string& path)
{
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
    if (file == nullptr)
        throw SystemFailure(path, errno);
    std::vector<char> bytes(std::size_t{ 64 } << 10U);
    for (std::size_t count = 0;
         (count = std::fread(bytes.data(), 1, bytes.size(), file.get())) > 0;)
        if (std::fwrite(bytes.data(), 1, count, stdout) != count)
            throw SystemFailure(kStandardOutput, errno);
    if (std::ferror(file.get()) != 0)
        throw SystemFailure(path, errno);
    if (std::fflush(stdout) != 0)
        throw SystemFailure(kStandardOutput, errno);
}

// Some file systems refuse this for folders; the output is whole and named all the same.
void SynchroniseFolder(const std::string& path)
{
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int handle =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    fsync(handle);
    close(handle);
}

} // namespace

OutputFile::OutputFile(const std::string& path, const std::string& input,
                       const std::string& extension, Dash dash)
    : path_(IsDash(path) ? kStandardOutput : path)
{
    if (IsDash(path)) {
        RequireDash(dash);
    } else {
        RequireReplaceable(path, input);
        target_ = BehindLinks(path);
    }
    const std::string folder = WritingFolder(target_);
    const SignalsHeld held;
    do {
        writingPath_ = folder + TemporaryName() + extension;
    } while (!MakeTemporary());
}

OutputFile::OutputFile(const std::string& path, const std::string& input, const OutputFile& partner,
                       const std::string& extension)
    : path_(path)
{
    RequireReplaceable(path, input);
    target_ = BehindLinks(path);
    const std::string& name = partner.writingPath_;
    writingPath_ = name.substr(0, name.rfind('.')) + extension;
    const SignalsHeld held;
    if (!MakeTemporary())
        throw SystemFailure(path, EEXIST);
}

// False when there is a file of that name. The signals are held.
bool OutputFile::MakeTemporary()
{
    const mode_t mode = IsForStandardOutput() ? 0600 : 0666; // nobody else reads what is on its way
    const int file = open(writingPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0 && errno == EEXIST)
        return false;
    if (file < 0)
        throw SystemFailure(path_, errno,
                            IsForStandardOutput()
                                ? kTemporaryAdvice
                                : "The folder must exist and you must be able to write in it.");
    KeepMode(target_, file);
    close(file);
    RememberForSignals(writingPath_);
    return true;
}

OutputFile::~OutputFile()
{
    const SignalsHeld held;
    ForgetForSignals(writingPath_);
    if (!committed_)
        unlink(writingPath_.c_str());
}

void OutputFile::Commit()
{
    CommitTogether({ this });
}

void OutputFile::CommitTogether(std::initializer_list<OutputFile*> outputs)
{
    for (const OutputFile* const output : outputs)
        if (output != nullptr)
            output->Secure();
    for (OutputFile* const output : outputs)
        if (output != nullptr)
            output->Rename();
}

// Brings the bytes to where a failure of the machine no longer loses them, or to who reads them.
void OutputFile::Secure() const
{
    if (IsForStandardOutput())
        CopyToStandardOutput(writingPath_);
    else
        Synchronise(writingPath_, path_);
}

void OutputFile::Rename()
{
    if (IsForStandardOutput())
        return; // the destructor removes the file
    {
        const SignalsHeld held;
        if (std::rename(writingPath_.c_str(), target_.c_str()) != 0)
            throw SystemFailure(path_, errno);
        committed_ = true;
        ForgetForSignals(writingPath_);
    }
    SynchroniseFolder(target_);
}

void HandleEndingSignals()
{
    for (const int signal : kEndingSignals) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN)
            continue; // as nohup wants it
        struct sigaction handling {};
        handling.sa_handler = RemoveUnfinishedAndEnd;
        handling.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &handling, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tympan::tool
