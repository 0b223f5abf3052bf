// Files that fail at one operation, in any of the ways that the seam knows.
#pragma once

#include "faults/allocations.h"
#include "platform/memory_files.h"

#include <cerrno>

namespace tympan::test {

/// How a file operation fails. The last two are told to reads alone, and aren't errors: the file
/// seems to end.
enum class FileFault { none, error, noSpace, ended, oneByte };

struct FilePlan {
    FileFault fault = FileFault::none;
    std::size_t number = 0; ///< of the operation, from 1
    bool onwards = false;   ///< all behind it, too
};

class FaultyFileSystem : public FileSystem {
  public:
    FaultyFileSystem(FileSystem& inner, FilePlan plan) : inner_(inner), plan_(plan) {}

    bool HasFailed() const { return hasFailed_; }
    /// Whether that was an operation without which an output isn't safe.
    bool HasOutputFailed() const { return hasOutputFailed_; }
    bool FailsOnwards() const { return plan_.fault != FileFault::none && plan_.onwards; }
    /// Nothing fails any more.
    void Recover() { plan_ = {}; }

    IoResult Open(const char* path, OpenMode mode) noexcept override
    {
        const IoResult opened = Passed([&] { return inner_.Open(path, mode); });
        if (opened && mode.access != Access::read)
            lastOutput_ = opened.value;
        return opened;
    }
    IoResult ReadAt(int file, std::span<std::byte> bytes, std::int64_t position) noexcept override
    {
        const bool isShort = plan_.fault == FileFault::ended || plan_.fault == FileFault::oneByte;
        if (!isShort)
            return Passed([&] { return inner_.ReadAt(file, bytes, position); });
        const std::size_t most = plan_.fault == FileFault::oneByte ? 1 : 0;
        const bool fails = IsToFail() && bytes.size() > most;
        hasFailed_ |= fails;
        const AllocationsArmed spared(false);
        return inner_.ReadAt(file, fails ? bytes.first(most) : bytes, position);
    }
    /// Without space, half of the bytes are written.
    IoResult WriteAt(int file, std::span<const std::byte> bytes,
                     std::int64_t position) noexcept override
    {
        const IoResult written = Passed([&] { return inner_.WriteAt(file, bytes, position); });
        hasOutputFailed_ |= !written;
        if (written.error == ENOSPC) {
            const AllocationsArmed spared(false);
            inner_.WriteAt(file, bytes.first(bytes.size() / 2), position);
        }
        return written;
    }
    IoResult Size(int file) noexcept override
    {
        return Passed([&] { return inner_.Size(file); });
    }
    IoResult Flush(int file) noexcept override
    {
        const IoResult flushed = Passed([&] { return inner_.Flush(file); });
        hasOutputFailed_ |= !flushed;
        return flushed;
    }
    IoResult Truncate(int file, std::int64_t length) noexcept override
    {
        return Passed([&] { return inner_.Truncate(file, length); });
    }
    /// Carried out also when it fails.
    IoResult Close(int file) noexcept override
    {
        const AllocationsArmed spared(false);
        const IoResult inner = inner_.Close(file);
        const IoResult closed = Passed([&] { return inner; });
        hasOutputFailed_ |= !closed && file == lastOutput_;
        return closed;
    }
    IoResult Remove(const char* path) noexcept override
    {
        return Passed([&] { return inner_.Remove(path); });
    }
    IoResult Rename(const char* from, const char* to) noexcept override
    {
        return Passed([&] { return inner_.Rename(from, to); });
    }

  private:
    bool IsToFail() noexcept
    {
        ++seen_;
        return plan_.fault != FileFault::none &&
               (seen_ == plan_.number || (plan_.onwards && seen_ > plan_.number));
    }

    template <typename Work>
    IoResult Passed(Work work) noexcept
    {
        const AllocationsArmed spared(false); // those of the files are no fault of the library
        const bool fails = IsToFail();
        if (!fails || plan_.fault == FileFault::ended || plan_.fault == FileFault::oneByte)
            return work();
        hasFailed_ = true;
        return IoResult::Failed(plan_.fault == FileFault::noSpace ? ENOSPC : EIO);
    }

    FileSystem& inner_;
    FilePlan plan_;
    std::size_t seen_ = 0;
    std::int64_t lastOutput_ = -1;
    bool hasFailed_ = false;
    bool hasOutputFailed_ = false;
};

} // namespace tympan::test
