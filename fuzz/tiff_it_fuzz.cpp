// Any bytes as a TIFF/IT file: told its kind, checked, and drawn as either kind. Where libtiff reads
// the file too, the sizes and the pixels are the same.
#include "core/findings.h"
#include "fuzz/any_file.h"
#include "fuzz/libtiff_reading.h"
#include "support/canvas.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tympan/inspect.h"

#include <algorithm>
#include <cstdint>

namespace {

using tympan::fuzz::Input;
using tympan::fuzz::PlainTiff;
using tympan::test::Require;

template <typename Picture>
void DrawAs()
{
    tympan::test::Canvas canvas(16, 16);
    Picture picture(tympan::fuzz::kPath, true);
    picture.Display(0, 12, canvas.dc);
    picture.Display(7, ~0UL, canvas.dc);
    picture.Display(2, 1, canvas.dc);
    tympan::fuzz::RequireCode(picture, { 90001, 90050, 90051, 90052, 90053, 90056, 90057, 90058 });
}

/// Fields of one directory, in the order of their tags and each of the type that writers use: others
/// the two readers take in ways of their own.
bool IsOfOneMind(Input file)
{
    const bool isHighFirst = file.size() > 8 && file[0] == 'M';
    const auto number = [&](std::size_t at, std::size_t size) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size && at + size <= file.size(); ++i)
            value |= std::uint64_t{ file[at + i] } << 8U * (isHighFirst ? size - 1 - i : i);
        return value;
    };
    const std::size_t start = number(4, 4), count = number(start, 2);
    const std::size_t end = start + 2 + 12 * count;
    if (start < 8 || count == 0 || end + 4 > file.size() || number(end, 4) != 0)
        return false;
    std::uint64_t before = 0;
    for (std::size_t at = start + 2; at < end; at += 12) {
        const std::uint64_t tag = number(at, 2), type = number(at + 2, 2);
        const bool isSize = tag == 256 || tag == 257 || tag == 273 || tag == 278 || tag == 279;
        if (tag <= before || (isSize && ((type != 3 && type != 4) || number(at + 4, 4) != 1)))
            return false;
        before = tag;
    }
    return true;
}

void ComparePixels(TiffItCtP1Interface& picture, const PlainTiff& plain)
{
    constexpr std::uint32_t kSide = 16;
    tympan::test::Canvas canvas(kSide, kSide);
    const std::uint32_t rows = std::min(plain.length, kSide);
    picture.Display(0, rows - 1, canvas.dc);
    for (std::uint32_t y = 0; y < rows; ++y)
        for (std::uint32_t x = 0; x < std::min(plain.width, kSide); ++x) {
            std::vector<unsigned char> inks(4);
            std::copy_n(plain.rows[y].begin() + 4L * x, 4, inks.begin());
            Require(GetPixel(canvas.dc.GetSafeHdc(), static_cast<int>(x), static_cast<int>(y)) ==
                        PictureFileInterface::CalculatePixelAsRGB3(inks.data()),
                    "what is drawn are libtiff's samples as inks");
        }
}

void Compare(const PlainTiff& plain)
{
    TiffItCtP1Interface picture(tympan::fuzz::kPath, true);
    if (!picture.ObjectStatus() || picture.TraceStatus() != 0)
        return;
    Require(picture.FileWidthInPixels() == plain.width &&
                picture.FileHeightInPixels() == plain.length,
            "the sizes are libtiff's");
    if (plain.isUncompressed && plain.samples == 4 && plain.rowsPerStrip >= plain.length)
        ComparePixels(picture, plain);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Input file(data, size);
    tympan::fuzz::WithFile(file, [&](auto&) {
        tympan::OpenTiffIt(tympan::fuzz::kPath);
        tympan::CheckOptions options;
        options.formats = { tympan::kTiffItName };
        tympan::fuzz::CheckedFile(tympan::fuzz::kPath, options);
        DrawAs<TiffItCtP1Interface>();
        DrawAs<TiffItLwP1Interface>();
        const auto plain = tympan::fuzz::ReadByLibtiff(file);
        if (plain && IsOfOneMind(file))
            Compare(*plain);
    });
    return 0;
}
