// Where the TIFF library leaves its last error or warning for TiffErrorMsg(), each thread its own.
#pragma once

#include <cstdarg>
#include <exception>
#include <string>

namespace tympan {

/// The text that TiffErrorMsg() gives on this thread.
std::string& LastTiffMessage() noexcept;

/// Keeps the text that `compose` makes. Where there is no memory for it none is kept: nobody who
/// reports a failure can do anything about one of the report.
template <typename Compose>
void KeepTiffMessage(Compose compose) noexcept
{
    try {
        LastTiffMessage() = compose();
    } catch (const std::exception&) {
        LastTiffMessage().clear();
    }
}

/// Formats as printf does.
[[gnu::format(printf, 1, 0)]] std::string FormatTiffMessage(const char* format,
                                                            std::va_list arguments);

} // namespace tympan
