// Thousands of random pictures, whole and spoilt in all ways, before they are opened and afterwards:
// the library answers as the reference does.
#include "lw/lw_dice.h"
#include "lw/lw_trial.h"

#include <gtest/gtest.h>

namespace {

using tympan::test::Dice;
using tympan::test::kLwRuns;
using tympan::test::LwPicture;
using tympan::test::LwTrial;
using tympan::test::Shape;
using Bytes = std::vector<unsigned char>;

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

// Larger than the block in which a crop is written.
TEST(LwRandom, ALongCrop)
{
    Dice dice(1);
    LwTrial trial(RandomPicture(dice.random, 3000, 120, 5, tympan::test::LwRuns::single));
    trial.Same(tympan::test::kCrop, { .crop = { 2, 2999, 1, 120 } });
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
