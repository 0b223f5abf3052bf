// JPEG pictures in `info`, `check`, `preview`, `rows` and `export`: what they decode of the bands is
// held against the whole picture as libjpeg decodes it.
#include "tools/command_runner.h"
#include "tools/parsed_json.h"
#include "tools/png_pictures.h"
#include "tools/source_pictures.h"

#include <tympan/tympan.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

struct Kind {
    const char* name;
    unsigned int components;
    JpegForm form;
};
const Kind kGrey{ "grey", 1, { .from = 1, .to = 1 } };
const Kind kRgb{ "RGB", 3, { .from = 2, .to = 3 } };
const Kind kCmyk{ "CMYK", 4, { .from = 4, .to = 4 } };
const Kind kKinds[] = { kGrey,
                        kRgb,
                        kCmyk,
                        { "CMYK stored as YCCK", 4, { .from = 4, .to = 5 } },
                        { "progressive", 3, { .from = 2, .to = 3, .progressive = true } } };

// A slope with noise on it.
Samples NoisySlope(std::uint32_t width, std::uint32_t height, unsigned int components)
{
    Samples samples{ width, height, components, {} };
    std::mt19937 random(width + height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width * components; ++x)
            samples.numbers.push_back(
                static_cast<std::uint16_t>((x * 3 + y * 5 + random() % 32) % 256));
    return samples;
}

// A block of the side file: its first and its last byte in the JPEG.
struct Block {
    std::uint32_t first;
    std::uint32_t last;
};
constexpr std::size_t kBlocksPlace = 256;

// A JPEG that the command made, with its side file, and its pixels as libjpeg gives them.
struct JpegFolder : TemporaryFolder {
    JpegFolder(const Kind& kind, std::uint32_t width, std::uint32_t height)
    {
        WriteJpeg(*this / "source.jpg", NoisySlope(width, height, kind.components), kind.form);
        const Outcome outcome =
            RunCommand({ "import", *this / "source.jpg", "-o", jpeg, "--resolution", "10" });
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        whole = ReadJpeg(jpeg);
    }

    std::vector<Block> Blocks() const
    {
        const std::string bytes = ReadFile(side).substr(kBlocksPlace);
        std::vector<Block> blocks(bytes.size() / sizeof(Block));
        std::memcpy(blocks.data(), bytes.data(), blocks.size() * sizeof(Block));
        return blocks;
    }

    void PutBlocks(const std::vector<Block>& blocks) const
    {
        std::string bytes = ReadFile(side).substr(0, kBlocksPlace);
        bytes.append(reinterpret_cast<const char*>(blocks.data()), blocks.size() * sizeof(Block));
        WriteFile(side, bytes);
    }

    // Changes the bytes of a block.
    void Change(std::size_t block, const std::function<void(std::string& bytes)>& change) const
    {
        std::string file = ReadFile(jpeg);
        const Block place = Blocks().at(block);
        std::string bytes = file.substr(place.first, place.last - place.first + 1);
        change(bytes);
        WriteFile(jpeg, file.replace(place.first, bytes.size(), bytes));
    }

    std::string jpeg = *this / "a.jpg";
    std::string side = *this / "a.bin";
    Samples whole;
};

// The rows of one component.
std::string Plane(Samples samples, std::size_t component, std::uint32_t first, std::uint32_t end)
{
    std::string plane;
    for (std::uint32_t row = first; row < end; ++row)
        for (std::uint32_t column = 0; column < samples.width; ++column)
            plane += static_cast<char>(samples.At(column, row, component));
    return plane;
}

// What a screen shows: RGB and grey as they are, ink by the library's rule.
std::vector<std::uint8_t> Shown(const Samples& samples)
{
    std::vector<std::uint8_t> colours;
    const unsigned int components = samples.perPixel;
    for (std::size_t at = 0; at < samples.numbers.size(); at += components) {
        unsigned char pixel[4]{};
        for (std::size_t i = 0; i < 4; ++i)
            pixel[i] = static_cast<unsigned char>(samples.numbers[at + i % components]);
        const unsigned long ink = PictureFileInterface::CalculatePixelAsRGB(pixel);
        for (unsigned int i = 0; i < 3; ++i)
            colours.push_back(components == 4 ? static_cast<std::uint8_t>(ink >> 8U * i)
                                              : pixel[i]);
    }
    return colours;
}

std::string RowsOf(const JpegFolder& folder, const std::string& separation, const std::string& rows,
                   const std::string& resolution = {})
{
    std::vector<std::string> arguments{
        "rows", folder.jpeg, "--separation", separation, "--rows", rows, "-o", folder / "rows.raw"
    };
    if (!resolution.empty())
        arguments.insert(arguments.end(), { "--resolution", resolution });
    const Outcome outcome = RunCommand(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return ReadFile(folder / "rows.raw");
}

void ExpectExported(const JpegFolder& folder)
{
    const Outcome outcome = RunCommand({ "export", folder.jpeg, "-o", folder / "a.tif" });
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    Samples exported = ReadTiff(folder / "a.tif").samples;
    ASSERT_EQ(exported.perPixel, folder.whole.perPixel);
    if (exported.perPixel == 4) // ink in the TIFF
        for (std::uint16_t& sample : exported.numbers)
            sample = static_cast<std::uint16_t>(255 - sample);
    EXPECT_TRUE(exported.numbers == folder.whole.numbers);
}

void ExpectShown(const JpegFolder& folder)
{
    const Outcome outcome = RunCommand({ "preview", folder.jpeg, "-o", folder / "a.png" });
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(ReadPng(folder / "a.png").samples == Shown(folder.whole));
}

void ExpectPlates(const JpegFolder& folder)
{
    const unsigned int components = folder.whole.perPixel;
    for (unsigned int i = 0; i < components; ++i)
        EXPECT_TRUE(RowsOf(folder, components == 1 ? "black" : std::to_string(i), ":") ==
                    Plane(folder.whole, i, 0, folder.whole.height))
            << i;
}

void ExpectDecoded(const JpegFolder& folder)
{
    ExpectExported(folder);
    ExpectShown(folder);
    ExpectPlates(folder);
    EXPECT_EQ(RunCommand({ "check", folder.jpeg }).out, folder.jpeg + ": JPEG, valid\n");
}

TEST(JpegPicture, BandsHaveThePixelsOfTheWhole)
{
    constexpr struct {
        std::uint32_t width, height;
    } kSizes[] = { { 1, 1 }, { 8, 8 }, { 33, 20 } };
    for (const Kind& kind : kKinds)
        for (const auto& size : kSizes) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(size.width));
            const JpegFolder folder(kind, size.width, size.height);
            ExpectDecoded(folder);
        }
    ExpectDecoded(JpegFolder(kRgb, 1500, 1100)); // more than is decoded at a time
}

TEST(JpegPicture, CmykWithoutTheMarkOfAdobeIsInk)
{
    const JpegFolder folder(kCmyk, 33, 20);
    std::string file = ReadFile(folder.jpeg);
    file[file.find("\xFF\xEE") + 1] = '\xED';
    WriteFile(folder.jpeg, file);
    std::string expected = Plane(folder.whole, 3, 0, 20);
    for (char& byte : expected)
        byte = static_cast<char>(~byte);
    EXPECT_EQ(RowsOf(folder, "black", ":"), expected);
}

// Libjpeg takes no more rows than these at a time.
TEST(JpegPicture, AsManyRowsAsThereCanBeAreDecoded)
{
    const JpegFolder folder(kGrey, 9, 65500);
    EXPECT_TRUE(RowsOf(folder, "black", ":") == Plane(folder.whole, 0, 0, 65500));
    EXPECT_TRUE(RowsOf(folder, "black", "65497:") == Plane(folder.whole, 0, 65497, 65500));
}

TEST(JpegPicture, AnyRowsAreThoseOfTheWhole)
{
    const JpegFolder folder(kRgb, 33, 20);
    for (std::uint32_t first = 0; first < 20; ++first)
        for (const std::uint32_t end : { first + 1, std::min(first + 9, 20U), 20U })
            EXPECT_EQ(RowsOf(folder, "magenta", std::to_string(first) + ":" + std::to_string(end)),
                      Plane(folder.whole, 1, first, end))
                << first << ' ' << end;
}

TEST(JpegPicture, OnlyTheBandsOfTheRowsAreRead)
{
    const JpegFolder folder(kRgb, 33, 40);
    for (const std::size_t block : { 0U, 1U, 3U, 4U })
        folder.Change(block, [](std::string& bytes) { bytes.assign(bytes.size(), '\xFF'); });
    EXPECT_EQ(RowsOf(folder, "yellow", "17:23"), Plane(folder.whole, 2, 17, 23));
}

TEST(JpegPicture, RowsAreEnlargedAndReduced)
{
    const JpegFolder folder(kGrey, 33, 20);
    for (const double ratio : { 2.5, 0.5 }) {
        std::string expected;
        const auto width = static_cast<std::uint32_t>(std::lround(33 * ratio));
        for (std::uint32_t row = 0; row / ratio < 20; ++row)
            for (std::uint32_t column = 0; column < width; ++column)
                expected += static_cast<char>(
                    Samples(folder.whole)
                        .At(std::min<std::size_t>(static_cast<std::size_t>(column / ratio), 32),
                            static_cast<std::size_t>(row / ratio), 0));
        EXPECT_EQ(RowsOf(folder, "black", ":", std::to_string(10 * ratio)), expected) << ratio;
    }
}

// A fault of the band of rows 8 to 15 in a picture of three, and what is told of it.
struct Fault {
    const char* name;
    std::function<void(const JpegFolder&)> make;
    const char* told;
};
const Fault kFaults[] = {
    { "the band ends early",
      [](const JpegFolder& folder) {
          folder.Change(1, [](std::string& bytes) {
              bytes[bytes.size() / 2] = '\xFF';
              bytes[bytes.size() / 2 + 1] = '\xD9';
          });
      },
      "premature end of data segment" },
    { "the index gives half of the band",
      [](const JpegFolder& folder) {
          auto blocks = folder.Blocks();
          blocks[1].last -= (blocks[1].last - blocks[1].first) / 2;
          folder.PutBlocks(blocks);
      },
      "premature end of data segment" },
    { "the index gives the restart marker too",
      [](const JpegFolder& folder) {
          auto blocks = folder.Blocks();
          blocks[1].last += 2;
          folder.PutBlocks(blocks);
      },
      "goes on behind its last pixel" },
    { "the index gives two bands as one",
      [](const JpegFolder& folder) {
          auto blocks = folder.Blocks();
          blocks[1].last = blocks[2].last;
          folder.PutBlocks(blocks);
      },
      "goes on behind its last pixel" },
};

TEST(JpegPicture, ABadBandIsToldAndTheOthersAreGood)
{
    for (const Fault& fault : kFaults) {
        SCOPED_TRACE(fault.name);
        const JpegFolder folder(kRgb, 33, 24);
        fault.make(folder);
        for (const char* const command : { "preview", "export" }) {
            const std::string output =
                folder / (command == std::string("export") ? "o.tif" : "o.png");
            const Outcome outcome = RunCommand({ command, folder.jpeg, "-o", output });
            EXPECT_EQ(outcome.status, 1);
            EXPECT_THAT(outcome.err, HasSubstr("rows 8 to 15 of 24 can't be decoded: "));
            EXPECT_THAT(outcome.err, HasSubstr(fault.told));
            EXPECT_THAT(outcome.err, HasSubstr("tympan check"));
        }
        EXPECT_EQ(RowsOf(folder, "cyan", "0:8"), Plane(folder.whole, 0, 0, 8));
        EXPECT_EQ(RowsOf(folder, "cyan", "16:24"), Plane(folder.whole, 0, 16, 24));
        const Outcome checked = RunCommand({ "check", "--json-lines", folder.jpeg });
        EXPECT_EQ(checked.status, 1);
        const auto object = ParsedJson(checked.out);
        EXPECT_EQ(object.at("verdict"), "invalid");
        EXPECT_EQ(object.at("counts").at("TYM-BAND-0001"), 1) << checked.out;
        const auto& finding = object.at("findings").back();
        EXPECT_EQ(finding.at("row"), 8);
        EXPECT_EQ(finding.at("offset"), folder.Blocks()[1].first);
        EXPECT_THAT(std::string(finding.at("found")), HasSubstr(fault.told));
    }
}

// Each is a JPEG that the library opens, once it has a side file of one block.
TEST(JpegPicture, BandsThatDontStandByThemselvesAreRefused)
{
    const struct {
        const char* name;
        const char* told;
        std::uint32_t height;
        bool subsampled;
    } cases[] = { { "no restart markers", "no restart marker", 16, false },
                  { "subsampled", "subsampled", 8, true } };
    for (const auto& one : cases) {
        const JpegFolder folder(kRgb, 16, one.height); // for its side file
        std::string file = ReadFile(folder.jpeg);
        const std::size_t interval = file.find("\xFF\xDD");
        const std::size_t frame = file.find("\xFF\xC0");
        if (one.subsampled)
            file[frame + 11] = 0x22;
        else
            file[interval + 5] = 0;
        WriteFile(folder.jpeg, file);
        const Outcome outcome = RunCommand({ "preview", folder.jpeg, "-o", folder / "a.png" });
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr("can't be decoded one by one: ")) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr(one.told)) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr("tympan import")) << one.name;
        EXPECT_THAT(RunCommand({ "check", folder.jpeg }).out, HasSubstr(one.told)) << one.name;
    }
}

TEST(JpegPicture, InfoTellsTheIndex)
{
    const JpegFolder folder(kRgb, 60, 30);
    const auto info = [&] {
        const Outcome outcome = RunCommand({ "info", "--json", folder.jpeg });
        EXPECT_EQ(outcome.status, std::filesystem::exists(folder.side) ? 0 : 1);
        return ParsedJson(outcome.out).at(0);
    };
    const auto sound = info();
    EXPECT_EQ(sound.at("format"), "JPEG");
    EXPECT_EQ(sound.at("separations").dump(), R"(["cyan","magenta","yellow"])");
    EXPECT_EQ(sound.at("bits_per_sample"), 8);
    EXPECT_NEAR(sound.at("width_in").get<double>(), 6.0, 1e-6);
    EXPECT_NEAR(sound.at("height_in").get<double>(), 3.0, 1e-6);
    EXPECT_EQ(sound.at("blocks"), 4);
    EXPECT_EQ(sound.at("mcu_number"), 0);
    EXPECT_EQ(sound.at("index"), "ok");

    auto blocks = folder.Blocks();
    blocks.pop_back();
    folder.PutBlocks(blocks);
    EXPECT_EQ(info().at("index"), "bad");

    std::filesystem::remove(folder.side);
    const auto alone = info();
    EXPECT_EQ(alone.at("format"), "JPEG");
    EXPECT_EQ(alone.at("width"), 60);
    EXPECT_EQ(alone.at("height"), 30);
    EXPECT_TRUE(alone.at("width_in").is_null());
    EXPECT_EQ(alone.at("index"), "none");
    EXPECT_TRUE(alone.at("blocks").is_null());
    EXPECT_EQ(alone.at("code"), 90001);
    for (const char* const command : { "info", "check" })
        EXPECT_EQ(RunCommand({ command, folder.jpeg }).status, 1) << command;
    const Outcome outcome = RunCommand({ "export", folder.jpeg, "-o", folder / "a.tif" });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(".bin"));
    EXPECT_THAT(outcome.err, HasSubstr("tympan index"));
}

} // namespace
} // namespace tympan::test
