// What the operations on TIFF/IT files leave of the failures that they catch.
#pragma once

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "platform/failures.h"
#include "platform/text.h"

#include <array>

namespace tympan {

inline constexpr char kTiffItShortReadText[] = "Invalid Read Length.";
inline constexpr char kTiffItNeitherKindText[] = "Invalid Tiff Type (Neither CT Nor LW).";
inline constexpr char kTiffItVersionText[] = "Invalid Tiff ID.";
inline constexpr char kTiffItOddOffsetText[] = "Invalid First IFD Offset.";
inline constexpr char kTiffItFieldTypeText[] = "Invalid Field Type.";

/// Of reading the structure and of drawing continuous tone.
inline constexpr FailureRow kTiffItFailures[] = {
    { Caught::Platform, code::kFileFailed, nullptr },
    { Caught::Anything, code::kTiffFailed, nullptr },
};

/// Does `work`; a platform failure passes on, and its message stays with `keep(message)`.
template <typename Work, typename Keep>
void KeepingMessage(Work&& work, Keep&& keep)
{
    constexpr std::size_t kMessageBytes = 100;
    try {
        work();
    } catch (const CException* failure) {
        std::array<char, kMessageBytes> message{};
        failure->GetErrorMessage(message.data(), kMessageBytes, nullptr);
        Guarded(NoTrace(), kTiffItFailures, [&] { keep(CString(message.data())); });
        throw;
    }
}

} // namespace tympan
