#include "page_paths.h"

#include "folder_names.h"
#include "jpeg_side_file.h"

#include <tympan/tympan.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <span>
#include <system_error>
#include <utility>

namespace tympan::tool {

namespace {

using Parts = std::span<const std::string>;

// A path as another machine writes it.
struct ForeignPath {
    std::string root; // "p:", "//" of a server's name, "/", or none of a relative path
    std::vector<std::string> parts;
    bool leavesStart = false; // by more ".." than there are folders in front of them

    bool IsRelative() const { return root.empty(); }
    Parts Whole() const { return leavesStart ? Parts() : Parts(parts); }
    Parts LastPart() const { return Parts(parts).last(std::min<std::size_t>(parts.size(), 1)); }
};

std::string WithSlashes(std::string_view path)
{
    std::string text(path.substr(0, path.find_last_not_of(' ') + 1));
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::string_view RootOf(std::string_view path)
{
    const auto isLetter = [](char one) {
        return (one >= 'A' && one <= 'Z') || (one >= 'a' && one <= 'z');
    };
    if (path.size() >= 2 && isLetter(path[0]) && path[1] == ':')
        return path.substr(0, 2);
    return path.substr(0, path.starts_with("//") ? 2 : path.starts_with("/") ? 1 : 0);
}

void Append(ForeignPath& path, std::string_view part)
{
    if (part.empty() || part == ".")
        return;
    if (part != "..")
        path.parts.emplace_back(part);
    else if (path.parts.empty())
        path.leavesStart = true;
    else
        path.parts.pop_back();
}

ForeignPath PartsOf(std::string_view written)
{
    const std::string text = WithSlashes(written);
    ForeignPath path;
    path.root = InLowerCase(std::string(RootOf(text)));
    for (std::size_t at = path.root.size(); at < text.size();) {
        const std::size_t end = std::min(text.find('/', at), text.size());
        Append(path, std::string_view(text).substr(at, end - at));
        at = end + 1;
    }
    return path;
}

// What a path has behind a prefix; nothing when it doesn't begin with it.
Parts Behind(const ForeignPath& prefix, const ForeignPath& path)
{
    const auto areEqual = [](const std::string& one, const std::string& other) {
        return InLowerCase(one) == InLowerCase(other);
    };
    const Parts parts = path.Whole();
    const std::size_t count = prefix.parts.size();
    if (prefix.leavesStart || prefix.root != path.root || parts.size() < count ||
        !std::equal(prefix.parts.begin(), prefix.parts.end(), parts.begin(), areEqual))
        return {};
    return parts.subspan(count);
}

// The two sides of a value of --map.
struct MapSides {
    std::string prefix, folder;
};

MapSides SidesOf(const std::string& map)
{
    const std::size_t equals = map.find('=');
    if (equals == std::string::npos)
        return {};
    return { map.substr(0, equals), map.substr(equals + 1) };
}

std::string RefuseMap(const std::string& map)
{
    const MapSides sides = SidesOf(map);
    std::error_code ignored;
    if (sides.prefix.empty())
        return "a map has the form PREFIX=DIR";
    if (!std::filesystem::is_directory(sides.folder, ignored))
        return "the map's folder does not exist: " + sides.folder;
    return "";
}

std::string Joined(const std::string& folder, Parts parts)
{
    std::string path = folder;
    for (const std::string& part : parts)
        path += (path.ends_with('/') ? "" : "/") + part;
    return path;
}

bool IsFolder(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

} // namespace

class PagePaths::Search {
  public:
    Search(const std::string& page, const PathOptions& options)
        : page_(page), pageFolder_(RealPath(FolderOf(page)))
    {
        for (const std::string& map : options.maps) {
            const MapSides sides = SidesOf(map);
            maps_.push_back({ PartsOf(sides.prefix), RealPath(sides.folder) });
        }
        for (const std::string& root : options.roots)
            roots_.push_back(RealPath(root));
        sides_[JpegSideFilePath(page)] = { page, pageFolder_ };
    }

    std::optional<std::string> Find(const std::string& path)
    {
        const std::lock_guard lock(mutex_);
        const std::optional<Found> found = Known(path);
        return found ? std::optional(found->path) : std::nullopt;
    }

    std::string Resolve(const std::string& path)
    {
        if (path == page_)
            return path;
        const std::lock_guard lock(mutex_);
        if (const auto side = sides_.find(path); side != sides_.end())
            return Beside(side->second, path).value().path; // what is thrown says: not there
        Found found = Known(path).value();
        return (sides_[JpegSideFilePath(path)] = std::move(found)).path;
    }

  private:
    struct Found {
        std::string path;
        std::string base; // the given folder that it lies in, a real path
    };
    struct Map {
        ForeignPath prefix;
        std::string folder;
    };

    const std::optional<Found>& Known(const std::string& path)
    {
        const auto known = known_.find(path);
        return known != known_.end() ? known->second : known_[path] = LookFor(path);
    }

    std::optional<Found> LookFor(const std::string& written)
    {
        if (std::optional<Found> found = AsItIs(written))
            return found;
        const ForeignPath path = PartsOf(written);
        std::optional<Found> found;
        const auto tryIn = [&](const std::string& folder, Parts parts) {
            if (!found)
                found = Under(folder, folder, parts);
        };
        for (const Map& map : maps_)
            tryIn(map.folder, Behind(map.prefix, path));
        for (const std::string& root : roots_) {
            tryIn(root, path.Whole());
            tryIn(root, path.LastPart());
        }
        tryIn(pageFolder_, path.IsRelative() ? path.Whole() : Parts());
        tryIn(pageFolder_, path.LastPart());
        return found;
    }

    // An absolute path of this machine that lies in one of the folders.
    std::optional<Found> AsItIs(std::string path) const
    {
        path.erase(path.find_last_not_of(' ') + 1);
        if (!path.starts_with('/') || !IsPlainFile(path))
            return std::nullopt;
        std::vector<std::string> bases{ pageFolder_ };
        bases.insert(bases.end(), roots_.begin(), roots_.end());
        for (const Map& map : maps_)
            bases.push_back(map.folder);
        const std::string real = RealPath(path);
        const auto base = std::find_if(bases.begin(), bases.end(),
                                       [&](const std::string& one) { return IsInside(real, one); });
        return base == bases.end() ? std::nullopt : std::optional<Found>({ path, *base });
    }

    std::optional<Found> Under(const std::string& base, const std::string& folder, Parts parts)
    {
        if (parts.empty() || base.empty() || folder.empty())
            return std::nullopt;
        std::string path = Joined(folder, parts);
        if (!IsPlainFile(path) || !IsInside(RealPath(path), base))
            path = InAnyCase(base, folder, parts);
        return path.empty() ? std::nullopt : std::optional<Found>({ path, base });
    }

    // Part by part: the name that is written so, else the first by its bytes that differs in case
    // only. Empty when there is none.
    std::string InAnyCase(const std::string& base, std::string folder, Parts parts)
    {
        for (; !parts.empty() && !folder.empty(); parts = parts.subspan(1))
            folder = OneInAnyCase(base, folder, parts.front(), parts.size() == 1);
        return folder;
    }

    std::string OneInAnyCase(const std::string& base, const std::string& folder,
                             const std::string& name, bool isFile)
    {
        std::vector<std::string> names = names_.Matching(folder, name);
        std::stable_partition(names.begin(), names.end(),
                              [&](const std::string& one) { return one == name; });
        const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& one) {
            return IsWanted(base, Joined(folder, { &one, 1 }), isFile);
        });
        return found == names.end() ? "" : Joined(folder, { &*found, 1 });
    }

    static bool IsWanted(const std::string& base, const std::string& path, bool isFile)
    {
        if (isFile)
            return IsPlainFile(path) && IsInside(RealPath(path), base);
        const std::string real = IsFolder(path) ? RealPath(path) : "";
        return real == base || IsInside(real, base);
    }

    std::optional<Found> Beside(const Found& picture, const std::string& side)
    {
        const ForeignPath path = PartsOf(side);
        return Under(picture.base, RealPath(FolderOf(picture.path)), path.LastPart());
    }

    std::mutex mutex_; // files may be opened on any thread
    std::string page_;
    std::string pageFolder_; // empty when there is none
    std::vector<Map> maps_;
    std::vector<std::string> roots_;
    FolderNames names_;
    std::map<std::string, std::optional<Found>> known_;
    std::map<std::string, Found> sides_; // by a side file's name, the picture asked for last
};

void AddPathOptions(const Options& command, PathOptions& options)
{
    command
        .Add("--root", options.roots,
             "Look for a page's pictures under this folder; may be given again")
        .OneValueEach()
        .Called("DIR")
        .ExistingFolder();
    command
        .Add("--map", options.maps,
             "Look for what a page names under PREFIX, as P:\\JOBS, under "
             "this folder; may "
             "be given again")
        .OneValueEach()
        .Called("PREFIX=DIR")
        .Passing(RefuseMap);
}

PagePaths* PagePaths::innermost = nullptr;

PagePaths::PagePaths(const std::string& page, const PathOptions& options)
    : search_(std::make_shared<Search>(page, options)), outer_(innermost)
{
    innermost = this;
    UseInnermost();
}

PagePaths::~PagePaths()
{
    PagePaths** link = &innermost;
    while (*link != this)
        link = &(*link)->outer_;
    *link = outer_;
    UseInnermost();
}

std::optional<std::string> PagePaths::Find(std::string_view entryPath) const
{
    return search_->Find(std::string(entryPath));
}

void PagePaths::UseInnermost()
{
    PathResolver resolver;
    if (innermost != nullptr)
        resolver = [search = innermost->search_](const CString& path) {
            return CString(search->Resolve(path.GetString()).c_str());
        };
    SetPathResolver(std::move(resolver));
}

} // namespace tympan::tool
