#include "tympan/inspect.h"

#include "core/failure_guard.h"
#include "core/format.h"
#include "platform/file.h"

#include <algorithm>

namespace tympan {

namespace {

constexpr FailureRow kRefusals[] = {
    { Caught::Anything, 0, nullptr },
};

OpenedPicture OpenAs(const CString& path, const Format& format)
{
    OpenedPicture opened{ format.make(), format.name };
    Guarded(NoTrace(), kRefusals,
            [&] { opened.isOpen = opened.picture->OpenPictureFile(path, true, false, nullptr); });
    return opened;
}

} // namespace

std::vector<std::string_view> FormatNames()
{
    std::vector<std::string_view> names;
    for (const Format& format : Formats())
        names.push_back(format.name);
    return names;
}

OpenedPicture OpenAnyPicture(const CString& path)
{
    CFile probe(path, CFile::modeRead);
    OpenedPicture refused;
    for (const Format& format : Formats()) {
        if (!format.recognises(probe, path))
            continue;
        OpenedPicture opened = OpenAs(path, format);
        if (opened.isOpen)
            return opened;
        if (refused.picture == nullptr)
            refused = std::move(opened);
    }
    return refused;
}

OpenedPicture OpenPictureAs(const CString& path, std::string_view format)
{
    const auto formats = Formats();
    const auto named = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format& one) { return one.name == format; });
    return named == formats.end() ? OpenedPicture{} : OpenAs(path, *named);
}

} // namespace tympan
