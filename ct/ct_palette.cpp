// Palettes for the bitmaps of one plate.
#include "core/failure_guard.h"
#include "ct/ct_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

constexpr WORD kPaletteVersion = 0x300;
constexpr int kDeepest = 8; // bits of a palette's index

struct FreePaletteMemory {
    void operator()(LOGPALETTE* palette) const { LocalFree(palette); }
};
using PaletteMemory = std::unique_ptr<LOGPALETTE, FreePaletteMemory>;

PaletteMemory NewPalette(std::size_t entries)
{
    PaletteMemory palette(static_cast<LOGPALETTE*>(
        LocalAlloc(LPTR, offsetof(LOGPALETTE, palPalEntry) + entries * sizeof(PALETTEENTRY))));
    if (palette != nullptr) {
        palette->palVersion = kPaletteVersion;
        palette->palNumEntries = static_cast<WORD>(entries);
    }
    return palette;
}

PALETTEENTRY EntryOf(unsigned long colour)
{
    const auto packed = static_cast<COLORREF>(colour);
    return { GetRValue(packed), GetGValue(packed), GetBValue(packed), 0 };
}

PALETTEENTRY EntryOfColour(const RGBQUAD& colour)
{
    return { colour.rgbRed, colour.rgbGreen, colour.rgbBlue, 0 };
}

bool IsSound(int bits)
{
    return bits >= 1 && bits <= kDeepest;
}

} // namespace

void CtFileInterface::FreeLocal::operator()(BITMAPINFO* info) const
{
    LocalFree(info);
}

void CtFileInterface::DeleteDrawing::operator()(HGDIOBJ object) const
{
    DeleteObject(
        object); // one that the client has deleted is refused: no handle meets a newer object
}

bool CtFileInterface::HasRoomFor(std::size_t drawings)
{
    static constexpr tympan::FailureRow kNoRoom[] = { { tympan::Caught::Memory, 0, nullptr } };
    return tympan::Guarded(tympan::NoTrace(), kNoRoom,
                           [&] { drawings_.reserve(drawings_.size() + drawings); });
}

void CtFileInterface::Keep(HGDIOBJ object)
{
    if (object != nullptr)
        drawings_.emplace_back(object); // HasRoomFor has seen to it that this can't fail
}

HPALETTE CtFileInterface::CreateGrayScalePalette(BITMAPINFO* info, ColorSeparationType separation)
{
    if (info == nullptr || !IsSound(info->bmiHeader.biBitCount))
        return nullptr;
    const std::size_t colours = std::size_t{ 1 } << info->bmiHeader.biBitCount;
    for (std::size_t i = 0; i < colours; ++i) {
        const PALETTEENTRY entry =
            EntryOf(CalculatePixelAsRGB(static_cast<unsigned char>(i), separation));
        info->bmiColors[colours - 1 - i] = { entry.peBlue, entry.peGreen, entry.peRed, 0 };
    }
    const PaletteMemory palette = NewPalette(colours);
    if (palette == nullptr)
        return nullptr;
    std::transform(info->bmiColors, info->bmiColors + colours, palette->palPalEntry, EntryOfColour);
    return CreatePalette(palette.get());
}

HPALETTE CtFileInterface::ApplyPaletteChanges(int* changes, ColorSeparationType separation,
                                              int bitsPerPixel)
{
    if (changes == nullptr || !IsSound(bitsPerPixel))
        return nullptr;
    const std::size_t colours = std::size_t{ 1 } << static_cast<unsigned int>(bitsPerPixel);
    const PaletteMemory palette = NewPalette(colours);
    if (palette == nullptr || !HasRoomFor(1))
        return nullptr;
    palette->palPalEntry[colours - 1] = { 255, 255, 255, 0 };
    for (std::size_t i = 1; i < colours; ++i) {
        const auto value = static_cast<unsigned char>(colours - 1 - (changes[i] & 0xFF));
        palette->palPalEntry[colours - 1 - i] = EntryOf(CalculatePixelAsRGB(value, separation));
    }
    const HPALETTE changed = CreatePalette(palette.get());
    Keep(changed);
    previewPalette_ = changed;
    return changed;
}
