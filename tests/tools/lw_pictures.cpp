#include "lw_pictures.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>

namespace tympan::test {

namespace {

bool IsTransparent(const LwColour& colour, std::size_t separation)
{
    return (colour.flags & (0x80U >> separation)) != 0;
}

unsigned char SmallestFree(const LwPicture& picture, std::size_t separation)
{
    unsigned char value = 0;
    while (std::any_of(picture.colours.begin(), picture.colours.end(),
                       [&](const LwColour& colour) { return colour.inks[separation] == value; }))
        ++value;
    return value;
}

template <typename Ink>
LwPicture WithTransparent(LwPicture picture, const Ink& ink)
{
    for (std::size_t separation = 0; separation < 4; ++separation) {
        const unsigned char value = ink(picture, separation);
        for (LwColour& colour : picture.colours)
            if (IsTransparent(colour, separation))
                colour.inks[separation] = value;
    }
    return picture;
}

} // namespace

LwPicture RandomLw(std::uint32_t width, std::uint32_t height, LwRuns kind, std::uint32_t seed)
{
    std::mt19937 random(seed);
    LwPicture picture = RandomPicture(random, width, height, 20, kind);
    picture.mask = 15;
    picture.inchesWide = width / 100.0;
    picture.inchesHigh = height / 100.0;
    for (std::size_t i = 0; i < 4; ++i)
        picture.colours[3 * i].flags = static_cast<unsigned char>(0x80U >> i);
    return picture;
}

LwPicture AsLoaded(LwPicture picture)
{
    return WithTransparent(std::move(picture), SmallestFree);
}

LwPicture OnPaper(LwPicture picture)
{
    return WithTransparent(std::move(picture), [](const LwPicture&, std::size_t) {
        return static_cast<unsigned char>(255);
    });
}

CtPicture PlatesOf(const LwPicture& picture)
{
    CtPicture plates{
        picture.width, picture.height, picture.mask == 15 ? 4U : 1U, 100.0, 100.0, {}
    };
    for (std::uint32_t row = 0; row < picture.height; ++row)
        for (std::uint32_t plate = 0; plate < plates.separations; ++plate) {
            const auto inks = picture.Inks(row, plate);
            plates.bytes.insert(plates.bytes.end(), inks.begin(), inks.end());
        }
    return plates;
}

LwFolder::LwFolder(const LwPicture& picture, std::size_t cut)
{
    const std::string file(AsText(picture.Bytes()));
    WriteFile(*this / "a.lw", file.substr(0, file.size() - cut));
}

} // namespace tympan::test
