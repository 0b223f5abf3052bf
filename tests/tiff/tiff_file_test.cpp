// The TIFF object: the kinds of pictures, rows of a separation, what is refused and how.
#include "platform/tiff_samples.h"
#include "support/checking.h"
#include "support/tiff_it_samples.h"
#include "tiff/tiff_file.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string_view>

namespace {

using namespace tympan::test;

constexpr char kDiscrepancy[] = "Incorrect tiff parameters or incompatibility them (discrepancy).";
constexpr char kNoSeparation[] = "Zero color separation number.";

class TiffFile : public ::testing::Test {
  protected:
    void Put(const TiffLayout& layout) { memory_.Put("pic", MakeTiff(layout)); }
    bool Open(const TiffLayout& layout)
    {
        Put(layout);
        return picture_.OpenPictureFile("pic", true, false, nullptr);
    }
    TiffFileParam& Record() { return *picture_.GetPictureParams(); }
    unsigned long Row(unsigned int row, int separation, unsigned long size = ~0UL)
    {
        buffer_.assign(kRoom, 0);
        return picture_.GetPictureRow(buffer_.data(), row,
                                      static_cast<ColorSeparationType>(separation), 1, 2,
                                      std::min<unsigned long>(size, kRoom));
    }
    unsigned long Rows(unsigned int first, unsigned int last, int separation,
                       unsigned long size = kRoom)
    {
        buffer_.assign(kRoom, 0);
        unsigned int rows = 77;
        const unsigned long result =
            picture_.GetPictureRows(buffer_.data(), first, last, rows, nullptr,
                                    static_cast<ColorSeparationType>(separation), size, false);
        EXPECT_EQ(rows, 77U);
        return result;
    }
    void ExpectFailure(unsigned long code, const std::string& text)
    {
        EXPECT_EQ(picture_.TraceStatus(), code);
        EXPECT_EQ(std::string(picture_.ErrorMsg().GetString()), text);
        EXPECT_EQ(std::string(picture_.TraceStatusString().GetString()), text);
        EXPECT_TRUE(picture_.ObjectStatus());
        picture_.TraceStatus(0);
    }

    // libtiff tells nobody but the library.
    void TearDown() override { EXPECT_EQ(ProcessHandlers::CallCount(), 0); }

    static constexpr std::size_t kRoom = 4096;
    const ProcessHandlers handlers_;
    MemoryFileSystem memory_;
    WatchedFileSystem watched_{ memory_ };
    tympan::ScopedFileSystem scoped_{ watched_ };
    TiffFileInterface picture_;
    std::vector<unsigned char> buffer_;
};

TiffLayout LayoutOf(std::uint16_t bits, std::uint16_t samples, Photometric as)
{
    TiffLayout layout;
    layout.bits = bits;
    layout.samples = samples;
    layout.as = as;
    return layout;
}

std::string Told(const tympan::TiffDetails& details)
{
    std::string text;
    for (const std::string& name : details.channels)
        text += (text.empty() ? "" : " ") + name;
    text += ", by " + std::to_string(details.perInch).substr(0, 4);
    if (details.palette.size() == 256)
        for (const std::uint8_t part : details.palette[7])
            text += ' ' + std::to_string(part);
    return text;
}

struct KindCase {
    std::uint16_t bits, samples;
    Photometric as;
    ColorSetType kind;
    const char* channels;
};

constexpr KindCase kKinds[] = {
    { 1, 1, kWhiteIsZero, BilevelColorSet, "Gray" },
    { 8, 1, kWhiteIsZero, InverseGrayColorSet, "Gray" },
    { 8, 1, kBlackIsZero, GrayColorSet, "Gray" },
    { 8, 3, kRgb, RgbColorSet, "Red Green Blue" },
    { 8, 3, kYCbCr, YCbCrColorSet, "Y Cb Cr" },
    { 8, 4, kSeparated, CmykColorSet, "Cyan Magenta Yellow Black" },
    { 8, 5, kSeparated, FiveColorSet, "Cyan Magenta Yellow Black Ink 5" },
    { 8, 6, kSeparated, SixColorSet, "Cyan Magenta Yellow Black Ink 5 Ink 6" },
    { 8, 7, kSeparated, SevenColorSet, "Cyan Magenta Yellow Black Ink 5 Ink 6 Ink 7" },
    { 8, 8, kSeparated, EightColorSet, "Cyan Magenta Yellow Black Ink 5 Ink 6 Ink 7 Ink 8" },
    { 1, 1, kBlackIsZero, NoColorSet, "Channel 1" },
    { 16, 3, kRgb, NoColorSet, "Channel 1 Channel 2 Channel 3" },
    { 8, 3, kSeparated, NoColorSet, "Ink 1 Ink 2 Ink 3" },
};

TEST_F(TiffFile, EachKindGivesItsRows)
{
    for (const KindCase& kind : kKinds) {
        SCOPED_TRACE(kind.channels);
        const TiffLayout layout = LayoutOf(kind.bits, kind.samples, kind.as);
        EXPECT_EQ(Open(layout), kind.kind != NoColorSet);
        EXPECT_EQ(Record().ColorSet(), kind.kind);
        EXPECT_EQ(picture_.IsTiff8Bit(), kind.kind == GrayColorSet);
        EXPECT_EQ(picture_.IsTiff1Bit(), kind.kind == BilevelColorSet);
        EXPECT_EQ(picture_.IsTiffCMYK(), kind.kind == CmykColorSet);
        EXPECT_EQ(Record().BitsPerSample(), kind.kind == NoColorSet ? 0U : kind.bits);
        EXPECT_EQ(Record().ColorSeparation(), kind.samples);
        EXPECT_EQ(Record().RowSize(), (37U * kind.samples * kind.bits + 7) / 8);
        EXPECT_EQ(Record().Compression(), 0U);
        EXPECT_EQ(picture_.FileWidthInPixels(), 37U);
        EXPECT_EQ(picture_.ResolutionOnXScanAxis(), 300.0);
        EXPECT_EQ(picture_.ResolutionOnScanAxis(), 150.0);
        EXPECT_EQ(picture_.FileNumberOfSeparations(), 0U);
        const Bytes whole = RowOf(layout, 7);
        const std::size_t bytes = whole.size() / kind.samples;
        for (int s = 0; s < kind.samples; ++s) {
            ASSERT_EQ(Row(7, s, bytes), 1U);
            for (std::size_t i = 0; i < bytes; ++i)
                ASSERT_EQ(buffer_[i], std::to_integer<unsigned char>(
                                          whole[i * kind.samples + static_cast<std::size_t>(s)]));
            EXPECT_EQ(buffer_[bytes], 0);
        }
        EXPECT_EQ(Told(*tympan::TiffDetailsOf(picture_)), kind.channels + std::string(", by 1.00"));
    }
}

TEST_F(TiffFile, AnUnknownKindSaysWhatItIs)
{
    EXPECT_FALSE(Open(LayoutOf(16, 3, kRgb)));
    ExpectFailure(90050,
                  "Unknown palette type.\nBitPerSample=16,\nSamplePerPixel=3,\nPhotometric=2.");
}

TiffItField Names(std::string_view texts)
{
    return { 333, 2, { texts.begin(), texts.end() } };
}

// All red and green; of the blue only that of number 7 is another.
TiffItField ColourMap(std::uint32_t rest, std::uint32_t blue)
{
    std::vector<std::uint32_t> map(768, rest);
    map[512 + 7] = blue;
    return { 320, 3, map };
}

// A picture of 8 bits and five inks, or of one sample.
std::string PictureWith(const std::vector<TiffItField>& fields, Photometric as)
{
    const std::uint32_t samples = as == kSeparated ? 5 : 1;
    TiffItSample sample;
    sample.directories = { { { 256, 3, { 2 } },
                             { 257, 3, { 2 } },
                             { 258, 3, std::vector<std::uint32_t>(samples, 8) },
                             { 262, 3, { as } },
                             { 273, 4, { TiffItSample::kData } },
                             { 277, 3, { samples } } } };
    for (const TiffItField& field : fields)
        sample.directories[0].push_back(field);
    return sample.Text();
}

struct DetailsCase {
    const char* name;
    Photometric as;
    std::vector<TiffItField> fields;
    const char* told;
};

TEST_F(TiffFile, DetailsAreToldAsFarAsTheFileHasThem)
{
    using namespace std::string_view_literals;
    constexpr std::uint16_t kUnit = 296, kInks = 334, kExtra = 338;
    const TiffItField three = Names("A\0B\0C\0"sv);
    const DetailsCase kCases[] = {
        { "all names", kSeparated, { Names("A\0B\0C\0D\0E\0"sv) }, "A B C D E, by 1.00" },
        { "fewer", kSeparated, { three }, "A B C Ink 4 Ink 5, by 1.00" },
        { "more", kSeparated, { Names("A\0B\0C\0D\0E\0F\0"sv) }, "A B C D E, by 1.00" },
        { "other", kSeparated, { three, { kInks, 3, { 9 } } }, "A B C Ink 4 Ink 5, by 1.00" },
        { "no end", kSeparated, { Names("A\0B\0C\0D\0E\0x"sv) }, "A B C D E, by 1.00" },
        { "empty", kSeparated, { Names("\0B\0\0\0E\0"sv) }, "Ink 1 B Ink 3 Ink 4 E, by 1.00" },
        { "none", kSeparated, { Names({}) }, "Cyan Magenta Yellow Black Ink 5, by 1.00" },
        { "transparency",
          kSeparated,
          { { kUnit, 3, { 3 } }, { kExtra, 3, { 2 } } },
          "Cyan Magenta Yellow Black Alpha 5, by 2.54" },
        { "any extra",
          kSeparated,
          { { kUnit, 3, { 1 } }, { kExtra, 3, { 0 } } },
          "Cyan Magenta Yellow Black Ink 5, by 0.00" },
        { "palette", kPalette, { ColourMap(0x1234, 0xFF00) }, "Index, by 1.00 18 18 255" },
        { "palette of bytes", kPalette, { ColourMap(3, 255) }, "Index, by 1.00 3 3 255" },
        { "grey with one", kBlackIsZero, { ColourMap(3, 255) }, "Gray, by 1.00" },
    };
    for (const DetailsCase& one : kCases) {
        SCOPED_TRACE(one.name);
        memory_.Put("pic", PictureWith(one.fields, one.as));
        ASSERT_TRUE(picture_.OpenPictureFile("pic", true, false, nullptr));
        EXPECT_EQ(Told(*tympan::TiffDetailsOf(picture_)), one.told);
    }
}

TEST_F(TiffFile, RangesHoldBothEndsInEveryLayout)
{
    for (const bool planes : { false, true })
        for (const Packing packed : { kUncompressed, kLzw, kDeflate, kPackBits })
            for (const std::uint32_t tile : { 0U, 16U }) {
                TiffLayout layout = LayoutOf(8, 4, kSeparated);
                layout.planes = planes;
                layout.packed = packed;
                layout.tile = { tile, tile };
                ASSERT_TRUE(Open(layout));
                ASSERT_EQ(Rows(3, 12, 2, 370), 1U);
                for (std::uint32_t y = 3; y <= 12; ++y)
                    for (std::uint32_t x = 0; x < 37; ++x)
                        ASSERT_EQ(buffer_[(y - 3) * 37 + x], SampleOf(layout, x, y, 2));
            }
}

struct RequestCase {
    const char* name;
    unsigned int first, last;
    int separation;
    unsigned long size;
    unsigned long result, code;
    const char* text; // null: that of the library, or none
};

TEST_F(TiffFile, RangesThatDoNotFitAreRefused)
{
    ASSERT_TRUE(Open(LayoutOf(8, 3, kRgb)));
    constexpr RequestCase kCases[] = {
        { "one row", 5, 5, 0, 37, 1, 0, nullptr },
        { "none", 6, 5, 0, 0, 1, 0, nullptr },
        { "none, a long way back", 6, 0, 0, 4096, 0, 90050, kDiscrepancy },
        { "no room", 5, 6, 0, 73, 0, 90050, kDiscrepancy },
        { "beyond the height", 5, 30, 0, 4096, 0, 90050, kDiscrepancy },
        { "the height", 28, 29, 0, 4096, 0, 90050, "pic: there is no row 29, the file has 29" },
        { "no such sample", 5, 5, 3, 4096, 0, 0, nullptr },
        { "below the first sample", 5, 5, -1, 4096, 0, 0, nullptr },
    };
    for (const RequestCase& one : kCases) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(Rows(one.first, one.last, one.separation, one.size), one.result);
        if (one.text != nullptr)
            ExpectFailure(one.code, one.text);
        EXPECT_EQ(picture_.TraceStatus(), 0U);
    }
    EXPECT_EQ(Row(5, 3), 0U);
    ExpectFailure(90050, kNoSeparation);
    EXPECT_EQ(Row(5, 0, 36), 0U);
    ExpectFailure(90050, kDiscrepancy);
    EXPECT_EQ(picture_.GetPictureRow(nullptr, 5, Cyan, 1, 1, 99), 0U);
    ExpectFailure(90050, kDiscrepancy);
    Record().InitTiff(0);
    EXPECT_EQ(Row(5, 0), 0U);
    ExpectFailure(90050, kDiscrepancy);
    EXPECT_EQ(picture_.GetPictureRow(Cyan, 5, 1, 1), nullptr);
    EXPECT_EQ(picture_.GetPictureRows(Cyan, 5, 6, false), nullptr);
}

TEST_F(TiffFile, OneSampleIsReadAsItStands)
{
    ASSERT_TRUE(Open(LayoutOf(8, 1, kBlackIsZero)));
    EXPECT_EQ(Row(28, 6), 1U);
    EXPECT_EQ(Rows(28, 29, 9), 0U);
    EXPECT_EQ(picture_.TraceStatus(), 0U);
    EXPECT_EQ(Row(29, 0), 0U);
    ExpectFailure(90050, "pic: there is no row 29, the file has 29");
}

TEST_F(TiffFile, TheRowBufferGrowsWithTheFile)
{
    TiffLayout layout = LayoutOf(8, 3, kRgb);
    ASSERT_TRUE(Open(layout));
    EXPECT_EQ(Row(0, 0), 1U);
    layout.width = 900;
    ASSERT_TRUE(Open(layout));
    EXPECT_EQ(Row(1, 2), 1U);
    EXPECT_EQ(buffer_[899], SampleOf(layout, 899, 1, 2));
    // A record that no longer fits the file.
    Record().RowSize(9);
    EXPECT_EQ(Row(1, 2), 0U);
    ExpectFailure(90050, kDiscrepancy);
}

TEST_F(TiffFile, OpensClosesAndOpensAgain)
{
    EXPECT_EQ(Row(0, 0), 0U);
    ExpectFailure(90050, kNoSeparation);
    ASSERT_TRUE(Open(LayoutOf(8, 4, kSeparated)));
    EXPECT_FALSE(picture_.OpenPictureFile("missing", true, false, nullptr));
    EXPECT_EQ(picture_.TraceStatus(), 90051U);
    EXPECT_EQ(Record().ColorSet(), CmykColorSet); // the record keeps what it held
    EXPECT_EQ(Row(0, 0), 0U);
    ExpectFailure(90050, kDiscrepancy);
    ASSERT_TRUE(picture_.OpenPictureFile("pic", true, false, nullptr));
    EXPECT_EQ(memory_.OpenCount(), 1U);
    EXPECT_EQ(Record().InitTiff(), 1);
    picture_.ClosePictureFile();
    EXPECT_FALSE(picture_.IsTiffCMYK());
    EXPECT_EQ(Record().InitTiff(), 0);
    EXPECT_EQ(Row(0, 0), 0U);
    ExpectFailure(90050, kNoSeparation);
    EXPECT_EQ(memory_.OpenCount(), 0U);
    EXPECT_EQ(tympan::TiffDetailsOf(picture_), std::nullopt);
}

TEST_F(TiffFile, AProbeLeavesTheFileAsItWas)
{
    Put(LayoutOf(8, 3, kRgb));
    memory_.Put("text", "no picture at all");
    CFile file("pic", CFile::modeRead), other("text", CFile::modeRead), closed;
    file.Seek(5, CFile::begin);
    EXPECT_TRUE(TiffFileInterface::isTypeOf(file, "pic"));
    EXPECT_EQ(file.GetPosition(), 5U);
    EXPECT_FALSE(TiffFileInterface::isTypeOf(other, "text"));
    EXPECT_FALSE(TiffFileInterface::isTypeOf(closed, "none"));
    EXPECT_EQ(memory_.OpenCount(), 2U);
}

TEST_F(TiffFile, ARowThatCannotBeReadSaysSo)
{
    for (const std::uint16_t samples : { std::uint16_t{ 1 }, std::uint16_t{ 4 } }) {
        const TiffLayout layout = LayoutOf(8, samples, samples == 1 ? kBlackIsZero : kSeparated);
        ASSERT_TRUE(Open(layout));
        watched_.Fail(FileOperation::readAt, 1, EIO);
        EXPECT_EQ(Row(9, 0), 0U);
        EXPECT_EQ(picture_.TraceStatus(), 90050U);
        picture_.TraceStatus(0);
        watched_.FailAny(0, 0);
        EXPECT_EQ(Row(9, 0), 1U);
    }
}

TEST_F(TiffFile, RecordsAreCopiedFieldByField)
{
    ASSERT_TRUE(Open(LayoutOf(8, 4, kSeparated)));
    Record().PictureFileName("mine");
    const TiffFileParam copy(Record());
    EXPECT_EQ(copy.ColorSet(), CmykColorSet);
    EXPECT_EQ(copy.RowSize(), 148U);
    EXPECT_EQ(copy.PictureFileName(), "mine");
    EXPECT_EQ(copy.WidthInPixels(), 0.0);
    TiffFileParam assigned;
    assigned = Record();
    EXPECT_EQ(assigned.WidthInPixels(), 37.0);
    EXPECT_EQ(assigned.ResolutionOnScanAxis(), 300.0); // the base exchanges the two
    const TiffFileParam& itself = assigned;
    assigned = itself;
    EXPECT_EQ(assigned.ResolutionOnScanAxis(), 300.0);
    CFile file;
    EXPECT_FALSE(assigned.Load(file));
    EXPECT_FALSE(assigned.Save(file));
}

struct FileCase {
    const char* name;
    Bytes file;
    std::vector<std::string> findings;
};

Bytes CutShort(Bytes bytes, std::size_t less)
{
    bytes.resize(bytes.size() - less);
    return bytes;
}

TEST(TiffCheck, TellsEachFault)
{
    const FileCase kCases[] = {
        { "sound", MakeTiff(LayoutOf(8, 4, kSeparated)), {} },
        { "no TIFF", Bytes(20), { "TIFF-0001" } },
        { "16 bits", MakeTiff(LayoutOf(16, 3, kRgb)), { "TIFF-0002" } },
        { "cut in the last strip",
          CutShort(MakeTiff(LayoutOf(8, 1, kBlackIsZero)), std::size_t{ 2 } * 37),
          { "TIFF-0004 row 27", "TIFF-0004 row 28" } },
    };
    for (const FileCase& one : kCases) {
        SCOPED_TRACE(one.name);
        MemoryFileSystem memory;
        memory.Put("pic", one.file);
        const tympan::ScopedFileSystem scoped(memory);
        tympan::CheckOptions options;
        options.formats = { "TIFF" };
        EXPECT_EQ(CheckPath("pic", options).findings, one.findings);
    }
}

// Whatever read fails: neither another format nor a fault of the file is told instead.
TEST(TiffCheck, AFailingDiskIsNoFaultOfTheFile)
{
    MemoryFileSystem memory;
    memory.Put("pic", MakeTiff(LayoutOf(8, 4, kSeparated)));
    WatchedFileSystem watched(memory);
    const tympan::ScopedFileSystem scoped(watched);
    for (const FileOperation operation : { FileOperation::readAt, FileOperation::size })
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(number);
            watched.Fail(operation, number, EIO);
            const CheckedBytes checked = CheckPath("pic");
            const bool hasFailed = watched.HasFailed();
            watched.FailAny(0, 0);
            if (!hasFailed)
                break;
            ASSERT_EQ(checked.findings.size(), 1U);
            EXPECT_EQ(checked.findings[0].substr(0, 9), "FILE-0001");
        }
}

} // namespace
