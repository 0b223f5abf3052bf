// The part of the platform's drawing interface that picture files draw with: device contexts over
// bitmaps in memory, bitmaps that lend their pixel memory, palettes, and local memory.
//
// What a client must know of the objects here:
// - A handle is a number, never an address. A deleted handle, or one of another kind, is refused by
//   every call, and never comes to mean a newer object: a number is not given out twice.
// - Objects live until they are deleted. Calls from several threads don't harm the objects; two
//   threads that draw on the same pixels race as they would in any memory.
// - Nothing is thrown. A call that can't do its work, memory running out included, gives null,
//   FALSE, 0 or CLR_INVALID.
#pragma once

#include "platform/export.h"
#include "platform/types.h"

#include <cstddef>

using HANDLE = void*;               ///< an object of the system; nothing here takes one
using HLOCAL = void*;               ///< memory from `LocalAlloc`
using HGDIOBJ = void*;              ///< any of the drawing objects: a bitmap or a palette
using HDC = struct HDC_*;           ///< a device context
using HBITMAP = struct HBITMAP_*;   ///< a bitmap
using HPALETTE = struct HPALETTE_*; ///< a palette

/// A colour as 0x00BBGGRR. Drawing doesn't look at the top byte.
using COLORREF = std::uint32_t;

/// No colour: what `SetPixel` and `GetPixel` give for a point that isn't there.
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

/// The colour of three parts, each 0 (dark) to 255.
constexpr COLORREF RGB(BYTE red, BYTE green, BYTE blue)
{
    return red | static_cast<COLORREF>(green) << 8 | static_cast<COLORREF>(blue) << 16;
}
/// The red part of a colour.
constexpr BYTE GetRValue(COLORREF colour)
{
    return static_cast<BYTE>(colour);
}
/// The green part of a colour.
constexpr BYTE GetGValue(COLORREF colour)
{
    return static_cast<BYTE>(colour >> 8);
}
/// The blue part of a colour.
constexpr BYTE GetBValue(COLORREF colour)
{
    return static_cast<BYTE>(colour >> 16);
}

/// A place in a context, in pixels.
struct POINT {
    LONG x; ///< from the left
    LONG y; ///< from the top
};

/// What `CreateDIBSection` is told of a bitmap.
struct BITMAPINFOHEADER {
    DWORD biSize;    ///< 40, the bytes of this record
    LONG biWidth;    ///< pixels, 1 or more
    LONG biHeight;   ///< above 0: the last row of the picture comes first in memory; below 0: the
                     ///< first
    WORD biPlanes;   ///< 1
    WORD biBitCount; ///< bits of a pixel: 8, 24 or 32
    DWORD biCompression;  ///< `BI_RGB`
    DWORD biSizeImage;    ///< no effect
    LONG biXPelsPerMeter; ///< no effect
    LONG biYPelsPerMeter; ///< no effect
    DWORD biClrUsed;      ///< entries of the colour table of an 8-bit bitmap; 0 means 256
    DWORD biClrImportant; ///< no effect
};

/// An entry of a bitmap's colour table.
struct RGBQUAD {
    BYTE rgbBlue;     ///< 0 to 255
    BYTE rgbGreen;    ///< 0 to 255
    BYTE rgbRed;      ///< 0 to 255
    BYTE rgbReserved; ///< no effect
};

/// A header with its colour table, which goes on behind the one entry that is declared.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader; ///< tells how many colours there are
    RGBQUAD bmiColors[1];       ///< the first of them
};

/// An entry of a palette.
struct PALETTEENTRY {
    BYTE peRed;   ///< 0 to 255
    BYTE peGreen; ///< 0 to 255
    BYTE peBlue;  ///< 0 to 255
    BYTE peFlags; ///< kept, without effect
};

/// The colours of a palette, which go on behind the one entry that is declared.
struct LOGPALETTE {
    WORD palVersion;             ///< no effect; the platform's programs write 0x300
    WORD palNumEntries;          ///< how many colours there are, 1 or more
    PALETTEENTRY palPalEntry[1]; ///< the first of them
};

static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(BITMAPINFOHEADER, biHeight) == 8 &&
              offsetof(BITMAPINFOHEADER, biBitCount) == 14 &&
              offsetof(BITMAPINFOHEADER, biSizeImage) == 20 &&
              offsetof(BITMAPINFOHEADER, biClrImportant) == 36);
static_assert(sizeof(BITMAPINFO) == 44 && offsetof(BITMAPINFO, bmiColors) == 40);
static_assert(sizeof(RGBQUAD) == 4 && sizeof(PALETTEENTRY) == 4 && sizeof(POINT) == 8);
static_assert(sizeof(LOGPALETTE) == 8 && offsetof(LOGPALETTE, palPalEntry) == 4);

/// CreateDIBSection: the colour table holds colours. The only usage that is taken.
inline constexpr UINT DIB_RGB_COLORS = 0;
/// BITMAPINFOHEADER::biCompression: plain pixels. The only form that is taken.
inline constexpr DWORD BI_RGB = 0;
/// LocalAlloc: memory at a fixed address, filled with 0.
inline constexpr UINT LPTR = 0x40;

/// Makes a context that draws in memory. It draws nothing until a bitmap is selected into it.
/// @param like a living context or null; it has no effect on the new one
/// @return the context, which the caller gives back with DeleteDC; null on failure
TYMPAN_API HDC CreateCompatibleDC(HDC like);

/// Deletes a context. The bitmap that is selected into it lives on.
/// @return FALSE for what is no living context
TYMPAN_API BOOL DeleteDC(HDC dc);

/// Lets a context draw on a bitmap. One bitmap may be selected into several contexts.
/// @return the bitmap that was selected before, which can be selected again unless it has been
///   deleted; for a new context a handle of a bitmap without pixels, good for being selected and
///   for nothing else. Null when nothing was done: a stale handle, or not a bitmap (palettes
///   aren't selected with this call).
TYMPAN_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);

/// Sets where in the bitmap the point (0, 0) of the context lies. It is (0, 0) in a new context.
/// @param previous takes the origin that stood before; may be null
/// @return FALSE, nothing done, for what is no living context
TYMPAN_API BOOL SetViewportOrgEx(HDC dc, int x, int y, POINT* previous);

/// Makes a bitmap of 8, 24 (B, G, R) or 32 (B, G, R, 0) bits a pixel, filled with 0. Rows are
/// padded to a multiple of 4 bytes. An 8-bit bitmap takes its colour table from `info`: biClrUsed
/// entries, 256 when that is 0 or above 256.
/// @param dc a living context or null; it has no effect
/// @param usage DIB_RGB_COLORS
/// @param bits takes the address of the pixel memory, or null on failure. The bitmap owns the
///   memory, which is good until DeleteObject. May be null.
/// @param section null: the memory is always the bitmap's own
/// @param offset no effect
/// @return the bitmap, which the caller gives back with DeleteObject. Null when a parameter or a
///   field of `info` is none of the above, a side is 0, the width is negative, the height has no
///   positive counterpart, the pixels need more bytes than biSizeImage could tell (4 GiB), or there
///   is no memory.
TYMPAN_API HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits,
                                    HANDLE section, DWORD offset);

/// Deletes a bitmap, pixel memory included, or a palette. A bitmap may still be selected into a
/// context: that context draws nothing from then on.
/// @return FALSE for what is no living bitmap or palette
TYMPAN_API BOOL DeleteObject(HGDIOBJ object);

/// Sets the point (x, y), moved by the viewport origin. An 8-bit bitmap gets the entry of its
/// colour table that is nearest by the sum of the squared differences of red, green and blue, the
/// lowest index among equals.
/// @return the colour set, in an 8-bit bitmap that of the entry; CLR_INVALID when the point is
///   outside the bitmap or the context has no living bitmap
TYMPAN_API COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);

/// SetPixel, but tells only whether the point was set.
TYMPAN_API BOOL SetPixelV(HDC dc, int x, int y, COLORREF colour);

/// @return the colour at (x, y), moved by the viewport origin, in an 8-bit bitmap that of the
///   colour table (black for an index behind its end); CLR_INVALID where SetPixel gives it
TYMPAN_API COLORREF GetPixel(HDC dc, int x, int y);

/// Copies entries of the colour table of the 8-bit bitmap that is selected into `dc`, from the
/// entry `start` on, which counts from 0.
/// @param colours takes them: room for `count`
/// @return how many entries were copied: fewer than `count` at the table's end, 0 without a table
TYMPAN_API UINT GetDIBColorTable(HDC dc, UINT start, UINT count, RGBQUAD* colours);

/// Makes a palette of the palNumEntries colours of `colours`.
/// @return the palette, which the caller gives back with DeleteObject; null when `colours` is null
///   or holds no entry, or there is no memory
TYMPAN_API HPALETTE CreatePalette(const LOGPALETTE* colours);

/// Copies entries of a palette, from the entry `start` on, which counts from 0.
/// @param entries takes them, `count` of them at most; may be null, to ask for the size of the
///   palette
/// @return how many entries were copied, fewer than `count` at the palette's end; the entries of
///   the whole palette when `entries` is null; 0 for a stale handle
TYMPAN_API UINT GetPaletteEntries(HPALETTE palette, UINT start, UINT count, PALETTEENTRY* entries);

/// Takes memory, aligned for any object.
/// @param flags LPTR, or 0 for memory that isn't filled
/// @return the memory, which the caller gives back with LocalFree; null when there is none or other
///   flags are asked for
TYMPAN_API HLOCAL LocalAlloc(UINT flags, std::size_t bytes);

/// Gives back what LocalAlloc gave, or null.
/// @return null
TYMPAN_API HLOCAL LocalFree(HLOCAL memory);

/// A device context as an object. It owns the context that is attached to it: the destructor
/// deletes it, unless Detach took it away.
class TYMPAN_API CDC {
  public:
    /// Without a context.
    CDC() = default;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;
    /// Deletes the context that is attached.
    virtual ~CDC();

    /// The context that is attached; null when there is none.
    HDC GetSafeHdc() const { return m_hDC; }

    /// Takes over a context.
    /// @return FALSE, nothing done, when `dc` is not a living context or one is attached already
    BOOL Attach(HDC dc);

    /// Lets go of the context, which the caller then owns; null when there is none.
    HDC Detach();

    /// The context that is attached, or null.
    HDC m_hDC = nullptr;
};
