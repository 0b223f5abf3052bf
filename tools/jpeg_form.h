// The form of JPEG files whose bands of 8 rows can be decoded one by one.
#pragma once

#include "jpeg_messages.h"

#include <string>

namespace tympan::tool {

/// What a head says that bands which stand by themselves don't allow, as "its colour components are
/// subsampled"; empty when it has the form: baseline, 8 bits a sample, one scan of 1, 3 or 4
/// components without subsampling, a restart marker behind each row of blocks, the first component
/// on the tables 0 and the others together on 0 or on 1.
/// \param head as `jpeg_read_header` left it
std::string DifferenceFromBandForm(const jpeg_decompress_struct& head);

} // namespace tympan::tool
