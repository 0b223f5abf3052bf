#include "folder_names.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace tympan::tool {

std::string InLowerCase(std::string text)
{
    for (char& character : text)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return text;
}

std::string RealPath(const std::string& path)
{
    std::error_code error;
    const std::string real = std::filesystem::canonical(path, error).string();
    return error ? std::string() : real;
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

bool IsInside(const std::string& path, const std::string& folder)
{
    return !folder.empty() &&
           (folder == "/" || (path.size() > folder.size() && path.starts_with(folder) &&
                              path[folder.size()] == '/'));
}

bool IsPlainFile(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

std::vector<std::string> FolderNames::Matching(const std::string& folder, const std::string& name)
{
    const std::string lower = InLowerCase(name);
    const std::vector<Name>& names = NamesOf(folder);
    std::vector<std::string> matching;
    for (auto one = std::lower_bound(names.begin(), names.end(), Name(lower, ""));
         one != names.end() && one->first == lower; ++one)
        matching.push_back(one->second);
    return matching;
}

const std::vector<FolderNames::Name>& FolderNames::NamesOf(const std::string& folder)
{
    if (const auto known = folders_.find(folder); known != folders_.end())
        return known->second;
    std::vector<Name> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end;
         !error && entry != end && names.size() <= kMostNames; entry.increment(error)) {
        std::string name = entry->path().filename().string();
        std::string lower = InLowerCase(name);
        names.emplace_back(std::move(lower), std::move(name));
    }
    if (names.size() > kMostNames)
        names = {};
    std::sort(names.begin(), names.end());
    if (kept_ + names.size() > kMostNames) {
        folders_.clear();
        kept_ = 0;
    }
    kept_ += names.size() + 1; // its own
    return folders_[folder] = std::move(names);
}

} // namespace tympan::tool
