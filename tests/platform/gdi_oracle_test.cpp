// The stand-in of the platform's drawing held against the system's own: the same calls on both, the
// same bytes in both bitmaps, padding included.
#include "platform/gdi.h"
#include "platform/gdi_spans.h"
#include "platform/system_gdi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using tympan::test::SystemCanvas;
using tympan::test::SystemPoint;

// A header with room for a whole colour table, in the memory layout of BITMAPINFO.
struct FullInfo {
    BITMAPINFOHEADER header{ sizeof(BITMAPINFOHEADER), 0, 0, 1, 0, BI_RGB, 0, 0, 0, 0, 0 };
    std::array<RGBQUAD, 256> colours{};
};

class Dice {
  public:
    int Upto(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(Upto(255)); }
    COLORREF Colour() { return RGB(Byte(), Byte(), Byte()); }

    FullInfo Info()
    {
        constexpr std::array<WORD, 3> kDepths = { 8, 24, 32 };
        FullInfo info;
        info.header.biWidth = 1 + Upto(40);
        info.header.biHeight = (1 + Upto(6)) * (Upto(1) == 0 ? 1 : -1);
        info.header.biBitCount = kDepths[static_cast<std::size_t>(Upto(2))];
        // A shorter table of the stand-in ends; the system fills one up to 256 colours with black.
        info.header.biClrUsed = info.header.biBitCount == 8 && Upto(1) == 0 ? 256 : 0;
        for (RGBQUAD& colour : info.colours)
            colour = { Byte(), Byte(), Byte(), 0 };
        return info;
    }

    // A point on a small bitmap or around it.
    SystemPoint Point() { return { Upto(55) - 8, Upto(12) - 3 }; }

  private:
    std::mt19937 random_{ 19920 };
};

// The same bitmap twice, with the same memory and the same origin.
struct Pair {
    explicit Pair(const FullInfo& info, Dice& dice) : theirs(&info)
    {
        void* memory = nullptr;
        bitmap = CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&info),
                                  DIB_RGB_COLORS, &memory, nullptr, 0);
        bits = static_cast<std::uint8_t*>(memory);
        ours.Attach(CreateCompatibleDC(nullptr));
        SelectObject(ours.GetSafeHdc(), bitmap);
        std::generate_n(bits, Bytes(), [&] { return dice.Byte(); });
        std::memcpy(theirs.Bits(), bits, Bytes());
        const SystemPoint origin = { dice.Upto(60) - 30, dice.Upto(60) - 30 };
        SetViewportOrgEx(ours.GetSafeHdc(), origin.x, origin.y, nullptr);
        theirs.MoveOrigin(origin);
        at = { -origin.x, -origin.y };
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair() { DeleteObject(bitmap); }

    HDC Context() const { return ours.GetSafeHdc(); }
    std::size_t Bytes() const { return tympan::BitmapBytes(bitmap); }
    bool AreEqual() const { return std::memcmp(bits, theirs.Bits(), Bytes()) == 0; }
    SystemPoint Moved(SystemPoint point) const { return { point.x + at.x, point.y + at.y }; }

    SystemCanvas theirs;
    CDC ours;
    HBITMAP bitmap = nullptr;
    std::uint8_t* bits = nullptr;
    SystemPoint at{}; // of the bitmap's first pixel
};

TEST(GdiOracle, PointsAreThoseOfTheSystem)
{
    Dice dice;
    int drawn = 0;
    for (int round = 0; round < 1500; ++round) {
        const FullInfo info = dice.Info();
        SCOPED_TRACE("round " + std::to_string(round) + ", depth " +
                     std::to_string(info.header.biBitCount));
        const Pair pair(info, dice);
        ASSERT_TRUE(pair.theirs.IsMade());
        for (int point = 0; point < 40; ++point) {
            const SystemPoint at = pair.Moved(dice.Point());
            const COLORREF colour = dice.Colour();
            const COLORREF before = GetPixel(pair.Context(), at.x, at.y);
            ASSERT_EQ(before, pair.theirs.Get(at));
            const bool isInside = before != CLR_INVALID;
            const COLORREF set = SetPixel(pair.Context(), at.x, at.y, colour);
            const COLORREF setThere = pair.theirs.Set(at, colour);
            // Outside, the platform's documents have CLR_INVALID, and wine gives the colour.
            ASSERT_EQ(set, isInside ? setThere : CLR_INVALID);
            ASSERT_EQ(SetPixelV(pair.Context(), at.x, at.y, colour) != FALSE, isInside);
            ASSERT_TRUE(pair.theirs.SetOnly(at, colour) || !isInside);
            drawn += isInside;
        }
        ASSERT_TRUE(pair.AreEqual());
    }
    EXPECT_GT(drawn, 5000);
}

// Draws stretches on random bitmaps, each by `draw(pair, at)` on both sides.
template <typename Draw>
void ExpectEqualStretches(Dice& dice, Draw draw)
{
    int drawn = 0;
    for (int round = 0; round < 3000; ++round) {
        const FullInfo info = dice.Info();
        SCOPED_TRACE("round " + std::to_string(round) + ", depth " +
                     std::to_string(info.header.biBitCount));
        const Pair pair(info, dice);
        const std::vector<std::uint8_t> before(pair.bits, pair.bits + pair.Bytes());
        draw(pair, pair.Moved(dice.Point()), info.header.biBitCount);
        ASSERT_TRUE(pair.AreEqual());
        drawn += !std::equal(before.begin(), before.end(), pair.bits);
    }
    EXPECT_GT(drawn, 300);
}

TEST(GdiOracle, FilledStretchesAreRectanglesOfTheSystem)
{
    Dice dice;
    ExpectEqualStretches(dice, [&](const Pair& pair, SystemPoint at, int) {
        const int count = dice.Upto(60);
        const COLORREF colour = dice.Colour();
        tympan::FillPixelSpan(pair.Context(), at.x, at.y, static_cast<std::uint64_t>(count),
                              colour);
        pair.theirs.FillRow(at, count, colour);
    });
}

// With a colour table the system copies by another rule than it sets points: there, points are the
// measure.
TEST(GdiOracle, CopiedStretchesAreBitmapsOfTheSystem)
{
    Dice dice;
    ExpectEqualStretches(dice, [&](const Pair& pair, SystemPoint at, int bits) {
        std::vector<std::uint8_t> bgr(3 * static_cast<std::size_t>(1 + dice.Upto(50)));
        std::generate(bgr.begin(), bgr.end(), [&] { return dice.Byte(); });
        tympan::SetPixelSpan(pair.Context(), at.x, at.y, bgr);
        if (bits != 8)
            pair.theirs.CopyRow(at, bgr);
        else
            for (std::size_t i = 0; i < bgr.size(); i += 3)
                pair.theirs.Set({ at.x + static_cast<int>(i / 3), at.y },
                                RGB(bgr[i + 2], bgr[i + 1], bgr[i]));
    });
}

TEST(GdiOracle, ColourTablesReadAsTheSystemReadsThem)
{
    Dice dice;
    for (int round = 0; round < 300; ++round) {
        FullInfo info = dice.Info();
        info.header.biBitCount = 8;
        const Pair pair(info, dice);
        const auto start = static_cast<UINT>(dice.Upto(260));
        const auto count = static_cast<UINT>(dice.Upto(260));
        std::array<RGBQUAD, 300> ours{}, theirs{};
        ASSERT_EQ(GetDIBColorTable(pair.Context(), start, count, ours.data()),
                  pair.theirs.ColourTable(start, count, theirs.data()))
            << start << ", " << count << " of " << info.header.biClrUsed;
        ASSERT_EQ(std::memcmp(ours.data(), theirs.data(), sizeof ours), 0);
    }
}

TEST(GdiOracle, PalettesReadAsTheSystemReadsThem)
{
    Dice dice;
    for (int round = 0; round < 300; ++round) {
        const auto size = static_cast<WORD>(1 + dice.Upto(255));
        std::vector<std::uint8_t> record(4 + std::size_t{ 4 } * size);
        const std::array<WORD, 2> head = { 0x300, size };
        std::memcpy(record.data(), head.data(), sizeof head);
        std::generate(record.begin() + 4, record.end(), [&] { return dice.Byte(); });
        const auto start = static_cast<UINT>(dice.Upto(260));
        const auto count = static_cast<UINT>(1 + dice.Upto(260)); // of 0, wine tells them all
        std::array<PALETTEENTRY, 300> ours{}, theirs{};
        const HPALETTE palette = CreatePalette(reinterpret_cast<const LOGPALETTE*>(record.data()));
        const UINT read = GetPaletteEntries(palette, start, count, ours.data());
        DeleteObject(palette);
        ASSERT_EQ(read,
                  tympan::test::SystemPaletteEntries(record.data(), start, count, theirs.data()))
            << start << ", " << count << " of " << size;
        ASSERT_EQ(std::memcmp(ours.data(), theirs.data(), sizeof ours), 0);
    }
}

struct RefusedCase {
    const char* name;
    void (*spoil)(BITMAPINFOHEADER& header);
};

// What the system takes and the stand-in doesn't (other depths, packed pixels) stands in the header.
const RefusedCase kRefusedCases[] = {
    { "nothing", [](BITMAPINFOHEADER&) {} },
    { "no columns", [](BITMAPINFOHEADER& h) { h.biWidth = 0; } },
    { "negative width", [](BITMAPINFOHEADER& h) { h.biWidth = -5; } },
    { "no rows", [](BITMAPINFOHEADER& h) { h.biHeight = 0; } },
    { "64 GiB", [](BITMAPINFOHEADER& h) { h.biWidth = h.biHeight = 1 << 17; } },
    { "2^64 bytes", [](BITMAPINFOHEADER& h) { h.biWidth = h.biHeight = INT_MAX; } },
    { "packed pixels", [](BITMAPINFOHEADER& h) { h.biCompression = 1; } },
};

TEST(GdiOracle, TheSystemRefusesTheSameBitmaps)
{
    for (const RefusedCase& row : kRefusedCases) {
        FullInfo info;
        info.header.biWidth = info.header.biHeight = 5;
        info.header.biBitCount = 32;
        row.spoil(info.header);
        const HBITMAP ours = CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&info),
                                              DIB_RGB_COLORS, nullptr, nullptr, 0);
        EXPECT_EQ(ours != nullptr, SystemCanvas(&info).IsMade()) << row.name;
        DeleteObject(ours);
    }
}

} // namespace
