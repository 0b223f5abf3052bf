// The colour preview of four separations in a 24-bit bitmap, file reading included, against a loop
// that does nothing but read four bytes and write three for each pixel, all of them in memory.
#include "bench/benches.h"
#include "bench/comparison.h"
#include "core/pixel_colour.h"
#include "core/pixel_colour_vector.h"

#include <tiffio.h>

#include <array>
#include <cstring>

namespace tympan::bench {

namespace {

constexpr ColorSeparationType kPlates[] = { Cyan, Magenta, Yellow, Black };
constexpr std::size_t kWord = sizeof(std::uint64_t); // pixels of a step of the limit

std::uint64_t WordAt(const std::uint8_t* bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

void PutWord(std::uint8_t* bytes, std::uint64_t word)
{
    std::memcpy(bytes, &word, sizeof word);
}

// The limit. It takes eight pixels in a step, for byte by byte it would tell about its own
// instructions and not about the memory. `plates.count` is a multiple of 8.
void ReadFourWriteThree(const Plates& plates, std::uint8_t* bgr)
{
    const auto [c, m, y, k] = plates.plate;
    for (std::size_t x = 0; x < plates.count; x += kWord) {
        const std::uint64_t black = WordAt(k + x);
        PutWord(bgr + x * 3, WordAt(y + x) ^ black);
        PutWord(bgr + x * 3 + kWord, WordAt(m + x) ^ black);
        PutWord(bgr + x * 3 + kWord * 2, WordAt(c + x) ^ black);
    }
}

// What the comparisons work on: the picture's plates and a bitmap's bytes in memory, and an object
// that has made its bitmap.
struct Previewing {
    explicit Previewing(std::shared_ptr<const BigPicture> bigPicture)
        : picture(std::move(bigPicture)), bgr(TouchedMemory(picture->Pixels() * 3))
    {
        for (const ColorSeparationType plate : kPlates)
            plates.at(static_cast<std::size_t>(plate)) = picture->Plate(plate);
    }

    void OpenAnew() { object = picture->Open(); }
    void Display()
    {
        bitmap = object->Display(nullptr, bitmap, AllSeparations, 0, picture->Size().height - 1, 24,
                                 nullptr, false);
        Require(bitmap != nullptr && object->TraceStatus() == 0, "the library drew no preview");
    }
    Plates InMemory() const
    {
        return { { plates[0].data(), plates[1].data(), plates[2].data(), plates[3].data() },
                 picture->Pixels() };
    }

    std::shared_ptr<const BigPicture> picture;
    std::array<std::vector<std::uint8_t>, 4> plates;
    std::vector<std::uint8_t> bgr;
    std::unique_ptr<CtFileInterface> object;
    HBITMAP bitmap = nullptr;
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

// The peer's file: the same pixels as ink, uncompressed.
void WriteTiff(const Previewing& previewing, const std::string& path)
{
    const auto [width, height] = previewing.picture->Size();
    const TiffHandle tiff(TIFFOpen(path.c_str(), "w"));
    Require(tiff != nullptr, "the TIFF can't be made");
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
    TIFFSetField(tiff.get(), TIFFTAG_INKSET, INKSET_CMYK);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, 16);
    std::vector<std::uint8_t> pixels(std::size_t{ width } * 4);
    for (unsigned int row = 0; row < height; ++row) {
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<std::uint8_t>(
                kNoInk - previewing.plates[i % 4][std::size_t{ row } * width + i / 4]);
        Require(TIFFWriteScanline(tiff.get(), pixels.data(), row) == 1,
                "the TIFF can't be written");
    }
}

void ReadTiff(const std::string& path, PictureSize size, std::vector<std::uint32_t>& raster)
{
    const TiffHandle tiff(TIFFOpen(path.c_str(), "r"));
    Require(tiff != nullptr &&
                TIFFReadRGBAImageOriented(tiff.get(), size.width, size.height, raster.data(),
                                          ORIENTATION_TOPLEFT, 1) == 1,
            "the TIFF can't be read");
}

// A comparison with the limit; `contender` makes the other side from what both work on.
template <typename MakeContender>
std::function<Sides()> AgainstMemory(const Source<BigPicture>& picture, MakeContender contender)
{
    return [=] {
        const auto previewing = std::make_shared<Previewing>(picture());
        const auto limit = [=] {
            ReadFourWriteThree(previewing->InMemory(), previewing->bgr.data());
            benchmark::ClobberMemory();
        };
        return Sides{ { limit }, contender(previewing) };
    };
}

using Shared = std::shared_ptr<Previewing>;

Contender IntoBitmapMadeBefore(const Shared& previewing)
{
    const auto openOnce = [=] {
        if (previewing->object == nullptr) {
            previewing->OpenAnew();
            previewing->Display();
        }
    };
    return { [=] { previewing->Display(); }, openOnce };
}

Contender FirstCall(const Shared& previewing)
{
    return { [=] { previewing->Display(); }, [=] { previewing->OpenAnew(); } };
}

Contender PlainForm(const Shared& previewing)
{
    return { [=] { PlatesToBgrPlain(previewing->InMemory(), previewing->bgr.data()); } };
}

Contender TiffRgba(const Shared& previewing, const std::string& path)
{
    const auto raster = std::make_shared<std::vector<std::uint32_t>>(previewing->picture->Pixels());
    WriteTiff(*previewing, path);
    return { [=] { ReadTiff(path, previewing->picture->Size(), *raster); } };
}

} // namespace

void RegisterPreview(const Source<BigPicture>& picture, const std::string& folder)
{
    Register({ "preview in a bitmap made before / memory",
               AgainstMemory(picture, IntoBitmapMadeBefore), 0.6 });
    Register({ "preview, first call / memory", AgainstMemory(picture, FirstCall) });
    Register(
        { "for the record: plain form, from memory / memory", AgainstMemory(picture, PlainForm) });
    const auto tiff = [path = folder + "peer.tif"](const Shared& previewing) {
        return TiffRgba(previewing, path);
    };
    Register({ "for the record: libtiff's RGBA reading / memory", AgainstMemory(picture, tiff) });
}

void RegisterColours()
{
    constexpr std::size_t kPixels = 8000;
    constexpr int kTimes = 1000;
    const auto plate = std::make_shared<std::vector<std::uint8_t>>(TouchedMemory(kPixels));
    const auto bgr = std::make_shared<std::vector<std::uint8_t>>(TouchedMemory(kPixels * 3));
    const auto times = [=](auto form) {
        return [=] {
            const std::uint8_t* const bytes = plate->data();
            for (int i = 0; i < kTimes; ++i) {
                form({ { bytes, bytes, bytes, bytes }, kPixels }, bgr->data());
                benchmark::ClobberMemory();
            }
        };
    };
    Register({ "plates to colours in cache, 8M pixels / plain form", [=] {
                  return Sides{ { times(PlatesToBgrPlain) }, { times(PlatesToBgr) } };
              } });
}

} // namespace tympan::bench
