// The TIFF library: every layout gives the same rows in any order, from files that stay their owners'.
#include "platform/path_resolver.h"
#include "platform/tiff_reading.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace tympan::test {

namespace {

const LayoutCase kLayouts[] = {
    { "strips of some rows", {} },
    { "one row for each strip", { .strip = 1 } },
    { "an odd count of rows for each strip", { .strip = 7 } },
    { "one strip for all", { .strip = 29 } },
    { "one grey sample", { .samples = 1, .as = kBlackIsZero } },
    { "seven inks", { .samples = 7, .as = kSeparated } },
    { "16 bits", { .bits = 16 } },
    { "16 bits of a big-endian file", { .bits = 16, .mode = "wb" } },
    { "BigTIFF", { .packed = kLzw, .mode = "w8" } },
    { "big-endian BigTIFF", { .bits = 16, .packed = kDeflate, .mode = "wb8" } },
    { "4 bits", { .samples = 1, .bits = 4, .as = kBlackIsZero } },
    { "12 bits", { .samples = 3, .bits = 12, .as = kRgb } },
    { "LZW", { .packed = kLzw } },
    { "LZW in one strip", { .packed = kLzw, .strip = 29 } },
    { "Deflate", { .packed = kDeflate, .strip = 29 } },
    { "PackBits", { .samples = 4, .as = kSeparated, .packed = kPackBits } },
    { "JPEG", { .packed = kJpeg, .strip = 16 } },
    { "JPEG of YCbCr", { .as = kYCbCr, .packed = kJpeg, .strip = 16 } },
    { "1 bit", { .samples = 1, .bits = 1, .as = kWhiteIsZero } },
    { "1 bit in G4", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kFaxG4 } },
    { "1 bit in one strip of G4",
      { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kFaxG4, .strip = 29 } },
    { "1 bit in G3", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kFaxG3 } },
    { "1 bit in JBIG",
      { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kJbig, .strip = 29 } },
    { "tiles", { .tile = { 16, 16 } } },
    { "tiles in LZW", { .packed = kLzw, .tile = { 16, 16 } } },
    { "tiles of JPEG", { .packed = kJpeg, .tile = { 16, 16 } } },
    { "tiles of 1 bit", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .tile = { 16, 16 } } },
    { "tiles of 4 bits", { .bits = 4, .tile = { 16, 32 } } },
    { "one tile larger than the picture", { .tile = { 64, 64 } } },
    { "planes", { .samples = 4, .as = kSeparated, .planes = true } },
    { "planes in one strip each",
      { .samples = 4, .as = kSeparated, .packed = kLzw, .strip = 29, .planes = true } },
    { "planes of 16 bits", { .bits = 16, .packed = kDeflate, .planes = true } },
    { "planes of 1 bit", { .samples = 4, .bits = 1, .as = kSeparated, .planes = true } },
    { "planes in tiles", { .tile = { 16, 16 }, .planes = true } },
    { "planes in tiles of 1 bit",
      { .samples = 4, .bits = 1, .as = kSeparated, .tile = { 16, 16 }, .planes = true } },
    { "chroma of 2 x 2 pixels", { .as = kYCbCr, .chroma = { 2, 2 } } },
    { "chroma of 2 x 1 pixels", { .as = kYCbCr, .chroma = { 2, 1 } } },
    { "chroma of 4 x 4 pixels, LZW",
      { .as = kYCbCr, .packed = kLzw, .strip = 12, .chroma = { 4, 4 } } },
    { "chroma of 2 x 2 pixels in tiles", { .as = kYCbCr, .tile = { 16, 16 }, .chroma = { 2, 2 } } },
    { "chroma of 2 x 2 pixels of 16 bits", { .bits = 16, .as = kYCbCr, .chroma = { 2, 2 } } },
    { "chroma of 2 x 2 pixels in JPEG",
      { .as = kYCbCr, .packed = kJpeg, .strip = 16, .chroma = { 2, 2 } } },
    { "chroma of 2 x 2 pixels in tiles of JPEG",
      { .as = kYCbCr, .packed = kJpeg, .tile = { 16, 16 }, .chroma = { 2, 2 } } },
    { "chroma of 2 x 1 pixels in JPEG", { .as = kYCbCr, .packed = kJpeg, .chroma = { 2, 1 } } },
    { "chroma of 4 x 1 pixels in tiles of JPEG",
      { .as = kYCbCr, .packed = kJpeg, .tile = { 32, 16 }, .chroma = { 4, 1 } } },
    { "chroma of 1 x 2 pixels in JPEG",
      { .as = kYCbCr, .packed = kJpeg, .strip = 16, .chroma = { 1, 2 } } },
    { "chroma of 1 x 2 pixels in tiles of JPEG",
      { .as = kYCbCr, .packed = kJpeg, .tile = { 16, 16 }, .chroma = { 1, 2 } } },
    { "chroma of 4 x 2 pixels in JPEG",
      { .as = kYCbCr, .packed = kJpeg, .strip = 16, .chroma = { 4, 2 } } },
    { "chroma of 2 x 4 pixels in JPEG of one strip",
      { .as = kYCbCr, .packed = kJpeg, .strip = 32, .chroma = { 2, 4 } } },
};

TEST_F(TiffLibraryTest, EveryLayoutGivesItsRowsInAnyOrder)
{
    for (const LayoutCase& test : kLayouts) {
        SCOPED_TRACE(test.name);
        Put(test.layout);
        const OpenedTiff file = OpenTiffFile();
        ASSERT_NE(file, nullptr) << TiffErrorMsg();
        EXPECT_EQ(TiffScanlineSize(file.get()), std::ssize(RowOf(test.layout, 0)));
        for (const Order order : { Order::forwards, Order::backwards, Order::mixed })
            for (const std::uint32_t row : RowNumbers(test.layout.length, order)) {
                const auto bytes = ReadRow(file.get(), row);
                ASSERT_TRUE(bytes) << row << ' ' << TiffErrorMsg();
                ASSERT_EQ(*bytes, RowOf(test.layout, row)) << row;
            }
    }
}

TEST_F(TiffLibraryTest, TheRecordTellsTheDirectory)
{
    Put({ .samples = 4, .bits = 16, .as = kSeparated, .packed = kLzw });
    const OpenedTiff file = OpenTiffFile();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->ImageWidth, 37U);
    EXPECT_EQ(file->ImageLength, 29U);
    EXPECT_EQ(file->BitsPerSample, 16);
    EXPECT_EQ(file->Compression, kLzw);
    EXPECT_EQ(file->PhotometricInterpretation, kSeparated);
    EXPECT_EQ(file->SamplesPerPixel, 4);
    EXPECT_EQ(file->XResolution, 300.0F);
    EXPECT_EQ(file->YResolution, 150.0F);
}

TEST_F(TiffLibraryTest, ARowBeyondTheLengthIsRefused)
{
    Put({});
    const OpenedTiff file = OpenTiffFile();
    for (const std::uint32_t row : { 29U, 30U, 0xFFFFFFFFU }) {
        Bytes buffer(static_cast<std::size_t>(TiffScanlineSize(file.get())), std::byte{ 7 });
        EXPECT_EQ(TiffReadScanline(file.get(), buffer.data(), row, 0), -1) << row;
        EXPECT_EQ(buffer, Bytes(buffer.size(), std::byte{ 7 })) << row;
        EXPECT_THAT(TiffErrorMsg().GetString(), ::testing::HasSubstr(std::to_string(row)));
    }
    EXPECT_EQ(TiffReadScanline(nullptr, nullptr, 0, 0), -1);
}

// Strips that are longer than what a file of that length is granted to decode at a time.
TEST_F(TiffLibraryTest, LongStripsGiveTheirRowsInAnyOrder)
{
    const LayoutCase cases[] = {
        { "pixels",
          { .samples = 1,
            .as = kBlackIsZero,
            .packed = kDeflate,
            .strip = 5000,
            .width = 3700,
            .length = 5000,
            .grain = 4000 } },
        { "planes",
          { .samples = 2,
            .as = kSeparated,
            .packed = kDeflate,
            .strip = 4000,
            .planes = true,
            .width = 2500,
            .length = 4000,
            .grain = 4000 } },
        { "tiles",
          { .samples = 1,
            .as = kBlackIsZero,
            .packed = kDeflate,
            .tile = { 1024, 4608 },
            .width = 4000,
            .length = 4600,
            .grain = 4000 } },
        { "JPEG with shared chroma",
          { .as = kYCbCr,
            .packed = kJpeg,
            .strip = 3000,
            .chroma = { 2, 1 },
            .width = 2000,
            .length = 3000,
            .grain = 4000 } },
    };
    for (const LayoutCase& test : cases) {
        SCOPED_TRACE(test.name);
        Put(test.layout);
        ASSERT_LT(files_.Contents("a.tif").size(), (std::size_t{ 16 } << 20U) / 64);
        const OpenedTiff file = OpenTiffFile();
        ASSERT_NE(file, nullptr);
        const std::uint32_t last = test.layout.length - 1;
        for (const std::uint32_t row : { last, 0U, last - 1, 1700U, 1699U, 0U, last }) {
            const auto bytes = ReadRow(file.get(), row);
            ASSERT_TRUE(bytes) << row << ' ' << TiffErrorMsg();
            ASSERT_EQ(*bytes, RowOf(test.layout, row)) << row;
        }
    }
}

struct OnceCase {
    const char* name = nullptr;
    TiffLayout layout;
};

// Each larger than what is read of a plain file at a time.
const OnceCase kReadOnce[] = {
    { "one strip of LZW", { .packed = kLzw, .strip = 400, .width = 500, .length = 400 } },
    { "strips of Deflate", { .packed = kDeflate, .strip = 50, .width = 500, .length = 400 } },
    { "planes of Deflate",
      { .packed = kDeflate, .strip = 200, .planes = true, .width = 500, .length = 400 } },
    { "tiles of LZW", { .packed = kLzw, .tile = { 64, 400 }, .width = 500, .length = 400 } },
    { "JPEG with shared chroma",
      { .as = kYCbCr,
        .packed = kJpeg,
        .strip = 80,
        .chroma = { 2, 2 },
        .width = 500,
        .length = 400 } },
    { "uncompressed strips", { .strip = 7, .width = 500, .length = 400 } },
    { "one uncompressed strip", { .strip = 400, .width = 500, .length = 400 } },
    { "uncompressed words of the other order",
      { .bits = 16, .strip = 20, .mode = "wb", .width = 500, .length = 400 } },
};

TEST_F(TiffLibraryTest, AStripIsReadOnceForItsRowsFromTheLastOn)
{
    for (const OnceCase& test : kReadOnce) {
        SCOPED_TRACE(test.name);
        Put(test.layout);
        const std::size_t length = files_.Contents("a.tif").size();
        WatchedFileSystem counting(files_);
        const ScopedFileSystem scope(counting);
        const OpenedTiff file = OpenTiffFile();
        ASSERT_NE(file, nullptr) << TiffErrorMsg();
        for (const std::uint32_t row : RowNumbers(test.layout.length, Order::backwards)) {
            const auto bytes = ReadRow(file.get(), row);
            ASSERT_TRUE(bytes) << row << ' ' << TiffErrorMsg();
            ASSERT_EQ(*bytes, RowOf(test.layout, row)) << row;
        }
        EXPECT_LT(counting.ByteCount(FileOperation::readAt), length + length / 4);
    }
}
TEST_F(TiffLibraryTest, AnOpenFileStaysItsOwners)
{
    Put({});
    CFile file("a.tif", CFile::modeRead);
    file.Seek(5, CFile::begin);
    {
        const OpenedTiff probe(TifffdOpen(file.m_hFile, "probe", "r"));
        ASSERT_NE(probe, nullptr) << TiffErrorMsg();
        EXPECT_TRUE(ReadRow(probe.get(), 28));
    }
    EXPECT_EQ(file.GetPosition(), 5U);
    EXPECT_EQ(files_.OpenCount(), 1U);
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1), 1U);
}

TEST_F(TiffLibraryTest, AnotherFileIsNoTiffAndStaysOpen)
{
    files_.Put("a.txt", "no picture at all");
    CFile file("a.txt", CFile::modeRead);
    EXPECT_EQ(TifffdOpen(file.m_hFile, "probe", "r"), nullptr);
    EXPECT_THAT(TiffErrorMsg().GetString(), ::testing::StartsWith("probe: Not a TIFF"));
    EXPECT_EQ(files_.OpenCount(), 1U);
    EXPECT_EQ(file.GetLength(), 17U);
    EXPECT_EQ(TifffdOpen(-1, nullptr, "r"), nullptr);
}

TEST_F(TiffLibraryTest, OpeningTellsWhyNot)
{
    EXPECT_EQ(TiffOpen("missing.tif", "r"), nullptr);
    EXPECT_THAT(TiffErrorMsg().GetString(), ::testing::StartsWith("missing.tif: No such file"));
    EXPECT_EQ(TiffOpen(nullptr, "r"), nullptr);
    files_.Put("empty.tif", "");
    EXPECT_EQ(TiffOpen("empty.tif", "r"), nullptr);
    EXPECT_THAT(TiffErrorMsg().GetString(), ::testing::StartsWith("empty.tif: "));
    Put({});
    for (const char* mode : { "w", "r+", "" })
        EXPECT_EQ(TiffOpen("a.tif", mode), nullptr) << mode;
    EXPECT_EQ(TiffOpen("a.tif", nullptr), nullptr);
    EXPECT_EQ(TiffErrorMsg(), "a.tif: TIFF files are only read");
}

TEST_F(TiffLibraryTest, PathsAreResolved)
{
    Put({});
    SetPathResolver([](const CString& path) { return path.Mid(2); });
    const OpenedTiff file = OpenTiffFile("S:a.tif");
    SetPathResolver({});
    EXPECT_NE(file, nullptr) << TiffErrorMsg();
}

TEST_F(TiffLibraryTest, AWarningIsKeptByItsThread)
{
    TiffWarning("module", "%d of %s", 7, "nine");
    EXPECT_EQ(TiffErrorMsg(), "7 of nine");
    std::thread([] { TiffWarning("module", "elsewhere"); }).join();
    EXPECT_EQ(TiffErrorMsg(), "7 of nine");
}

// Each read of the file fails once; what could not be read then can be read later.
TEST_F(TiffLibraryTest, AFailedReadIsToldAndMayBeTriedAgain)
{
    Put({ .packed = kLzw, .planes = true });
    WatchedFileSystem failing(files_);
    const ScopedFileSystem scope(failing);
    int failedRows = 0;
    for (std::size_t number = 1;; ++number) {
        failing.Fail(FileOperation::readAt, number, EIO);
        const OpenedTiff file = OpenTiffFile();
        for (std::uint32_t row = 0; file && row != 29; ++row)
            if (!ReadRow(file.get(), row)) {
                ++failedRows;
                EXPECT_EQ(TiffErrorMsg(), "a.tif: Input/output error");
                EXPECT_EQ(TiffSystemError(), EIO);
                EXPECT_EQ(ReadRow(file.get(), row), RowOf({}, row)) << number;
            }
        if (!failing.HasFailed())
            break;
    }
    EXPECT_GE(failedRows, 12); // four strips in three planes
}

} // namespace

} // namespace tympan::test
