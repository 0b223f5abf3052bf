// Messages to a handler or to standard error, and the program's cursor.
#include "platform/ui.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

struct tympan::SystemCursor {
    WORD number;
};

namespace {

// Handed out shared, so that a handler is called outside the lock and may show messages itself.
struct HandlerSlot {
    std::mutex mutex;
    std::shared_ptr<const tympan::MessageHandler> handler;
};

HandlerSlot& Slot()
{
    static HandlerSlot slot;
    return slot;
}

std::shared_ptr<const tympan::MessageHandler> HandlerInUse()
{
    const std::lock_guard lock(Slot().mutex);
    return Slot().handler;
}

constinit tympan::SystemCursor systemCursors[] = { { IDC_ARROW }, { IDC_WAIT }, { IDC_UPARROW } };
constinit std::atomic<HCURSOR> cursorInUse = nullptr;

} // namespace

int AfxMessageBox(const char* text, UINT type, UINT)
{
    const CString shown(text);
    if (const auto handler = HandlerInUse())
        return (*handler)(shown, type);
    std::fprintf(stderr, "%s\n", shown.GetString());
    return IDOK;
}

HCURSOR LoadCursor(HINSTANCE module, WORD number)
{
    if (module)
        return nullptr;
    for (tympan::SystemCursor& cursor : systemCursors) {
        if (cursor.number == number)
            return &cursor;
    }
    return nullptr;
}

HCURSOR SetCursor(HCURSOR cursor)
{
    return cursorInUse.exchange(cursor);
}

void tympan::SetMessageHandler(MessageHandler handler)
{
    auto shared = handler ? std::make_shared<const MessageHandler>(std::move(handler)) : nullptr;
    const std::lock_guard lock(Slot().mutex);
    Slot().handler.swap(shared);
}
