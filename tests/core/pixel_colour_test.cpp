// Plates to screen colours: the rule at known places, and every form of it against one.
#include "core/pixel_colour.h"
#include "core/pixel_colour_vector.h"
#include "core/row_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace {

using P = PictureFileInterface;

struct TintCase {
    unsigned char value;
    int separation;
    unsigned long colour;
};

const TintCase kTintCases[] = { { 255, Cyan, 0x00FFFFFF },
                                { 0, Cyan, 0x00FFFF00 },
                                { 0, Magenta, 0x00FF00FF },
                                { 0, Yellow, 0x0000FFFF },
                                { 100, Black, 0x00646464 },
                                { 100, NoSeparation, 0x00FFFFFF },
                                { 100, AllSeparations, 0x00FFFFFF },
                                { 100, 5, 0x00FFFFFF },
                                { 7, -1, 0x00FFFFFF } };

TEST(PixelColour, TintsOnePlate)
{
    for (const TintCase& tint : kTintCases)
        EXPECT_EQ(
            P::CalculatePixelAsRGB(tint.value, static_cast<ColorSeparationType>(tint.separation)),
            tint.colour)
            << int{ tint.value } << " of " << tint.separation;
}

struct InkCase {
    std::array<unsigned char, 4> inks;
    unsigned long colour;
};

const InkCase kInkCases[] = {
    { { 0, 0, 0, 0 }, 0x00FFFFFF },     { { 255, 255, 255, 255 }, 0x00000000 },
    { { 0, 0, 0, 255 }, 0x00333333 },   { { 0, 0, 0, 128 }, 0x00999999 },
    { { 200, 0, 0, 128 }, 0x00999900 }, { { 255, 0, 0, 0 }, 0x00FFFF00 },
    { { 0, 0, 1, 1 }, 0x00FEFFFF }, // 0.8 of 1 is cut to 0
};

unsigned long Packed(const std::array<unsigned char, 4>& bytes)
{
    unsigned long packed = 0;
    for (const unsigned char byte : bytes)
        packed = packed << 8U | byte;
    return packed;
}

// All forms of the rule on one pixel's inks.
void ExpectAllForms(std::array<unsigned char, 4> inks, unsigned long colour)
{
    SCOPED_TRACE("inks " + std::to_string(Packed(inks)));
    std::array<unsigned char, 4> plates{};
    std::transform(inks.begin(), inks.end(), plates.begin(),
                   [](unsigned char ink) { return static_cast<unsigned char>(255 - ink); });
    unsigned char* planes[] = { &plates[0], &plates[1], &plates[2], &plates[3] };
    unsigned char* pixels[] = { nullptr, inks.data() };
    EXPECT_EQ(P::CalculatePixelAsRGB(plates.data()), colour);
    EXPECT_EQ(P::CalculatePixelAsRGB(planes, 0), colour);
    EXPECT_EQ(P::CalculatePixelAsRGB2(pixels, 1), colour);
    EXPECT_EQ(P::CalculatePixelAsRGB3(inks.data()), colour);
    EXPECT_EQ(P::CalculatePixelAsRGB(Packed(inks), true), colour);
    EXPECT_EQ(P::CalculatePixelAsRGB(Packed(plates), false), colour);
}

TEST(PixelColour, MeetsKnownColours)
{
    for (const InkCase& known : kInkCases)
        ExpectAllForms(known.inks, known.colour);
}

// The rule as it is told: black is multiplied by 0.8 and cut, sums are held to 255.
TEST(PixelColour, FollowsTheRuleForAllInksAndBlacks)
{
    for (int black = 0; black < 256; ++black)
        for (int ink = 0; ink < 256; ++ink) {
            const int dark = static_cast<int>(black * 0.8);
            const auto channel = static_cast<unsigned long>(255 - std::min(ink + dark, 255));
            unsigned char pixel[] = { static_cast<unsigned char>(ink),
                                      static_cast<unsigned char>(ink),
                                      static_cast<unsigned char>(ink),
                                      static_cast<unsigned char>(black) };
            ASSERT_EQ(P::CalculatePixelAsRGB3(pixel), channel | channel << 8U | channel << 16U);
        }
}

struct RandomPlates {
    RandomPlates(std::size_t count, std::mt19937& random)
    {
        for (auto& plate : bytes) {
            plate.resize(count);
            std::generate(plate.begin(), plate.end(), [&] {
                return static_cast<std::uint8_t>(random() % 4 == 0 ? (random() % 2) * 255
                                                                   : random());
            });
        }
    }
    tympan::Plates From(std::size_t first) const
    {
        return { { bytes[0].data() + first, bytes[1].data() + first, bytes[2].data() + first,
                   bytes[3].data() + first },
                 bytes[0].size() - first };
    }
    std::array<std::vector<std::uint8_t>, 4> bytes;
};

std::vector<std::uint8_t> Reference(const tympan::Plates& plates)
{
    std::vector<std::uint8_t> bgr;
    for (std::size_t x = 0; x < plates.count; ++x) {
        const unsigned char pixel[] = { plates.plate[0][x], plates.plate[1][x], plates.plate[2][x],
                                        plates.plate[3][x] };
        const unsigned long colour = P::CalculatePixelAsRGB(pixel);
        for (const unsigned int shift : { 16U, 8U, 0U })
            bgr.push_back(static_cast<std::uint8_t>(colour >> shift));
    }
    return bgr;
}

// All lengths round the vector's width, at odd addresses, and nothing stored behind the end.
TEST(PixelColour, StretchFormsEqualTheRule)
{
    std::vector<std::pair<const char*, tympan::PlatesToBgrForm>> forms{
        { "chosen", tympan::PlatesToBgr },
        { "chosen, streamed", tympan::PlatesToBgrStreamed },
        { "plain", tympan::PlatesToBgrPlain },
    };
    for (const tympan::VectorForm& form : tympan::VectorForms()) {
        forms.emplace_back(form.name, form.cached);
        forms.emplace_back(form.name, form.streamed);
    }
    std::mt19937 random(11);
    for (std::size_t count = 0; count < 300; count += count < 140 ? 1 : 23)
        for (const auto& [name, form] : forms) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(count));
            const std::size_t shift = random() % 4;
            const RandomPlates plates(count + shift, random);
            const std::size_t start = random() % 33; // any alignment
            std::vector<std::uint8_t> bgr(start + count * 3 + 1, 0xA5);
            form(plates.From(shift), bgr.data() + start);
            std::vector<std::uint8_t> expected(start, 0xA5);
            const std::vector<std::uint8_t> colours = Reference(plates.From(shift));
            expected.insert(expected.end(), colours.begin(), colours.end());
            expected.push_back(0xA5);
            ASSERT_EQ(bgr, expected);
        }
}

TEST(PixelColour, TintTablesEqualTheRule)
{
    std::vector<std::uint8_t> plate(256);
    for (std::size_t i = 0; i < plate.size(); ++i)
        plate[i] = static_cast<std::uint8_t>(i);
    for (const int separation : { 0, 1, 2, 3, 4, 6 }) {
        const auto type = static_cast<ColorSeparationType>(separation);
        std::vector<std::uint8_t> bgr(plate.size() * 3);
        tympan::TintTable(type).ToBgr(plate.data(), plate.size(), bgr.data());
        for (std::size_t i = 0; i < plate.size(); ++i)
            ASSERT_EQ(bgr[i * 3] << 16U | bgr[i * 3 + 1] << 8U | bgr[i * 3 + 2],
                      P::CalculatePixelAsRGB(plate[i], type));
    }
}

} // namespace
