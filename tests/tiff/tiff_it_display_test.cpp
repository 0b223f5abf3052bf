// Drawing TIFF/IT pictures, held against the plain rule: a few bytes at a time, pixel by pixel.
#include "core/row_access.h"
#include "platform/file.h"
#include "platform/ui.h"
#include "support/canvas.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tiff_it_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <random>

namespace {

using namespace tympan::test;

struct Strip {
    std::uint32_t offset;
    bool isWhole; // all rows of the picture are in it
};

struct Picture {
    std::uint32_t width, height;
    std::vector<Strip> strips;
};

COLORREF ColourOf(std::array<unsigned char, 4> inks)
{
    return static_cast<COLORREF>(PictureFileInterface::CalculatePixelAsRGB3(inks.data()));
}

// As the rule stands, one read for each pixel.
void DrawPlainCt(CFile& file, const Picture& picture, unsigned long first, unsigned long last,
                 HDC dc)
{
    std::vector<std::array<unsigned char, 4>> slots(picture.width);
    for (const Strip& strip : picture.strips) {
        file.Seek(strip.offset, CFile::begin);
        for (unsigned long y = first; strip.isWhole && y <= last; ++y)
            for (std::uint32_t x = 0; x < picture.width; ++x) {
                file.Read(slots[x].data(), 4);
                SetPixelV(dc, static_cast<int>(x), static_cast<int>(y), ColourOf(slots[x]));
            }
    }
}

class PlainLw {
  public:
    PlainLw(CFile& file, const Picture& picture, const std::vector<unsigned char>& table, HDC dc)
        : file_(file), picture_(picture), table_(table), dc_(dc)
    {}

    void Draw()
    {
        for (std::size_t s = 0; s < picture_.strips.size(); ++s) {
            file_.Seek(picture_.strips[s].offset + 2, CFile::begin);
            if (picture_.strips[s].isWhole)
                DrawStrip(s == 0);
        }
    }

  private:
    void DrawStrip(bool hasTable)
    {
        for (std::uint32_t y = 0;;) {
            unsigned char run[4] = {};
            if (file_.Read(run, 2) < 2)
                return;
            const std::size_t at = run[0] * std::size_t{ 20 };
            std::array<unsigned char, 4> inks{};
            if (hasTable && at + 20 <= table_.size())
                std::copy_n(&table_[at + 4], 4, inks.begin());
            std::uint32_t length = run[1];
            if (length == 0) {
                if (file_.Read(run + 2, 2) < 2)
                    return;
                length = run[2] * 256U + run[3];
            }
            std::uint32_t end = x_ + length;
            const COLORREF colour = ColourOf(inks);
            Fill(y, x_, std::min(end, picture_.width), colour);
            if (end > picture_.width) {
                end -= picture_.width;
                if (++y == picture_.height)
                    return;
                file_.Seek(4, CFile::current);
                Fill(y, 0, end, colour);
            }
            if (y >= picture_.height)
                return;
            if (end == picture_.width) {
                if (++y == picture_.height || file_.Read(run, 4) < 4)
                    return;
                end = 0;
            }
            x_ = end;
        }
    }
    void Fill(std::uint32_t y, std::uint32_t first, std::uint32_t end, COLORREF colour)
    {
        for (std::uint32_t x = first; x < end; ++x)
            SetPixelV(dc_, static_cast<int>(x), static_cast<int>(y), colour);
    }

    CFile& file_;
    const Picture& picture_;
    const std::vector<unsigned char>& table_;
    HDC dc_;
    std::uint32_t x_ = 0;
};

constexpr int kSide = 24;

std::uint32_t Roll(std::mt19937& random, std::uint32_t sides)
{
    return static_cast<std::uint32_t>(random() % sides);
}

void ExpectSame(const Canvas& drawn, const Canvas& expected)
{
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            ASSERT_EQ(GetPixel(drawn.dc.GetSafeHdc(), x, y),
                      GetPixel(expected.dc.GetSafeHdc(), x, y))
                << x << ", " << y;
}

// One strip most of the time, which may be no whole picture or stand behind the file's end.
Picture Lay(TiffItSample& sample, std::mt19937& random)
{
    auto& fields = sample.directories[0];
    Picture picture{ fields[0].values[0], fields[1].values[0], {} };
    const std::size_t strips = random() % 3 == 0 ? 3 : 1;
    const std::uint32_t rows = picture.height - (random() % 8 == 0 ? 1 : 0);
    fields[3].values.clear();
    for (std::size_t s = 0; s < strips; ++s) {
        const auto way = static_cast<std::uint32_t>(random() % (sample.data.size() + 9));
        fields[3].values.push_back(TiffItSample::kData + (random() % 2 == 0 ? 0 : way));
        picture.strips.push_back({ fields[3].values[s], s != 0 || rows >= picture.height });
    }
    fields[4].values = { rows };
    return picture;
}

TEST(TiffItDisplay, ContinuousToneIsDrawnAsPixelByPixel)
{
    std::mt19937 random(73);
    for (int trial = 0; trial < 1500; ++trial) {
        SCOPED_TRACE(trial);
        TiffItSample sample = CtSample(Roll(random, 40), 1 + Roll(random, 20));
        sample.data.resize(random() % 3500);
        for (unsigned char& byte : sample.data)
            byte = static_cast<unsigned char>(random());
        const Picture picture = Lay(sample, random);
        const OneFile files(sample.Bytes());
        TiffItCtP1Interface tone("pic", true);
        ASSERT_EQ(tone.TraceStatus(), 0U);
        Canvas drawn(kSide, kSide), expected(kSide, kSide);
        const auto first = random() % 30;
        const auto last = random() % 40;
        const int left = static_cast<int>(random() % 9) - 4;
        SetViewportOrgEx(drawn.dc.GetSafeHdc(), left, -left, nullptr);
        SetViewportOrgEx(expected.dc.GetSafeHdc(), left, -left, nullptr);
        tone.Display(first, last, drawn.dc);
        EXPECT_EQ(tone.TraceStatus(), 0U);
        CFile file("pic", CFile::modeRead);
        DrawPlainCt(file, picture, first, last, expected.dc.GetSafeHdc());
        SetViewportOrgEx(drawn.dc.GetSafeHdc(), 0, 0, nullptr);
        SetViewportOrgEx(expected.dc.GetSafeHdc(), 0, 0, nullptr);
        ASSERT_NO_FATAL_FAILURE(ExpectSame(drawn, expected));
        EXPECT_EQ(tone.FileHandle().GetPosition(), file.GetPosition());
    }
}

void AppendRuns(TiffItSample& sample, std::mt19937& random)
{
    const std::uint32_t width = sample.directories[0][0].values[0];
    auto& data = sample.data;
    data = { 9, 9 };
    for (std::uint32_t y = 0; y < sample.directories[0][1].values[0]; ++y) {
        for (std::uint32_t x = 0; x < width;) {
            const auto length = static_cast<std::uint32_t>(
                random() % 6 == 0 ? random() % 700 : 1 + random() % width);
            const std::uint32_t fitting = random() % 8 == 0 ? length : std::min(length, width - x);
            data.push_back(static_cast<unsigned char>(random() % 4));
            if (fitting > 255 || fitting == 0 || random() % 4 == 0)
                data.insert(data.end(), { 0, static_cast<unsigned char>(fitting >> 8U) });
            data.push_back(static_cast<unsigned char>(fitting));
            x += std::max(fitting, 1U);
        }
        data.insert(data.end(), { 1, 2, 3, 4 });
    }
    if (random() % 3 == 0)
        data.resize(random() % data.size());
}

TEST(TiffItDisplay, LineWorkIsDrawnAsPixelByPixel)
{
    std::mt19937 random(74);
    for (int trial = 0; trial < 1500; ++trial) {
        SCOPED_TRACE(trial);
        TiffItSample sample = LwSample(1 + Roll(random, 40), Roll(random, 20), Roll(random, 5));
        std::vector<unsigned char> table;
        for (const std::uint32_t byte : sample.directories[0].back().values)
            table.push_back(static_cast<unsigned char>(byte));
        AppendRuns(sample, random);
        const Picture picture = Lay(sample, random);
        const OneFile files(sample.Bytes());
        TiffItLwP1Interface work("pic", true);
        ASSERT_EQ(work.TraceStatus(), 0U);
        Canvas drawn(kSide, kSide), expected(kSide, kSide);
        const HDC contexts[] = { drawn.dc.GetSafeHdc(), expected.dc.GetSafeHdc() };
        const int down = trial % 4 != 0 ? 0 : static_cast<int>(Roll(random, 2 * kSide)) - kSide;
        for (const HDC dc : contexts)
            SetViewportOrgEx(dc, 0, down, nullptr);
        work.Display(random(), random(), drawn.dc);
        EXPECT_EQ(work.TraceStatus(), 0U);
        CFile file("pic", CFile::modeRead);
        PlainLw(file, picture, table, expected.dc.GetSafeHdc()).Draw();
        for (const HDC dc : contexts)
            SetViewportOrgEx(dc, 0, 0, nullptr);
        ASSERT_NO_FATAL_FAILURE(ExpectSame(drawn, expected));
    }
}

// Each directory has the table of the last one up to it; a strip takes that of its number.
TEST(TiffItDisplay, ColourTablesAreThoseOfTheLastFileOpened)
{
    TiffItSample sample = LwSample(2, 1, 1);
    sample.directories.push_back({ { 9, 3, { 1 } } });
    sample.directories[0][3].values = { 5000, TiffItSample::kData };
    sample.data = { 0, 0, 0, 2 };
    OneFile files(sample.Bytes());
    TiffItLwP1Interface work("pic", true);
    Canvas drawn(kSide, kSide);
    work.Display(0, 0, drawn.dc);
    const auto& table = sample.directories[0].back().values;
    const auto ink = [&](std::size_t i) { return static_cast<unsigned char>(table[4 + i]); };
    EXPECT_EQ(GetPixel(drawn.dc.GetSafeHdc(), 0, 0), ColourOf({ ink(0), ink(1), ink(2), ink(3) }));
    sample.directories[0].back().type = 2;
    sample.directories[0].back().values.assign(20, 0);
    files.Put(sample.Bytes());
    ASSERT_TRUE(work.OpenPictureFile("pic", true, true, nullptr));
    work.Display(0, 0, drawn.dc);
    EXPECT_EQ(GetPixel(drawn.dc.GetSafeHdc(), 1, 0), 0xFFFFFFU);
    sample.directories[0].back() = { 34022, 3, std::vector<std::uint32_t>(40, 0xFFFF) };
    files.Put(sample.Bytes());
    ASSERT_TRUE(work.OpenPictureFile("pic", true, true, nullptr));
    work.Display(0, 0, drawn.dc);
    EXPECT_EQ(GetPixel(drawn.dc.GetSafeHdc(), 1, 0), 0xFFFFFFU);
}

// Strips that all begin at one place, each of which counts as the whole picture.
TiffItSample ManyStrips(TiffItSample sample, std::size_t count, std::uint32_t place)
{
    sample.data.assign(4000, 0);
    sample.directories[0][3].values.assign(count, TiffItSample::kData + place);
    return sample;
}

TEST(TiffItDisplay, ManyStripsAreNotManyPictures)
{
    Canvas canvas(kSide, kSide);
    for (const std::uint32_t place : { 0U, 3997U }) { // with a row and without one
        OneFile files(ManyStrips(CtSample(5, 3), 400, place).Bytes());
        TiffItCtP1Interface tone("pic", true);
        const std::size_t before = files.Watched().Count(FileOperation::readAt);
        tone.Display(0, 2, canvas.dc);
        EXPECT_EQ(tone.TraceStatus(), 0U);
        EXPECT_LT(files.Watched().Count(FileOperation::readAt) - before, 50U);
    }
    for (const std::size_t count : { 60U, 400U }) {
        const OneFile files(ManyStrips(LwSample(5, 3, 2), count, 0).Bytes());
        TiffItLwP1Interface work("pic", true);
        work.Display(0, 2, canvas.dc);
        EXPECT_EQ(work.TraceStatus(), count == 60 ? 0U : 90051U);
    }
}

TEST(TiffItDisplay, AReadThatFailsLeavesItsCode)
{
    OneFile files(CtSample(5, 3).Bytes());
    Canvas canvas(kSide, kSide);
    {
        TiffItCtP1Interface tone("pic", true);
        files.Watched().FailAny(1, EIO, Failing::fromThereOn);
        tone.Display(0, 2, canvas.dc);
        files.Watched().FailAny(0, 0);
        EXPECT_EQ(tone.TraceStatus(), 90001U);
        EXPECT_FALSE(tone.TraceStatusString().IsEmpty());
        EXPECT_EQ(SetCursor(nullptr), LoadCursor(nullptr, IDC_UPARROW));
        unsigned int rows = 0;
        EXPECT_EQ(tone.GetPictureRow(nullptr, 0, Cyan, 0, 0, 0), 0U);
        EXPECT_EQ(tone.GetPictureRows(nullptr, 0, 0, rows, nullptr, Cyan, 0, false), 0U);
        EXPECT_EQ(tone.GetPictureRow(Cyan, 0, 0, 0), nullptr);
        EXPECT_EQ(tone.GetPictureRows(Cyan, 0, 0, false), nullptr);
    }
    TiffItSample sample = LwSample(5, 3, 2);
    sample.data.assign(9, 1);
    files.Put(sample.Bytes());
    TiffItLwP1Interface work("pic", true);
    files.Watched().Fail(FileOperation::readAt, 1, EIO);
    work.Display(0, 2, canvas.dc);
    files.Watched().FailAny(0, 0);
    EXPECT_EQ(work.TraceStatus(), 90050U);
    EXPECT_EQ(std::string(work.ErrorMsg().GetString()), "TiffInterface: Error Extracting Tiff");
    EXPECT_EQ(SetCursor(nullptr), LoadCursor(nullptr, IDC_UPARROW));
}

} // namespace
