#include "tiff/ink_colours.h"

#include "core/pixel_colour.h"
#include "core/row_access.h"

#include <array>

namespace tympan {

namespace {

InksToBgrForm FastestForm() noexcept
{
    const auto forms = InkColourForms();
    return forms.empty() ? InksToBgrPlain : forms.front().toBgr;
}

} // namespace

void InksToBgr(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr)
{
    static const InksToBgrForm kForm = FastestForm();
    kForm(inks, count, bgr);
}

void InksToBgrPlain(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr)
{
    for (; count != 0; --count, inks += 4, bgr += 3) {
        std::array<unsigned char, 4> pixel{ inks[0], inks[1], inks[2], inks[3] };
        const auto colour =
            ScreenColour::Of(PictureFileInterface::CalculatePixelAsRGB3(pixel.data()));
        bgr[0] = colour.blue;
        bgr[1] = colour.green;
        bgr[2] = colour.red;
    }
}

} // namespace tympan
