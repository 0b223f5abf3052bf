// Puts every question to a CT object; for the tests of bad files and the fuzz target.
#pragma once

#include "ct/ct_file.h"

#include <vector>

namespace tympan::test {

/// Asks all that a CT object answers. Whatever that is: nothing may crash, hang, or read or write
/// where it shouldn't.
inline void AskEverything(CtFileInterface& picture)
{
    std::vector<unsigned char> buffer(4096);
    unsigned int rowsInfo = 0;
    unsigned long offsets[8] = {};
    for (const unsigned int row : { 0U, 2U, 2147483647U, 4294967295U })
        for (const int separation : { 0, 3, 4, 6, -1 }) {
            const auto type = static_cast<ColorSeparationType>(separation);
            picture.GetPictureRow(buffer.data(), row, type, picture.ResolutionOnScanAxis(),
                                  picture.ResolutionOnXScanAxis(), buffer.size());
            picture.GetPictureRows(buffer.data(), row, row + 8, rowsInfo, offsets, type,
                                   buffer.size(), false);
            picture.ExtractCMYKPixelInfo(row, row);
        }
    BITMAPINFO info{};
    info.bmiHeader = { sizeof(BITMAPINFOHEADER), 16, -16, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
    void* bits = nullptr;
    CDC dc;
    dc.Attach(CreateCompatibleDC(nullptr));
    const HBITMAP canvas = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    SelectObject(dc.GetSafeHdc(), canvas);
    picture.Display(0, ~0UL, dc);
    picture.Display(2, 1, &dc, Black);
    picture.Display(~0UL, ~0UL, &dc);
    DeleteObject(canvas);
}

} // namespace tympan::test
