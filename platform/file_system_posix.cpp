// The system's files through POSIX calls.
#include "platform/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tympan {

namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "positions are as wide as the file's");

// Calls until no signal interrupts; gives the call's result or its errno value.
template <typename Call>
IoResult Retried(Call call) noexcept
{
    for (;;) {
        const auto result = call();
        if (result >= 0)
            return { static_cast<std::int64_t>(result), 0 };
        if (errno != EINTR)
            return IoResult::Failed(errno);
    }
}

int AccessFlags(OpenMode mode)
{
    switch (mode.access) {
    case Access::write: return O_WRONLY;
    case Access::readWrite: return O_RDWR;
    case Access::read: break;
    }
    return mode.create ? O_RDWR : O_RDONLY; // emptying a file asks for more than reading it
}

// O_NONBLOCK: the opening of a pipe would wait for its other end.
int OpenFlags(OpenMode mode)
{
    return AccessFlags(mode) | (mode.create ? O_CREAT | O_TRUNC : 0) | O_CLOEXEC | O_NOCTTY |
           O_NONBLOCK;
}

// 0, or the errno value that says why a thing of this kind is not to be opened.
int KindRefused(mode_t kind, Access access)
{
    if (S_ISREG(kind))
        return 0;
    if (S_ISDIR(kind))
        return EISDIR;
    const bool isDevice = S_ISCHR(kind) || S_ISBLK(kind);
    return isDevice && access == Access::write ? 0 : EACCES;
}

int OpenedRefused(int file, Access access)
{
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return errno;
    return KindRefused(status.st_mode, access);
}

class PosixFiles : public FileSystem {
  public:
    IoResult Open(const char* path, OpenMode mode) noexcept override
    {
        constexpr mode_t kReadWriteForAll = 0666; // the umask takes from it
        const IoResult opened =
            Retried([&] { return ::open(path, OpenFlags(mode), kReadWriteForAll); });
        if (!opened)
            // Nobody reads the pipe that was to be written, or the device has no driver.
            return opened.error == ENXIO ? IoResult::Failed(EACCES) : opened;
        const int file = static_cast<int>(opened.value);
        const int refused = OpenedRefused(file, mode.access);
        if (refused == 0)
            return opened;
        ::close(file);
        return IoResult::Failed(refused);
    }

    IoResult ReadAt(int file, std::span<std::byte> buffer, std::int64_t position) noexcept override
    {
        std::int64_t done = 0;
        while (!buffer.empty()) {
            const IoResult read = Retried(
                [&] { return ::pread(file, buffer.data(), buffer.size(), position + done); });
            if (!read)
                return read;
            if (read.value == 0)
                break;
            done += read.value;
            buffer = buffer.subspan(static_cast<std::size_t>(read.value));
        }
        return { done, 0 };
    }

    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override
    {
        std::int64_t done = 0;
        while (!bytes.empty()) {
            const IoResult written = Retried(
                [&] { return ::pwrite(file, bytes.data(), bytes.size(), position + done); });
            if (!written)
                return written;
            if (written.value == 0)
                return IoResult::Failed(ENOSPC);
            done += written.value;
            bytes = bytes.subspan(static_cast<std::size_t>(written.value));
        }
        return { done, 0 };
    }

    IoResult Size(int file) noexcept override
    {
        struct stat status = {};
        if (::fstat(file, &status) != 0)
            return IoResult::Failed(errno);
        return { status.st_size, 0 };
    }

    IoResult Flush(int file) noexcept override
    {
        const IoResult flushed = Retried([&] { return ::fsync(file); });
        // What can't be brought to a disk, a device say, has nothing to be flushed.
        return flushed.error == EINVAL ? IoResult{} : flushed;
    }

    IoResult Truncate(int file, std::int64_t length) noexcept override
    {
        return Retried([&] { return ::ftruncate(file, length); });
    }

    IoResult Close(int file) noexcept override
    {
        // Not tried again after a signal: the number is free by then.
        if (::close(file) != 0 && errno != EINTR)
            return IoResult::Failed(errno);
        return {};
    }

    IoResult Remove(const char* path) noexcept override
    {
        return Retried([&] { return ::unlink(path); });
    }

    IoResult Rename(const char* oldPath, const char* newPath) noexcept override
    {
        struct stat status = {};
        if (::lstat(newPath, &status) == 0)
            return IoResult::Failed(EEXIST);
        return Retried([&] { return ::rename(oldPath, newPath); });
    }
};

} // namespace

FileSystem& SystemFiles() noexcept
{
    static PosixFiles files;
    return files;
}

} // namespace tympan
