// `tympan preview` of a page: held against pages that are laid pixel by pixel of whole pictures.
#include "support/page_samples.h"
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/png_pictures.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

// A page of 10 by 8 inches.
constexpr int kPerInch = 20;
constexpr int kPageWidth = 200;
constexpr int kPageHeight = 160;
constexpr std::size_t kPagePixels = 32000;

std::size_t PlaceOf(int column, int row, int width)
{
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(column);
}

// Red, green and blue, 0 where they are clear, and how much of each isn't clear.
using Pixel = std::array<int, 6>;

struct Model {
    int width = 0;
    int height = 0;
    std::vector<Pixel> pixels{};

    const Pixel& At(int column, int row) const { return pixels[PlaceOf(column, row, width)]; }
};

Model ModelOf(std::uint32_t width, std::uint32_t height,
              const std::function<Pixel(std::uint32_t, std::uint32_t)>& pixel)
{
    Model model{ static_cast<int>(width), static_cast<int>(height) };
    for (std::uint32_t row = 0; row < height; ++row)
        for (std::uint32_t column = 0; column < width; ++column)
            model.pixels.push_back(pixel(column, row));
    return model;
}

Model ModelOf(const CtPicture& picture)
{
    return ModelOf(picture.width, picture.height, [&](auto column, auto row) {
        const auto colour = picture.Colour(column, row);
        return Pixel{ colour[0], colour[1], colour[2], 255, 255, 255 };
    });
}

Model ModelOf(const Samples& samples)
{
    return ModelOf(samples.width, samples.height, [&](auto column, auto row) {
        const std::uint16_t* const first =
            &samples.numbers[(std::size_t{ row } * samples.width + column) * 3];
        return Pixel{ first[0], first[1], first[2], 255, 255, 255 };
    });
}

// Clear in the inks that are transparent, but for the shade of black; in all when all are.
Model ModelOf(const LwPicture& picture)
{
    const CtPicture plates = PlatesOf(OnPaper(picture));
    return ModelOf(picture.width, picture.height, [&](auto column, auto row) {
        const auto colour = plates.Colour(column, row);
        const unsigned int flags = picture.colours[picture.Indexes(row)[column] - 1U].flags >> 4U;
        Pixel pixel{};
        for (std::size_t i = 0; i < 3; ++i) {
            const bool isClear = (flags & (8U >> i)) != 0;
            pixel[i] = isClear ? 0 : colour[i];
            pixel[3 + i] = isClear ? 255 - colour[i] : 255;
        }
        return pixel;
    });
}

// How much is open, and, as the last three, what the open part adds to the colour.
Model WindowModel(const LwPicture& picture, const std::string& colours)
{
    const Model line = ModelOf(picture);
    return ModelOf(picture.width, picture.height, [&](auto column, auto row) {
        const auto index = static_cast<char>(picture.Indexes(row)[column]);
        if (colours.find(index) == std::string::npos)
            return Pixel{};
        const Pixel shown = line.At(static_cast<int>(column), static_cast<int>(row));
        return Pixel{ 255, 0, 0, shown[0], shown[1], shown[2] };
    });
}

struct Placed {
    const char* file = "";
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    double angle = 0.0;
    int container = -1;
    const char* colours = "";
};

PageEntrySample EntryOf(const Placed& placed)
{
    const auto number = [](double value) { return CtSample::Text("%+.7E", value); };
    const bool isLw = std::string(placed.file).ends_with(".lw");
    return { .type = static_cast<unsigned char>(placed.container >= 0 ? 2
                                                : isLw                ? 5
                                                                      : 1),
             .path = placed.file,
             .yOffset = number(placed.y),
             .xOffset = number(placed.x),
             .height = number(placed.height),
             .width = number(placed.width),
             .angle = number(placed.angle),
             .window = placed.container < 0
                           ? ""
                           : std::string(1, static_cast<char>(placed.container)) + placed.colours };
}

struct Page {
    std::vector<std::array<double, 3>> pixels =
        std::vector<std::array<double, 3>>(kPagePixels, { 255, 255, 255 });

    void Lay(int x, int y, const Pixel& pixel)
    {
        for (std::size_t i = 0; i < 3; ++i) {
            double& below = At(x, y)[i];
            below = std::round(pixel[i] + below * (1.0 - pixel[3 + i] / 255.0));
        }
    }

    // Through a window: in place of the container's open part where nothing else was laid on that.
    void LayThrough(int x, int y, const Pixel& pixel, const Pixel& window, const Pixel& container)
    {
        bool isOnTop = true;
        for (std::size_t i = 0; i < 3; ++i)
            isOnTop = isOnTop && std::abs(At(x, y)[i] - container[i]) <= 2.0;
        for (std::size_t i = 0; i < 3; ++i) {
            double& below = At(x, y)[i];
            const double open = window[0] / 255.0;
            const double replaced = isOnTop ? window[3 + i] : below * open;
            below = std::round(pixel[i] * open + below - replaced * pixel[3 + i] / 255.0);
        }
    }

    std::array<double, 3>& At(int x, int y) { return pixels[PlaceOf(x, y, kPageWidth)]; }
};

// The mean of the pixels that one of `targets` stands for, or the nearest.
Pixel PixelAt(const Model& model, int u, int across, int v, int down)
{
    const auto boxOf = [](int target, int targets, int sources) {
        return targets <= sources
                   ? std::pair(target * sources / targets, (target + 1) * sources / targets)
                   : std::pair((2 * target + 1) * sources / (2 * targets),
                               (2 * target + 1) * sources / (2 * targets) + 1);
    };
    const auto [left, right] = boxOf(u, across, model.width);
    const auto [top, bottom] = boxOf(v, down, model.height);
    Pixel sums{};
    for (int row = top; row < bottom; ++row)
        for (int column = left; column < right; ++column)
            for (std::size_t i = 0; i < sums.size(); ++i)
                sums[i] += model.At(column, row)[i];
    const int count = (right - left) * (bottom - top);
    for (int& sum : sums)
        sum = (2 * sum + count) / (2 * count);
    return sums;
}

// What a picture that is turned by right angles shows at a pixel of the page.
std::optional<Pixel> SeenAt(const Placed& placed, const Model& model, int x, int y)
{
    const int turns = static_cast<int>(placed.angle / 90.0 + 4.0) % 4;
    const auto pixels = [](double inches) {
        return static_cast<int>(std::lround(inches * kPerInch));
    };
    const int left = pixels(placed.x);
    const int top = pixels(placed.y);
    const int width = pixels(placed.x + (turns % 2 == 0 ? placed.width : placed.height)) - left;
    const int height = pixels(placed.y + (turns % 2 == 0 ? placed.height : placed.width)) - top;
    const int right = x - left;
    const int down = y - top;
    if (right < 0 || right >= width || down < 0 || down >= height)
        return std::nullopt;
    switch (turns) {
    case 0: return PixelAt(model, right, width, down, height);
    case 1: return PixelAt(model, height - 1 - down, height, right, width);
    case 2: return PixelAt(model, width - 1 - right, width, height - 1 - down, height);
    default: return PixelAt(model, down, height, width - 1 - right, width);
    }
}

// The files of a job, and what they look like.
struct Job : TemporaryFolder {
    Job()
    {
        const CtPicture ct = RandomCt(80, 60);
        WriteFile(*this / "a.ct", ct.File());
        models["a.ct"] = ModelOf(ct);
        CtPicture slope = RandomCt(90, 70);
        for (std::uint32_t at = 0; at < slope.bytes.size(); ++at)
            slope.bytes[at] = static_cast<std::uint8_t>(at % 90 + at / 360 + at / 90 % 4 * 20);
        WriteFile(*this / "slope.ct", slope.File());
        models["slope.ct"] = ModelOf(slope);
        WriteFile(*this / "a.lw", std::string(AsText(lineWork.Bytes())));
        models["a.lw"] = ModelOf(lineWork);
        WriteTiff(*this / "a.tif", Noise(40, 30), { .as = kRgb });
        models["a.tif"] = ModelOf(Noise(40, 30));
        WriteJpeg(*this / "source.jpg", Noise(64, 48), {});
        EXPECT_EQ(RunWords("import @source.jpg -o @a.jpg", *this).status, 0);
        models["a.jpg"] = ModelOf(ReadJpeg(*this / "a.jpg"));
    }

    static Samples Noise(std::uint32_t width, std::uint32_t height)
    {
        Samples samples{ width, height, 3, {} };
        for (std::uint32_t i = 0; i < width * height * 3; ++i)
            samples.numbers.push_back(static_cast<std::uint16_t>(i * 7919 % 256));
        return samples;
    }

    PngPicture Preview(const std::vector<Placed>& placed, int status = 0) const
    {
        PageSample page;
        for (const Placed& one : placed)
            page.entries.push_back(EntryOf(one));
        WriteFile(*this / "page.pg", std::string(AsText(page.Bytes())));
        const Outcome outcome = RunWords("preview @page.pg -o @page.png --fit 200", *this);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        told = outcome.err;
        return ReadPng(*this / "page.png");
    }

    LwPicture lineWork = RandomLw(60, 50);
    std::map<std::string, Model> models;
    mutable std::string told;
};

Page LaidByHand(const Job& job, const std::vector<Placed>& placed)
{
    Page page;
    for (const Placed& one : placed) {
        const Model window = WindowModel(job.lineWork, one.colours);
        for (int y = 0; y < kPageHeight; ++y)
            for (int x = 0; x < kPageWidth; ++x)
                if (const auto seen = SeenAt(one, job.models.at(one.file), x, y)) {
                    if (one.container < 0) {
                        page.Lay(x, y, *seen);
                        continue;
                    }
                    const Placed& container = placed[static_cast<std::size_t>(one.container)];
                    page.LayThrough(
                        x, y, *seen, SeenAt(container, window, x, y).value_or(Pixel{}),
                        SeenAt(container, job.models.at("a.lw"), x, y).value_or(Pixel{}));
                }
    }
    return page;
}

struct PageCase {
    const char* name;
    std::vector<Placed> placed;
};

const PageCase kPages[] = {
    { "no picture", {} },
    { "formats beside each other, smaller and larger",
      { { "a.ct", 0.5, 0.25, 2.0, 1.5 },
        { "a.lw", 3.0, 0.25, 1.1, 2.3 },
        { "a.jpg", 5.0, 0.25, 3.2, 2.4 },
        { "a.tif", 0.5, 4.0, 6.0, 3.5 } } },
    { "turned by right angles",
      { { "a.ct", 0.0, 0.0, 3.0, 2.0, 90.0 },
        { "a.ct", 3.0, 0.0, 3.0, 2.0, 180.0 },
        { "a.ct", 6.5, 0.0, 3.0, 2.0, -90.0 },
        { "a.tif", 0.0, 4.0, 3.0, 4.0, 450.0 } } },
    { "reaching beyond the page",
      { { "a.ct", -1.0, -0.5, 3.0, 2.0 },
        { "a.ct", 8.7, 7.1, 3.0, 2.0, 90.0 },
        { "a.jpg", -2.0, 6.5, 5.0, 9.0, 180.0 },
        { "a.lw", 9.2, -1.0, 2.0, 3.0, 270.0 },
        { "a.tif", 20.0, 20.0, 1.0, 1.0 } } },
    { "line work over a picture",
      { { "a.ct", 0.0, 0.0, 8.0, 6.0 }, { "a.lw", 1.0, 1.0, 4.0, 5.0 } } },
    { "the later one on top", { { "a.lw", 1.0, 1.0, 4.0, 5.0 }, { "a.ct", 0.0, 0.0, 4.0, 3.0 } } },
    { "a window, larger than its container",
      { { "a.lw", 1.0, 1.0, 3.0, 2.5 },
        { "a.jpg", 0.0, 0.0, 6.0, 4.0, 0.0, 0, "\x01\x02\x03\x04\x05\x06\x07" } } },
    { "a window, and its container turned",
      { { "a.ct", 0.0, 0.0, 1.0, 1.0 },
        { "a.lw", 1.0, 1.0, 1.7, 1.5, 90.0 },
        { "a.ct", 0.5, 0.5, 2.5, 2.0, 180.0, 1, "\x02\x09\x14\xC8" } } },
    { "far too large: the part on the page", { { "a.ct", -99.0, -50.0, 200.0, 100.0, 270.0 } } },
};

TEST(PagePreview, IsLaidPixelByPixel)
{
    const Job job;
    for (const PageCase& one : kPages) {
        SCOPED_TRACE(one.name);
        const PngPicture png = job.Preview(one.placed);
        ASSERT_EQ(png.samples.size(), kPagePixels * 3);
        const Page page = LaidByHand(job, one.placed);
        for (std::size_t i = 0; i < png.samples.size(); ++i)
            ASSERT_NEAR(png.samples[i], page.pixels[i / 3][i % 3], 1.0)
                << i / 3 % kPageWidth << ", " << i / 3 / kPageWidth;
    }
}

// What a page shows at a place, in inches, of a picture that is turned.
Pixel TurnedAt(const Placed& placed, const Model& model, double x, double y)
{
    const double radians = placed.angle / 180.0 * std::numbers::pi;
    const double sine = std::sin(radians);
    const double cosine = std::cos(radians);
    const double wide = placed.width * std::abs(cosine) + placed.height * std::abs(sine);
    const double high = placed.width * std::abs(sine) + placed.height * std::abs(cosine);
    const double right = x - placed.x - wide / 2;
    const double down = y - placed.y - high / 2;
    const double u = (right * cosine - down * sine) / placed.width + 0.5;
    const double v = (right * sine + down * cosine) / placed.height + 0.5;
    if (u < 0.0 || u >= 1.0 || v < 0.0 || v >= 1.0)
        return {};
    return model.At(static_cast<int>(u * model.width), static_cast<int>(v * model.height));
}

TEST(PagePreview, AnyAngleIsNearWhatManyPointsOfEachPixelShow)
{
    constexpr int kPoints = 8; // along each side of a pixel
    const Job job;
    for (const Placed& placed : { Placed{ "slope.ct", 1.0, 1.0, 5.0, 4.0, 30.0 },
                                  Placed{ "slope.ct", 6.0, -2.0, 9.0, 7.0, -110.0 },
                                  Placed{ "slope.ct", 2.0, 2.0, 3.0, 2.0, 0.5 } }) {
        SCOPED_TRACE(placed.angle);
        const PngPicture png = job.Preview({ placed });
        double sum = 0.0;
        for (int y = 0; y < kPageHeight; ++y)
            for (int x = 0; x < kPageWidth; ++x) {
                std::array<double, 3> mean{};
                for (int i = 0; i < kPoints * kPoints; ++i) {
                    const Pixel seen =
                        TurnedAt(placed, job.models.at(placed.file),
                                 (x + (i % kPoints + 0.5) / kPoints) / kPerInch,
                                 (y + (static_cast<int>(i / kPoints) + 0.5) / kPoints) / kPerInch);
                    for (std::size_t c = 0; c < 3; ++c)
                        mean[c] += seen[c] + 255.0 - seen[3 + c];
                }
                for (std::size_t c = 0; c < 3; ++c) {
                    const double difference =
                        std::abs(mean[c] / (kPoints * kPoints) -
                                 png.samples[PlaceOf(x, y, kPageWidth) * 3 + c]);
                    sum += difference;
                    ASSERT_LE(difference, 40.0) << x << ", " << y; // at corners
                }
            }
        EXPECT_LE(sum / (kPagePixels * 3), 0.5);
    }
}

// Pixels of the page's size are never looked at here, so that any claim comes out at once.
TEST(PagePreview, ClaimsBeyondReasonCostNothing)
{
    const Job job;
    const double sizes[] = { 1e9, 1e-9, 1e90 };
    for (const double size : sizes)
        for (const double angle : { 0.0, 90.0, 30.0, 1e9 }) {
            const PngPicture png =
                job.Preview({ { "a.ct", -size / 2, -size / 2, size, size, angle },
                              { "a.lw", size, -size, 1.0, size, angle } });
            EXPECT_EQ(png.samples.size(), kPagePixels * 3);
        }
}

TEST(PagePreview, PictureWithoutSizeHasItsOwn)
{
    Job job;
    const PngPicture png = job.Preview({ { "a.lw", 1.0, 1.0, 0.0, 0.0 } }); // 100 pixels an inch
    const Page page = LaidByHand(job, { { "a.lw", 1.0, 1.0, 0.6, 0.5 } });
    for (std::size_t i = 0; i < png.samples.size(); ++i)
        ASSERT_NEAR(png.samples[i], page.pixels[i / 3][i % 3], 1.0) << i;
}

struct ShortfallCase {
    const char* name = "";
    Placed placed{};
    const char* told = "";
};

// Each stands between two pictures that are shown all the same.
const ShortfallCase kShortfalls[] = {
    { "missing", { "none.ct", 3.0, 1.0, 4.0, 4.0 }, "entry 1, none.ct: no such file" },
    { "no picture", { "page.pg", 3.0, 1.0, 4.0, 4.0, 90.0 }, "is a page" },
    { "bad row", { "bad.lw", 3.0, 1.0, 4.0, 4.0 }, "row 49 of 50" },
};

TEST(PagePreview, APlaceholderStandsForWhatCantBeShown)
{
    const Job job;
    const std::string lineWork(AsText(job.lineWork.Bytes()));
    WriteFile(job / "bad.lw", lineWork.substr(0, lineWork.size() - 10));
    const Placed before{ "a.ct", 0.0, 0.0, 2.0, 2.0 };
    const Placed after{ "a.tif", 8.0, 6.0, 2.0, 2.0 };
    for (const ShortfallCase& one : kShortfalls) {
        SCOPED_TRACE(one.name);
        const PngPicture png = job.Preview({ before, one.placed, after }, 1);
        EXPECT_THAT(job.told, HasSubstr(one.told));
        EXPECT_EQ(png.At(100, 30), (std::vector<std::uint8_t>{ 232, 232, 232 }));
        EXPECT_EQ(png.At(100, 60), (std::vector<std::uint8_t>{ 128, 128, 128 })) << "the cross";
        EXPECT_EQ(png.At(58, 60), (std::vector<std::uint8_t>{ 255, 255, 255 }));
        const Page page = LaidByHand(job, { before, after });
        for (const std::size_t place : { std::size_t{ 410 }, std::size_t{ 150 * 200 + 190 } })
            EXPECT_NEAR(png.samples[place * 3], page.pixels[place][0], 1.0);
    }
}

TEST(PagePreview, RowsThatACutPictureLacksHaveNoInk)
{
    const Job job;
    const std::string file = ReadFile(job / "a.ct");
    WriteFile(job / "cut.ct", file.substr(0, 2048 + 30 * 320));
    const PngPicture png = job.Preview({ { "cut.ct", 0.0, 0.0, 4.0, 3.0 } }, 1);
    EXPECT_THAT(job.told, HasSubstr("row 30 of 60 is the first that is missing"));
    const Page page = LaidByHand(job, { { "a.ct", 0.0, 0.0, 4.0, 3.0 } });
    EXPECT_EQ(png.At(40, 29)[0], page.pixels[PlaceOf(40, 29, kPageWidth)][0]);
    EXPECT_EQ(png.At(40, 30)[0], 255);
}

TEST(PagePreview, AWindowWithoutContainerIsShownWholeAndTold)
{
    const Job job;
    for (const int container : { 0, 1, 200 }) { // a CT, the window itself, none
        const std::vector<Placed> placed{ { "a.ct", 8.0, 6.0, 1.0, 1.0 },
                                          { "a.jpg", 0.0, 0.0, 4.0, 3.0, 0.0, container, "\x01" } };
        const PngPicture png = job.Preview(placed, 1);
        EXPECT_THAT(job.told, HasSubstr("entry 1: it is shown whole, for its container, entry " +
                                        std::to_string(container)));
        EXPECT_EQ(png.At(20, 20)[1], LaidByHand(job, { { "a.jpg", 0.0, 0.0, 4.0, 3.0 } })
                                         .pixels[PlaceOf(20, 20, kPageWidth)][1]);
    }
}

TEST(PagePreview, IsAsLargeAsAskedAndNeverLargerThanThePage)
{
    const Job job;
    job.Preview({});
    struct {
        const char* fit;
        std::uint32_t width, height;
    } const cases[] = { { "", 1000, 800 }, { " --fit 1", 1, 1 }, { " --fit 333", 333, 266 } };
    for (const auto& one : cases) {
        const Outcome outcome = RunWords(std::string("preview @page.pg -o @a.png") + one.fit, job);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const PngPicture png = ReadPng(job / "a.png");
        EXPECT_EQ(png.width, one.width);
        EXPECT_EQ(png.height, one.height);
        EXPECT_NEAR(png.pixelsPerMetreX, one.width / 0.254, 1.0);
    }
}

constexpr RefusalCase kRefusals[] = {
    { "preview @page.pg -o @b.png --separation cyan", 2, "a page is shown whole" },
    { "preview @page.pg -o @b.png --rows 0:5", 2, "a page is shown whole" },
    { "preview @page.pg -o @b.png --max-memory 1MiB", 1,
      "a page of 1000 x 800 pixels takes up to" },
};

TEST(PagePreview, RefusesWhatAPageHasNot)
{
    const Job job;
    job.Preview({});
    ExpectRefused(kRefusals, job);
}

} // namespace
} // namespace tympan::test
