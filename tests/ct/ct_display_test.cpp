// CT pictures on contexts and in bitmaps, pixel by pixel against the colour rule.
#include "ct/ct_file.h"
#include "platform/gdi_spans.h"
#include "support/canvas.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>

namespace {

using tympan::test::Canvas;
using tympan::test::CtSample;
using tympan::test::TemporaryFolder;
using Bytes = std::vector<unsigned char>;

// Of the four plates, or of one.
template <typename... Inks>
unsigned long Rgb(Inks&&... inks)
{
    return PictureFileInterface::CalculatePixelAsRGB(inks...);
}

// The picture as the sample's bytes tell it, without the library's readers.
class Picture {
  public:
    explicit Picture(const CtSample& sample, std::size_t cutTo = ~std::size_t{ 0 })
        : sample_(sample), bytes_(sample.Bytes())
    {
        bytes_.resize(std::min(bytes_.size(), cutTo));
        object.reset(create_ct_file_object(folder_.File("sample.ct", bytes_).c_str(), true));
    }

    unsigned char Byte(unsigned int x, std::size_t row, unsigned int slot) const
    {
        const std::size_t place = sample_.Place(static_cast<unsigned int>(row), slot) + x;
        return slot < sample_.separations && place < bytes_.size() ? bytes_[place] : 255;
    }
    unsigned long Colour(unsigned int x, std::size_t row) const
    {
        const unsigned char pixel[] = { Byte(x, row, 0), Byte(x, row, 1), Byte(x, row, 2),
                                        Byte(x, row, 3) };
        return Rgb(pixel);
    }
    unsigned long Tint(unsigned int x, std::size_t row, ColorSeparationType separation) const
    {
        const bool held = separation >= Cyan && separation <= Black;
        const unsigned char byte = held ? Byte(x, row, static_cast<unsigned int>(separation)) : 255;
        return Rgb(byte, separation);
    }

    // A new bitmap, whatever rows are asked for.
    HBITMAP Shown(ColorSeparationType type, int depth = 24, int** tables = nullptr) const
    {
        return object->Display(nullptr, nullptr, type, 0, 0, depth, tables, false);
    }
    // Rows drawn into a bitmap that there is.
    HBITMAP Again(HBITMAP bitmap, ColorSeparationType type, unsigned int first, unsigned int last,
                  int depth) const
    {
        return object->Display(nullptr, bitmap, type, first, last, depth, nullptr, false);
    }

    std::unique_ptr<CtFileInterface> object;

  private:
    TemporaryFolder folder_;
    CtSample sample_;
    Bytes bytes_;
};

constexpr COLORREF kUntouched = Canvas::kUntouched;

struct Geometry {
    unsigned int width, height, separations;
};
constexpr Geometry kGeometries[] = { { 1, 1, 4 },   { 5, 4, 4 }, { 100, 3, 4 },
                                     { 101, 7, 4 }, { 9, 5, 1 }, { 64, 2, 1 } };

TEST(CtDisplay, DrawsRowsAtTheirPlaceOnTheContext)
{
    for (const Geometry& size : kGeometries) {
        SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + " x " +
                     std::to_string(size.separations));
        const Picture picture(CtSample{
            .width = size.width, .height = size.height, .separations = size.separations });
        Canvas colour(120, 12);
        Canvas tint(120, 12);
        SetViewportOrgEx(tint.dc.GetSafeHdc(), 3, -1, nullptr);
        picture.object->Display(1, 3, colour.dc);
        picture.object->Display(0, 9, &tint.dc, Yellow);
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 120; ++x) {
                const auto column = static_cast<unsigned int>(x);
                const bool drawn = x < static_cast<int>(size.width) && y >= 1 && y <= 3;
                const auto row = static_cast<std::size_t>(y);
                ASSERT_EQ(GetPixel(colour.dc.GetSafeHdc(), x, y),
                          drawn ? picture.Colour(column, row) : kUntouched)
                    << x << ' ' << y;
                const COLORREF shown = GetPixel(tint.dc.GetSafeHdc(), x, y);
                if (shown != CLR_INVALID) {
                    ASSERT_EQ(shown, x < static_cast<int>(size.width) && y >= 1 && y <= 9
                                         ? picture.Tint(column, row, Yellow)
                                         : kUntouched)
                        << x << ' ' << y;
                }
            }
        EXPECT_EQ(picture.object->TraceStatus(), 0U);
    }
}

// A range to the top of its type costs what the context can show.
TEST(CtDisplay, EndsForAnyRange)
{
    const Picture picture(CtSample{ .width = 6, .height = 4 });
    Canvas canvas(8, 6);
    picture.object->Display(0, ~0UL, &canvas.dc);
    for (int y = 0; y < 6; ++y)
        ASSERT_EQ(GetPixel(canvas.dc.GetSafeHdc(), 2, y),
                  picture.Colour(2, static_cast<std::size_t>(y)));
    Canvas untouched(8, 6);
    picture.object->Display(3, 2, untouched.dc);
    picture.object->Display(~0UL - 1, ~0UL, untouched.dc);
    picture.object->Display(0, 5, static_cast<CDC*>(nullptr));
    picture.object->Display(0, 5, nullptr, Cyan);
    SetViewportOrgEx(untouched.dc.GetSafeHdc(), 100, 0, nullptr); // all columns lie beside it
    picture.object->Display(0, 5, untouched.dc);
    SetViewportOrgEx(untouched.dc.GetSafeHdc(), 0, 0, nullptr);
    EXPECT_EQ(GetPixel(untouched.dc.GetSafeHdc(), 0, 0), kUntouched);
}

// The pixel memory of a bitmap, read back through a context.
class ReadBack {
  public:
    explicit ReadBack(HBITMAP bitmap)
    {
        dc_.Attach(CreateCompatibleDC(nullptr));
        SelectObject(dc_.GetSafeHdc(), bitmap);
    }
    COLORREF At(unsigned int x, std::size_t y) const
    {
        return GetPixel(dc_.GetSafeHdc(), static_cast<int>(x), static_cast<int>(y));
    }

  private:
    CDC dc_;
};

TEST(CtPreview, IsTheWholePictureWhateverRowsAreAskedFor)
{
    for (const Geometry& size : kGeometries)
        for (const int separation : { 0, 1, 2, 3, 4, 6 })
            for (const bool asGray : { false, true }) {
                SCOPED_TRACE(std::to_string(size.width) + " of " +
                             std::to_string(size.separations) + ", separation " +
                             std::to_string(separation));
                const auto type = static_cast<ColorSeparationType>(separation);
                const Picture picture(CtSample{
                    .width = size.width, .height = size.height, .separations = size.separations });
                const HBITMAP bitmap =
                    picture.object->Display(nullptr, nullptr, type, 10, 20, 24, nullptr, asGray);
                ASSERT_NE(bitmap, nullptr);
                const ReadBack shown(bitmap);
                for (unsigned int y = 0; y < size.height; ++y)
                    for (unsigned int x = 0; x < size.width; ++x) {
                        const unsigned char byte =
                            separation < 4
                                ? picture.Byte(x, y, static_cast<unsigned int>(separation))
                                : 255;
                        const unsigned long colour = type == AllSeparations ? picture.Colour(x, y)
                                                     : asGray               ? RGB(byte, byte, byte)
                                                              : picture.Tint(x, y, type);
                        ASSERT_EQ(shown.At(x, y), colour) << x << ' ' << y;
                    }
                EXPECT_EQ(picture.object->TraceStatus(), 0U);
            }
}

// A bitmap that no cache holds is drawn past the caches: at odd widths, corrected and not.
TEST(CtPreview, ALargePictureEqualsTheRule)
{
    const Geometry size{ 3001, 1000, 4 };
    const Picture picture(CtSample{ .width = size.width, .height = size.height });
    std::array<int, 256> inverted{};
    for (int ink = 0; ink < 256; ++ink)
        inverted[static_cast<std::size_t>(ink)] = 255 - ink;
    int* tables[] = { inverted.data(), inverted.data(), inverted.data(), inverted.data() };
    const ReadBack plain(picture.Shown(AllSeparations));
    const ReadBack corrected(picture.Shown(AllSeparations, 24, tables));
    for (unsigned int y = 0; y < size.height; y += 37)
        for (unsigned int x = 0; x < size.width; ++x) {
            unsigned char pixel[4];
            for (unsigned int slot = 0; slot < 4; ++slot)
                pixel[slot] = static_cast<unsigned char>(255 - picture.Byte(x, y, slot));
            ASSERT_EQ(plain.At(x, y), picture.Colour(x, y)) << x << ' ' << y;
            ASSERT_EQ(corrected.At(x, y), Rgb(pixel)) << x << ' ' << y;
        }
}

TEST(CtPreview, CorrectsInksByTables)
{
    std::array<std::array<int, 256>, 4> tables{};
    std::mt19937 random(5);
    for (auto& table : tables)
        for (int& entry : table)
            entry = static_cast<int>(random()); // the low byte counts
    int* pointers[] = { tables[0].data(), tables[1].data(), tables[2].data(), tables[3].data() };
    const auto corrected = [&](unsigned char byte, unsigned int slot) {
        return static_cast<unsigned char>(255 -
                                          static_cast<unsigned char>(tables[slot][255 - byte]));
    };

    const Picture picture(CtSample{ .width = 23, .height = 5 });
    const ReadBack colour(picture.Shown(AllSeparations, 24, pointers));
    const ReadBack magenta(picture.Shown(Magenta, 24, pointers));
    pointers[2] = nullptr; // corrects nothing
    const ReadBack yellow(picture.Shown(Yellow, 24, pointers));
    for (unsigned int y = 0; y < 5; ++y)
        for (unsigned int x = 0; x < 23; ++x) {
            unsigned char pixel[4];
            for (unsigned int slot = 0; slot < 4; ++slot)
                pixel[slot] = corrected(picture.Byte(x, y, slot), slot);
            ASSERT_EQ(colour.At(x, y), Rgb(pixel));
            ASSERT_EQ(magenta.At(x, y), Rgb(pixel[1], Magenta));
            ASSERT_EQ(yellow.At(x, y), picture.Tint(x, y, Yellow));
        }
}

TEST(CtPreview, EightBitsAreIndexesIntoThePalette)
{
    for (const int separation : { 0, 1, 2, 3 }) {
        const auto type = static_cast<ColorSeparationType>(separation);
        const Picture picture(CtSample{ .width = 101, .height = 4 });
        const HBITMAP bitmap = picture.Shown(type, 8);
        PALETTEENTRY entries[256];
        ASSERT_EQ(GetPaletteEntries(picture.object->Palette(), 0, 256, entries), 256U);
        EXPECT_EQ(RGB(entries[0].peRed, entries[0].peGreen, entries[0].peBlue), 0x00FFFFFFU);
        const ReadBack shown(bitmap);
        for (unsigned int y = 0; y < 4; ++y)
            for (unsigned int x = 0; x < 101; ++x) {
                const unsigned long tint = picture.Tint(x, y, type);
                const PALETTEENTRY& entry =
                    entries[255 - picture.Byte(x, y, static_cast<unsigned int>(separation))];
                ASSERT_EQ(shown.At(x, y), tint); // by the bitmap's own colour table
                ASSERT_EQ(RGB(entry.peRed, entry.peGreen, entry.peBlue), tint);
            }
    }
}

TEST(CtPreview, RefusesOtherDepthsAndChangesNothing)
{
    const Picture picture(CtSample{});
    const HBITMAP bitmap = picture.Shown(Cyan, 8);
    const HPALETTE palette = picture.object->Palette();
    for (const int depth : { 0, 1, 4, 16, 32, -8, 2147483647 })
        EXPECT_EQ(picture.Again(nullptr, Cyan, 0, 2, depth), nullptr) << depth;
    EXPECT_EQ(picture.Shown(AllSeparations, 8), nullptr);
    EXPECT_EQ(picture.object->Palette(), palette);
    EXPECT_EQ(picture.Again(bitmap, Cyan, 0, 2, 8), bitmap);
    EXPECT_EQ(picture.Again(bitmap, Cyan, 2, 1, 7), bitmap);
}

TEST(CtPreview, FillsABitmapAgainFromItsStart)
{
    const Picture picture(CtSample{ .width = 9, .height = 6 });
    const HBITMAP bitmap = picture.Shown(AllSeparations);
    ASSERT_EQ(picture.Again(bitmap, AllSeparations, 2, 3, 24), bitmap);
    const ReadBack shown(bitmap);
    for (unsigned int x = 0; x < 9; ++x)
        for (unsigned int y = 0; y < 6; ++y)
            ASSERT_EQ(shown.At(x, y), picture.Colour(x, y < 2 ? y + 2 : y));
}

// The sanitizers watch the bitmap's memory.
TEST(CtPreview, NeverWritesPastABitmapsEnd)
{
    const Picture picture(CtSample{ .width = 9, .height = 6 });
    const HBITMAP bitmap = picture.Shown(Black, 8);
    for (const unsigned int last : { 5U, 6U, 100U, ~0U })
        for (const int depth : { 8, 24 })
            EXPECT_EQ(picture.Again(bitmap, Black, 0, last, depth), bitmap);
    EXPECT_EQ(picture.Again(bitmap, Black, ~0U, ~0U, 8), bitmap);
    picture.object->FileWidthInPixels(1000);
    EXPECT_EQ(picture.Again(bitmap, AllSeparations, 0, 5, 24), bitmap);
    picture.object->FileWidthInPixels(0);
    EXPECT_EQ(picture.Again(bitmap, AllSeparations, 0, 5, 24), bitmap);
}

TEST(CtPreview, AStaleBitmapCountsAsNone)
{
    const Picture picture(CtSample{ .width = 9, .height = 6 });
    const HBITMAP first = picture.Shown(Black);
    EXPECT_EQ(picture.object->FreePreview(first), nullptr);
    const HBITMAP second = picture.Again(first, Black, 3, 3, 24);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(ReadBack(second).At(4, 1), picture.Tint(4, 1, Black)); // made new, so drawn whole

    // A living bitmap of the client's, but the object's own is gone.
    Canvas mine(4, 4);
    EXPECT_EQ(picture.object->FreePreview(second), nullptr);
    const HBITMAP third = picture.Again(second, Black, 0, 0, 24);
    EXPECT_TRUE(tympan::IsLiveBitmap(third));
    EXPECT_EQ(picture.object->FreePreview(nullptr), nullptr);
}

TEST(CtPreview, OwnsWhatTheClientLeaves)
{
    HBITMAP kept = nullptr;
    HBITMAP newest = nullptr;
    HPALETTE palette = nullptr;
    {
        const Picture picture(CtSample{});
        kept = picture.Shown(Black, 8);
        palette = picture.object->Palette();
        newest = picture.Shown(Cyan, 8);
        EXPECT_TRUE(tympan::IsLiveBitmap(kept)); // the client's until it frees it
        std::array<int, 256> changes{};
        const HPALETTE changed = picture.object->ApplyPaletteChanges(changes.data(), Cyan, 8);
        EXPECT_EQ(picture.object->Palette(), changed);
        PALETTEENTRY entry{};
        EXPECT_EQ(GetPaletteEntries(palette, 0, 1, &entry), 1U);
    }
    EXPECT_FALSE(tympan::IsLiveBitmap(kept));
    EXPECT_FALSE(tympan::IsLiveBitmap(newest));
    PALETTEENTRY entry{};
    EXPECT_EQ(GetPaletteEntries(palette, 0, 1, &entry), 0U);
}

TEST(CtPreview, MakesPalettes)
{
    const Picture picture(CtSample{});
    std::array<int, 256> changes{};
    for (int i = 0; i < 256; ++i)
        changes[static_cast<std::size_t>(i)] = 7 * i + 0x1200;
    const HPALETTE changed = picture.object->ApplyPaletteChanges(changes.data(), Magenta, 8);
    PALETTEENTRY entries[256];
    ASSERT_EQ(GetPaletteEntries(changed, 0, 256, entries), 256U);
    for (std::size_t i = 1; i < 256; ++i) {
        const auto value = static_cast<unsigned char>(255 - (changes[i] & 0xFF));
        const PALETTEENTRY& entry = entries[255 - i];
        ASSERT_EQ(RGB(entry.peRed, entry.peGreen, entry.peBlue), Rgb(value, Magenta)) << i;
    }
    EXPECT_EQ(RGB(entries[255].peRed, entries[255].peGreen, entries[255].peBlue), 0x00FFFFFFU);

    // A depth of 4: sixteen entries, computed in bytes.
    const HPALETTE small = picture.object->ApplyPaletteChanges(changes.data(), Black, 4);
    ASSERT_EQ(GetPaletteEntries(small, 0, 256, entries), 16U);
    EXPECT_EQ(entries[14].peRed, static_cast<unsigned char>(15 - (changes[1] & 0xFF)));

    for (const int depth : { 0, -1, 9, 24, 64 })
        EXPECT_EQ(picture.object->ApplyPaletteChanges(changes.data(), Black, depth), nullptr);
    EXPECT_EQ(picture.object->ApplyPaletteChanges(nullptr, Black, 8), nullptr);
    EXPECT_EQ(picture.object->Palette(), small);

    BITMAPINFO info{};
    info.bmiHeader.biBitCount = 24;
    EXPECT_EQ(picture.object->CreateGrayScalePalette(&info, Black), nullptr);
    EXPECT_EQ(picture.object->CreateGrayScalePalette(nullptr, Black), nullptr);
    info.bmiHeader.biBitCount = 0;
    EXPECT_EQ(picture.object->CreateGrayScalePalette(&info, Black), nullptr);
}

TEST(CtPreview, RowsThatTheFileDoesNotHoldAreNoInk)
{
    const CtSample sample{ .width = 8, .height = 6 };
    const Picture picture(sample, sample.Place(3, 2) + 5); // ends in yellow of row 3
    const ReadBack shown(picture.Shown(AllSeparations));
    const ReadBack yellow(picture.Shown(Yellow));
    for (unsigned int y = 0; y < 6; ++y)
        for (unsigned int x = 0; x < 8; ++x) {
            ASSERT_EQ(shown.At(x, y), picture.Colour(x, y)) << x << ' ' << y;
            ASSERT_EQ(yellow.At(x, y), picture.Tint(x, y, Yellow)) << x << ' ' << y;
        }
    EXPECT_EQ(shown.At(0, 5), 0x00FFFFFFU);
}

// A table that makes ink of no ink corrects what is there, and nothing else.
TEST(CtPreview, TablesMakeNoInkOfWhatTheFileDoesNotHold)
{
    std::array<int, 256> full{};
    full.fill(255);
    int* tables[] = { full.data(), full.data(), full.data(), full.data() };
    const CtSample sample{ .width = 300, .height = 6 };
    const Picture cut(sample, sample.Place(3, 2) + 5); // ends in yellow of row 3
    const Picture single(CtSample{ .width = 300, .height = 2, .separations = 1 });
    const auto shown = [&](const Picture& picture, ColorSeparationType separation) {
        return picture.object->Display(nullptr, nullptr, separation, 0, 0, 24, tables, false);
    };
    const ReadBack yellow(shown(cut, Yellow));
    EXPECT_EQ(yellow.At(4, 3), 0x0000FFFFU);
    EXPECT_EQ(yellow.At(5, 3), 0x00FFFFFFU);
    const ReadBack all(shown(cut, AllSeparations));
    EXPECT_EQ(all.At(4, 2), 0x00000000U);
    EXPECT_EQ(all.At(299, 3), 0x00FF0000U); // cyan and magenta alone
    EXPECT_EQ(all.At(0, 4), 0x00FFFFFFU);
    EXPECT_EQ(ReadBack(shown(single, Magenta)).At(0, 0), 0x00FFFFFFU);
    EXPECT_EQ(ReadBack(shown(single, AllSeparations)).At(0, 0), 0x00FFFF00U); // cyan alone
}

// Where reading the rows one by one would leave the file, whatever was read.
TEST(CtDisplay, LeavesTheFileBehindTheLastRow)
{
    const CtSample sample{ .width = 9, .height = 5 };
    const Picture picture(sample);
    const auto position = [&] { return picture.object->FileHandle().GetPosition(); };
    Canvas canvas(4, 20);
    picture.object->Display(1, 2, canvas.dc);
    EXPECT_EQ(position(), sample.Place(2, 3) + 9);
    picture.object->Display(0, 1, &canvas.dc, Cyan);
    EXPECT_EQ(position(), sample.Place(1, 0) + 9);
    picture.object->ExtractCMYKPixelInfo(0, 3);
    EXPECT_EQ(position(), sample.Place(3, 3) + 9);
    picture.object->Display(nullptr, nullptr, AllSeparations, 0, 0, 24, nullptr, false);
    EXPECT_EQ(position(), sample.Place(4, 3) + 9);
}

TEST(CtDisplay, AFailureLeavesItsCode)
{
    const Picture picture(CtSample{});
    picture.object->FileHandle().Close();
    Canvas canvas(4, 4);
    picture.object->Display(0, 2, canvas.dc);
    EXPECT_EQ(picture.object->TraceStatus(), 90030U);
    EXPECT_STREQ(picture.object->ErrorMsg(),
                 "CTInterface: Error Extracting CT RawBuffer, aborting!");
}

TEST(CtDisplay, PacksTheInksOfAPixel)
{
    const Picture picture(CtSample{ .width = 5, .height = 3 });
    for (unsigned int y = 0; y < 4; ++y)
        for (unsigned int x = 0; x < 6; ++x) {
            unsigned long inks = 0;
            for (unsigned int slot = 0; slot < 4; ++slot)
                inks = inks << 8U | (255U - (x < 5 && y < 3 ? picture.Byte(x, y, slot) : 255U));
            ASSERT_EQ(picture.object->ExtractCMYKPixelInfo(x, y), inks) << x << ' ' << y;
        }
    const Picture black(CtSample{ .width = 5, .height = 3, .separations = 1 });
    EXPECT_EQ(black.object->ExtractCMYKPixelInfo(2, 1), (255UL - black.Byte(2, 1, 0)) << 24U);
}

} // namespace
