// The system's files through the calls of the Windows C runtime.
#include "platform/file_system.h"

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tympan {

namespace {

// The runtime takes counts that fit an int.
unsigned Step(std::size_t left) noexcept
{
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return static_cast<unsigned>(std::min(left, kMost));
}

// The runtime tells another program's claim on a file as a lack of rights; the system's own number
// behind it is still there.
IoResult OpeningFailed(int error) noexcept
{
    constexpr unsigned long kSharingViolation = 32, kLockViolation = 33;
    switch (_doserrno) {
    case kSharingViolation: return IoResult::Failed(EBUSY);
    case kLockViolation: return IoResult::Failed(EAGAIN);
    default: return IoResult::Failed(error);
    }
}

IoResult Told(std::int64_t result) noexcept
{
    return result < 0 ? IoResult::Failed(errno) : IoResult{ result, 0 };
}

int OpenFlags(OpenMode mode) noexcept
{
    constexpr int kAlways = _O_BINARY | _O_NOINHERIT;
    const int made = mode.create ? _O_CREAT | _O_TRUNC : 0;
    switch (mode.access) {
    case Access::write: return kAlways | made | _O_WRONLY;
    case Access::readWrite: return kAlways | made | _O_RDWR;
    case Access::read: break;
    }
    // Emptying a file asks for more than reading it.
    return kAlways | made | (mode.create ? _O_RDWR : _O_RDONLY);
}

int OpenedRefused(int file, Access access) noexcept
{
    struct _stat64 status = {};
    if (_fstat64(file, &status) != 0)
        return errno;
    const int kind = status.st_mode & _S_IFMT;
    const bool isWrittenDevice = kind == _S_IFCHR && access == Access::write;
    return kind == _S_IFREG || isWrittenDevice ? 0 : EACCES;
}

// Moves all of a block through a call that may move less, from a position on. The runtime has no
// calls by position: one thread works on a file at a time.
template <typename Block, typename Call>
IoResult Moved(int file, Block block, std::int64_t position, Call call) noexcept
{
    if (_lseeki64(file, position, SEEK_SET) < 0)
        return IoResult::Failed(errno);
    std::int64_t done = 0;
    while (!block.empty()) {
        const IoResult moved = Told(call(block.data(), Step(block.size())));
        if (!moved)
            return moved;
        if (moved.value == 0)
            break;
        done += moved.value;
        block = block.subspan(static_cast<std::size_t>(moved.value));
    }
    return { done, 0 };
}

class RuntimeFiles : public FileSystem {
  public:
    IoResult Open(const char* path, OpenMode mode) noexcept override
    {
        int file = -1;
        const int sharing = mode.sharing == Sharing::readersOnly ? _SH_DENYWR : _SH_DENYNO;
        if (const int error = _sopen_s(&file, path, OpenFlags(mode), sharing, _S_IREAD | _S_IWRITE))
            return OpeningFailed(error);
        const int refused = OpenedRefused(file, mode.access);
        if (refused == 0)
            return { file, 0 };
        _close(file);
        return IoResult::Failed(refused);
    }

    IoResult ReadAt(int file, std::span<std::byte> buffer, std::int64_t position) noexcept override
    {
        const IoResult read = Moved(file, buffer, position, [&](std::byte* to, unsigned count) {
            return _read(file, to, count);
        });
        // The system refuses the farthest positions, where there is nothing to be read.
        const bool isBehindEnd = read.error == EINVAL && position >= Size(file).value;
        return isBehindEnd ? IoResult{} : read;
    }

    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override
    {
        const IoResult written =
            Moved(file, bytes, position,
                  [&](const std::byte* from, unsigned count) { return _write(file, from, count); });
        const bool isShort = written && written.value < std::ssize(bytes);
        return isShort ? IoResult::Failed(ENOSPC) : written;
    }

    IoResult Size(int file) noexcept override { return Told(_filelengthi64(file)); }

    IoResult Flush(int file) noexcept override { return Told(_commit(file)); }

    IoResult Truncate(int file, std::int64_t length) noexcept override
    {
        return { 0, _chsize_s(file, length) };
    }

    IoResult Close(int file) noexcept override { return Told(_close(file)); }

    IoResult Remove(const char* path) noexcept override { return Told(_unlink(path)); }

    // The runtime's call itself refuses a new name that is taken.
    IoResult Rename(const char* oldPath, const char* newPath) noexcept override
    {
        return Told(std::rename(oldPath, newPath));
    }
};

} // namespace

FileSystem& SystemFiles() noexcept
{
    static RuntimeFiles files;
    return files;
}

} // namespace tympan
