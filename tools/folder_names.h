// Names in folders: found without regard to case, and held to a folder whatever ".." and symbolic
// links make of them.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

/// With ASCII letters in lower case; other bytes as they are, whatever their encoding.
std::string InLowerCase(std::string text);

/// A path without ".." and symbolic links; empty for one of nothing.
std::string RealPath(const std::string& path);
/// The folder of a file's path.
std::string FolderOf(const std::string& path);
/// Whether a path leads into a folder. Both are real paths.
bool IsInside(const std::string& path, const std::string& folder);
bool IsPlainFile(const std::string& path);

/// Reads each folder once and keeps its names, as long as they are not too many: a folder of more
/// than `kMostNames` counts as empty here, and what is kept is given up when all folders together
/// have more.
class FolderNames {
  public:
    static constexpr std::size_t kMostNames = 200'000;

    /// The names that equal `name` but for case, in the order of their bytes.
    std::vector<std::string> Matching(const std::string& folder, const std::string& name);

  private:
    using Name = std::pair<std::string, std::string>; // in lower case, and as it is

    const std::vector<Name>& NamesOf(const std::string& folder);

    std::map<std::string, std::vector<Name>> folders_;
    std::size_t kept_ = 0;
};

} // namespace tympan::tool
