// Pictures drawn from the input and written by the library: the file is sound, and opened again, by
// rows and as a whole, it has the same pixels.
#include "fuzz/any_file.h"
#include "lw/lw_file.h"
#include "lw_variant/velmar_lw_file.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace {

using tympan::fuzz::Drawn;
using tympan::test::Require;
using Pixels = std::vector<unsigned char>;

constexpr unsigned int kMostWidth = 1000, kMostHeight = 24;

struct Grey {
    std::size_t width, height;
    Pixels pixels;

    unsigned char* Row(std::size_t row) { return pixels.data() + row * width; }
};

/// Stretches of one value, and between them values as they come.
Grey DrawnPicture(Drawn& drawn)
{
    Grey picture{ 1 + drawn.Below(kMostWidth), 1 + drawn.Below(kMostHeight), {} };
    const std::size_t size = picture.width * picture.height;
    while (picture.pixels.size() < size && !drawn.IsEmpty())
        if (drawn.Coin()) {
            const tympan::fuzz::Input bytes = drawn.Bytes(drawn.Below(16));
            picture.pixels.insert(picture.pixels.end(), bytes.begin(), bytes.end());
        } else {
            const std::size_t length = drawn.Below(600);
            picture.pixels.insert(picture.pixels.end(), length, drawn.Byte());
        }
    picture.pixels.resize(size);
    return picture;
}

void Write(Grey& picture, const char* path)
{
    const std::unique_ptr<LWFileInterface> file(create_lw_file_object(path, false));
    file->FileWidthInPixels(picture.width);
    file->FileHeightInPixels(picture.height);
    file->FileWidthInUnits(static_cast<double>(picture.width) / 100.0);
    file->FileHeightInUnits(static_cast<double>(picture.height) / 100.0);
    file->FileNumberOfSeparations(1);
    dynamic_cast<LwPictureParameters&>(*file->PictureParams()).SaveHader(file->FileHandle());
    for (std::size_t row = 0; row < picture.height; ++row) {
        const unsigned int runs =
            file->SetLWPictureRow(picture.Row(row), file->FileHandle(), picture.width);
        Require(runs >= (picture.width + 254) / 255 && runs <= picture.width,
                "a row has the runs that its pixels need");
    }
    file->ClosePictureFile();
}

/// Index 0 is no colour, so that the 256 greys have 255 indexes: 64 shares the one of 63.
unsigned char AsRead(unsigned char grey)
{
    return grey == 64 ? std::uint8_t{ 63 } : grey;
}

void RequirePixels(LWFileInterface& file, const Grey& picture, ColorSeparationType separation)
{
    const auto height = static_cast<unsigned int>(picture.height);
    Require(file.ObjectStatus() && file.FileWidthInPixels() == picture.width &&
                file.FileHeightInPixels() == height,
            "what was written opens");
    Pixels given(picture.pixels.size());
    unsigned int rows = 0;
    file.GetPictureRows(given.data(), 0, height, rows, nullptr, separation, 0, false);
    Require(rows == height, "all rows that were written are read");
    for (std::size_t i = 0; i < given.size(); ++i)
        Require(given[i] == AsRead(picture.pixels[i]), "pixels are those that were written");
}

/// The stream of colour indexes through the look-up table of a separation.
void RequireIndexes(VelmarLWFileInterface& file, const Grey& picture,
                    const ColorSeparationType& separation)
{
    const auto last = static_cast<unsigned int>(picture.height) - 1;
    const unsigned long size = file.GetLWBufferSize(0, last, 1, 0, true);
    Require(size != 0, "the size of what was written is told");
    Pixels stream(size);
    std::vector<unsigned long> offsets(picture.height + 1);
    unsigned char* end = stream.data();
    unsigned long* offsetsEnd = offsets.data();
    offsets.back() =
        file.GetLWPictureRows(end, 0, last, offsetsEnd, 0, separation, 0, 1, 1, 0, true);
    const std::unique_ptr<unsigned char[]> inks(file.GetSeparationLut(separation, false, nullptr));
    for (std::size_t row = 0; row < picture.height; ++row) {
        Pixels pixels;
        for (std::size_t at = offsets[row] + 2; at < offsets[row + 1] - 2; at += 2)
            pixels.insert(pixels.end(), stream[at + 1], inks[stream[at] - 1]);
        Require(pixels.size() % 4096 == 0 && pixels.size() >= picture.width,
                "a row of a stream is whole parts wide");
        const unsigned char* given = pixels.data() + (pixels.size() - picture.width);
        for (std::size_t x = 0; x < picture.width; ++x)
            Require(given[x] == AsRead(picture.pixels[row * picture.width + x]),
                    "a stream has the pixels that were written");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn drawn(data, size);
    Grey picture = DrawnPicture(drawn);
    tympan::fuzz::WithFile({}, [&](auto&) {
        Write(picture, "written");
        const tympan::CheckResult check = tympan::fuzz::CheckedFile("written");
        Require(check.format == "LW" && check.verdict != tympan::Verdict::Invalid,
                "what was written is without an error");
        const std::unique_ptr<LWFileInterface> rows(create_lw_file_object("written", true));
        const ColorSeparationType separation = rows->FileSeparation(0);
        RequirePixels(*rows, picture, separation);
        const std::unique_ptr<VelmarLWFileInterface> whole(
            create_velmar_lw_file_object("written", true));
        Require(whole != nullptr, "what was written opens as a whole");
        RequireIndexes(*whole, picture, separation);
    });
    return 0;
}
