#include "tympan/inspect.h"

#include "core/failure_guard.h"
#include "core/format.h"
#include "platform/file.h"

#include <algorithm>
#include <cstddef>
#include <span>

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

const Format* Named(std::span<const Format> formats, std::string_view name)
{
    const auto named = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format& one) { return one.name == name; });
    return named == formats.end() ? nullptr : &*named;
}

} // namespace

std::vector<std::string_view> FormatNames()
{
    std::vector<std::string_view> names;
    for (const Format& format : Formats())
        names.push_back(format.name);
    return names;
}

OpenedPicture OpenPictureAs(const CString& path, std::string_view format)
{
    const Format* const named = Named(Formats(), format);
    return named == nullptr ? OpenedPicture{} : OpenAs(path, *named);
}

OpenedPicture OpenAnyPicture(const CString& path)
{
    CFile probe(path, CFile::modeRead);
    const auto formats = Formats();
    OpenedPicture refused;
    for (std::size_t i = 0; i < formats.size(); ++i) {
        if (!formats[i].recognises(probe, path))
            continue;
        OpenedPicture opened = OpenAs(path, formats[i]);
        if (opened.isOpen) {
            const CString type = opened.picture->FileType();
            const Format* const owner = Named(formats.first(i), type.GetString());
            return owner == nullptr ? std::move(opened) : OpenAs(path, *owner);
        }
        if (refused.picture == nullptr)
            refused = std::move(opened);
    }
    return refused;
}

} // namespace tympan
