// Any bytes as a TIFF: every separation's row has the samples that libtiff reads by itself.
#include "fuzz/any_file.h"
#include "fuzz/libtiff_reading.h"
#include "support/ask_tiff.h"
#include "tiff/tiff_file.h"

#include <vector>

namespace {

using tympan::fuzz::PlainTiff;
using tympan::test::Require;

std::vector<unsigned char> SamplesOf(const PlainTiff& plain, std::size_t row, std::size_t sample)
{
    std::vector<unsigned char> samples;
    for (std::size_t at = sample; at < plain.RowBytes(); at += plain.samples)
        samples.push_back(plain.rows[row][at]);
    return samples;
}

void AskRow(TiffFileInterface& picture, const PlainTiff& plain, unsigned int row)
{
    for (unsigned int sample = 0; sample < plain.samples; ++sample) {
        const auto separation = static_cast<ColorSeparationType>(sample);
        std::vector<unsigned char> given(plain.width);
        Require(picture.GetPictureRow(given.data(), row, separation, 1, 1, given.size()) == 1,
                "a row that libtiff reads is read");
        Require(given == SamplesOf(plain, row, sample), "a row has libtiff's samples");
    }
}

void AskRows(TiffFileInterface& picture, const PlainTiff& plain)
{
    const auto last = static_cast<ColorSeparationType>(plain.samples - 1);
    std::vector<unsigned char> given(std::size_t{ plain.width } * plain.length), wanted;
    for (std::size_t row = 0; row < plain.length; ++row) {
        const auto samples = SamplesOf(plain, row, std::size_t{ plain.samples } - 1);
        wanted.insert(wanted.end(), samples.begin(), samples.end());
    }
    unsigned int rows = 0;
    Require(picture.GetPictureRows(given.data(), 0, plain.length - 1, rows, nullptr, last,
                                   given.size(), false) == 1 &&
                given == wanted,
            "all rows are libtiff's");
}

/// Backwards, which is not the order that libtiff reads in.
void Compare(TiffFileInterface& picture, const PlainTiff& plain)
{
    Require(picture.FileWidthInPixels() == plain.width &&
                picture.FileHeightInPixels() == plain.length &&
                picture.GetPictureParams()->ColorSeparation() == plain.samples,
            "the sizes are libtiff's");
    for (unsigned int row = plain.length; row-- != 0;)
        AskRow(picture, plain, row);
    AskRows(picture, plain);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const tympan::fuzz::Input file(data, size);
    tympan::fuzz::WithFile(file, [&](auto&) {
        TiffFileInterface picture;
        picture.OpenPictureFile(tympan::fuzz::kPath, true, false, nullptr);
        if (const auto plain = tympan::fuzz::ReadByLibtiff(file))
            Compare(picture, *plain);
        tympan::test::AskEverything(picture);
        tympan::fuzz::RequireCode(picture, { 90050, 90051 });
        picture.ClosePictureFile();
        tympan::test::AskEverything(picture);
    });
    return 0;
}
