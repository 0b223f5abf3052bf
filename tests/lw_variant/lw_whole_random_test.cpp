// Thousands of random pictures, whole and spoilt, before a walk and afterwards: the whole-file
// object answers as the reference does, and its stream has the pixels of the base's.
#include "lw/lw_dice.h"
#include "lw_variant/lw_whole_trial.h"

#include <gtest/gtest.h>

namespace {

using namespace tympan::test;
using Bytes = std::vector<unsigned char>;

const LwOperation kOperations[] = { kPlacing, kPlacing, kPlacing, kSize, kSize,  kWholeSize,
                                    kBuild,   kBuild,   kCheck,   kRow,  kRows,  kOriginal,
                                    kPlain,   kCrop,    kDisplay, kSize, kBuild, kWholeSize };

LwPicture Random(Dice& dice, const Shape& shape)
{
    const std::size_t colours = dice.Once(4) ? 255 : 1 + dice.Below(6);
    return RandomPicture(dice.random, shape.width, shape.height, colours,
                         kLwRuns[dice.Below(std::size(kLwRuns))]);
}

Shape SmallShape(Dice& dice)
{
    return { dice.Once(4) ? 250 + dice.Below(12) : 1 + dice.Below(60), 1 + dice.Below(8) };
}

Shape WideShape(Dice& dice)
{
    static constexpr unsigned int kWidths[] = { 3700, 4095, 4096, 4097, 8192, 65535, 65536 };
    const bool isAny = dice.Once(2);
    return { isAny ? 1 + dice.Below(70000) : kWidths[dice.Below(std::size(kWidths))],
             1 + dice.Below(9) };
}

TEST(LwWholeRandom, AllAnswersAreThoseOfTheRules)
{
    for (std::uint32_t seed = 1; seed <= 4000 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        const Shape shape = seed % 25 == 0 ? WideShape(dice) : SmallShape(dice);
        const LwPicture picture = Random(dice, shape);
        LwWholeTrial trial(dice.Once(2) ? picture.Bytes() : Spoilt(dice, picture));
        if (dice.Once(3))
            trial.Change(Spoilt(dice, picture));
        for (int i = 0; i < 20 && IsFileOpen(trial.Whole()); ++i)
            trial.Same(kOperations[dice.Below(std::size(kOperations))], RandomCall(dice, shape));
    }
}

// ---- the stream beside that of the base

struct Stream {
    Bytes bytes;
    std::vector<unsigned long> offsets;
};

Stream StreamOf(LWFileInterface& picture, const LwCall& call)
{
    const unsigned long room =
        picture.GetLWBufferSize(0, call.last, call.copies, call.whiteGap, true);
    Stream stream{ Bytes(room), std::vector<unsigned long>(call.last + 1U) };
    unsigned char* end = stream.bytes.data();
    unsigned long* offsets = stream.offsets.data();
    picture.GetLWPictureRows(end, 0, call.last, offsets, 0, call.separation, call.whiteGap,
                             call.copies, call.white, 0, !call.flag);
    EXPECT_EQ(picture.TraceStatus(), 0U);
    stream.bytes.resize(static_cast<std::size_t>(end - stream.bytes.data()));
    return stream;
}

/// The pixels of all rows, which `translate(colour)` may change in the stream before.
template <typename Translate>
Bytes PixelsOf(Stream& stream, const LwCall& call, Translate translate)
{
    Bytes pixels;
    for (std::size_t row = 0; row <= call.last; ++row) {
        const std::size_t end = row < call.last ? stream.offsets[row + 1] : stream.bytes.size();
        for (std::size_t at = stream.offsets[row] + 2; at < end - 2; at += 2) {
            unsigned char& colour = stream.bytes[at + (call.flag ? 1 : 0)];
            translate(colour);
            pixels.insert(pixels.end(), stream.bytes[at + (call.flag ? 0 : 1)], colour);
        }
    }
    return pixels;
}

void CompareStreams(LwWholeTrial& trial, std::size_t width, LwCall call, unsigned char whiteIndex)
{
    const std::unique_ptr<unsigned char[]> inks(
        trial.Whole().GetSeparationLut(call.separation, false, nullptr));
    call.white = whiteIndex;
    Stream ours = StreamOf(trial.Whole(), call);
    call.white = inks[whiteIndex - 1U];
    Stream base = StreamOf(trial.Picture(), call);
    const Bytes pixels =
        PixelsOf(ours, call, [&](unsigned char& index) { index = inks[index - 1U]; });
    EXPECT_EQ(pixels, PixelsOf(base, call, [](unsigned char) {}));

    const std::size_t placed = call.copies * width + (call.copies - 1) * call.whiteGap;
    const std::size_t white = (4096 - placed % 4096) % 4096;
    if (white == 0 || (white + 254) / 255 % 2 == 1) { // else the base divides one of its runs
        EXPECT_EQ(ours.bytes, base.bytes);
        EXPECT_EQ(ours.offsets, base.offsets);
    }
    for (unsigned int row = 0; row <= call.last; ++row) { // a stream's row ends with a copy
        Bytes decoded(width);
        unsigned int rows = 0;
        trial.Picture().GetPictureRows(decoded.data(), row, row + 1, rows, nullptr, call.separation,
                                       0, false);
        const auto end = pixels.begin() + static_cast<std::ptrdiff_t>((row + 1) * (placed + white));
        EXPECT_TRUE(std::equal(decoded.rbegin(), decoded.rend(), std::reverse_iterator(end)));
    }
}

TEST(LwWholeRandom, ThroughTheTablesTheStreamIsThatOfTheBase)
{
    for (std::uint32_t seed = 1; seed <= 400 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        const Shape shape = dice.Once(4) ? WideShape(dice) : SmallShape(dice);
        const LwPicture picture = Random(dice, shape);
        LwWholeTrial trial(picture);
        LwCall call = RandomCall(dice, shape);
        call.last = shape.height - 1;
        const auto white = static_cast<unsigned char>(1 + dice.Below(picture.colours.size()));
        for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black }) {
            call.separation = separation;
            CompareStreams(trial, shape.width, call, white);
        }
    }
}

} // namespace
