// The last error or warning of the TIFF library.
#include "platform/tiff_messages.h"

#include "platform/tiff_library.h"

#include <cstddef>
#include <cstdio>
#include <string_view>

tympan::TiffMessage& tympan::LastTiffMessage() noexcept
{
    thread_local TiffMessage message;
    return message;
}

std::string tympan::FormatTiffMessage(const char* format, std::va_list arguments)
{
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return format; // what can't be formatted still tells something
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

void TiffWarning(const char*, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    tympan::KeepTiffMessage([&] { return tympan::FormatTiffMessage(format, arguments); });
    va_end(arguments);
}

CString TiffErrorMsg()
{
    return CString(std::string_view(tympan::LastTiffMessage().text));
}

int TiffSystemError()
{
    return tympan::LastTiffMessage().systemError;
}
