#include "core/factory.h"

#include "core/failure_guard.h"
#include "core/format.h"
#include "platform/file.h"

#include <algorithm>

namespace {

constexpr tympan::FailureRow kNoObject[] = {
    { tympan::Caught::File, 0, nullptr },
    { tympan::Caught::Memory, 0, nullptr },
};

std::unique_ptr<BasePictureIF> MakeFor(const CString& fileName)
{
    CString path = fileName;
    path.TrimRight(' ');
    CFile file(path, CFile::modeRead);
    const auto formats = tympan::Formats();
    const auto format =
        std::find_if(formats.begin(), formats.end(), [&](const tympan::Format& candidate) {
            return candidate.recognises(file, fileName);
        });
    return format == formats.end() ? nullptr : format->make();
}

} // namespace

BasePictureIF* create_picture_object(const CString& fileName)
{
    std::unique_ptr<BasePictureIF> picture;
    tympan::Guarded(tympan::NoTrace(), kNoObject, [&] { picture = MakeFor(fileName); });
    return picture.release();
}
