// Any bytes as an LW file: opened and asked everything; its pixels are held to runs expanded by hand,
// and a crop of a crop to the crop that takes as much at once.
#include "fuzz/any_file.h"
#include "fuzz/headed_file.h"
#include "lw/lw_file.h"
#include "support/ask_lw.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

using tympan::fuzz::Drawn;
using tympan::fuzz::FileBytes;
using tympan::fuzz::Input;
using tympan::test::Require;
using Pixels = std::vector<unsigned char>;
using Picture = std::unique_ptr<LWFileInterface>;

constexpr std::uint64_t kMostPixels = 1U << 16U;

/// The colour indexes of all rows, two bytes at a time; nothing when one isn't sound.
Pixels ByHand(Input file, std::uint64_t width, std::uint64_t height)
{
    std::size_t at = 2048 + std::size_t{ 18 } * (file.size() > 1080 ? file[1080] : 0);
    const auto isDelimiter = [&] {
        at += 2;
        return at <= file.size() && file[at - 2] == 0 && file[at - 1] == 0;
    };
    Pixels pixels;
    for (std::uint64_t row = 1; row <= height; ++row) {
        if (!isDelimiter())
            return {};
        for (; pixels.size() < row * width && at + 2 <= file.size(); at += 2)
            pixels.insert(pixels.end(), file[at + 1], file[at]);
        if (pixels.size() != row * width || !isDelimiter())
            return {};
    }
    return pixels;
}

unsigned int HeightOf(const Picture& picture)
{
    return static_cast<unsigned int>(picture->FileHeightInPixels());
}

std::uint64_t PixelsOf(const Picture& picture)
{
    const std::uint64_t width = picture->FileWidthInPixels(), height = HeightOf(picture);
    return width > kMostPixels || height > kMostPixels ? kMostPixels + 1 : width * height;
}

/// All rows by one call; nothing when one isn't sound. A picture that can be decoded has room.
Pixels Decoded(const Picture& picture, ColorSeparationType separation)
{
    Pixels pixels(PixelsOf(picture));
    unsigned int rows = 0;
    picture->GetPictureRows(pixels.data(), 0, HeightOf(picture), rows, nullptr, separation, 0,
                            false);
    return rows == HeightOf(picture) ? pixels : Pixels{};
}

void CompareWithRuns(const Picture& picture, Input file)
{
    Pixels runs = ByHand(file, picture->FileWidthInPixels(), HeightOf(picture));
    const int colours =
        dynamic_cast<const LwPictureParameters&>(*picture->PictureParams()).TableColorsNumber();
    const bool areColours = std::all_of(runs.begin(), runs.end(), [&](unsigned char index) {
        return index != 0 && index <= colours;
    });
    for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black }) {
        const Pixels given = Decoded(picture, separation);
        Pixels wanted;
        for (const unsigned char index : areColours ? runs : Pixels{})
            wanted.push_back(picture->GetColorValue(index, separation));
        // A run of no length may have no colour, so that its row is refused.
        Require(given == wanted || given.empty(), "pixels are the runs expanded");
    }
}

Picture CropOf(const Picture& picture, CompressParameters crop, const char* path)
{
    {
        CFile target(path, CFile::modeCreate | CFile::modeWrite);
        picture->CreateCropedLWFile(picture->FileHandle(), target, &crop);
    }
    return Picture(create_lw_file_object(path, true));
}

CompressParameters DrawnCrop(Drawn& drawn, const Picture& picture)
{
    const auto side = [&](unsigned long length, double& first, double& last) {
        const unsigned int one = drawn.Below(length), other = drawn.Below(length);
        first = std::min(one, other) + 1.0;
        last = std::max(one, other) + 1.0;
    };
    CompressParameters crop{};
    side(picture->FileWidthInPixels(), crop.CropLeft, crop.CropRight);
    side(HeightOf(picture), crop.CropTop, crop.CropBottom);
    return crop;
}

/// What a rectangle of a rectangle is in the whole.
CompressParameters Inside(const CompressParameters& outer, const CompressParameters& inner)
{
    return { outer.CropLeft + inner.CropLeft - 1, outer.CropLeft + inner.CropRight - 1,
             outer.CropTop + inner.CropTop - 1, outer.CropTop + inner.CropBottom - 1 };
}

void CompareCrops(const Picture& picture, Drawn& drawn, ColorSeparationType separation)
{
    const Pixels whole = Decoded(picture, separation);
    if (whole.empty())
        return;
    const Picture same = CropOf(picture, { 0, 0, 0, 0 }, "same");
    // Bytes that are a delimiter and a run of no length at once end a row of a crop.
    if (!same->ObjectStatus())
        return;
    const CompressParameters outer = DrawnCrop(drawn, picture);
    const Picture crop = CropOf(picture, outer, "crop");
    if (!crop->ObjectStatus() || Decoded(crop, separation).empty())
        return;
    const CompressParameters inner = DrawnCrop(drawn, crop);
    const Picture twice = CropOf(crop, inner, "twice");
    const Picture once = CropOf(picture, Inside(outer, inner), "once");
    Require(twice->ObjectStatus() == once->ObjectStatus(), "both crops open, or none");
    Require(!once->ObjectStatus() || Decoded(once, separation) == Decoded(twice, separation),
            "a crop of a crop is that of the whole");
}

void Ask(const Picture& picture, Input file, Drawn& drawn)
{
    if (picture->ObjectStatus() && PixelsOf(picture) - 1 < kMostPixels) {
        CompareWithRuns(picture, file);
        CompareCrops(picture, drawn, static_cast<ColorSeparationType>(drawn.Below(4)));
    }
    tympan::test::AskEverything(*picture, "cropped");
    tympan::fuzz::RequireCode(*picture, { 90001, 90020, 90024, 90025 });
    tympan::fuzz::RequireCode(*picture->PictureParams(), { 90066 });
}

} // namespace

// The first bytes draw the crops.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn input(data, size);
    Drawn crops(input.Bytes(9));
    const FileBytes file = tympan::fuzz::HeadedFile(input.Rest());
    tympan::fuzz::WithFile(file, [&](auto&) {
        const Picture picture(create_lw_file_object(tympan::fuzz::kPath, true));
        Ask(picture, file, crops);
        picture->ClosePictureFile();
        tympan::test::AskEverything(*picture, "cropped");
    });
    return 0;
}
