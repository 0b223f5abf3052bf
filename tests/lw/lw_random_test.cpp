// Thousands of random pictures, whole and spoilt in all ways, before they are opened and afterwards:
// the library answers as the reference does.
#include "lw/lw_trial.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using tympan::test::kLwRuns;
using tympan::test::LwCall;
using tympan::test::LwPicture;
using tympan::test::LwTrial;
using Bytes = std::vector<unsigned char>;

class Dice {
  public:
    explicit Dice(std::uint32_t seed) : random(seed) {}

    unsigned int Below(std::size_t bound) { return static_cast<unsigned int>(random() % bound); }
    unsigned char Byte() { return static_cast<unsigned char>(random()); }
    bool Once(unsigned int in) { return Below(in) == 0; }
    int Coin() { return Once(2) ? 1 : 0; }

    std::mt19937 random;
};

// Spoils the rows, the last one above all, for no opening looks at that.
Bytes Spoilt(Dice& dice, LwPicture picture)
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
    Bytes bytes = picture.Bytes();
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

LwCall RandomCall(Dice& dice, const Shape& shape)
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

void AskOne(LwTrial& trial, Dice& dice, const Shape& shape)
{
    const auto& operations = tympan::test::kRowOperations;
    trial.Same(operations[dice.Below(std::size(operations))], RandomCall(dice, shape));
}

// Opens a picture as it is or spoilt, and asks as many questions.
void Try(std::uint32_t seed, const Shape& shape, unsigned int questions)
{
    SCOPED_TRACE("seed " + std::to_string(seed) + ", " + std::to_string(shape.width) + " x " +
                 std::to_string(shape.height));
    Dice dice(seed);
    const std::size_t colours = dice.Once(4) ? 255 : 1 + dice.Below(6);
    const LwPicture picture = RandomPicture(dice.random, shape.width, shape.height, colours,
                                            kLwRuns[dice.Below(std::size(kLwRuns))]);
    LwTrial trial(dice.Once(2) ? picture.Bytes() : Spoilt(dice, picture));
    if (trial.IsOpen() && dice.Once(3))
        trial.Change(Spoilt(dice, picture));
    for (; trial.IsOpen() && questions != 0; --questions)
        AskOne(trial, dice, shape);
    if (trial.IsOpen())
        trial.Same(tympan::test::kOpen);
}

TEST(LwRandom, SmallPictures)
{
    for (std::uint32_t seed = 1; seed <= 4000 && !HasFailure(); ++seed) {
        Dice dice(seed);
        const unsigned int width = dice.Once(4) ? 250 + dice.Below(12) : 1 + dice.Below(60);
        Try(seed, { width, 1 + dice.Below(8) }, 20);
    }
}

TEST(LwRandom, WidePictures)
{
    for (std::uint32_t seed = 1; seed <= 150 && !HasFailure(); ++seed) {
        Dice dice(seed);
        static constexpr unsigned int kWidths[] = { 4095, 4096, 4097, 8192, 65535, 65536 };
        const unsigned int width =
            dice.Once(2) ? kWidths[dice.Below(std::size(kWidths))] : 1 + dice.Below(70000);
        Try(seed, { width, 1 + dice.Below(9) }, 12);
    }
}

// Larger than a reader's block.
TEST(LwRandom, LongPictures)
{
    for (std::uint32_t seed = 1; seed <= 6 && !HasFailure(); ++seed)
        Try(seed, { 19000 + 500 * seed, 260 }, 12);
}

TEST(LwRandom, AFileOfAnyLength)
{
    Dice dice(5);
    for (const auto kind : { tympan::test::LwRuns::dense, tympan::test::LwRuns::hollow }) {
        const Shape shape{ 40, 4 };
        const LwPicture picture = RandomPicture(dice.random, shape.width, shape.height, 3, kind);
        const Bytes whole = picture.Bytes();
        for (std::size_t length = 0; length <= whole.size() && !HasFailure();
             length += length < 1020 || (length > 1090 && length < 2030) ? 17 : 1) {
            SCOPED_TRACE(length);
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            const auto ask = [&](LwTrial& trial) {
                for (int i = 0; i < 6 && trial.IsOpen() && length >= picture.Start(); ++i)
                    AskOne(trial, dice, shape);
            };
            {
                LwTrial before(cut);
                ask(before);
            }
            LwTrial after(whole);
            after.Change(cut);
            ask(after);
            after.Same(tympan::test::kOpen);
        }
    }
}

} // namespace
