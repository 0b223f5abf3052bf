// Puts every question to a TIFF object; for the fuzz target.
#pragma once

#include "tiff/tiff_file.h"
#include "tympan/inspect.h"

#include <vector>

namespace tympan::test {

/// Asks all that a TIFF object answers. Whatever that is: nothing may crash, hang, or read or write
/// where it shouldn't.
inline void AskEverything(TiffFileInterface& picture)
{
    std::vector<unsigned char> buffer(64U << 10U);
    unsigned int rows = 0;
    for (const unsigned int row : { 0U, 1U, 9U, 4294967295U })
        for (const int separation : { 0, 2, 3, 7, -1 }) {
            const auto type = static_cast<ColorSeparationType>(separation);
            picture.GetPictureRow(buffer.data(), row, type, 1, 1, buffer.size());
            picture.GetPictureRows(buffer.data(), row, row + 3, rows, nullptr, type, buffer.size(),
                                   false);
        }
    TiffDetailsOf(picture);
}

} // namespace tympan::test
