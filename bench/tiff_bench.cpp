// The TIFF comparisons: rows of one separation against libtiff's own calls and a plain loop on the
// same file, and the taking apart of samples against copying them.
#include "bench/benches.h"
#include "tiff/sample_split.h"
#include "tiff/tiff_file.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace tympan::bench {

namespace {

constexpr std::uint32_t kSamples = 4;
constexpr ColorSeparationType kPlate = Magenta;
constexpr auto kWanted = static_cast<std::size_t>(kPlate);

constexpr PictureSize kLarge{ 8000, 6000 };
constexpr PictureSize kPacked{ 4000, 3000 }; // decoded 48 MB
constexpr int kPackedRounds = 15;

struct CloseLibtiff {
    void operator()(TIFF* open) const { TIFFClose(open); }
};
using Libtiff = std::unique_ptr<TIFF, CloseLibtiff>;

// A CMYK picture that compresses about as a photograph does.
class TiffPicture {
  public:
    TiffPicture(const std::string& path, PictureSize size, std::uint16_t compression,
                std::uint32_t stripRows)
        : path_(path), size_(size), stripRows_(stripRows), noise_(RowBytes() * 2)
    {
        std::mt19937 random(1);
        std::generate(noise_.begin(), noise_.end(),
                      [&] { return static_cast<std::uint8_t>(random() % 8); });
        Write(compression);
        BringIntoCache(path);
    }

    PictureSize Size() const { return size_; }
    std::size_t RowBytes() const { return std::size_t{ size_.width } * kSamples; }
    std::uint32_t StripRows() const { return stripRows_; }

    std::uint8_t Sample(unsigned int x, unsigned int row, unsigned int sample) const
    {
        const std::size_t place = std::size_t{ x } * kSamples + sample;
        const unsigned int slope = x / 16 + row / 8 + sample * 50;
        return static_cast<std::uint8_t>(slope +
                                         noise_[std::size_t{ row } * 7919 % RowBytes() + place]);
    }

    std::unique_ptr<TiffFileInterface> Open() const
    {
        auto object = std::make_unique<TiffFileInterface>();
        Require(object->OpenPictureFile(path_.c_str(), true, false, nullptr),
                "the library can't open the picture");
        return object;
    }
    // Without memory mapping, as the library reads.
    Libtiff OpenLibtiff() const
    {
        Libtiff open(TIFFOpen(path_.c_str(), "rm"));
        Require(open != nullptr, "libtiff can't open the picture");
        return open;
    }

  private:
    void Write(std::uint16_t compression) const
    {
        const Libtiff file(TIFFOpen(path_.c_str(), "w"));
        Require(file != nullptr, "the TIFF can't be made");
        TIFFSetField(file.get(), TIFFTAG_IMAGEWIDTH, size_.width);
        TIFFSetField(file.get(), TIFFTAG_IMAGELENGTH, size_.height);
        TIFFSetField(file.get(), TIFFTAG_SAMPLESPERPIXEL, kSamples);
        TIFFSetField(file.get(), TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(file.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
        TIFFSetField(file.get(), TIFFTAG_COMPRESSION, compression);
        TIFFSetField(file.get(), TIFFTAG_ROWSPERSTRIP, stripRows_);
        std::vector<std::uint8_t> pixels(RowBytes());
        for (unsigned int row = 0; row < size_.height; ++row) {
            for (std::size_t i = 0; i < pixels.size(); ++i)
                pixels[i] = Sample(static_cast<unsigned int>(i / kSamples), row, i % kSamples);
            Require(TIFFWriteScanline(file.get(), pixels.data(), row) == 1,
                    "the TIFF can't be written");
        }
    }

    std::string path_;
    PictureSize size_;
    std::uint32_t stripRows_;
    std::vector<std::uint8_t> noise_;
};

using Picture = std::shared_ptr<const TiffPicture>;

// What one side of a comparison works on, opened anew for each run.
template <typename Open>
struct Reading {
    explicit Reading(const TiffPicture& picture) : row(TouchedMemory(picture.Size().width)) {}

    Open open{};
    std::vector<std::uint8_t> row;          // of one separation
    std::unique_ptr<std::uint8_t[]> chunky; // what libtiff fills: new, as the library's
};

void TakePlain(const std::uint8_t* chunky, std::vector<std::uint8_t>& row)
{
    for (std::size_t x = 0; x < row.size(); ++x)
        row[x] = chunky[x * kSamples + kWanted];
    benchmark::ClobberMemory();
}

// `read` gets the picture, what to work on and the bytes that libtiff may fill.
template <typename Read>
Contender ByLibtiff(const Picture& picture, std::size_t bytes, Read read)
{
    const auto reading = std::make_shared<Reading<Libtiff>>(*picture);
    return { [=] {
                reading->chunky.reset(new std::uint8_t[bytes]);
                read(*picture, *reading, bytes);
            },
             [=] {
                 reading->chunky.reset();
                 reading->open = picture->OpenLibtiff();
             } };
}

Contender Scanlines(const Picture& picture)
{
    return ByLibtiff(
        picture, picture->RowBytes(),
        [](const TiffPicture& from, Reading<Libtiff>& reading, std::size_t) {
            for (unsigned int row = 0; row < from.Size().height; ++row) {
                Require(TIFFReadScanline(reading.open.get(), reading.chunky.get(), row) == 1,
                        "libtiff gave no row");
                TakePlain(reading.chunky.get(), reading.row);
            }
        });
}

Contender Strips(const Picture& picture)
{
    return ByLibtiff(
        picture, picture->StripRows() * picture->RowBytes(),
        [](const TiffPicture& from, Reading<Libtiff>& reading, std::size_t room) {
            for (tstrip_t strip = 0; strip < TIFFNumberOfStrips(reading.open.get()); ++strip) {
                const tmsize_t bytes = TIFFReadEncodedStrip(
                    reading.open.get(), strip, reading.chunky.get(), static_cast<tmsize_t>(room));
                Require(bytes > 0, "libtiff gave no strip");
                for (std::size_t at = 0; at < static_cast<std::size_t>(bytes);
                     at += from.RowBytes())
                    TakePlain(reading.chunky.get() + at, reading.row);
            }
        });
}

using Object = std::unique_ptr<TiffFileInterface>;

void ReadRow(Reading<Object>& reading, unsigned int row, unsigned int sample)
{
    Require(reading.open->GetPictureRow(reading.row.data(), row,
                                        static_cast<ColorSeparationType>(sample), 0, 0,
                                        reading.row.size()) == 1,
            "the library gave no row");
}

void RequireSamples(const TiffPicture& picture, Reading<Object>& reading)
{
    for (unsigned int row = 0; row < picture.Size().height; ++row) {
        const unsigned int sample = row % kSamples;
        ReadRow(reading, row, sample);
        for (unsigned int x = 0; x < picture.Size().width; ++x)
            Require(reading.row[x] == picture.Sample(x, row, sample), "a row is wrong");
    }
}

// `read` gets the picture's height and what to work on.
template <typename Read>
Contender ByLibrary(const Picture& picture, Read read)
{
    const auto reading = std::make_shared<Reading<Object>>(*picture);
    return { [=] { read(picture->Size().height, *reading); },
             [=] { reading->open = picture->Open(); },
             [=] { RequireSamples(*picture, *reading); } };
}

Contender Forwards(const Picture& picture)
{
    return ByLibrary(picture, [](unsigned int height, Reading<Object>& reading) {
        for (unsigned int row = 0; row < height; ++row)
            ReadRow(reading, row, kWanted);
    });
}

Contender Backwards(const Picture& picture)
{
    return ByLibrary(picture, [](unsigned int height, Reading<Object>& reading) {
        for (unsigned int row = height; row-- > 0;)
            ReadRow(reading, row, kWanted);
    });
}

Contender AllSeparations(const Picture& picture)
{
    return ByLibrary(picture, [](unsigned int height, Reading<Object>& reading) {
        for (unsigned int row = 0; row < height; ++row)
            for (unsigned int sample = 0; sample < kSamples; ++sample)
                ReadRow(reading, row, sample);
    });
}

// Rows that lie in memory, copied and taken apart into a row's buffer.
Sides Separating(std::size_t width, std::size_t rows)
{
    struct Memory {
        std::vector<std::uint8_t> chunky;
        std::vector<std::uint8_t> row;
    };
    const std::size_t rowBytes = width * kSamples;
    const auto memory =
        std::make_shared<Memory>(Memory{ TouchedMemory(rowBytes * rows), TouchedMemory(rowBytes) });
    const auto forRows = [=](auto work) {
        return [=] {
            for (std::size_t at = 0; at < memory->chunky.size(); at += rowBytes) {
                work(memory->chunky.data() + at, memory->row.data());
                benchmark::ClobberMemory();
            }
        };
    };
    return { { forRows([=](const std::uint8_t* from, std::uint8_t* to) {
                 std::memcpy(to, from, rowBytes);
             }) },
             { forRows([=](const std::uint8_t* from, std::uint8_t* to) {
                 TakeSample({ from, width, kSamples, kWanted }, to);
             }) } };
}

void RegisterPlain(const std::string& layout, const Source<TiffPicture>& picture)
{
    Register({ "TIFF: rows, uncompressed " + layout + " / scanlines",
               [=] {
                   return Sides{ Scanlines(picture()), Forwards(picture()) };
               },
               0.95 });
    Register({ "TIFF: backwards, uncompressed " + layout + " / forwards",
               [=] {
                   return Sides{ Forwards(picture()), Backwards(picture()) };
               },
               0.9 });
}

void RegisterPacked(const std::string& name, const Source<TiffPicture>& picture)
{
    Register({ "TIFF: rows, " + name + " / strips",
               [=] {
                   return Sides{ Strips(picture()), Forwards(picture()) };
               },
               0.95, kPackedRounds });
    Register({ "TIFF: rows, " + name + " / scanlines",
               [=] {
                   return Sides{ Scanlines(picture()), Forwards(picture()) };
               },
               0.95, kPackedRounds });
    Register({ "TIFF: four separations a row, " + name + " / one",
               [=] {
                   return Sides{ Forwards(picture()), AllSeparations(picture()) };
               },
               1 / 1.3, kPackedRounds });
    Register({ "TIFF: backwards, " + name + " / forwards",
               [=] {
                   return Sides{ Forwards(picture()), Backwards(picture()) };
               },
               0.9, kPackedRounds });
}

} // namespace

void RegisterTiff(const std::string& folder)
{
    const auto plain = [&](const char* name, std::uint32_t stripRows) {
        return MadeOnce<TiffPicture>(folder + name, kLarge, std::uint16_t{ COMPRESSION_NONE },
                                     stripRows);
    };
    const auto packed = [&](const char* name, std::uint16_t compression, std::uint32_t stripRows) {
        return MadeOnce<TiffPicture>(folder + name, kPacked, compression, stripRows);
    };
    RegisterPlain("in one strip", plain("plain.tif", kLarge.height));
    RegisterPlain("in strips of 16 rows", plain("strips.tif", 16));
    RegisterPacked("Deflate", packed("deflate.tif", COMPRESSION_ADOBE_DEFLATE, 64));
    RegisterPacked("Deflate in one strip",
                   packed("deflate1.tif", COMPRESSION_ADOBE_DEFLATE, kPacked.height));
    RegisterPacked("LZW", packed("lzw.tif", COMPRESSION_LZW, 64));
    Register({ "TIFF: one sample of four, rows in memory / memcpy",
               [=] { return Separating(kLarge.width, kLarge.height); }, 0.5 });
    Register({ "TIFF: one sample of four, rows in the cache / memcpy",
               [=] { return Separating(1000, 64); }, 0.5 });
}

} // namespace tympan::bench
