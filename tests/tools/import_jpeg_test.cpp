// `tympan import` to JPEG files whose bands can be read one by one, and `tympan index` of such files.
#include "support/temporary_folder.h"
#include "tools/command_runner.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// Waves and edges, so that blocks have coefficients of all kinds, and noise in one corner.
Samples Picture(std::uint32_t width, std::uint32_t height, unsigned int perPixel)
{
    Samples samples{ width, height, perPixel, {} };
    std::uint32_t noise = 1;
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
            for (unsigned int i = 0; i < perPixel; ++i) {
                noise = noise * 1664525U + 1013904223U;
                const double wave =
                    128 + 90 * std::sin(0.11 * x + i) * std::cos(0.07 * y * (i + 1));
                const bool isEdge = (x / 12 + y / 20) % 5 == i;
                const bool isNoisy = x < 16 && y < 16;
                samples.numbers.push_back(
                    static_cast<std::uint16_t>(isNoisy  ? noise >> 24U
                                               : isEdge ? 250
                                                        : static_cast<unsigned int>(wave)));
            }
    return samples;
}

// ---- JPEG files by libjpeg

class CloseJpeg {
  public:
    void operator()(jpeg_decompress_struct* jpeg) const
    {
        jpeg_destroy_decompress(jpeg);
        delete jpeg;
    }
};

/// What a block stands for: its coefficients times their steps, of all components in turn.
std::vector<int> CoefficientsOf(const std::string& path)
{
    jpeg_error_mgr errors{};
    const std::unique_ptr<jpeg_decompress_struct, CloseJpeg> jpeg(new jpeg_decompress_struct{});
    jpeg->err = jpeg_std_error(&errors);
    jpeg_create_decompress(jpeg.get());
    const std::string bytes = ReadFile(path);
    jpeg_mem_src(jpeg.get(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_read_header(jpeg.get(), TRUE);
    jvirt_barray_ptr* const arrays = jpeg_read_coefficients(jpeg.get());
    std::vector<int> all;
    for (int i = 0; i < jpeg->num_components; ++i) {
        const jpeg_component_info& component = jpeg->comp_info[i];
        for (JDIMENSION row = 0; row < (jpeg->image_height + 7) / 8; ++row) {
            const JBLOCKARRAY blocks = (*jpeg->mem->access_virt_barray)(
                reinterpret_cast<j_common_ptr>(jpeg.get()), arrays[i], row, 1, FALSE);
            for (JDIMENSION block = 0; block < (jpeg->image_width + 7) / 8; ++block)
                for (std::size_t k = 0; k < DCTSIZE2; ++k)
                    all.push_back(blocks[0][block][k] * component.quant_table->quantval[k]);
        }
    }
    return all;
}

/// Markers and, in brackets, the first byte of each table, up to the scan.
std::string HeadOf(const std::string& bytes)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes.at(at)); };
    std::string head;
    for (std::size_t at = 2; head.empty() || !head.ends_with("DA ");) {
        const std::size_t end = at + 2 + std::size_t{ byte(at + 2) } * 256U + byte(at + 3);
        char text[8];
        std::snprintf(text, sizeof text, "%02X", byte(at + 1));
        head += text;
        for (std::size_t table = at + 4; byte(at + 1) == 0xDB && table < end; table += 65)
            head.append("[").append(std::to_string(byte(table))).append("]");
        for (std::size_t table = at + 4; byte(at + 1) == 0xC4 && table < end;) {
            head.append("[").append(std::to_string(byte(table))).append("]");
            std::size_t bytesOfTable = 17;
            for (std::size_t i = 1; i <= 16; ++i)
                bytesOfTable += byte(table + i);
            table += bytesOfTable;
        }
        head += ' ';
        at = end;
    }
    return head;
}

// ---- the files that are made

class ImportJpeg : public testing::Test {
  protected:
    Outcome Import(const std::vector<std::string>& options = {})
    {
        std::vector<std::string> arguments{ "import", source_, "-o", out_ };
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunCommand(arguments);
    }

    // The command has decoded every band by itself already; here it is what stands between them.
    void ExpectIndexedAgain()
    {
        const std::string index = ReadFile(side_);
        std::filesystem::remove(side_);
        const Outcome outcome = RunCommand({ "index", out_ });
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_TRUE(ReadFile(side_) == index);
        const auto place = [&](std::size_t at) {
            unsigned int number = 0;
            for (std::size_t i = 4; i-- > 0;)
                number = number << 8U | static_cast<unsigned char>(index.at(at + i));
            return std::size_t{ number };
        };
        const std::string bytes = ReadFile(out_);
        std::size_t bands = 0;
        for (std::size_t at = 256; at < index.size(); at += 8, ++bands) {
            const bool isLast = at + 8 == index.size();
            const char marker = static_cast<char>(isLast ? 0xD9 : 0xD0 + bands % 8);
            EXPECT_EQ(bytes.substr(place(at + 4) + 1, 2), std::string("\xFF") + marker);
            EXPECT_TRUE(isLast || place(at + 8) == place(at + 4) + 3);
        }
        EXPECT_EQ(bands, (ReadJpeg(out_).height + 7) / 8);
    }

    TemporaryFolder folder_;
    std::string source_ = folder_ / "picture";
    std::string out_ = folder_ / "out.jpg";
    std::string side_ = folder_ / "out.bin";
};

using Change = void (*)(jpeg_compress_struct& jpeg);

void ThreeTables(jpeg_compress_struct& jpeg)
{
    jpeg_set_quality(&jpeg, 70, TRUE);
    std::array<unsigned int, DCTSIZE2> steps{};
    steps.fill(6);
    jpeg_add_quant_table(&jpeg, 2, steps.data(), 100, TRUE);
    jpeg.comp_info[2].quant_tbl_no = 2;
}

void BlackAsFirst(jpeg_compress_struct& jpeg) // as libjpeg itself has it
{
    jpeg_set_quality(&jpeg, 80, TRUE);
    jpeg.comp_info[3].quant_tbl_no = 0;
}

void Doubled(jpeg_compress_struct& jpeg)
{
    for (int i = 0; i < jpeg.num_components; ++i)
        jpeg.comp_info[i].v_samp_factor = 2;
}

void WideSteps(jpeg_compress_struct& jpeg)
{
    jpeg_set_quality(&jpeg, 1, FALSE); // up to 6050, which a baseline file has no bytes for
}

void Smoothly(jpeg_compress_struct& jpeg)
{
    jpeg.optimize_coding = TRUE;
    jpeg.restart_interval = 5;
}

void Subsampled(jpeg_compress_struct& jpeg)
{
    jpeg.comp_info[0].h_samp_factor = 2;
}

void InThreeScans(jpeg_compress_struct& jpeg)
{
    static constexpr jpeg_scan_info kScans[] = { { 1, { 0 }, 0, 63, 0, 0 },
                                                 { 1, { 1 }, 0, 63, 0, 0 },
                                                 { 1, { 2 }, 0, 63, 0, 0 } };
    jpeg.scan_info = kScans;
    jpeg.num_scans = 3;
}

const JpegForm kGrey{ .from = JCS_GRAYSCALE, .to = JCS_GRAYSCALE };
const JpegForm kYcc{};
const JpegForm kCmyk{ .from = JCS_CMYK, .to = JCS_CMYK };
const JpegForm kYcck{ .from = JCS_CMYK, .to = JCS_YCCK };

JpegForm With(JpegForm form, Change change, bool progressive = false)
{
    form.change = change;
    form.progressive = progressive;
    return form;
}

constexpr char kOneTable[] = "E0 DB[0] C0 C4[0] C4[16] DD DA ";
constexpr char kTwoTables[] = "E0 DB[0][1] C0 C4[0][1] C4[16][17] DD DA ";
constexpr char kInkOneTable[] = "E0 EE DB[0] C0 C4[0] C4[16] DD DA ";
constexpr char kInkTwoTables[] = "E0 EE DB[0][1] C0 C4[0][1] C4[16][17] DD DA ";

struct CopyCase {
    const char* name = nullptr;
    std::uint32_t width = 0, height = 0;
    unsigned int components = 0;
    JpegForm form;
    const char* head = nullptr;
};

TEST_F(ImportJpeg, KeepsEveryCoefficientWhereNothingIsSubsampled)
{
    const CopyCase cases[] = {
        { "grey", 47, 31, 1, kGrey, kOneTable },
        { "grey, progressive, one pixel", 1, 1, 1, With(kGrey, nullptr, true), kOneTable },
        { "grey of sampling 1 x 2", 30, 41, 1, With(kGrey, Doubled), kOneTable },
        { "YCbCr", 16, 16, 3, With(kYcc, [](auto& jpeg) { jpeg_set_quality(&jpeg, 75, TRUE); }),
          kTwoTables },
        { "YCbCr of one table", 100, 75, 3, kYcc, kOneTable },
        { "YCbCr, all of sampling 1 x 2", 47, 35, 3, With(kYcc, Doubled), kOneTable },
        { "YCbCr, progressive", 47, 129, 3, With(kYcc, nullptr, true), kOneTable },
        { "YCbCr in three scans", 47, 31, 3, With(kYcc, InThreeScans), kOneTable },
        { "YCbCr of three tables", 64, 31, 3, With(kYcc, ThreeTables), kTwoTables },
        { "YCbCr with tables and restarts of its own", 47, 31, 3, With(kYcc, Smoothly), kOneTable },
        { "YCbCr of steps above 255", 47, 31, 3, With(kYcc, WideSteps), kOneTable },
        { "a row of 255 blocks", 2040, 17, 3, kYcc, kOneTable },
        { "CMYK", 47, 31, 4, kCmyk, kInkOneTable },
        { "YCCK, black on table 0", 47, 90, 4, With(kYcck, BlackAsFirst), kInkTwoTables },
        { "YCCK, progressive", 90, 47, 4, With(kYcck, BlackAsFirst, true), kInkTwoTables },
    };
    for (const CopyCase& one : cases) {
        SCOPED_TRACE(one.name);
        WriteJpeg(source_, Picture(one.width, one.height, one.components), one.form);
        const Outcome outcome = Import({ "--resolution", "10" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        EXPECT_TRUE(CoefficientsOf(out_) == CoefficientsOf(source_));
        EXPECT_TRUE(ReadJpeg(out_).numbers == ReadJpeg(source_).numbers);
        EXPECT_EQ(HeadOf(ReadFile(out_)), one.head);
        ExpectIndexedAgain();
    }
}

Samples Inverted(Samples samples)
{
    for (std::uint16_t& number : samples.numbers)
        number = static_cast<std::uint16_t>(255 - number);
    return samples;
}

double MeanDifference(const Samples& one, const Samples& other)
{
    EXPECT_EQ(one.numbers.size(), other.numbers.size());
    double sum = 0;
    for (std::size_t i = 0; i < std::min(one.numbers.size(), other.numbers.size()); ++i)
        sum += std::abs(one.numbers[i] - other.numbers[i]);
    return sum / static_cast<double>(one.numbers.size());
}

void LargeSteps(jpeg_compress_struct& jpeg)
{
    std::array<unsigned int, DCTSIZE2> steps{};
    steps.fill(260); // 4 of them are 1040, and a baseline file's largest coefficient is 1023
    jpeg_add_quant_table(&jpeg, 1, steps.data(), 100, FALSE);
}

// Blue beside yellow.
Samples HalfBlocks()
{
    Samples samples{ 32, 32, 3, std::vector<std::uint16_t>(std::size_t{ 3 } * 32 * 32) };
    for (std::uint32_t x = 0; x < 32; ++x)
        for (std::uint32_t y = 0; y < 32; ++y)
            for (std::size_t i = 0; i < 3; ++i)
                samples.At(x, y, i) = (x % 8 < 4) == (i == 2) ? 255 : 0;
    return samples;
}

struct AnewCase {
    const char* name = nullptr;
    Samples samples;
    JpegForm form;
    const char* told = nullptr;
    bool isInverted = false;
};

TEST_F(ImportJpeg, EncodesAnewAndTellsWhyWhereItHasTo)
{
    JpegForm unmarked = kCmyk;
    unmarked.adobe = false;
    const AnewCase cases[] = {
        { "subsampled", Picture(47, 31, 3), With(kYcc, Subsampled), "subsampled" },
        { "RGB", Picture(47, 31, 3), { .from = JCS_RGB, .to = JCS_RGB, .exif = "x" }, "it is RGB" },
        { "unmarked CMYK", Picture(47, 31, 4), unmarked, "without Adobe's mark", true },
        { "large coefficients", HalfBlocks(), With(kYcc, LargeSteps), "too large" },
    };
    for (const AnewCase& one : cases) {
        SCOPED_TRACE(one.name);
        WriteJpeg(source_, one.samples, one.form);
        const Outcome outcome = Import({ "--resolution", "10", "--quality", "100" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr("decoded and encoded anew"));
        EXPECT_THAT(outcome.err, HasSubstr(one.told));
        const Samples before = ReadJpeg(source_);
        EXPECT_LT(MeanDifference(ReadJpeg(out_), one.isInverted ? Inverted(before) : before), 2.0);
        ExpectIndexedAgain();
    }
}

struct KindCase {
    const char* name = nullptr;
    Samples stored, meant;
    int colourType = 0; ///< of a PNG; below 0 for a TIFF
};

TEST_F(ImportJpeg, TakesPicturesOfAllKinds)
{
    const Samples grey = Picture(47, 31, 1), rgb = Picture(33, 40, 3), ink = Picture(47, 31, 4);
    const Samples index{ 9, 9, 1, std::vector<std::uint16_t>(81, 1) };
    const KindCase cases[] = {
        { "grey PNG", grey, grey, PNG_COLOR_TYPE_GRAY },
        { "RGB PNG", rgb, rgb, PNG_COLOR_TYPE_RGB },
        { "palette PNG",
          index,
          { 9, 9, 3, std::vector<std::uint16_t>(243, 0x66) },
          PNG_COLOR_TYPE_PALETTE },
        { "CMYK TIFF", ink, Inverted(ink), -1 },
    };
    for (const KindCase& one : cases) {
        SCOPED_TRACE(one.name);
        PngForm png{ one.colourType };
        if (one.colourType == PNG_COLOR_TYPE_PALETTE)
            png.palette = { 0, 0x666666 };
        if (one.colourType < 0)
            WriteTiff(source_, one.stored, { kSeparated });
        else
            WritePng(source_, one.stored, png);
        const Outcome outcome = Import({ "--resolution", "10", "--quality", "100" });
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        EXPECT_LT(MeanDifference(ReadJpeg(out_), one.meant), 1.5);
        ExpectIndexedAgain();
    }
    WritePng(source_, Picture(100, 100, 3), { PNG_COLOR_TYPE_RGB });
    const auto bytesAt = [&](const char* quality) {
        EXPECT_EQ(Import({ "--quality", quality }).status, 0);
        return ReadFile(out_).size();
    };
    EXPECT_LT(bytesAt("10") * 2, bytesAt("92"));
}

// ---- what else a head tells

TEST_F(ImportJpeg, KeepsResolutionAndProfileAndTellsWhatItLeavesOut)
{
    const std::string profile(100'000, '\xDB'); // of two segments
    JpegForm form = With(kYcc, [](jpeg_compress_struct& jpeg) {
        jpeg.density_unit = 2;
        jpeg.X_density = 118;
        jpeg.Y_density = 59;
    });
    WriteJpeg(source_, Picture(472, 472, 3), form);
    std::string bytes = ReadFile(source_);
    std::string segments;
    for (const char number : { '\1', '\2' }) {
        const std::string part = profile.substr(0, 50'000);
        const std::size_t length = part.size() + 16;
        segments +=
            { '\xFF', '\xE2', static_cast<char>(length / 256), static_cast<char>(length % 256) };
        segments += std::string("ICC_PROFILE\0", 12) + number + '\2' + part;
    }
    const std::string exif("\xFF\xE1\0\x08"
                           "Exif\0\0",
                           10);
    WriteFile(source_, bytes.insert(20, segments + exif));

    const Outcome outcome = Import({ "--quality", "50", "--profile", "none" });
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("Exif data is left out"));
    EXPECT_THAT(outcome.err, HasSubstr("--quality has no effect"));
    EXPECT_THAT(outcome.err, HasSubstr("--profile has no effect"));
    const std::string written = ReadFile(out_);
    EXPECT_THAT(written.substr(11), StartsWith(std::string("\1\1\2\0\x76\0\x3B", 7)));
    EXPECT_EQ(HeadOf(written), "E0 DB[0] C0 C4[0] C4[16] E2 E2 DD DA ");
    EXPECT_THAT(written, HasSubstr(profile.substr(0, 60'000)));
    EXPECT_EQ(ReadFile(side_).substr(0, 29),
              "\1"
              "+.31496062E+01"
              "+.15748031E+01"); // 472 pixels, 59 and 118 a centimetre
    ExpectIndexedAgain();
}

TEST_F(ImportJpeg, WritesNoDensityThatLooksLikeAMarker)
{
    JpegForm form = kGrey;
    form.unit = 1;
    form.x = 0xFFDB;
    form.y = 0xFFDB;
    WriteJpeg(source_, Picture(16, 16, 1), form);
    const Outcome refused = Import();
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("--resolution"));
    form.y = 10;
    WriteJpeg(source_, Picture(6560, 9, 1), form);
    const Outcome outcome = Import();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(RunCommand({ "info", out_ }).out, HasSubstr("65499"));
}

// ---- refusals

std::string Replaced(std::string bytes, const std::string& what, const std::string& by)
{
    const std::size_t at = bytes.find(what);
    EXPECT_NE(at, std::string::npos);
    return bytes.replace(at, what.size(), by);
}

TEST_F(ImportJpeg, LeavesWhatIsThereWhenItRefuses)
{
    const std::string lineWork = std::string("123456").append(94, '\0');
    WriteJpeg(source_, Picture(47, 31, 3), With(kYcc, Smoothly));
    const std::string whole = ReadFile(source_);
    struct Refusal {
        const char* name;
        std::string source;
        std::string side;
        std::vector<std::string> options;
        int status;
        const char* told;
    };
    const Refusal refusals[] = {
        { "line work's side file", whole, lineWork, {}, 1, "no side file of a JPEG" },
        { "cut short", whole.substr(0, whole.size() / 2), "", {}, 1, "cut short" },
        { "a restart marker out of turn",
          Replaced(whole, "\xFF\xD1", "\xFF\xD5"),
          "",
          {},
          1,
          "Corrupt JPEG data" },
        { "quality of nothing", whole, "", { "--quality", "0" }, 2, "--quality" },
    };
    for (const Refusal& one : refusals) {
        SCOPED_TRACE(one.name);
        WriteFile(source_, one.source);
        WriteFile(out_, "old");
        WriteFile(side_, one.side);
        const Outcome outcome = Import(one.options);
        EXPECT_EQ(outcome.status, one.status) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(one.told));
        EXPECT_EQ(ReadFile(out_), "old");
        EXPECT_EQ(ReadFile(side_), one.side);
        EXPECT_EQ(folder_.Entries(), 3U);
    }
    WritePng(source_, { 65501, 1, 1, std::vector<std::uint16_t>(65501) }, { PNG_COLOR_TYPE_GRAY });
    EXPECT_THAT(Import({ "--resolution", "1" }).err, HasSubstr("room for 65500"));
    out_ = folder_ / "out.ct";
    EXPECT_EQ(Import({ "--quality", "9" }).status, 2);
}

TEST_F(ImportJpeg, LeavesNothingWhenTheDiskIsFull)
{
    WriteJpeg(source_, Picture(400, 800, 3), kYcc);
    const Outcome import = RunCommand({ "import", source_, "-o", out_ }, { .fileSize = 70'000 });
    EXPECT_EQ(import.status, 1);
    EXPECT_THAT(import.err, HasSubstr("out.jpg: File too large"));
    EXPECT_EQ(folder_.Entries(), 1U);

    ASSERT_EQ(Import().status, 0);
    const std::string index = ReadFile(side_);
    const Outcome outcome = RunCommand({ "index", out_ }, { .fileSize = 300 });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("out.bin: File too large"));
    EXPECT_TRUE(ReadFile(side_) == index);
    EXPECT_EQ(folder_.Entries(), 3U);
}

struct DifferenceCase {
    const char* name = nullptr;
    const JpegForm* form = nullptr; ///< of a file by libjpeg
    std::string before, now;        ///< or what is replaced in a good file
    const char* told = nullptr;
};

TEST_F(ImportJpeg, IndexesNoFileOfAnotherForm)
{
    const Samples samples = Picture(47, 31, 3);
    WriteJpeg(source_, samples, kYcc);
    ASSERT_EQ(Import({ "--resolution", "10" }).status, 0);
    const std::string good = ReadFile(out_);
    std::filesystem::remove(side_);
    const auto restarted = [](auto& jpeg) { jpeg.restart_in_rows = 1; };
    const auto renumbered = [](auto& jpeg) {
        jpeg.restart_in_rows = 1;
        jpeg.comp_info[0].component_id = 5;
    };
    const std::string tables = "\xFF\xDB";
    const std::string comment = std::string("\xFF\xFE\1\x2C", 4).append(298, 'c');
    const std::string trap("\xFF\xFE\0\4\xFF\xDB", 6);
    const JpegForm progressive = With(kYcc, nullptr, true), subsampled = With(kYcc, Subsampled);
    const JpegForm libjpegs = With(kYcc, restarted), others = With(kYcc, renumbered);
    const DifferenceCase cases[] = {
        { "progressive", &progressive, "", "", "isn't baseline" },
        { "subsampled", &subsampled, "", "", "subsampled" },
        { "no restart markers", &kYcc, "", "", "no restart marker" },
        { "segments by libjpeg", &libjpegs, "", "", "one segment of DC" },
        { "other numbers", &others, "", "", "aren't numbered from 1" },
        { "segments too far", nullptr, tables, comment + tables, "328" },
        { "a marker in a segment", nullptr, tables, trap + tables, "328" },
        { "no JFIF", nullptr, "\xFF\xE0", "\xFF\xE3", "that of JFIF" },
        { "bytes between", nullptr, tables, std::string("x").append(tables), "more than segments" },
        { "markers out of turn", nullptr, "\xFF\xD1", "\xFF\xD2", "behind 1 of 4" },
        { "a band too few", nullptr, "\xFF\xD2", "\xFF\xD9", "behind 2 of 4" },
        { "a band of no bytes", nullptr, "\xFF\xD0", "\xFF\xD0\xFF\xD1",
          "before it, behind 1 of 4" },
        { "cut short", nullptr, "\xFF\xD9", "", "ends behind 3 of 4" },
    };
    for (const DifferenceCase& one : cases) {
        SCOPED_TRACE(one.name);
        if (one.form != nullptr)
            WriteJpeg(out_, samples, *one.form);
        else
            WriteFile(out_, Replaced(good, one.before, one.now));
        const Outcome outcome = RunCommand({ "index", out_ });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, HasSubstr(one.told));
        EXPECT_EQ(folder_.Entries(), 2U);
    }
    WriteFile(out_, good + "more"); // behind the end of the picture: nobody's
    EXPECT_EQ(RunCommand({ "index", out_ }).status, 0);
    std::filesystem::resize_file(out_, std::uintmax_t{ 4 } << 30U);
    EXPECT_THAT(RunCommand({ "index", out_ }).err, HasSubstr("4 GiB"));
}

TEST_F(ImportJpeg, IndexesAtTheUsualResolutionWhereNoneIsTold)
{
    WriteJpeg(source_, Picture(300, 300, 3), kYcc);
    ASSERT_EQ(Import({ "--resolution", "300" }).status, 0);
    const std::string index = ReadFile(side_);
    std::string bytes = ReadFile(out_);
    WriteFile(out_, bytes.replace(13, 5, std::string("\0\0\1\0\1", 5)));
    const Outcome outcome = RunCommand({ "index", out_ });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("300 pixels per inch"));
    EXPECT_TRUE(ReadFile(side_) == index);
}

} // namespace
} // namespace tympan::test
