// Where the TIFF library leaves its last error or warning for TiffErrorMsg(), each thread its own.
#pragma once

#include <cstdarg>
#include <exception>
#include <string>

namespace tympan {

struct TiffMessage {
    std::string text;
    int systemError = 0; ///< an errno value, where the system is the reason
};

/// What TiffErrorMsg() and TiffSystemError() tell on this thread.
TiffMessage& LastTiffMessage() noexcept;

/// Keeps the text that `compose` makes. Where there is no memory for it none is kept: nobody who
/// reports a failure can do anything about one of the report.
template <typename Compose>
void KeepTiffMessage(Compose compose, int systemError = 0) noexcept
{
    TiffMessage& last = LastTiffMessage();
    last.systemError = systemError;
    try {
        last.text = compose();
    } catch (const std::exception&) {
        last.text.clear();
    }
}

/// Formats as printf does.
[[gnu::format(printf, 1, 0)]] std::string FormatTiffMessage(const char* format,
                                                            std::va_list arguments);

} // namespace tympan
