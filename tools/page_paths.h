// Where the files of a page's pictures are: a page file names them as another machine does.
#pragma once

#include "options.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// The values of `--root` and `--map`, as given.
struct PathOptions {
    std::vector<std::string> roots;
    std::vector<std::string> maps; ///< such as `P:\JOBS=/srv/jobs`
};

/// Declares both, each of which may be given several times.
void AddPathOptions(const Options& command, PathOptions& options);

/// The library's path resolver for one page file, in force while this lives. One may live inside
/// another, whose resolver is in force again when the inner one ends.
///
/// The page's own path stands as it is. Any other is looked for
/// - as it is, when it begins with `/`,
/// - behind each `--map` whose first part it begins with,
/// - in each `--root`: the path without its drive, then its last part,
/// - in the page's folder: a relative path, then the last part of any,
///
/// each time as it is written and then without regard to the case of ASCII letters. Backslashes and
/// slashes part names; blanks at the end don't count. Only a plain file is found whose real path,
/// behind ".." and symbolic links, lies in one of these folders. Any other path is that of a file
/// which isn't there.
///
/// A name that ends in .bin where that of a picture ends otherwise is its side file's, and is looked
/// for beside the file that was found for the picture last.
class PagePaths {
  public:
    PagePaths(const std::string& page, const PathOptions& options);
    PagePaths(const PagePaths&) = delete;
    PagePaths& operator=(const PagePaths&) = delete;
    ~PagePaths();

    /// The absolute path of a picture's file, which is found again by itself; nothing when there is
    /// none.
    std::optional<std::string> Find(std::string_view entryPath) const;

  private:
    class Search;

    static void UseInnermost();

    static PagePaths* innermost;

    std::shared_ptr<Search> search_;
    PagePaths* outer_;
};

} // namespace tympan::tool
