// A bitmap of 24 bits on a device context, of one colour to begin with.
#pragma once

#include "platform/gdi.h"

#include <cstddef>
#include <cstring>

namespace tympan::test {

class Canvas {
  public:
    /// The colour of what nobody has drawn on.
    static constexpr COLORREF kUntouched = 0x005A5A5A;

    Canvas(int width, int height)
    {
        BITMAPINFO info{};
        info.bmiHeader = { sizeof(BITMAPINFOHEADER), width, -height, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
        void* bits = nullptr;
        dc.Attach(CreateCompatibleDC(nullptr));
        bitmap_ = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        const auto rowBytes = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
        std::memset(bits, kUntouched & 0xFF, rowBytes * static_cast<std::size_t>(height));
        SelectObject(dc.GetSafeHdc(), bitmap_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() { DeleteObject(bitmap_); }

    CDC dc;

  private:
    HBITMAP bitmap_;
};

} // namespace tympan::test
