// The list of formats, in the order in which a path is asked for them. The tests that look at the
// least of a file stand behind those that look at more.
#include "core/format.h"

#include <array>

namespace tympan {

Format LwFormat();
Format CtFormat();
Format JpegFormat();

std::span<const Format> Formats()
{
    static const std::array kFormats{
        LwFormat(),
        CtFormat(),
        JpegFormat(),
    };
    return kFormats;
}

} // namespace tympan
