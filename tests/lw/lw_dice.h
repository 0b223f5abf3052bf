// Random questions to line work, and pictures spoilt at random.
#pragma once

#include "lw/lw_reference.h"
#include "support/lw_samples.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

namespace tympan::test {

class Dice {
  public:
    explicit Dice(std::uint32_t seed) : random(seed) {}

    unsigned int Below(std::size_t bound) { return static_cast<unsigned int>(random() % bound); }
    unsigned char Byte() { return static_cast<unsigned char>(random()); }
    bool Once(unsigned int in) { return Below(in) == 0; }
    int Coin() { return Once(2) ? 1 : 0; }

    std::mt19937 random;
};

/// Spoils the rows, the last one above all, for no opening looks at that.
inline std::vector<unsigned char> Spoilt(Dice& dice, LwPicture picture)
{
    for (unsigned int faults = dice.Below(3); faults != 0; --faults) {
        auto& row =
            dice.Once(3) ? picture.rows[dice.Below(picture.rows.size())] : picture.rows.back();
        auto& run = row[dice.Once(3) ? row.size() - 1 : dice.Below(row.size())];
        switch (dice.Below(7)) {
        case 0: run.index = static_cast<unsigned char>(picture.colours.size() + 1); break;
        case 1: run.index = 0; break;
        case 2: run = { 0, 0 }; break;
        case 3: run.length = dice.Byte(); break;
        case 4:
            row.pop_back();
            if (row.empty())
                row = { { 1, 0 } };
            break;
        case 5: row.push_back({ 1, static_cast<unsigned char>(dice.Below(3)) }); break;
        default: break;
        }
    }
    std::vector<unsigned char> bytes = picture.Bytes();
    const std::size_t start = picture.Start(), rowBytes = bytes.size() - start;
    for (unsigned int flips = dice.Once(4) ? 1 + dice.Below(3) : 0; flips != 0; --flips)
        bytes[start + dice.Below(rowBytes)] = dice.Once(2) ? 0 : dice.Byte();
    if (dice.Once(6))
        bytes[dice.Once(2) ? bytes.size() - 1 - dice.Below(2) // the last row's delimiters
                           : picture.Place(picture.rows.size() - 1) + dice.Below(2)] = dice.Byte();
    if (dice.Once(8))
        bytes.resize(bytes.size() - dice.Below(std::min<std::size_t>(rowBytes, 12)));
    if (dice.Once(12))
        bytes.resize(bytes.size() + 1 + dice.Below(9), dice.Byte());
    return bytes;
}

struct Shape {
    unsigned int width, height;
};

inline LwCall RandomCall(Dice& dice, const Shape& shape)
{
    static constexpr double kRatios[] = { 1.0, 1.0, 1.0, 2.0, 0.5, 3.0, 1.7, 0.3, 1.0 / 3 };
    const auto side = [&](unsigned int most) { return dice.Below(most + 3) - 1.0; };
    LwCall call;
    call.first = dice.Once(20) ? ~0U - dice.Below(2) : dice.Below(shape.height + dice.Below(3));
    call.last = dice.Once(20)  ? ~0U
                : dice.Once(4) ? shape.height - 1
                               : call.first + dice.Below(6) - 1;
    call.separation = dice.Once(12) ? static_cast<ColorSeparationType>(4 - 5 * dice.Coin())
                                    : static_cast<ColorSeparationType>(dice.Below(4));
    call.flag = dice.Once(2);
    call.across = kRatios[dice.Below(std::size(kRatios))];
    call.along = kRatios[dice.Below(std::size(kRatios))];
    call.padding = { dice.Below(3), static_cast<unsigned char>(dice.Coin() * dice.Byte()),
                     static_cast<unsigned char>(1 + dice.Below(4)) };
    call.baseOffset = dice.Below(3) * 1000UL;
    call.copies = 1 + dice.Below(3);
    call.whiteGap = dice.Below(600);
    if (call.copies == 2 && dice.Once(2)) // of a width that needs no completion
        call.whiteGap = (4096 - 2 * std::size_t{ shape.width } % 4096) % 4096;
    call.white = dice.Byte();
    call.crop = { side(shape.width), side(shape.width), side(shape.height), side(shape.height) };
    return call;
}

} // namespace tympan::test
