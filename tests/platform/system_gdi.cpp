#include "platform/system_gdi.h"

#include <windows.h>

#include <vector>

namespace tympan::test {

namespace {

HDC Context(void* context)
{
    return static_cast<HDC>(context);
}

} // namespace

SystemCanvas::SystemCanvas(const void* info)
    : context_(CreateCompatibleDC(nullptr)),
      bitmap_(CreateDIBSection(nullptr, static_cast<const BITMAPINFO*>(info), DIB_RGB_COLORS,
                               &bits_, nullptr, 0)),
      before_(SelectObject(Context(context_), bitmap_))
{}

SystemCanvas::~SystemCanvas()
{
    SelectObject(Context(context_), before_);
    DeleteObject(bitmap_);
    DeleteDC(Context(context_));
}

SystemPoint SystemCanvas::MoveOrigin(SystemPoint origin) const
{
    POINT previous = {};
    SetViewportOrgEx(Context(context_), origin.x, origin.y, &previous);
    return { previous.x, previous.y };
}

std::uint32_t SystemCanvas::Set(SystemPoint at, std::uint32_t colour) const
{
    return SetPixel(Context(context_), at.x, at.y, colour);
}

bool SystemCanvas::SetOnly(SystemPoint at, std::uint32_t colour) const
{
    return SetPixelV(Context(context_), at.x, at.y, colour) != FALSE;
}

std::uint32_t SystemCanvas::Get(SystemPoint at) const
{
    return GetPixel(Context(context_), at.x, at.y);
}

unsigned SystemCanvas::ColourTable(unsigned start, unsigned count, void* table) const
{
    return GetDIBColorTable(Context(context_), start, count, static_cast<RGBQUAD*>(table));
}

void SystemCanvas::FillRow(SystemPoint at, int count, std::uint32_t colour) const
{
    const RECT row = { at.x, at.y, at.x + count, at.y + 1 };
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(Context(context_), &row, brush);
    DeleteObject(brush);
}

void SystemCanvas::CopyRow(SystemPoint at, std::span<const std::uint8_t> bgr) const
{
    const auto width = static_cast<LONG>(bgr.size() / 3);
    BITMAPINFO info{};
    info.bmiHeader = { sizeof(BITMAPINFOHEADER), width, -1, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
    std::vector<std::uint8_t> row(bgr.begin(), bgr.end());
    row.resize((row.size() + 3) / 4 * 4);
    SetDIBitsToDevice(Context(context_), at.x, at.y, static_cast<DWORD>(width), 1, 0, 0, 0, 1,
                      row.data(), &info, DIB_RGB_COLORS);
}

unsigned SystemPaletteEntries(const void* colours, unsigned start, unsigned count, void* entries)
{
    const HPALETTE palette = CreatePalette(static_cast<const LOGPALETTE*>(colours));
    const unsigned read =
        GetPaletteEntries(palette, start, count, static_cast<PALETTEENTRY*>(entries));
    DeleteObject(palette);
    return read;
}

} // namespace tympan::test
