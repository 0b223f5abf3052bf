// Stands in for the platform's message box and mouse cursors.
#pragma once

#include "platform/export.h"
#include "platform/module.h"
#include "platform/text.h"
#include "platform/types.h"

#include <functional>

/// The answer of a message box that has an OK button only.
inline constexpr int IDOK = 1;

/// Shows a message: to the handler that is set, else as a line on standard error.
/// \param text null counts as the empty text.
/// \param type the platform's buttons; only the handler is told.
/// \param help the platform's help topic; no effect.
/// \return the handler's answer, else IDOK.
/// \throws what the handler throws; std::bad_alloc.
TYMPAN_API int AfxMessageBox(const char* text, UINT type = 0, UINT help = 0);

namespace tympan {
struct SystemCursor;
}

/// A cursor's handle; never looked into.
using HCURSOR = tympan::SystemCursor*;

inline constexpr WORD IDC_ARROW = 32512;   ///< the system's usual cursor, for `LoadCursor`
inline constexpr WORD IDC_WAIT = 32514;    ///< that of a program that is busy
inline constexpr WORD IDC_UPARROW = 32516; ///< an arrow upwards

/// Gives a cursor of the system, for which `module` is null. The handle holds for ever.
/// \return null for a number that is none of those above, or for a module's own cursor.
TYMPAN_API HCURSOR LoadCursor(HINSTANCE module, WORD number);

/// Sets the cursor of the program, null for none. Nothing shows it.
/// \return the cursor until now; null at the start.
TYMPAN_API HCURSOR SetCursor(HCURSOR cursor);

namespace tympan {

/// Takes a message's text and type, and gives the answer.
using MessageHandler = std::function<int(const CString& text, UINT type)>;

/// Sets the one handler of messages, for all threads; an empty function takes it away. What a
/// handler throws reaches the caller of AfxMessageBox().
TYMPAN_API void SetMessageHandler(MessageHandler handler);

} // namespace tympan
