#include "tiff_file.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace tympan::tool {

namespace {

int DropWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

using Options = std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)>;

} // namespace

TiffFile::TiffFile(const std::string& path, const char* mode, std::string shownPath)
    : shownPath_(std::move(shownPath))
{
    const Options options(TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    if (options == nullptr)
        throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), DropWarning, nullptr);
    errno = 0;
    handle_ = TIFFOpenExt(path.c_str(), mode, options.get());
    if (handle_ == nullptr && mode[0] == 'w')
        FailWriting(); // the file is there: its header can't be written
    if (handle_ == nullptr)
        Fail("the TIFF file can't be opened");
}

TiffFile::~TiffFile()
{
    if (handle_ != nullptr)
        TIFFClose(handle_);
}

void TiffFile::Fail(const std::string& whatHappened) const
{
    throw FileFailure(shownPath_,
                      firstError_.empty() ? whatHappened : whatHappened + ": " + firstError_);
}

void TiffFile::CloseWritten()
{
    errno = 0;
    const bool flushed = TIFFFlush(handle_) == 1;
    TIFFClose(handle_);
    handle_ = nullptr;
    if (!flushed || !firstError_.empty())
        FailWriting();
}

void TiffFile::FailWriting() const
{
    if (errno != 0)
        throw SystemFailure(shownPath_, errno);
    throw FileFailure(shownPath_, "writing failed: " + firstError_, std::nullopt,
                      "The disk may be full.");
}

std::string CompressionName(unsigned long number)
{
    const TIFFCodec* const codec = TIFFFindCODEC(static_cast<std::uint16_t>(number));
    return codec != nullptr ? codec->name : "";
}

// Called by C: nothing may be thrown through it.
int TiffFile::KeepError(TIFF*, void* self, const char*, const char* format, va_list arguments)
{
    auto& file = *static_cast<TiffFile*>(self);
    if (!file.firstError_.empty())
        return 1;
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    try {
        file.firstError_ = text.data();
    } catch (const std::bad_alloc&) {
        return 1; // the failure is told without libtiff's words
    }
    return 1;
}

const std::vector<std::string>& CmykInks()
{
    static const std::vector<std::string> kInks{ "Cyan", "Magenta", "Yellow", "Black" };
    return kInks;
}

} // namespace tympan::tool
