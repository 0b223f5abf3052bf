// Which files are in use: the system's or a replacement.
#include "platform/file_system.h"

#include <atomic>

namespace tympan {

namespace {

constinit std::atomic<FileSystem*> replacement = nullptr;

} // namespace

FileSystem& CurrentFileSystem() noexcept
{
    FileSystem* const files = replacement.load(std::memory_order_acquire);
    return files ? *files : SystemFiles();
}

ScopedFileSystem::ScopedFileSystem(FileSystem& files) noexcept
    : previous_(replacement.exchange(&files))
{}

ScopedFileSystem::~ScopedFileSystem()
{
    replacement.store(previous_);
}

} // namespace tympan
