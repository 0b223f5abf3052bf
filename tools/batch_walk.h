// The files of a run, one after the other, whatever their number.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// By what a file is known to be as it was, without a look into it.
struct FileState {
    std::uint64_t size = 0;
    std::int64_t mtimeNs = 0; ///< since 1970

    friend bool operator==(const FileState&, const FileState&) = default;
};

/// Which file a path leads to.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A file's state, and the one behind a symbolic link; nothing when there is none.
std::optional<FileState> StateOf(const std::string& path);
/// Nothing when there is no such file.
std::optional<FileIdentity> IdentityOf(const std::string& path);

/// What a walk comes across.
struct WalkedEntry {
    enum class Kind {
        File,
        Named,            ///< as the person named it, which may be anything but a walked folder
        UnreadableFolder, ///< `error` says why
        Other,            ///< a symbolic link, a pipe, a device: not looked at
    };

    std::string path;
    Kind kind = Kind::Other;
    int error = 0; ///< an `errno` value
    FileState state;
    FileIdentity identity;
};

/// Whether a walk comes to the one path before it comes to the other: names count one by one from
/// the left, by their bytes.
bool IsBefore(std::string_view path, std::string_view other);

/// Paths without needless "." and slashes, in the order of a walk, each once. What lies in a folder
/// that is among them is left out when folders are walked.
std::vector<std::string> WalkOrder(const std::vector<std::string>& paths, bool intoFolders);

/// Walks through folders, hidden files too, in the order that `IsBefore` tells. Symbolic links are
/// followed where they are named, and nowhere else, so that no file comes twice and no walk goes in
/// circles. What belongs to a report is no picture of a job and is passed over. It holds the names of one folder of each level.
class FileWalk {
  public:
    /// \param intoFolders whether folders that are named are walked
    FileWalk(const std::vector<std::string>& paths, bool intoFolders);

    /// Nothing at the end.
    std::optional<WalkedEntry> Next();

  private:
    struct Level {
        std::string folder; ///< empty for the paths that were named
        std::vector<std::string> names;
        std::size_t next = 0;
    };

    bool IsAtNamed() const { return levels_.size() == 1; }
    std::optional<WalkedEntry> Visit(std::string path);
    std::optional<WalkedEntry> Enter(WalkedEntry folder);

    bool intoFolders_;
    std::vector<Level> levels_;
};

} // namespace tympan::tool
