// `tympan import`: what ends an import, which is told and leaves nothing behind.
#include "tools/import_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

using ImportFailure = ImportRun;

constexpr char kRgbProfile[] = "/usr/share/color/icc/ghostscript/srgb.icc";

TEST_F(ImportFailure, RefusesWhatItCanNotTake)
{
    const auto bytes = [](const std::string& text) {
        return [=](const std::string& path) { WriteFile(path, text); };
    };
    const Maker png = Png(Rgb(), { kRgbPng });
    Samples floats{ kWidth, kHeight, 1, Numbers(std::size_t{ kWidth } * kHeight) };
    Samples fiveInks{ kWidth, kHeight, 5, Numbers(std::size_t{ kWidth } * kHeight * 5) };
    const ToldCase cases[] = {
        { "empty file", bytes(""), {}, "is empty" },
        { "a text", bytes("not a picture at all"), {}, "JPEG, PNG or TIFF" },
        { "the start of a PNG alone", bytes("\x89PNG\r\n\x1A\n"), {}, "ends too early" },
        { "the start of a TIFF alone", bytes(std::string("II*\0", 4)), {}, "TIFF" },
        { "the start of a JPEG alone", bytes("\xFF\xD8\xFF"), {}, "JPEG" },
        { "TIFF in Lab", Tiff(Rgb(), { kLab }), {}, "Lab" },
        { "TIFF with signs",
          Tiff(floats, { .as = kBlackIsZero, .bits = 16, .sampleFormat = SAMPLEFORMAT_INT }),
          {},
          "a sign" },
        { "TIFF of five inks",
          Tiff(fiveInks, { .as = kSeparated, .extra = kUnknownExtra }),
          {},
          "fifth channel" },
        { "TIFF of other inks",
          Tiff(Ink(), { .as = kSeparated, .inkSet = INKSET_MULTIINK }),
          {},
          "inks other than" },
        { "too small at its resolution", png, { "--resolution", "1000" }, "--resolution" },
        { "no such profile", png, { "--profile", "/nowhere/x.icc" }, "/nowhere/x.icc" },
        { "a profile that isn't one", png, { "--profile", "/proc/self/status" }, "profile" },
        { "an RGB profile", png, { "--profile", kRgbProfile }, "CMYK" },
    };
    for (const ToldCase& one : cases) {
        const Outcome outcome = Run(one.make, one.options);
        EXPECT_EQ(outcome.status, 1) << one.name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
    }
}

TEST_F(ImportFailure, TellsWhatToInstallWhereNoProfileIs)
{
    const char* const before = std::getenv("XDG_DATA_DIRS");
    const std::string saved = before != nullptr ? before : "";
    setenv("XDG_DATA_DIRS", folder_.Path().c_str(), 1);
    const Outcome outcome = Run(Png(Rgb(), { kRgbPng }));
    const Outcome ofInk = Run(Tiff(Ink(), { kSeparated }), { "--resolution", "100" });
    if (before != nullptr)
        setenv("XDG_DATA_DIRS", saved.c_str(), 1);
    else
        unsetenv("XDG_DATA_DIRS");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("libgs-common"));
    EXPECT_EQ(ofInk.status, 0) << "ink needs no profile: " << ofInk.err;
}

// Noise, so that every part of the file matters.
TEST_F(ImportFailure, EndsWhenThePictureIsCutShort)
{
    std::mt19937 random(3);
    Samples noise{ 90, 70, 3, Numbers(std::size_t{ 90 } * 70 * 3) };
    for (std::uint16_t& number : noise.numbers)
        number = static_cast<std::uint16_t>(random() % 256);
    const KindCase cases[] = {
        { "PNG", Png(noise, { kRgbPng }) },
        { "PNG, interlaced", Png(noise, { .as = kRgbPng, .interlaced = true }) },
        { "JPEG", Jpeg(noise, {}) },
        { "JPEG, progressive", Jpeg(noise, { .progressive = true }) },
        { "TIFF", Tiff(noise, { kRgb }) },
    };
    for (const KindCase& one : cases) {
        ASSERT_EQ(Run(one.make).status, 0) << one.name;
        std::filesystem::remove(ct_);
        const std::string whole = ReadFile(source_);
        for (const std::size_t tenth : { 1U, 3U, 5U, 7U, 9U }) {
            const std::string part = whole.substr(0, whole.size() * tenth / 10);
            const Outcome outcome = Run([&](const std::string& path) { WriteFile(path, part); });
            EXPECT_EQ(outcome.status, 1) << one.name << " cut at " << tenth << "/10";
            EXPECT_THAT(outcome.err, HasSubstr(source_)) << one.name;
            EXPECT_EQ(folder_.Entries(), 1U) << one.name << " left something";
        }
    }
}

// The sizes in the headers are changed to the largest ones; the data stays.
TEST_F(ImportFailure, TakesNoMemoryByTheClaimOfAHeader)
{
    struct ClaimCase {
        const char* name;
        Maker make;
        std::function<void(std::string& bytes)> claim;
    };
    const auto claimPng = [](std::string& bytes) {
        bytes.replace(16, 8, std::string("\x00\x0F\x42\x40\x00\x0F\x42\x40", 8));
        const auto* const header = reinterpret_cast<const Bytef*>(bytes.data() + 12);
        const unsigned long sum = crc32(crc32(0, nullptr, 0), header, 17);
        for (unsigned int i = 0; i < 4; ++i)
            bytes[29 + i] = static_cast<char>(sum >> (24U - 8U * i));
    };
    const auto claimJpeg = [](std::string& bytes) {
        const std::size_t frame = bytes.find("\xFF\xC2");
        ASSERT_NE(frame, std::string::npos);
        bytes.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
    };
    const ClaimCase cases[] = {
        { "PNG, interlaced", Png(Rgb(), { .as = kRgbPng, .interlaced = true }), claimPng },
        { "PNG", Png(Rgb(), { kRgbPng }), claimPng },
        { "JPEG, progressive", Jpeg(Rgb(), { .progressive = true }), claimJpeg },
    };
    for (const ClaimCase& one : cases) {
        one.make(source_);
        std::string bytes = ReadFile(source_);
        one.claim(bytes);
        WriteFile(source_, bytes);
        Limits limits;
#if !defined(TYMPAN_UNDER_SANITIZERS)
        limits.addressSpace = std::uint64_t{ 512 } << 20U;
#endif
        const Outcome outcome = RunCommand({ "import", source_, "-o", ct_ }, limits);
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_EQ(outcome.err.find("memory"), std::string::npos) << one.name << outcome.err;
        EXPECT_EQ(folder_.Entries(), 1U) << one.name;
    }
}

TEST_F(ImportFailure, KnowsWrongUsage)
{
    struct UsageCase {
        const char* name;
        std::vector<std::string> arguments;
        const char* text;
    };
    WritePng(source_, Rgb(), { kRgbPng });
    const UsageCase cases[] = {
        { "no output", { source_ }, "--output" },
        { "an ending that isn't written", { source_, "-o", folder_ / "out.tif" }, ".ct, .lw" },
        { "no ending", { source_, "-o", folder_ / "out" }, ".ct" },
        { "a resolution of 0", { source_, "-o", ct_, "--resolution", "0" }, "--resolution" },
        { "no number", { source_, "-o", ct_, "--resolution", "nan" }, "--resolution" },
    };
    for (const UsageCase& one : cases) {
        std::vector<std::string> arguments{ "import" };
        arguments.insert(arguments.end(), one.arguments.begin(), one.arguments.end());
        const Outcome outcome = RunCommand(arguments);
        EXPECT_EQ(outcome.status, 2) << one.name << ": " << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.text)) << one.name;
    }
}

TEST_F(ImportFailure, TellsWhichFileFailed)
{
    struct FileCase {
        const char* name;
        std::string picture, output;
        std::string told;
    };
    WritePng(source_, Rgb(), { kRgbPng });
    const std::string missing = folder_ / "missing.png";
    const std::string nowhere = folder_ / "none/out.ct";
    const FileCase cases[] = {
        { "no such picture", missing, ct_, missing },
        { "a folder as picture", folder_.Path().string(), ct_, folder_.Path().string() },
        { "no such folder", source_, nowhere, nowhere },
    };
    for (const FileCase& one : cases) {
        const Outcome outcome =
            RunCommand({ "import", one.picture, "-o", one.output, "--resolution", "100" });
        EXPECT_EQ(outcome.status, 1) << one.name;
        EXPECT_THAT(outcome.err, HasSubstr("tympan: " + one.told + ": ")) << one.name;
    }
}

TEST_F(ImportFailure, LeavesTheOldFileWhenTheDiskIsFull)
{
    WriteFile(ct_, "as it was");
    WritePng(source_, Rgb(), { kRgbPng });
    Limits limits;
    limits.fileSize = 4000;
    const Outcome outcome =
        RunCommand({ "import", source_, "-o", ct_, "--resolution", "100" }, limits);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tympan: " + ct_ + ": "));
    EXPECT_EQ(ReadFile(ct_), "as it was");
    EXPECT_EQ(folder_.Entries(), 2U);
}

} // namespace
} // namespace tympan::test
