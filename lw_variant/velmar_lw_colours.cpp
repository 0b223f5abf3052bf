// What a client of the index stream asks of the colours.
#include "lw_variant/velmar_lw_file.h"

#include <algorithm>
#include <array>

unsigned long VelmarLWFileInterface::GetTransparentColor(const ColorSeparationType& separation)
{
    return LwRecord().GetTransparentColor(separation);
}

unsigned char* VelmarLWFileInterface::GetSeparationLut(const ColorSeparationType& separation,
                                                       bool transparentToWhite,
                                                       unsigned char* valueMap)
{
    constexpr unsigned char kNoInk = 255;
    const LwPictureParameters& record = LwRecord();
    // "None" reads as 255 here, which no rule but the first ever meets.
    const auto transparent =
        static_cast<unsigned char>(record.GetTransparentColor(separation) & 0xFFU);
    const auto entryOf = [&](unsigned char value) {
        if (value == kNoInk)
            return kNoInk;
        if (value == transparent)
            return transparentToWhite ? kNoInk : value;
        return valueMap != nullptr ? valueMap[value] : value;
    };
    auto table = std::make_unique<unsigned char[]>(record.FileColorsNumber());
    for (unsigned char row = 0; row < record.FileColorsNumber(); ++row)
        table[row] = entryOf(record.GetColor(row, separation));
    return table.release();
}

unsigned char VelmarLWFileInterface::GetColorIndex(unsigned char value,
                                                   const ColorSeparationType& separation)
{
    const LwPictureParameters& record = LwRecord();
    unsigned char row = 0;
    while (row < record.FileColorsNumber() && record.GetColor(row, separation) != value)
        ++row;
    return row;
}

unsigned char VelmarLWFileInterface::IsColorExist(unsigned char value,
                                                  const ColorSeparationType& separation)
{
    return GetColorIndex(value, separation) < LwRecord().FileColorsNumber() ? 1 : 0;
}

void VelmarLWFileInterface::SeperationBit(ColorSeparationType& separation)
{
    constexpr std::array kInOrder{ Cyan, Magenta, Yellow, Black };
    const PictureParameters* const record = PictureParams();
    const auto* const first =
        std::find_if(kInOrder.begin(), kInOrder.end(), [&](ColorSeparationType one) {
            return record != nullptr && record->SeparationExists(one);
        });
    separation = first != kInOrder.end() ? *first : NoSeparation;
}
