// A disk of a few pages, to be filled up; only root can have one.
#pragma once

#include "support/temporary_folder.h"

#include <sys/mount.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace tympan::test {

class SmallDisk {
  public:
    SmallDisk()
        : isThere_(mount("tympan-test", Path().c_str(), "tmpfs", MS_NOSUID | MS_NODEV,
                         "nr_blocks=16") == 0)
    {}
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk()
    {
        if (isThere_)
            umount2(Path().c_str(), MNT_DETACH);
    }

    /// False where mounting isn't allowed.
    bool IsThere() const { return isThere_; }
    const TemporaryFolder& Folder() const { return folder_; }
    std::string operator/(const std::string& name) const { return folder_ / name; }

    /// Fills it by a file of its own until only so many pages are free.
    /// \throws std::runtime_error
    void LeaveFree(std::uint64_t pages) const
    {
        const std::string filling = folder_ / "filling";
        std::filesystem::remove(filling);
        struct statvfs disk {};
        if (statvfs(Path().c_str(), &disk) != 0 || disk.f_bavail < pages)
            throw std::runtime_error("the disk is too small");
        std::ofstream file(filling, std::ios::binary);
        file << std::string((disk.f_bavail - pages) * disk.f_bsize, 'f');
        if (!file.flush())
            throw std::runtime_error("the disk can't be filled");
    }

  private:
    std::string Path() const { return folder_.Path().string(); }

    TemporaryFolder folder_;
    bool isThere_;
};

} // namespace tympan::test
