#include "core/pixel_colour.h"

#include "core/pixel_colour_vector.h"
#include "core/row_access.h"

#include <algorithm>

namespace {

using tympan::ScreenColour;

struct Inks {
    unsigned int cyan, magenta, yellow, black;
};

constexpr unsigned int InkOf(unsigned int plateByte)
{
    return 255U - plateByte;
}

// The rule. A fifth is taken off in whole numbers: 0.8 of a byte, cut, is 4/5 of it, cut.
constexpr unsigned long ColourOf(const Inks& inks)
{
    const unsigned int dark = inks.black * 4 / 5;
    const auto channel = [dark](unsigned int ink) {
        return static_cast<std::uint8_t>(255U - std::min(ink + dark, 255U));
    };
    return ScreenColour{ channel(inks.cyan), channel(inks.magenta), channel(inks.yellow) }.Packed();
}

constexpr Inks FromInk(const unsigned char* pixel)
{
    return { pixel[0], pixel[1], pixel[2], pixel[3] };
}

constexpr Inks FromPlates(unsigned char c, unsigned char m, unsigned char y, unsigned char k)
{
    return { InkOf(c), InkOf(m), InkOf(y), InkOf(k) };
}

std::uint8_t* Store(ScreenColour colour, std::uint8_t* bgr)
{
    bgr[0] = colour.blue;
    bgr[1] = colour.green;
    bgr[2] = colour.red;
    return bgr + 3;
}

tympan::VectorForm FastestForm() noexcept
{
    const auto forms = tympan::VectorForms();
    return forms.empty()
               ? tympan::VectorForm{ "plain", tympan::PlatesToBgrPlain, tympan::PlatesToBgrPlain }
               : forms.front();
}

} // namespace

unsigned long PictureFileInterface::CalculatePixelAsRGB(unsigned char value,
                                                        ColorSeparationType separation)
{
    ScreenColour colour{ 255, 255, 255 };
    switch (separation) {
    case Cyan: colour.red = value; break;
    case Magenta: colour.green = value; break;
    case Yellow: colour.blue = value; break;
    case Black: colour = { value, value, value }; break;
    default: break;
    }
    return colour.Packed();
}

unsigned long PictureFileInterface::CalculatePixelAsRGB(const unsigned char* pixel)
{
    return ColourOf(FromPlates(pixel[0], pixel[1], pixel[2], pixel[3]));
}

unsigned long PictureFileInterface::CalculatePixelAsRGB(unsigned char** planes, unsigned long index)
{
    return ColourOf(
        FromPlates(planes[0][index], planes[1][index], planes[2][index], planes[3][index]));
}

unsigned long PictureFileInterface::CalculatePixelAsRGB2(unsigned char** pixels,
                                                         unsigned long index)
{
    return ColourOf(FromInk(pixels[index]));
}

unsigned long PictureFileInterface::CalculatePixelAsRGB3(unsigned char* pixel)
{
    return ColourOf(FromInk(pixel));
}

unsigned long PictureFileInterface::CalculatePixelAsRGB(unsigned long packed, bool inkValues)
{
    const auto byte = [packed](unsigned int shift) {
        return static_cast<unsigned char>(packed >> shift);
    };
    const unsigned char pixel[] = { byte(24), byte(16), byte(8), byte(0) };
    return inkValues ? ColourOf(FromInk(pixel)) : CalculatePixelAsRGB(pixel);
}

namespace tympan {

ByteTable UnchangedBytes()
{
    ByteTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<std::uint8_t>(byte);
    return table;
}

void PlatesToBgr(const Plates& plates, std::uint8_t* bgr)
{
    static const PlatesToBgrForm kForm = FastestForm().cached;
    kForm(plates, bgr);
}

void PlatesToBgrStreamed(const Plates& plates, std::uint8_t* bgr)
{
    static const PlatesToBgrForm kForm = FastestForm().streamed;
    kForm(plates, bgr);
}

void PlatesToBgrPlain(const Plates& plates, std::uint8_t* bgr)
{
    const auto [c, m, y, k] = plates.plate;
    for (std::size_t x = 0; x < plates.count; ++x)
        bgr = Store(ScreenColour::Of(ColourOf(FromPlates(c[x], m[x], y[x], k[x]))), bgr);
}

TintTable::TintTable(ColorSeparationType separation)
{
    for (std::size_t byte = 0; byte < tints_.size(); ++byte)
        tints_[byte] = ScreenColour::Of(PictureFileInterface::CalculatePixelAsRGB(
            static_cast<unsigned char>(byte), separation));
}

void TintTable::ToBgr(const std::uint8_t* plate, std::size_t count, std::uint8_t* bgr) const
{
    for (std::size_t x = 0; x < count; ++x)
        bgr = Store(tints_[plate[x]], bgr);
}

} // namespace tympan
