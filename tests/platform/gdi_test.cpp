// The drawing objects: handles, bitmaps and their memory, palettes, and that drawing by stretches
// is the same as drawing point by point.
#include "platform/gdi.h"
#include "platform/gdi_spans.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

// A header with room for a whole colour table, in the memory layout of BITMAPINFO.
struct FullInfo {
    BITMAPINFOHEADER header{};
    std::array<RGBQUAD, 256> colours{};

    FullInfo(LONG width, LONG height, WORD depth)
    {
        header.biSize = 40;
        header.biWidth = width;
        header.biHeight = height;
        header.biPlanes = 1;
        header.biBitCount = depth;
    }

    const BITMAPINFO* Get() const { return reinterpret_cast<const BITMAPINFO*>(this); }
};

// A bitmap selected into a context of its own.
struct Canvas {
    explicit Canvas(const FullInfo& info)
    {
        void* memory = nullptr;
        bitmap = CreateDIBSection(nullptr, info.Get(), DIB_RGB_COLORS, &memory, nullptr, 0);
        bits = static_cast<std::uint8_t*>(memory);
        dc.Attach(CreateCompatibleDC(nullptr));
        SelectObject(dc.GetSafeHdc(), bitmap);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() { DeleteObject(bitmap); }

    HDC Context() const { return dc.GetSafeHdc(); }
    std::vector<std::uint8_t> Memory() const
    {
        return { bits, bits + tympan::BitmapBytes(bitmap) };
    }

    CDC dc;
    HBITMAP bitmap = nullptr;
    std::uint8_t* bits = nullptr;
};

HPALETTE MakePalette(const std::vector<PALETTEENTRY>& entries)
{
    std::vector<std::uint8_t> record(4 + entries.size() * 4);
    const std::array<WORD, 2> head = { 0x300, static_cast<WORD>(entries.size()) };
    std::memcpy(record.data(), head.data(), 4);
    if (!entries.empty())
        std::memcpy(record.data() + 4, entries.data(), entries.size() * 4);
    return CreatePalette(reinterpret_cast<const LOGPALETTE*>(record.data()));
}

struct LayoutCase {
    const char* name;
    LONG width;
    LONG height;
    WORD depth;
    std::size_t bytes;
    int x, y;
    std::vector<std::uint8_t> pixel; // what RGB(1, 2, 3) at (x, y) puts into memory
    std::size_t offset;              // and where
};

const LayoutCase kLayoutCases[] = {
    { "24 bits, top-down, one byte of padding", 5, -3, 24, 48, 4, 2, { 3, 2, 1 }, 44 },
    { "24 bits, bottom-up", 5, 3, 24, 48, 4, 2, { 3, 2, 1 }, 12 },
    { "24 bits, no padding", 4, -2, 24, 24, 0, 1, { 3, 2, 1 }, 12 },
    { "32 bits, top-down, fourth byte cleared", 3, -2, 32, 24, 1, 1, { 3, 2, 1, 0 }, 16 },
    { "32 bits, bottom-up", 3, 2, 32, 24, 1, 1, { 3, 2, 1, 0 }, 4 },
    { "8 bits, three bytes of padding", 5, -2, 8, 16, 3, 1, { 7 }, 11 },
    { "8 bits, bottom-up", 5, 2, 8, 16, 3, 1, { 7 }, 3 },
};

TEST(GdiBitmap, PixelsLieInMemoryAsTheHeaderSays)
{
    for (const LayoutCase& row : kLayoutCases) {
        SCOPED_TRACE(row.name);
        FullInfo info(row.width, row.height, row.depth);
        info.colours.fill(RGBQUAD{ 200, 200, 200, 0 });
        info.colours[7] = { 3, 2, 1, 0 };
        const Canvas canvas(info);
        ASSERT_NE(canvas.bits, nullptr);
        EXPECT_EQ(canvas.Memory(), std::vector<std::uint8_t>(row.bytes)); // filled with 0
        std::fill_n(canvas.bits, row.bytes, std::uint8_t{ 0xEE });
        std::vector<std::uint8_t> expected(row.bytes, 0xEE);
        std::copy(row.pixel.begin(), row.pixel.end(),
                  expected.begin() + static_cast<std::ptrdiff_t>(row.offset));
        EXPECT_EQ(SetPixel(canvas.Context(), row.x, row.y, RGB(1, 2, 3) | 0x7F000000), 0x030201U);
        EXPECT_EQ(canvas.Memory(), expected);
        EXPECT_EQ(GetPixel(canvas.Context(), row.x, row.y), RGB(1, 2, 3));
    }
}

struct RefusedCase {
    const char* name;
    void (*spoil)(BITMAPINFOHEADER& header);
};

const RefusedCase kRefusedCases[] = {
    { "no columns", [](BITMAPINFOHEADER& h) { h.biWidth = 0; } },
    { "negative width", [](BITMAPINFOHEADER& h) { h.biWidth = -5; } },
    { "no rows", [](BITMAPINFOHEADER& h) { h.biHeight = 0; } },
    { "height without a positive counterpart", [](BITMAPINFOHEADER& h) { h.biHeight = INT_MIN; } },
    { "64 GiB", [](BITMAPINFOHEADER& h) { h.biWidth = h.biHeight = 1 << 17; } },
    { "2^64 bytes", [](BITMAPINFOHEADER& h) { h.biWidth = h.biHeight = INT_MAX; } },
    { "4 GiB exactly", [](BITMAPINFOHEADER& h) { h.biWidth = 1 << 15, h.biHeight = -(1 << 15); } },
    { "depth 4", [](BITMAPINFOHEADER& h) { h.biBitCount = 4; } },
    { "depth 16", [](BITMAPINFOHEADER& h) { h.biBitCount = 16; } },
    { "packed pixels", [](BITMAPINFOHEADER& h) { h.biCompression = 1; } },
    { "two planes", [](BITMAPINFOHEADER& h) { h.biPlanes = 2; } },
    { "a header of another size", [](BITMAPINFOHEADER& h) { h.biSize = 12; } },
};

TEST(GdiBitmap, NonsenseIsRefusedAndLeavesNoMemory)
{
    for (const RefusedCase& row : kRefusedCases) {
        SCOPED_TRACE(row.name);
        FullInfo info(5, 5, 32);
        row.spoil(info.header);
        void* bits = &info;
        EXPECT_EQ(CreateDIBSection(nullptr, info.Get(), DIB_RGB_COLORS, &bits, nullptr, 0),
                  nullptr);
        EXPECT_EQ(bits, nullptr);
    }
    const FullInfo info(5, 5, 32);
    void* bits = &bits;
    EXPECT_EQ(CreateDIBSection(nullptr, nullptr, DIB_RGB_COLORS, &bits, nullptr, 0), nullptr);
    EXPECT_EQ(bits, nullptr);
    EXPECT_EQ(CreateDIBSection(nullptr, info.Get(), 1, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(CreateDIBSection(nullptr, info.Get(), DIB_RGB_COLORS, nullptr, &bits, 0), nullptr);
}

TEST(GdiBitmap, ColourTableGivesTheNearestEntryAndReadsBack)
{
    FullInfo info(2, -1, 8);
    info.header.biClrUsed = 3;
    info.colours[0] = { 0, 0, 100, 0 };
    info.colours[1] = { 0, 0, 120, 0 };
    info.colours[2] = { 0, 0, 120, 0 };
    info.colours[3] = { 0, 0, 110, 0 }; // not in the table
    const Canvas canvas(info);
    EXPECT_EQ(SetPixel(canvas.Context(), 0, 0, RGB(110, 0, 0)), RGB(100, 0, 0)); // a tie
    EXPECT_EQ(SetPixel(canvas.Context(), 1, 0, RGB(119, 5, 5)), RGB(120, 0, 0));
    EXPECT_EQ(canvas.Memory(), (std::vector<std::uint8_t>{ 0, 1, 0, 0 }));
    canvas.bits[0] = 3;
    EXPECT_EQ(GetPixel(canvas.Context(), 0, 0), RGB(0, 0, 0));

    std::array<RGBQUAD, 4> read{};
    EXPECT_EQ(GetDIBColorTable(canvas.Context(), 1, 4, read.data()), 2U);
    EXPECT_EQ(read[1].rgbRed, 120);
    EXPECT_EQ(GetDIBColorTable(canvas.Context(), 3, 1, read.data()), 0U);

    for (const DWORD used : { 0U, 257U, 0xFFFFFFFFU }) {
        info.header.biClrUsed = used;
        std::array<RGBQUAD, 300> all{};
        EXPECT_EQ(GetDIBColorTable(Canvas(info).Context(), 0, 300, all.data()), 256U) << used;
    }
}

struct PointCase {
    const char* name;
    POINT origin;
    int x, y;
    bool inside;
};

const PointCase kPointCases[] = {
    // on 4 columns, 3 rows
    { "last point", { 0, 0 }, 3, 2, true },
    { "right of it", { 0, 0 }, 4, 2, false },
    { "below it", { 0, 0 }, 3, 3, false },
    { "left of the first", { 0, 0 }, -1, 0, false },
    { "above the first", { 0, 0 }, 0, -1, false },
    { "moved inside", { 10, -10 }, -7, 10, true },
    { "moved outside", { 10, -10 }, 0, 0, false },
    { "sum beyond an int", { INT_MAX, INT_MAX }, INT_MAX, INT_MAX, false },
    { "sum that would wrap to 0", { INT_MIN, INT_MIN }, INT_MIN, INT_MIN, false },
    { "far origin undone", { INT_MAX, INT_MAX }, -INT_MAX, 2 - INT_MAX, true },
    { "farthest point of an origin too far", { INT_MIN, 0 }, INT_MAX, 0, false },
};

TEST(GdiDrawing, APointOutsideIsClipped)
{
    for (const PointCase& row : kPointCases) {
        SCOPED_TRACE(row.name);
        const Canvas canvas(FullInfo(4, -3, 24));
        const std::vector<std::uint8_t> before = canvas.Memory();
        POINT previous{ 9, 9 };
        EXPECT_TRUE(SetViewportOrgEx(canvas.Context(), row.origin.x, row.origin.y, &previous));
        EXPECT_EQ(previous.x, 0);
        EXPECT_EQ(SetPixel(canvas.Context(), row.x, row.y, 0x123456) != CLR_INVALID, row.inside);
        EXPECT_EQ(GetPixel(canvas.Context(), row.x, row.y), row.inside ? 0x123456 : CLR_INVALID);
        EXPECT_EQ(SetPixelV(canvas.Context(), row.x, row.y, 0x123456) == TRUE, row.inside);
        EXPECT_EQ(canvas.Memory() != before, row.inside);
        const tympan::DrawableArea area = tympan::DrawableAreaOf(canvas.Context());
        EXPECT_EQ(row.x >= area.left && row.x < area.right && row.y >= area.top &&
                      row.y < area.bottom,
                  row.inside);
    }
}

// Runs `draw` on the coordinates of a stretch that SetPixel can name near the bitmap. Walking the
// whole of a huge stretch would take for ever, and every point left out is far outside.
template <typename Draw>
void ForEachPointNear(std::int64_t x, std::uint64_t count, std::int64_t near, Draw draw)
{
    constexpr std::int64_t kReach = 300;
    const std::int64_t from = std::max<std::int64_t>(near - kReach, INT_MIN);
    const std::int64_t to = std::min<std::int64_t>(near + kReach, INT_MAX);
    for (std::int64_t at = std::max(x, from); at <= to; ++at) {
        const std::uint64_t index = static_cast<std::uint64_t>(at) - static_cast<std::uint64_t>(x);
        if (index >= count)
            return;
        draw(static_cast<int>(at), static_cast<std::size_t>(index));
    }
}

class RandomPictures {
  public:
    int Upto(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Upto(255)); }

    FullInfo Info()
    {
        constexpr std::array<WORD, 3> kDepths = { 8, 24, 32 };
        const int height = 1 + Upto(6);
        FullInfo info(1 + Upto(40), Upto(1) == 0 ? height : -height,
                      kDepths[static_cast<std::size_t>(Upto(2))]);
        info.header.biClrUsed = static_cast<DWORD>(Upto(40));
        for (RGBQUAD& colour : info.colours)
            colour = { Byte(), Byte(), Byte(), 0 };
        return info;
    }

    POINT Origin()
    {
        constexpr std::array<LONG, 5> kFar = { 0, INT_MIN, INT_MIN + 20, INT_MAX, INT_MAX - 20 };
        const auto one = [&] { return Upto(5) != 0 ? Upto(60) - 30 : kFar[Index(kFar)]; };
        const LONG x = one();
        return { x, one() };
    }

    // A position near `home` as a rule, and an extreme one now and then.
    std::int64_t Position(std::int64_t home)
    {
        constexpr std::array<std::int64_t, 6> kFar = { INT64_MIN,         INT64_MAX,
                                                       INT_MIN,           INT_MAX,
                                                       INT64_C(-1) << 33, INT64_C(1) << 33 };
        return Upto(5) != 0 ? home + Upto(80) - 40 : kFar[Index(kFar)];
    }

    std::uint64_t Count()
    {
        constexpr std::array<std::uint64_t, 4> kHuge = { UINT64_MAX, UINT64_C(1) << 63,
                                                         UINT64_C(1) << 32, INT64_MAX };
        return Upto(4) != 0 ? static_cast<std::uint64_t>(Upto(60)) : kHuge[Index(kHuge)];
    }

  private:
    template <typename Table>
    std::size_t Index(const Table& table)
    {
        return static_cast<std::size_t>(Upto(static_cast<int>(table.size()) - 1));
    }

    std::mt19937 random_{ 20011 };
};

// Draws the same stretches on two bitmaps, on one of them by SetPixel, and holds their memory
// together, padding included. The counts keep the test from comparing empty pictures.
TEST(GdiSpans, AStretchIsWhatSetPixelMakesOfItsPoints)
{
    RandomPictures random;
    int drawn = 0;
    for (int round = 0; round < 3000; ++round) {
        const FullInfo info = random.Info();
        const Canvas bySpans(info);
        const Canvas byPoints(info);
        const POINT origin = random.Origin();
        SetViewportOrgEx(bySpans.Context(), origin.x, origin.y, nullptr);
        SetViewportOrgEx(byPoints.Context(), origin.x, origin.y, nullptr);
        std::fill_n(bySpans.bits, bySpans.Memory().size(), std::uint8_t{ 0xA5 });
        std::fill_n(byPoints.bits, byPoints.Memory().size(), std::uint8_t{ 0xA5 });
        const std::vector<std::uint8_t> before = bySpans.Memory();

        std::vector<std::uint8_t> bgr(static_cast<std::size_t>(random.Upto(200)));
        std::generate(bgr.begin(), bgr.end(), [&] { return random.Byte(); });
        const std::int64_t x = random.Position(-std::int64_t{ origin.x });
        const std::int64_t y = random.Upto(7) != 0 ? random.Upto(6) - std::int64_t{ origin.y }
                                                   : random.Position(-std::int64_t{ origin.y });
        const std::int64_t fillX = random.Position(-std::int64_t{ origin.x });
        const std::uint64_t fillCount = random.Count();
        const COLORREF colour = RGB(random.Byte(), random.Byte(), random.Byte());
        SCOPED_TRACE("round " + std::to_string(round) + ": " + std::to_string(bgr.size() / 3) +
                     " pixels at " + std::to_string(x) + ", " + std::to_string(y) + ", fill of " +
                     std::to_string(fillCount) + " at " + std::to_string(fillX));

        tympan::FillPixelSpan(bySpans.Context(), fillX, y, fillCount, colour);
        tympan::SetPixelSpan(bySpans.Context(), x, y, bgr);
        if (y >= INT_MIN && y <= INT_MAX) {
            const int row = static_cast<int>(y);
            ForEachPointNear(fillX, fillCount, -std::int64_t{ origin.x }, [&](int at, std::size_t) {
                SetPixel(byPoints.Context(), at, row, colour);
            });
            ForEachPointNear(x, bgr.size() / 3, -std::int64_t{ origin.x },
                             [&](int at, std::size_t i) {
                                 SetPixel(byPoints.Context(), at, row,
                                          RGB(bgr[i * 3 + 2], bgr[i * 3 + 1], bgr[i * 3]));
                             });
        }
        ASSERT_EQ(bySpans.Memory(), byPoints.Memory());
        drawn += bySpans.Memory() != before;
    }
    EXPECT_GT(drawn, 1000);
}

// The nearest entry comes out of a cache as it comes out of a search, whatever was drawn before.
TEST(GdiSpans, NearestEntryIsThatOfASearch)
{
    RandomPictures random;
    FullInfo info(1, -1, 8);
    for (RGBQUAD& colour : info.colours)
        colour = { random.Byte(), random.Byte(), random.Byte(), 0 };
    const Canvas canvas(info);
    for (int round = 0; round < 20000; ++round) {
        // Few colours, so that they come again after others have taken their place.
        const int red = random.Upto(31) * 8, green = random.Upto(31) * 8,
                  blue = random.Upto(3) * 64;
        const auto distance = [&](const RGBQUAD& c) {
            return (c.rgbRed - red) * (c.rgbRed - red) +
                   (c.rgbGreen - green) * (c.rgbGreen - green) +
                   (c.rgbBlue - blue) * (c.rgbBlue - blue);
        };
        SetPixel(canvas.Context(), 0, 0,
                 RGB(static_cast<BYTE>(red), static_cast<BYTE>(green), static_cast<BYTE>(blue)));
        const auto best = std::min_element(
            info.colours.begin(), info.colours.end(),
            [&](const RGBQUAD& a, const RGBQUAD& b) { return distance(a) < distance(b); });
        ASSERT_EQ(canvas.bits[0], best - info.colours.begin()) << "round " << round;
    }
}

// Every call that takes a handle, given ones that it must refuse.
void ExpectContextRefused(HDC dc, HBITMAP good)
{
    const FullInfo info(1, 1, 24);
    const std::array<std::uint8_t, 3> bgr = { 1, 2, 3 };
    std::array<RGBQUAD, 1> colours{};
    CDC owner;
    EXPECT_EQ(SelectObject(dc, good), nullptr);
    EXPECT_FALSE(SetViewportOrgEx(dc, 1, 1, nullptr));
    EXPECT_EQ(SetPixel(dc, 0, 0, 0), CLR_INVALID);
    EXPECT_FALSE(SetPixelV(dc, 0, 0, 0));
    EXPECT_EQ(GetPixel(dc, 0, 0), CLR_INVALID);
    EXPECT_EQ(GetDIBColorTable(dc, 0, 1, colours.data()), 0U);
    EXPECT_FALSE(owner.Attach(dc));
    EXPECT_EQ(tympan::DrawableAreaOf(dc).right, 0);
    tympan::SetPixelSpan(dc, 0, 0, bgr);
    tympan::FillPixelSpan(dc, 0, 0, 1, 0);
    EXPECT_FALSE(DeleteDC(dc));
    if (dc != nullptr) {
        EXPECT_EQ(CreateCompatibleDC(dc), nullptr);
        EXPECT_EQ(CreateDIBSection(dc, info.Get(), DIB_RGB_COLORS, nullptr, nullptr, 0), nullptr);
    }
}

void ExpectObjectRefused(HGDIOBJ object, HDC good)
{
    PALETTEENTRY entry{};
    EXPECT_EQ(SelectObject(good, object), nullptr);
    EXPECT_FALSE(tympan::IsLiveBitmap(static_cast<HBITMAP>(object)));
    EXPECT_EQ(tympan::BitmapBytes(static_cast<HBITMAP>(object)), 0U);
    EXPECT_EQ(GetPaletteEntries(static_cast<HPALETTE>(object), 0, 1, &entry), 0U);
    EXPECT_FALSE(DeleteObject(object));
}

TEST(GdiHandles, StaleAndMixedUpOnesAreRefused)
{
    const Canvas canvas(FullInfo(2, 2, 24));
    const HDC staleDc = CreateCompatibleDC(canvas.Context());
    const HPALETTE stalePalette = MakePalette({ { 1, 2, 3, 0 } });
    HBITMAP staleBitmap = nullptr;
    {
        const Canvas gone(FullInfo(2, 2, 24));
        staleBitmap = gone.bitmap;
    }
    EXPECT_TRUE(DeleteDC(staleDc));
    EXPECT_TRUE(DeleteObject(stalePalette));
    const HPALETTE palette = MakePalette({ { 1, 2, 3, 0 } });

    int here = 0;
    const HGDIOBJ bitmap = canvas.bitmap;
    for (void* const wrong : { HGDIOBJ{ staleDc }, HGDIOBJ{ nullptr }, bitmap, HGDIOBJ{ palette },
                               static_cast<void*>(&here) })
        ExpectContextRefused(static_cast<HDC>(wrong), canvas.bitmap);
    for (void* const wrong : { HGDIOBJ{ staleBitmap }, HGDIOBJ{ stalePalette }, HGDIOBJ{ nullptr },
                               HGDIOBJ{ canvas.Context() }, static_cast<void*>(&here) })
        ExpectObjectRefused(wrong, canvas.Context());
    EXPECT_EQ(SelectObject(canvas.Context(), palette), nullptr);
    EXPECT_EQ(GetPaletteEntries(static_cast<HPALETTE>(bitmap), 0, 1, nullptr), 0U);
    EXPECT_TRUE(tympan::IsLiveBitmap(canvas.bitmap));
    EXPECT_TRUE(DeleteObject(palette));
}

TEST(GdiHandles, ANumberNeverComesBack)
{
    std::vector<HDC> seen;
    for (int round = 0; round < 2000; ++round) {
        seen.push_back(CreateCompatibleDC(nullptr));
        EXPECT_TRUE(DeleteDC(seen.back()));
    }
    const auto number = [](HDC dc) { return reinterpret_cast<std::uintptr_t>(dc); };
    const std::uintptr_t step = number(seen[1]) - number(seen[0]);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a number that is still to be given out
    ExpectContextRefused(reinterpret_cast<HDC>(number(seen.back()) + step), nullptr);
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
}

TEST(GdiHandles, SelectingGivesBackWhatStoodBefore)
{
    const Canvas first(FullInfo(2, 2, 24));
    const Canvas second(FullInfo(1, 1, 24));
    CDC dc;
    ASSERT_TRUE(dc.Attach(CreateCompatibleDC(nullptr)));
    EXPECT_EQ(SetPixel(dc.m_hDC, 0, 0, 0), CLR_INVALID);
    const HGDIOBJ none = SelectObject(dc.m_hDC, first.bitmap);
    ASSERT_NE(none, nullptr);
    ExpectContextRefused(static_cast<HDC>(none), first.bitmap);
    EXPECT_FALSE(DeleteObject(none));
    EXPECT_EQ(SelectObject(dc.m_hDC, second.bitmap), first.bitmap);
    EXPECT_EQ(tympan::DrawableAreaOf(dc.m_hDC).right, 1);
    EXPECT_EQ(SelectObject(dc.m_hDC, none), second.bitmap);
    EXPECT_EQ(SetPixel(dc.m_hDC, 0, 0, 0), CLR_INVALID);
}

TEST(GdiHandles, AContextWhoseBitmapIsDeletedDrawsNothing)
{
    const Canvas canvas(FullInfo(2, 2, 24));
    EXPECT_TRUE(DeleteObject(canvas.bitmap));
    const Canvas inTheSamePlace(FullInfo(2, 2, 24));
    EXPECT_EQ(SetPixel(canvas.Context(), 0, 0, 0xFFFFFF), CLR_INVALID);
    tympan::FillPixelSpan(canvas.Context(), 0, 0, 2, 0xFFFFFF);
    EXPECT_EQ(tympan::DrawableAreaOf(canvas.Context()).right, 0);
    EXPECT_EQ(inTheSamePlace.Memory(), std::vector<std::uint8_t>(16));
}

TEST(GdiHandles, CdcOwnsWhatIsAttached)
{
    const HDC kept = CreateCompatibleDC(nullptr);
    const HDC owned = CreateCompatibleDC(nullptr);
    {
        CDC dc;
        EXPECT_EQ(dc.GetSafeHdc(), nullptr);
        EXPECT_TRUE(dc.Attach(kept));
        EXPECT_FALSE(dc.Attach(owned)); // one at a time
        EXPECT_EQ(dc.Detach(), kept);
        EXPECT_TRUE(dc.Attach(owned));
    }
    EXPECT_TRUE(DeleteDC(kept));
    EXPECT_FALSE(DeleteDC(owned));
}

TEST(GdiPalette, EntriesReadBack)
{
    const HPALETTE palette = MakePalette({ { 1, 2, 3, 4 }, { 5, 6, 7, 8 }, { 9, 10, 11, 12 } });
    std::array<PALETTEENTRY, 4> read{};
    EXPECT_EQ(GetPaletteEntries(palette, 0, 0, nullptr), 3U);
    EXPECT_EQ(GetPaletteEntries(palette, 1, 4, read.data()), 2U);
    EXPECT_EQ(read[1].peRed, 9);
    EXPECT_EQ(read[1].peFlags, 12);
    EXPECT_EQ(read[2].peRed, 0);
    EXPECT_EQ(GetPaletteEntries(palette, 3, 1, read.data()), 0U);
    EXPECT_EQ(GetPaletteEntries(palette, 0xFFFFFFFF, 0xFFFFFFFF, read.data()), 0U);
    EXPECT_TRUE(DeleteObject(palette));
    EXPECT_EQ(MakePalette({}), nullptr);
    EXPECT_EQ(CreatePalette(nullptr), nullptr);
}

TEST(GdiLocalMemory, IsZeroedByLptrAndNullWhenThereIsNone)
{
    constexpr std::size_t kBytes = 4096;
    void* const memory = LocalAlloc(LPTR, kBytes);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(std::memcmp(memory, std::vector<char>(kBytes).data(), kBytes), 0);
    EXPECT_EQ(LocalFree(memory), nullptr);
    EXPECT_EQ(LocalAlloc(LPTR, SIZE_MAX), nullptr);
    EXPECT_EQ(LocalAlloc(2, 16), nullptr); // movable memory
    EXPECT_EQ(LocalFree(nullptr), nullptr);
    void* const empty = LocalAlloc(0, 0);
    EXPECT_NE(empty, nullptr);
    LocalFree(empty);
}

} // namespace
