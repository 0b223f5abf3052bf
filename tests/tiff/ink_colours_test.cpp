// Every form of the way from inks to screen colours gives what the rule for one pixel gives.
#include "core/row_access.h"
#include "tiff/ink_colours.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomInks(std::size_t pixels)
{
    std::mt19937 random(75);
    Bytes inks(pixels * 4);
    for (std::uint8_t& ink : inks)
        ink = static_cast<std::uint8_t>(random());
    return inks;
}

// Each black with the inks at which a channel is just held, and next to them.
Bytes InksAtTheLimit()
{
    Bytes inks;
    for (unsigned int black = 0; black < 256; ++black)
        for (unsigned int left = 0; left < 3; ++left) {
            const auto ink = static_cast<std::uint8_t>(256 - black * 4 / 5 - left);
            inks.insert(inks.end(), { ink, 0, 255, static_cast<std::uint8_t>(black) });
        }
    return inks;
}

Bytes ByTheRule(Bytes inks)
{
    Bytes bgr;
    for (std::size_t at = 0; at < inks.size(); at += 4) {
        const unsigned long colour = PictureFileInterface::CalculatePixelAsRGB3(&inks[at]);
        for (const unsigned int shift : { 16U, 8U, 0U })
            bgr.push_back(static_cast<std::uint8_t>(colour >> shift));
    }
    return bgr;
}

void ExpectTheRule(const Bytes& inks)
{
    const Bytes expected = ByTheRule(inks);
    const auto drawn = [&](tympan::InksToBgrForm form) {
        Bytes bgr(expected.size()); // to the byte
        form(inks.data(), inks.size() / 4, bgr.data());
        return bgr;
    };
    ASSERT_EQ(drawn(tympan::InksToBgr), expected) << inks.size() / 4 << " pixels";
    ASSERT_EQ(drawn(tympan::InksToBgrPlain), expected) << inks.size() / 4 << " pixels";
    for (const tympan::InkColourForm& form : tympan::InkColourForms())
        ASSERT_EQ(drawn(form.toBgr), expected) << form.name << ", " << inks.size() / 4 << " pixels";
}

TEST(InkColours, AllFormsFollowTheRule)
{
    for (std::size_t pixels = 0; pixels <= 70; ++pixels)
        ASSERT_NO_FATAL_FAILURE(ExpectTheRule(RandomInks(pixels)));
    ExpectTheRule(InksAtTheLimit());
}

} // namespace
