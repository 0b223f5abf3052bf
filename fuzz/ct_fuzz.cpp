// Any bytes as a CT file: every form of reading it gives the bytes that stand at the row's place.
#include "ct/ct_file.h"
#include "fuzz/any_file.h"
#include "fuzz/headed_file.h"
#include "support/ask_ct.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

using tympan::fuzz::Drawn;
using tympan::fuzz::FileBytes;
using tympan::fuzz::Input;
using tympan::test::Require;

constexpr unsigned char kUnstored = 0xA5;
constexpr unsigned long kMostPixels = 4096;

class CtQuestions {
  public:
    CtQuestions(CtFileInterface& picture, Input file, Drawn drawn)
        : picture_(picture), file_(file), drawn_(drawn), width_(picture.WidthInPixels()),
          height_(static_cast<unsigned int>(picture.HeightInPixels()))
    {}

    void AskAll()
    {
        if (width_ == 0 || width_ > kMostPixels || height_ > kMostPixels / width_)
            return;
        for (const ColorSeparationType separation :
             { Cyan, Magenta, Yellow, Black, NoSeparation }) {
            AskRows(separation);
            for (unsigned int row = height_ + 1; row-- != 0;) // backwards
                AskRow(row, separation);
        }
        AskRange();
        AskColours();
        AskPlate(static_cast<ColorSeparationType>(drawn_.Below(4)));
    }

  private:
    using Bytes = std::vector<unsigned char>;

    /// Where a row stands: the plates of a row one behind the other, each of an even length.
    std::optional<std::size_t> PlaceOf(unsigned int row, ColorSeparationType separation) const
    {
        const PictureParameters& record = *picture_.PictureParams();
        const unsigned int slot = record.SlotOf(separation);
        if (slot >= record.NumberOfSeparations())
            return std::nullopt;
        return 2048 +
               (row * std::size_t{ record.NumberOfSeparations() } + slot) * (width_ + width_ % 2);
    }
    /// What the file holds of a row.
    Input Held(unsigned int row, ColorSeparationType separation) const
    {
        const auto place = PlaceOf(row, separation);
        if (!place || *place >= file_.size())
            return {};
        return file_.subspan(*place, std::min<std::size_t>(width_, file_.size() - *place));
    }
    unsigned char ByteOf(unsigned int x, unsigned int row, ColorSeparationType separation) const
    {
        const Input held = Held(row, separation);
        return x < held.size() ? held[x] : 255;
    }

    void AskRows(ColorSeparationType separation)
    {
        if (height_ == 0)
            return;
        Bytes wanted(width_ * height_, kUnstored), given = wanted;
        std::vector<unsigned long> offsets(height_);
        unsigned int rowsInfo = 0;
        for (unsigned int row = 0; row < height_; ++row) {
            const Input held = Held(row, separation);
            std::copy(held.begin(), held.end(), wanted.begin() + static_cast<long>(row * width_));
        }
        Require(picture_.GetPictureRows(given.data(), 0, height_, rowsInfo, offsets.data(),
                                        separation, given.size(), false) == given.size(),
                "all rows are told");
        Require(given == wanted, "rows are the bytes at their places");
        for (unsigned int row = 0; row < height_; ++row)
            Require(offsets[row] == row * width_, "each row has its offset");
    }

    void AskRow(unsigned int row, ColorSeparationType separation)
    {
        const Input held = Held(row, separation);
        Bytes alone(width_, kUnstored), wanted = alone;
        std::copy(held.begin(), held.end(), wanted.begin());
        unsigned int rowsInfo = 0;
        picture_.GetPictureRows(alone.data(), row, row + 1, rowsInfo, nullptr, separation, width_,
                                false);
        Require(alone == wanted, "a row alone is that of all rows");
        for (const unsigned int times : { 1U, 2U, 4U }) // ratios that are exact
            AskEnlargedRow(row, separation, times);
    }

    void AskEnlargedRow(unsigned int row, ColorSeparationType separation, unsigned int times)
    {
        const double across = picture_.ResolutionOnScanAxis() * times;
        const double down = picture_.ResolutionOnXScanAxis() * times;
        Bytes given(width_ * times, kUnstored), wanted = given;
        const Input held = Held(row, separation);
        const bool hasResolution = std::isfinite(across) && std::isfinite(down) && across > 0.0 &&
                                   down > 0.0 && across / times >= 1e-300 && down / times >= 1e-300;
        const bool isWhole = hasResolution && held.size() == width_;
        for (std::size_t x = 0; isWhole && x < wanted.size(); ++x)
            wanted[x] = held[x / times];
        const unsigned long stored = picture_.GetPictureRow(given.data(), row * times, separation,
                                                            across, down, given.size());
        Require(stored == (isWhole ? given.size() : 0), "a row is told when it is there");
        Require(given == wanted, "an enlarged row repeats its pixels");
    }

    void AskRange()
    {
        const unsigned int first = drawn_.Below(height_ + 2U);
        const unsigned int last = drawn_.Below(height_ + 2U);
        Bytes given(last > first ? (last - first) * width_ : 0, kUnstored);
        unsigned int rowsInfo = 0;
        const unsigned long size = given.size() - (given.empty() ? 0 : drawn_.Below(2));
        const unsigned long stored = picture_.GetPictureRows(given.data(), first, last, rowsInfo,
                                                             nullptr, Black, size, false);
        Require(stored == (size == given.size() ? size : 0), "a range that fits is told");
        for (unsigned int row = first; row < last && stored != 0; ++row) {
            const Input held = Held(row, Black);
            Require(std::equal(held.begin(), held.end(),
                               given.begin() + static_cast<long>((row - first) * width_)),
                    "a range has the bytes at its rows' places");
        }
    }

    /// C, M, Y, K as bytes of plates.
    unsigned long Packed(unsigned int x, unsigned int row) const
    {
        unsigned long packed = 0;
        for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black })
            packed = packed << 8U | ByteOf(x, row, separation);
        return packed;
    }

    void AskColours()
    {
        constexpr int kSide = 12;
        tympan::test::Canvas canvas(kSide, kSide);
        picture_.Display(0, ~0UL, canvas.dc);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                const auto column = static_cast<unsigned int>(x);
                const auto row = static_cast<unsigned int>(y);
                const COLORREF colour = GetPixel(canvas.dc.GetSafeHdc(), x, y);
                const bool isInside = column < width_;
                Require(colour == (isInside ? CtFileInterface::CalculatePixelAsRGB(
                                                  Packed(column, row), false)
                                            : tympan::test::Canvas::kUntouched),
                        "what is drawn is the colour of the bytes");
                Require(!isInside || picture_.ExtractCMYKPixelInfo(column, row) ==
                                         (~Packed(column, row) & 0xFFFFFFFFU),
                        "the inks of a pixel are those of the bytes");
            }
    }

    /// The 8-bit bitmap of a plate has the inks.
    void AskPlate(ColorSeparationType separation)
    {
        const HBITMAP none = nullptr;
        const HBITMAP bitmap =
            picture_.Display(HDC{}, none, separation, 0, height_, 8, nullptr, drawn_.Coin());
        if (bitmap == nullptr || height_ == 0)
            return;
        const HDC canvas = CreateCompatibleDC(nullptr);
        SelectObject(canvas, bitmap);
        for (unsigned int row = 0; row < height_; row += 7)
            for (unsigned int x = 0; x < width_; x += 5)
                Require(GetPixel(canvas, static_cast<int>(x), static_cast<int>(row)) ==
                            TintOf(255U - ByteOf(x, row, separation)),
                        "a plate's bitmap has the tint of its inks");
        DeleteDC(canvas);
        picture_.FreePreview(bitmap);
    }
    COLORREF TintOf(unsigned int index) const
    {
        PALETTEENTRY tint{};
        GetPaletteEntries(picture_.Palette(), index, 1, &tint);
        return RGB(tint.peRed, tint.peGreen, tint.peBlue);
    }

    CtFileInterface& picture_;
    Input file_;
    Drawn drawn_;
    unsigned long width_;
    unsigned int height_;
};

} // namespace

// The first bytes draw what is asked for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn input(data, size);
    const Drawn questions(input.Bytes(6));
    const FileBytes file = tympan::fuzz::HeadedFile(input.Rest());
    tympan::fuzz::WithFile(file, [&](auto&) {
        CtFileInterface picture(tympan::fuzz::kPath, true);
        tympan::test::AskEverything(picture);
        if (picture.ObjectStatus())
            CtQuestions(picture, file, questions).AskAll();
        tympan::fuzz::RequireCode(picture, { 90001, 90030, 90032, 90033, 90034, 90064 });
        tympan::fuzz::RequireCode(*picture.PictureParams(), { 90066 });
        picture.ClosePictureFile();
        tympan::test::AskEverything(picture);
    });
    return 0;
}
