// The one path resolver, and the question to it.
#include "platform/path_resolver.h"

#include "platform/file_system.h"

#include <memory>
#include <mutex>
#include <utility>

namespace tympan {

namespace {

// Handed out shared, so that a resolver is called outside the lock and may open files itself.
struct ResolverSlot {
    std::mutex mutex;
    std::shared_ptr<const PathResolver> resolver;
};

ResolverSlot& Slot()
{
    static ResolverSlot slot;
    return slot;
}

std::shared_ptr<const PathResolver> ResolverInUse()
{
    const std::lock_guard lock(Slot().mutex);
    return Slot().resolver;
}

} // namespace

void SetPathResolver(PathResolver resolver)
{
    auto shared = resolver ? std::make_shared<const PathResolver>(std::move(resolver)) : nullptr;
    const std::lock_guard lock(Slot().mutex);
    Slot().resolver.swap(shared);
}

std::optional<CString> ResolvePath(const CString& path)
{
    const auto resolver = ResolverInUse();
    if (!resolver)
        return path;
    try {
        return (*resolver)(path);
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace tympan
