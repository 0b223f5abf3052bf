// What a JPEG file's own head tells of its colours, and whether its bands can be decoded one by one.
#pragma once

#include "jpeg_messages.h"
#include "picture.h"

namespace tympan::tool {

/// How the samples of a JPEG are stored, and what they become.
struct JpegColours {
    J_COLOR_SPACE stored = JCS_UNKNOWN;
    J_COLOR_SPACE decoded = JCS_UNKNOWN; ///< grey, RGB or CMYK
    bool isInk = false; ///< CMYK whose 255 is full ink; where Adobe's mark is, it is no ink
};

/// Reads the head, up to the scan, from the picture's own file.
/// \param picture a JPEG that is open
/// \throws FileFailure when the head can't be read, contradicts the picture's record, or has a form
///   whose bands can't be decoded one by one.
JpegColours ReadJpegHead(const Picture& picture);

} // namespace tympan::tool
