// Puts every question to a CT object; for the tests of bad files and the fuzz target.
#pragma once

#include "ct/ct_file.h"
#include "support/canvas.h"

#include <vector>

namespace tympan::test {

/// Asks all that a CT object answers. Whatever that is: nothing may crash, hang, or read or write
/// where it shouldn't.
inline void AskEverything(CtFileInterface& picture)
{
    constexpr unsigned long kSize = 4096;
    std::vector<unsigned char> buffer(kSize);
    unsigned int rowsInfo = 0;
    unsigned long offsets[8] = {};
    for (const unsigned int row : { 0U, 2U, 2147483647U, 4294967295U })
        for (const int separation : { 0, 3, 4, 6, -1 }) {
            const auto type = static_cast<ColorSeparationType>(separation);
            picture.GetPictureRow(buffer.data(), row, type, picture.ResolutionOnScanAxis(),
                                  picture.ResolutionOnXScanAxis(), kSize);
            picture.GetPictureRows(buffer.data(), row, row + 8, rowsInfo, offsets, type, kSize,
                                   false);
            picture.ExtractCMYKPixelInfo(row, row);
        }
    Canvas canvas(16, 16);
    picture.Display(0, ~0UL, canvas.dc);
    picture.Display(2, 1, &canvas.dc, Black);
    picture.Display(~0UL, ~0UL, &canvas.dc);
}

} // namespace tympan::test
