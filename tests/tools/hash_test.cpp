// `tympan hash`: its sums are held against those that OpenSSL makes of samples known beforehand, by
// the definition in docs/canonical-samples.md, and against the same pixels in other formats.
#include "support/temporary_folder.h"
#include "support/tiff_it_samples.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"
#include "tools/refusals.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

constexpr std::uint32_t kWidth = 83;
constexpr std::uint32_t kHeight = 61;

using Plates = std::map<std::string, std::string>; // the samples by canonical name

std::string Sha256Of(const std::string& text)
{
    std::array<unsigned char, 32> sum{};
    EVP_Digest(text.data(), text.size(), sum.data(), nullptr, EVP_sha256(), nullptr);
    std::string hex;
    for (const unsigned char byte : sum) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        hex += digits.data();
    }
    return hex;
}

// What the command must tell of a picture of these samples.
ordered_json SumsOf(const Plates& plates, std::uint32_t width = kWidth,
                    std::uint32_t height = kHeight)
{
    const std::string size = std::to_string(width) + " " + std::to_string(height) + "\n";
    std::string text = "tympan-picture-1 " + size;
    ordered_json separations = ordered_json::array();
    for (const auto& [name, samples] : plates) { // a map is in order
        const std::string sum =
            Sha256Of(std::string("tympan-separation-1 ").append(size + samples));
        text.append(sum).append(" ").append(name).append("\n");
        separations.push_back({ { "name", name }, { "sha256", sum } });
    }
    return { { "width", width },
             { "height", height },
             { "sha256", Sha256Of(text) },
             { "separations", separations } };
}

// What it tells.
ordered_json Hashed(const std::string& file, const TemporaryFolder& folder)
{
    const Outcome outcome = RunWords("hash --json @" + file, folder);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    ordered_json told = outcome.status == 0 ? ParsedJson(outcome.out).at(0) : "none";
    told.erase("file");
    return told;
}

Plates PlatesOfCt(const CtPicture& picture)
{
    constexpr std::array kNames{ "cyan", "magenta", "yellow", "black" };
    Plates plates;
    for (std::uint32_t plate = 0; plate < picture.separations; ++plate)
        for (std::uint32_t row = 0; row < picture.height; ++row)
            plates[picture.separations == 1 ? "single" : kNames[plate]] += picture.Row(row, plate);
    return plates;
}

TEST(Hash, SumsTheSamplesOfCtAndLineWork)
{
    for (const std::uint32_t separations : { 1U, 4U }) {
        const CtPicture picture = RandomCt(kWidth, kHeight, separations);
        EXPECT_EQ(Hashed("a.ct", CtFolder(picture)), SumsOf(PlatesOfCt(picture)));
    }
    const CtPicture large = RandomCt(1500, 1100); // several bands
    EXPECT_EQ(Hashed("a.ct", CtFolder(large)), SumsOf(PlatesOfCt(large), 1500, 1100));
    const LwPicture lineWork = RandomLw(kWidth, kHeight);
    EXPECT_EQ(Hashed("a.lw", LwFolder(lineWork)), SumsOf(PlatesOfCt(PlatesOf(AsLoaded(lineWork)))));
}

struct TiffCase {
    const char* name;
    TiffForm (*form)();
    unsigned int samples;
    bool isTurned;                  // 255 of a plate is 0 in the file
    std::vector<std::string> names; // in the order of the file
};
const TiffCase kTiffs[] = {
    { "CMYK",
      [] { return TiffForm{ .as = kSeparated }; },
      4,
      true,
      { "cyan", "magenta", "yellow", "black" } },
    { "CMYK in planes, high byte first",
      [] { return TiffForm{ .as = kSeparated, .planes = true, .packed = kDeflate, .mode = "wb" }; },
      4,
      true,
      { "cyan", "magenta", "yellow", "black" } },
    { "four inks and an alpha",
      [] { return TiffForm{ .as = kSeparated, .extra = kAlpha }; },
      5,
      true,
      { "cyan", "magenta", "yellow", "black", "alpha 5" } },
    { "six inks",
      [] { return TiffForm{ .as = kSeparated, .inkSet = INKSET_MULTIINK }; },
      6,
      true,
      { "cyan", "magenta", "yellow", "black", "ink 5", "ink 6" } },
    { "RGB", [] { return TiffForm{ .as = kRgb }; }, 3, false, { "red", "green", "blue" } },
    { "YCbCr", [] { return TiffForm{ .as = kYCbCr }; }, 3, false, { "y", "cb", "cr" } },
    { "grey", [] { return TiffForm{ .as = kBlackIsZero }; }, 1, false, { "single" } },
    { "inverse grey", [] { return TiffForm{ .as = kWhiteIsZero }; }, 1, true, { "single" } },
    { "bits", [] { return TiffForm{ .as = kWhiteIsZero, .bits = 1 }; }, 1, true, { "single" } },
};

Samples RandomSamples(unsigned int perPixel, int bits = 8)
{
    Samples samples{ kWidth, kHeight, perPixel, {} };
    std::mt19937 random(perPixel);
    for (std::size_t i = 0; i < std::size_t{ kWidth } * kHeight * perPixel; ++i)
        samples.numbers.push_back(static_cast<std::uint16_t>(random() % (1U << unsigned(bits))));
    return samples;
}

TEST(Hash, SumsTheSamplesOfTiff)
{
    for (const TiffCase& one : kTiffs) {
        SCOPED_TRACE(one.name);
        const TemporaryFolder folder;
        const TiffForm form = one.form();
        const Samples samples = RandomSamples(one.samples, form.bits);
        WriteTiff(folder / "a.tif", samples, form);
        Plates plates;
        for (std::size_t i = 0; i < samples.numbers.size(); ++i) {
            const int level = samples.numbers[i] * 255 / ((1 << form.bits) - 1);
            plates[one.names[i % one.samples]] +=
                static_cast<char>(one.isTurned ? 255 - level : level);
        }
        EXPECT_EQ(Hashed("a.tif", folder), SumsOf(plates));
    }
}

// ---- the same pixels in two files

struct TwinCase {
    const char* name;
    const char* source;
    std::vector<const char*> makes; // the other, "b.*", of the source
    const char* twin;
};
const TwinCase kTwins[] = {
    { "CT and its TIFF", "cmyk.ct", { "export @cmyk.ct -o @b.tif" }, "b.tif" },
    { "CT of one plate and its grey TIFF", "grey.ct", { "export @grey.ct -o @b.tif" }, "b.tif" },
    { "line work without transparent colours and the CT of its TIFF",
      "map.lw",
      { "export @map.lw -o @x.tif", "import @x.tif -o @b.ct" },
      "b.ct" },
    { "JPEG of CMYK and the CT of its TIFF",
      "cmyk.jpg",
      { "export @cmyk.jpg -o @x.tif", "import @x.tif -o @b.ct" },
      "b.ct" },
    { "JPEG of RGB and its TIFF", "rgb.jpg", { "export @rgb.jpg -o @b.tif" }, "b.tif" },
    { "grey JPEG and its TIFF", "grey.jpg", { "export @grey.jpg -o @b.tif" }, "b.tif" },
    { "TIFF of a palette and its RGB TIFF",
      "palette.tif",
      { "export @palette.tif -o @b.tif" },
      "b.tif" },
    { "bits and their grey TIFF", "bits.tif", { "export @bits.tif -o @b.tif" }, "b.tif" },
};

// A folder with the sources.
struct TwinFolder : TemporaryFolder {
    TwinFolder()
    {
        WriteFile(*this / "cmyk.ct", RandomCt(kWidth, kHeight).File());
        WriteFile(*this / "grey.ct", RandomCt(kWidth, kHeight, 1).File());
        LwPicture map = RandomLw(kWidth, kHeight);
        for (LwColour& colour : map.colours)
            colour.flags = 0;
        WriteFile(*this / "map.lw", std::string(AsText(map.Bytes())));
        WriteTiff(*this / "rgb.tif", RandomSamples(3), { .as = kRgb });
        TiffForm palette{ .as = kPalette };
        for (std::uint32_t colour = 0; colour < 256; ++colour)
            palette.palette.push_back(0xFFFFFFU - colour * 0x010203U);
        WriteTiff(*this / "palette.tif", RandomSamples(1), palette);
        WriteTiff(*this / "bits.tif", RandomSamples(1, 1), { .as = kWhiteIsZero, .bits = 1 });
        WriteTiff(*this / "ink.tif", RandomSamples(4), { .as = kSeparated });
        WriteTiff(*this / "grey.tif", RandomSamples(1), { .as = kBlackIsZero });
        for (const char* const made :
             { "import @ink.tif -o @cmyk.jpg", "import @rgb.tif -o @rgb.jpg",
               "import @grey.tif -o @grey.jpg" })
            EXPECT_EQ(RunWords(made, *this).status, 0) << made;
    }
};

TEST(Hash, IsTheSameForTheSamePixelsInOtherFormats)
{
    const TwinFolder folder;
    for (const TwinCase& one : kTwins) {
        SCOPED_TRACE(one.name);
        for (const char* const made : one.makes)
            ASSERT_EQ(RunWords(made, folder).status, 0) << made;
        EXPECT_EQ(Hashed(one.twin, folder), Hashed(one.source, folder));
        EXPECT_EQ(RunWords(std::string("diff @") + one.source + " @" + one.twin, folder).status, 0);
        std::filesystem::remove(folder / one.twin);
    }
}

TEST(Hash, TellsOtherPicturesApart)
{
    CtPicture picture = RandomCt(6, 4);
    const ordered_json sums = Hashed("a.ct", CtFolder(picture));
    const auto differing = [&](const CtPicture& other) { // separations, by their number
        const ordered_json others = Hashed("a.ct", CtFolder(other));
        EXPECT_NE(others.at("sha256"), sums.at("sha256"));
        int count = 0;
        for (std::size_t i = 0; i < 4; ++i)
            count += others.at("separations")[i] != sums.at("separations")[i] ? 1 : 0;
        return count;
    };
    CtPicture changed = picture;
    changed.bytes.back() ^= 1U;
    EXPECT_EQ(differing(changed), 1) << "one sample";
    CtPicture turned = picture;
    std::swap(turned.width, turned.height);
    EXPECT_EQ(differing(turned), 4) << "other rows of the same bytes";
    CtPicture swapped = picture;
    for (std::size_t row = 0; row < 4; ++row)
        std::swap_ranges(swapped.bytes.begin() + static_cast<std::ptrdiff_t>(row * 24),
                         swapped.bytes.begin() + static_cast<std::ptrdiff_t>(row * 24 + 6),
                         swapped.bytes.begin() + static_cast<std::ptrdiff_t>(row * 24 + 6));
    EXPECT_EQ(differing(swapped), 2) << "cyan and magenta swapped";
}

// ---- the guide

std::string Guide()
{
    return ReadFile(TYMPAN_DOCS "/canonical-samples.md");
}

TEST(Hash, CanBeMadeByHandAsTheGuideTells)
{
    const TemporaryFolder folder;
    WriteFile(folder / "photo.ct", RandomCt(kWidth, kHeight).File());
    const std::string guide = Guide();
    const std::size_t first = guide.find("```sh\n") + 6;
    const std::string script = guide.substr(first, guide.find("```", first) - first);
    const std::string enter =
        "cd '" + folder.Path().string() +
        "'\nPATH=" + std::filesystem::path(CommandPath()).parent_path().string() + ":$PATH\n";
    const Outcome byHand = RunProgram("sh", { "-c", enter + script });
    const ordered_json told = Hashed("photo.ct", folder);
    std::string expected;
    for (const ordered_json& separation : told.at("separations"))
        expected += separation.at("sha256").get<std::string>() + " " +
                    separation.at("name").get<std::string>() + "\n";
    EXPECT_EQ(byHand.out, expected + told.at("sha256").get<std::string>() + "\n") << byHand.err;
}

TEST(Hash, IsThatOfTheGuidesPicture)
{
    CtPicture picture{ 2, 1, 4, 300.0, 300.0, { 0, 1, 128, 129, 255, 255, 255, 254 } };
    const CtFolder folder(picture);
    const Outcome outcome = RunWords("hash @a.ct", folder);
    std::string expected = (folder / "a.ct") + ": 2 x 1 pixels\n";
    const ordered_json told = Hashed("a.ct", folder);
    const std::string guide = Guide();
    EXPECT_THAT(guide, HasSubstr("| all | | `" + told.at("sha256").get<std::string>() + "` |"));
    for (const ordered_json& separation : told.at("separations"))
        EXPECT_THAT(guide, HasSubstr(separation.at("sha256").get<std::string>()));
    EXPECT_THAT(outcome.out,
                testing::StartsWith(expected + "  picture  " +
                                    told.at("sha256").get<std::string>() + "\n  black    "));
}

// ---- what can't be hashed

TEST(Hash, RefusesWhatGivesNoRowsOrHasLostSome)
{
    const CtFolder folder(RandomCt(400, 300));
    const std::string ct = ReadFile(folder / "a.ct");
    WriteFile(folder / "cut.ct", ct.substr(0, ct.size() / 2));
    TiffItSample continuous = CtSample(7, 5);
    continuous.data.resize(std::size_t{ 7 } * 5 * 4);
    WriteFile(folder / "it.tif", std::string(AsText(continuous.Bytes())));
    ASSERT_EQ(RunWords("page @job.pg --size 2x2 --resolution 300 --place @a.ct@0,0", folder).status,
              0);
    const RefusalCase cases[] = {
        { "hash @it.tif --as tiffit", 1, "gives no rows" },
        { "hash @job.pg", 1, "gives no rows" },
        { "hash @cut.ct", 1, "is the first that is missing" },
        { "hash @none.ct", 1, "No such file" },
        { "hash @a.ct --as tiff", 1, "a.ct" },
        { "hash", 2, "FILE" },
    };
    ExpectRefused(cases, folder);
    EXPECT_EQ(Hashed("it.tif", folder).at("width"), 7) << "it opens as a TIFF too";
}

} // namespace
} // namespace tympan::test
