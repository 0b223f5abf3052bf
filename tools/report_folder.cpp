#include "report_folder.h"

#include "failure.h"
#include "folder_names.h"
#include "report_assets.h"
#include "signals_held.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

namespace fs = std::filesystem;

constexpr char kPage[] = "index.html";
constexpr char kScratch[] = "page.png";
constexpr std::array kFolders{ "assets", "thumbs" };

// ---- names, made without memory so that a signal's handler can make them too

constexpr std::string_view kImageStart = "thumbs/";
constexpr std::string_view kImageEnd = ".jpg";
constexpr std::size_t kImageDigits = 7;
using Name = std::array<char, 64>;

Name ImageName(unsigned int number)
{
    Name name{};
    char* const digits = std::copy(kImageStart.begin(), kImageStart.end(), name.data());
    for (std::size_t place = kImageDigits; place-- > 0; number /= 10)
        digits[place] = static_cast<char>('0' + number % 10);
    std::copy(kImageEnd.begin(), kImageEnd.end(), digits + kImageDigits);
    return name;
}

Name AssetName(std::string_view file)
{
    constexpr std::string_view kStart = "assets/";
    Name name{};
    char* const rest =
        file == kPage ? name.data() : std::copy(kStart.begin(), kStart.end(), name.data());
    std::copy(file.begin(), file.end(), rest);
    return name;
}

// ---- what is removed when the report doesn't come about

// The report in the making; the handler of a signal reads it.
struct Unfinished {
    std::atomic<bool> isThere = false;
    std::atomic<unsigned int> images = 0; // counted before they are made
    int handle = -1;
    const char* writing = nullptr;
    const char* temporary = nullptr;
};
Unfinished unfinished;

void RemoveUnfinished()
{
    if (!unfinished.isThere.exchange(false))
        return;
    for (unsigned int number = 1; number <= unfinished.images; ++number)
        unlinkat(unfinished.handle, ImageName(number).data(), 0);
    for (const ReportAsset& asset : ReportAssets())
        unlinkat(unfinished.handle, AssetName(asset.name).data(), 0);
    for (const char* const name : { kReportMarker, kReportData, kScratch })
        unlinkat(unfinished.handle, name, 0);
    for (const char* const name : kFolders)
        unlinkat(unfinished.handle, name, AT_REMOVEDIR);
    rmdir(unfinished.writing);
    rmdir(unfinished.temporary);
}

std::array<struct sigaction, NSIG> handlingBefore{};

// What the program does at such a signal comes first: it removes a file that stands in the folder. Its
// raising the signal anew waits until this returns.
extern "C" void RemoveReportAndEnd(int signal)
{
    handlingBefore.at(static_cast<std::size_t>(signal)).sa_handler(signal);
    RemoveUnfinished();
}

bool EndsByHandler(const struct sigaction& handling)
{
    return (handling.sa_flags & SA_SIGINFO) == 0 && handling.sa_handler != SIG_DFL &&
           handling.sa_handler != SIG_IGN;
}

// The signals are those for which the program has a handler.
void HandleSignals()
{
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction& before = handlingBefore.at(static_cast<std::size_t>(signal));
        if (sigaction(signal, nullptr, &before) != 0 || !EndsByHandler(before) ||
            before.sa_handler == RemoveReportAndEnd)
            continue;
        struct sigaction handling = before;
        handling.sa_handler = RemoveReportAndEnd;
        sigaction(signal, &handling, nullptr);
    }
}

// ---- places

std::string BehindLinks(const std::string& path)
{
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    if (error)
        throw FileFailure(path, error.message());
    return (target.has_filename() ? target : target.parent_path()).string();
}

std::vector<std::string> NamesIn(const std::string& folder, const std::string& shown)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator one(folder, error), end; !error && one != end; one.increment(error))
        names.push_back(one->path().filename().string());
    if (error)
        throw FileFailure(shown, error.message());
    return names;
}

bool IsReport(const std::string& folder)
{
    return IsPlainFile(folder + "/" + kReportMarker);
}

// Whatever stands in the way of the report is taken away, so it must be nothing of the person's.
void RequireReplaceable(const std::string& target, const std::string& shown)
{
    constexpr char kAdvice[] = "A report goes to a new folder, an empty one, or one that holds an "
                               "earlier report and nothing else.";
    std::error_code error;
    const fs::file_status there = fs::status(target, error);
    if (!fs::exists(there))
        return;
    if (!fs::is_directory(there))
        throw FileFailure(shown, "is not a folder", {}, kAdvice);
    const std::vector<std::string> names = NamesIn(target, shown);
    if (names.empty())
        return;
    if (!IsReport(target))
        throw FileFailure(shown, "holds files that are not an earlier report", {}, kAdvice);
    const auto foreign = std::find_if_not(names.begin(), names.end(), IsReportsOwn);
    if (foreign != names.end())
        throw FileFailure(shown, "holds \"" + *foreign + "\" beside an earlier report", {},
                          kAdvice);
}

std::string MakeTemporary(const std::string& target, const std::string& shown)
{
    std::string name = FolderOf(target) + "/.tympan-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw SystemFailure(shown, errno,
                            "The folder above it must exist and you must be able to write in it.");
    return name;
}

void MakeFolder(const std::string& path, const std::string& shown)
{
    if (mkdir(path.c_str(), 0777) != 0)
        throw SystemFailure(shown, errno);
}

} // namespace

ReportFolder::ReportFolder(const std::string& path) : path_(path), target_(BehindLinks(path))
{
    RequireReplaceable(target_, path_);
    {
        const SignalsHeld held;
        temporary_ = MakeTemporary(target_, path_);
        writing_ = temporary_ + "/new";
        MakeFolder(writing_, path_);
        handle_ = open(writing_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        unfinished.handle = handle_;
        unfinished.writing = writing_.c_str();
        unfinished.temporary = temporary_.c_str();
        unfinished.images = 0;
        unfinished.isThere = true;
        HandleSignals();
    }
    try {
        for (const char* const folder : kFolders)
            MakeFolder(WritingPath(folder), path_);
        WriteAssets();
    } catch (...) {
        Remove();
        throw;
    }
}

ReportFolder::~ReportFolder()
{
    Remove();
}

void ReportFolder::Remove()
{
    const SignalsHeld held;
    RemoveUnfinished();
    close(handle_);
}

void ReportFolder::WriteAssets() const
{
    const auto write = [&](const std::string& name, std::string_view text) {
        std::ofstream file(WritingPath(name), std::ios::binary);
        file << text << std::flush;
        if (!file)
            throw SystemFailure(path_, errno);
    };
    write(kReportMarker, "A report of tympan's, which the next report to this folder replaces.\n");
    for (const ReportAsset& asset : ReportAssets())
        write(AssetName(asset.name).data(), asset.text);
}

std::string ReportFolder::ScratchPath() const
{
    return WritingPath(kScratch);
}

std::string ReportFolder::NextImage()
{
    return ImageName(++unfinished.images).data();
}

bool ReportFolder::Holds(const std::string& file) const
{
    return file == path_ || file.starts_with(writing_);
}

void ReportFolder::Commit()
{
    const std::string before = temporary_ + "/before";
    const SignalsHeld held;
    std::remove(ScratchPath().c_str());
    RequireReplaceable(target_, path_);
    const bool isReplaced = std::rename(target_.c_str(), before.c_str()) == 0;
    if (!isReplaced && errno != ENOENT)
        throw SystemFailure(path_, errno);
    if (std::rename(writing_.c_str(), target_.c_str()) != 0) {
        const int error = errno;
        if (isReplaced && std::rename(before.c_str(), target_.c_str()) != 0)
            Warn(path_, "what was there is now " + before);
        throw SystemFailure(path_, error);
    }
    unfinished.isThere = false;
    std::error_code ignored; // the report is in its place
    fs::remove_all(temporary_, ignored);
}

bool IsReportsOwn(const std::string& name)
{
    return name == kReportMarker || name == kPage ||
           std::find(kFolders.begin(), kFolders.end(), name) != kFolders.end();
}

} // namespace tympan::tool
