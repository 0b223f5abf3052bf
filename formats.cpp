// The list of formats, in the order in which a path is asked for them. The tests that look at the
// least of a file stand behind those that look at more.
#include "core/format.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tympan {

Format LwFormat();
Format PageFormat();
Format CtFormat();
Format JpegFormat();
Format TiffFormat();

std::span<const Format> Formats()
{
    static const std::array kFormats{
        LwFormat(), PageFormat(), CtFormat(), JpegFormat(), TiffFormat(),
    };
    return kFormats;
}

std::span<const Format* const> FormatsByCertainty()
{
    static const std::vector<const Format*> kFormats = [] {
        std::vector<const Format*> formats;
        for (const Format& format : Formats())
            formats.push_back(&format);
        std::stable_partition(formats.begin(), formats.end(),
                              [](const Format* format) { return !format->recognisesMuch; });
        return formats;
    }();
    return kFormats;
}

} // namespace tympan
