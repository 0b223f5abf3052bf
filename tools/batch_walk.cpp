#include "batch_walk.h"

#include "folder_names.h"
#include "report_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace tympan::tool {

namespace {

constexpr char kHere[] = ".";

FileState StateFrom(const struct stat& status)
{
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    constexpr std::int64_t kMostSeconds = 9'000'000'000; // 285 years, and no overflow
    const auto seconds =
        std::clamp(std::int64_t{ status.st_mtim.tv_sec }, -kMostSeconds, kMostSeconds);
    return { static_cast<std::uint64_t>(status.st_size),
             seconds * kNanoseconds + status.st_mtim.tv_nsec };
}

std::optional<struct stat> StatusOf(const std::string& path, int linkFlag)
{
    struct stat status {};
    if (fstatat(AT_FDCWD, path.c_str(), &status, linkFlag) != 0)
        return std::nullopt;
    return status;
}

std::string Joined(const std::string& folder, const std::string& name)
{
    if (folder.empty() || folder == kHere)
        return name;
    return folder.back() == '/' ? folder + name : folder + '/' + name;
}

// The names in a folder, sorted, or why they can't be had.
int ReadNames(const std::string& folder, std::vector<std::string>& names)
{
    struct CloseFolder {
        void operator()(DIR* open) const { closedir(open); }
    };
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    if (open == nullptr)
        return errno;
    errno = 0;
    while (const dirent* const entry = readdir(open.get()))
        if (const std::string_view name = entry->d_name; name != "." && name != "..")
            names.emplace_back(name);
    const int error = errno;
    std::sort(names.begin(), names.end());
    return error;
}

std::vector<std::string_view> PartsOf(std::string_view path)
{
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const std::string_view part = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(part.size() + 1, path.size()));
        if (!part.empty() && part != kHere)
            parts.push_back(part);
    }
    return parts;
}

std::string WithoutDetours(std::string_view path)
{
    std::string plain(path.starts_with('/') ? "/" : "");
    for (const std::string_view part : PartsOf(path))
        plain = Joined(plain, std::string(part));
    return plain.empty() && !path.empty() ? kHere : plain;
}

// Whether a walk through the folder comes to the path: not behind ".." or a symbolic link.
bool LiesIn(const std::string& folder, const std::string& path)
{
    const std::string start = folder == kHere ? "" : Joined(folder, "");
    return path.starts_with(start) && !(start.empty() && path.starts_with('/')) &&
           RealPath(path) == Joined(RealPath(folder), path.substr(start.size()));
}

} // namespace

std::optional<FileState> StateOf(const std::string& path)
{
    const auto status = StatusOf(path, 0);
    return status ? std::optional(StateFrom(*status)) : std::nullopt;
}

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    const auto status = StatusOf(path, 0);
    return status ? std::optional(FileIdentity{ status->st_dev, status->st_ino }) : std::nullopt;
}

bool IsBefore(std::string_view path, std::string_view other)
{
    // As if the slash, which ends a name, were the smallest of all characters.
    const auto rank = [](char one) {
        return one == '/' ? 0 : static_cast<int>(static_cast<unsigned char>(one));
    };
    return std::lexicographical_compare(
        path.begin(), path.end(), other.begin(), other.end(),
        [&](char one, char another) { return rank(one) < rank(another); });
}

std::vector<std::string> WalkOrder(const std::vector<std::string>& paths, bool intoFolders)
{
    std::vector<std::string> plain(paths.size());
    std::transform(paths.begin(), paths.end(), plain.begin(), WithoutDetours);
    std::sort(plain.begin(), plain.end(), IsBefore);
    plain.erase(std::unique(plain.begin(), plain.end()), plain.end());
    if (!intoFolders)
        return plain;
    const std::vector<std::string> all = plain;
    std::erase_if(plain, [&](const std::string& path) {
        return std::any_of(all.begin(), all.end(), [&](const std::string& folder) {
            return folder != path && LiesIn(folder, path);
        });
    });
    return plain;
}

FileWalk::FileWalk(const std::vector<std::string>& paths, bool intoFolders)
    : intoFolders_(intoFolders), levels_{ { {}, WalkOrder(paths, intoFolders), 0 } }
{}

std::optional<WalkedEntry> FileWalk::Next()
{
    while (!levels_.empty()) {
        Level& level = levels_.back();
        if (level.next == level.names.size())
            levels_.pop_back();
        else if (auto entry = Visit(Joined(level.folder, level.names[level.next++])))
            return entry;
    }
    return std::nullopt;
}

// Nothing for a folder that can be read, whose names come next.
std::optional<WalkedEntry> FileWalk::Visit(std::string path)
{
    const auto status = StatusOf(path, IsAtNamed() ? 0 : AT_SYMLINK_NOFOLLOW);
    using Kind = WalkedEntry::Kind;
    if (!status) // one that is gone meanwhile is checked too, which tells so
        return WalkedEntry{ std::move(path), Kind::Named, 0, {}, {} };
    const Kind kind = IsAtNamed()                ? Kind::Named
                      : S_ISREG(status->st_mode) ? Kind::File
                                                 : Kind::Other;
    WalkedEntry entry{
        std::move(path), kind, 0, StateFrom(*status), { status->st_dev, status->st_ino }
    };
    return S_ISDIR(status->st_mode) && intoFolders_ ? Enter(std::move(entry)) : entry;
}

std::optional<WalkedEntry> FileWalk::Enter(WalkedEntry entry)
{
    Level below{ entry.path, {}, 0 };
    entry.error = ReadNames(entry.path, below.names);
    if (std::binary_search(below.names.begin(), below.names.end(), kReportMarker))
        std::erase_if(below.names, IsReportsOwn);
    levels_.push_back(std::move(below));
    if (entry.error == 0)
        return std::nullopt;
    entry.kind = WalkedEntry::Kind::UnreadableFolder;
    return entry;
}

} // namespace tympan::tool
