// The TIFF/IT comparisons: display against that of the formats that hold the same pixels and the same
// runs, on bitmaps of the same kind.
#include "bench/benches.h"
#include "bench/lw_picture.h"
#include "core/pixel_colour.h"
#include "lw/lw_file.h"
#include "tests/support/canvas.h"
#include "tests/support/tiff_it_samples.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_lw.h"

#include <algorithm>

namespace tympan::bench {

namespace {

constexpr PictureSize kRunsSize{ 20000, 1000 }; // a bitmap of 60 MB
constexpr int kRounds = 15;

void Write(const test::TiffItSample& sample, const std::string& path)
{
    NewFile(path).Write(sample.Bytes());
    BringIntoCache(path);
}

// The picture's pixels as ink.
test::TiffItSample SampleOf(const BigPicture& picture)
{
    const auto [width, height] = picture.Size();
    test::TiffItSample sample = test::CtSample(width, height);
    sample.data.resize(static_cast<std::size_t>(picture.Pixels() * kCtPixelBytes));
    std::size_t place = 0;
    for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black }) {
        unsigned char* ink = sample.data.data() + place++;
        for (const std::uint8_t plate : picture.Plate(separation)) {
            *ink = static_cast<unsigned char>(kNoInk - plate);
            ink += kCtPixelBytes;
        }
    }
    return sample;
}

// The picture's runs, and the inks of its colours.
test::TiffItSample SampleOf(const LwPicture& picture)
{
    constexpr std::uint8_t kColours = 48;
    const auto [width, height] = picture.Size();
    test::TiffItSample sample = test::LwSample(width, height, kColours);
    auto& table = sample.directories[0].back().values;
    for (std::uint8_t colour = 0; colour < kColours; ++colour)
        std::fill_n(&table[colour * kColourRecordBytes + kColourValues.offset], 4,
                    kNoInk - LwPicture::Ink(static_cast<std::uint8_t>(colour + 1)));
    sample.data.resize(kLwStripLead);
    for (unsigned int row = 0; row < height; ++row) {
        for (const Run run : picture.Row(row))
            sample.data.insert(sample.data.end(),
                               { static_cast<unsigned char>(run.index - 1), run.length });
        sample.data.resize(sample.data.size() + kLwRowEnd);
    }
    return sample;
}

// An object and the bitmap on which it draws.
template <typename Object>
struct Drawing {
    Drawing(std::unique_ptr<Object> opened, PictureSize pictureSize)
        : object(std::move(opened)), size(pictureSize),
          canvas(static_cast<int>(size.width), static_cast<int>(size.height))
    {
        Require(object != nullptr && object->ObjectStatus(), "the library can't open the picture");
    }

    void Draw()
    {
        object->Display(0, size.height - 1, canvas.dc);
        Require(object->TraceStatus() == 0, "the library drew nothing");
    }
    COLORREF At(unsigned int x, unsigned int row) const
    {
        return GetPixel(canvas.dc.GetSafeHdc(), static_cast<int>(x), static_cast<int>(row));
    }

    std::unique_ptr<Object> object;
    PictureSize size;
    test::Canvas canvas;
};

template <typename Other, typename TiffIt>
void RequireSame(const Drawing<Other>& other, const Drawing<TiffIt>& tiffIt)
{
    constexpr unsigned int kRowsApart = 37;
    for (unsigned int row = (other.size.height - 1) % kRowsApart; row < other.size.height;
         row += kRowsApart)
        for (unsigned int x = 0; x < other.size.width; ++x)
            Require(other.At(x, row) == tiffIt.At(x, row), "the pictures are drawn unlike");
}

template <typename TiffIt, typename Other, typename Picture>
Sides DrawingBoth(std::unique_ptr<Other> other, const Picture& picture, const std::string& path)
{
    Write(SampleOf(picture), path);
    const auto limit = std::make_shared<Drawing<Other>>(std::move(other), picture.Size());
    const auto measured = std::make_shared<Drawing<TiffIt>>(
        std::make_unique<TiffIt>(path.c_str(), true), picture.Size());
    const auto verify = [=] {
        limit->Draw();
        RequireSame(*limit, *measured);
    };
    return { { [=] { limit->Draw(); } }, { [=] { measured->Draw(); }, {}, verify } };
}

Sides Tone(const BigPicture& picture, const std::string& path)
{
    return DrawingBoth<TiffItCtP1Interface>(picture.Open(), picture, path);
}

// The limit is the preview in a bitmap that was made before.
Sides ToneByPreview(const BigPicture& picture, const std::string& path)
{
    const std::shared_ptr<CtFileInterface> object = picture.Open();
    const auto bitmap = std::make_shared<HBITMAP>(nullptr);
    const unsigned int last = picture.Size().height - 1;
    const auto preview = [=] {
        *bitmap = object->Display(nullptr, *bitmap, AllSeparations, 0, last, 24, nullptr, false);
        Require(*bitmap != nullptr, "the library drew no preview");
    };
    return { { preview }, Tone(picture, path).measured };
}

Sides Runs(const LwPicture& picture, const std::string& path)
{
    std::unique_ptr<LWFileInterface> other(create_lw_file_object(picture.Path().c_str(), true));
    return DrawingBoth<TiffItLwP1Interface>(std::move(other), picture, path);
}

void RegisterRuns(const std::string& kind, double meanRun, const std::string& folder)
{
    const auto picture = MadeOnce<LwPicture>(folder + kind + "-thousand.lw", kRunsSize, meanRun);
    Register({ "TIFF/IT LW " + kind + ": display / display of LW",
               [=] { return Runs(*picture(), folder + "runs.tif"); }, 0.5, kRounds });
}

} // namespace

void RegisterTiffIt(const Source<BigPicture>& picture, const std::string& folder)
{
    const std::string path = folder + "tone.tif";
    Register({ "TIFF/IT CT: display / preview of CT in a bitmap made before",
               [=] { return ToneByPreview(*picture(), path); }, 0.5, kRounds });
    Register({ "TIFF/IT CT: display / display of CT",
               [=] { return Tone(*picture(), path); },
               {},
               kRounds });
    RegisterRuns("sparse", 60, folder);
    RegisterRuns("dense", 6, folder);
}

} // namespace tympan::bench
