#include "core/file_names.h"

namespace {

constexpr char kSeparator = '\\';

// Does the work; whatever it throws empties the result and becomes the operation's own failure.
template <typename Failure, typename Work>
void Strip(CString& result, Work&& work)
{
    try {
        result = work();
    } catch (...) {
        result.Empty();
        throw Failure();
    }
}

} // namespace

void FileNameParser::StripPath(const CString& path, CString& result)
{
    Strip<StripPathFailed>(result, [&] {
        const int separator = path.ReverseFind(kSeparator);
        return separator < 0 ? CString() : path.Mid(separator + 1);
    });
}

void FileNameParser::StripFileName(const CString& path, CString& result)
{
    Strip<StripFileNameFailed>(result, [&] { return path.Left(path.ReverseFind(kSeparator) + 1); });
}

void FileNameParser::StripExtension(const CString& path, CString& result)
{
    Strip<StripExtensionFailed>(result, [&] {
        const int point = path.ReverseFind('.');
        return point < 0 ? path : path.Left(point);
    });
}
