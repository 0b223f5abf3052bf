// The TIFF library on files that are cut, damaged or false: no harm, and no row that isn't the file's.
#include "platform/tiff_reading.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::test {

namespace {

using ::testing::HasSubstr;

// In any order, also in a strip that libtiff can't read as a whole.
TEST_F(TiffLibraryTest, RowsAheadOfAFaultAreGiven)
{
    constexpr struct {
        Packing packed = kUncompressed;
        std::optional<std::byte>
            spoilt; // stands in the place of the last bytes, none: they are cut
    } kFaults[] = { { kUncompressed, {} },
                    { kLzw, std::byte{ 0xFF } },
                    { kDeflate, std::byte{ 0xFF } },
                    { kPackBits, std::byte{ 0x80 } } };
    for (const auto& [packed, spoilt] : kFaults) {
        SCOPED_TRACE(packed);
        const TiffLayout layout{ .packed = packed, .strip = 200, .width = 500, .length = 400 };
        Bytes bytes = MakeTiff(layout);
        const std::size_t length = bytes.size();
        bytes.resize(length - length / 8); // into the second strip
        if (spoilt)
            bytes.resize(length, *spoilt);
        files_.Put("a.tif", bytes);
        const OpenedTiff file = OpenTiffFile();
        ASSERT_NE(file, nullptr) << TiffErrorMsg();
        ReadRow(file.get(), 399); // has the fault met first; Deflate may go on behind it
        for (const std::uint32_t row : { 250U, 100U, 0U, 199U, 200U })
            EXPECT_TRUE(ReadRow(file.get(), row) == RowOf(layout, row)) << row;
    }
}

bool IsFax(const TiffLayout& layout)
{
    return layout.packed == kFaxG3 || layout.packed == kFaxG4;
}

// What two readings of a file give has to agree, whatever has become of its bytes; but damaged fax
// decodes to what libtiff has left from the strip before.
void ExpectTheSameInAnyOrder(const TiffLayout& layout)
{
    const OpenedTiff forwards = OpenTiffFile();
    const OpenedTiff backwards = OpenTiffFile();
    ASSERT_EQ(forwards == nullptr, backwards == nullptr);
    if (!forwards) {
        EXPECT_THAT(TiffErrorMsg().GetString(), ::testing::StartsWith("a.tif: "));
        return;
    }
    if (TiffScanlineSize(forwards.get()) > 10'000)
        return;
    std::vector<std::optional<Bytes>> rows;
    for (std::uint32_t row = 0; row != layout.length; ++row)
        rows.push_back(ReadRow(forwards.get(), row));
    for (std::uint32_t row = layout.length; row-- != 0;) {
        const auto bytes = ReadRow(backwards.get(), row);
        EXPECT_TRUE(bytes == rows[row] || IsFax(layout)) << row;
    }
}

// Not those of fax and JPEG, whose decoders go on behind what is missing.
const LayoutCase kDamaged[] = {
    { "strips", { .strip = 7 } },
    { "LZW", { .packed = kLzw, .strip = 12 } },
    { "Deflate", { .packed = kDeflate, .strip = 12 } },
    { "PackBits", { .packed = kPackBits, .strip = 12 } },
    { "tiles", { .packed = kDeflate, .tile = { 16, 16 } } },
    { "planes", { .packed = kLzw, .planes = true, .mode = "wb8" } },
    { "chroma", { .as = kYCbCr, .packed = kPackBits, .chroma = { 2, 2 } } },
};
const LayoutCase kTolerant[] = {
    { "G4", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kFaxG4 } },
    { "G3", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kFaxG3 } },
    { "JBIG", { .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kJbig, .strip = 29 } },
    { "JPEG", { .packed = kJpeg, .strip = 16 } },
    { "JPEG with shared chroma",
      { .as = kYCbCr, .packed = kJpeg, .strip = 16, .chroma = { 2, 2 } } },
    { "JPEG in tiles", { .packed = kJpeg, .tile = { 16, 16 } } },
};

TEST_F(TiffLibraryTest, ACutFileGivesARowAsItWasOrNotAtAll)
{
    for (const LayoutCase& test : kDamaged) {
        SCOPED_TRACE(test.name);
        const Bytes whole = MakeTiff(test.layout);
        std::size_t readRows = 0;
        for (std::size_t length = 0; length < whole.size(); length += 1 + length / 400) {
            files_.Put("a.tif", { whole.data(), whole.data() + length });
            const OpenedTiff file = OpenTiffFile();
            for (const Order order : { Order::mixed, Order::backwards, Order::forwards })
                for (const std::uint32_t row : RowNumbers(file ? test.layout.length : 0, order)) {
                    const auto bytes = ReadRow(file.get(), row);
                    readRows += bytes ? 1U : 0U;
                    ASSERT_TRUE(!bytes || *bytes == RowOf(test.layout, row))
                        << length << ' ' << row;
                }
        }
        EXPECT_NE(readRows, 0U); // the file opens before its end is there
    }
}

TEST_F(TiffLibraryTest, ACutFileOfATolerantDecoderGivesTheSameInAnyOrder)
{
    for (const LayoutCase& test : kTolerant) {
        SCOPED_TRACE(test.name);
        const Bytes whole = MakeTiff(test.layout);
        for (std::size_t length = 0; length < whole.size(); length += 7) {
            files_.Put("a.tif", { whole.data(), whole.data() + length });
            ExpectTheSameInAnyOrder(test.layout);
        }
    }
}

void ExpectNoHarmByFlips(MemoryFileSystem& files, const LayoutCase& test)
{
    SCOPED_TRACE(test.name);
    constexpr int kFiles = 60;
    const Bytes whole = MakeTiff(test.layout);
    std::mt19937 random(7); // NOLINT(cert-msc51-cpp): repeatable
    for (int i = 0; i != kFiles; ++i) {
        Bytes flipped = whole;
        // Most of a file is its samples, most of what can go wrong is its directory.
        for (const std::size_t reach : { whole.size(), std::min<std::size_t>(whole.size(), 300) })
            flipped[random() % reach] ^= std::byte(1U << random() % 8);
        files.Put("a.tif", flipped);
        ExpectTheSameInAnyOrder(test.layout);
    }
}

TEST_F(TiffLibraryTest, FlippedBitsDoNoHarm)
{
    for (const LayoutCase& test : kDamaged)
        ExpectNoHarmByFlips(files_, test);
    for (const LayoutCase& test : kTolerant)
        ExpectNoHarmByFlips(files_, test);
}

// An entry of a little-endian directory.
struct Entry {
    std::uint16_t tag;
    std::uint16_t type; // 3: 16 bits, 4: 32 bits, 1: bytes
    std::uint32_t count;
    std::uint32_t value;
};

// A file whose directory stands at 8 and names `next` as the one behind it.
Bytes DirectoryFile(const std::vector<Entry>& entries, std::uint32_t next = 0)
{
    Bytes bytes = TextBytes(std::string_view("II*\0\x08\0\0\0", 8));
    const auto put = [&](std::uint32_t value, int count) {
        for (int i = 0; i != count; ++i)
            bytes.push_back(std::byte(value >> (8 * i) & 0xFFU));
    };
    put(static_cast<std::uint32_t>(entries.size()), 2);
    for (const Entry& entry : entries) {
        put(entry.tag, 2);
        put(entry.type, 2);
        put(entry.count, 4);
        put(entry.value, 4);
    }
    put(next, 4);
    return bytes;
}

constexpr std::uint16_t kWidthTag = 256;
constexpr std::uint16_t kLengthTag = 257;
constexpr std::uint16_t kBitsTag = 258;
constexpr std::uint16_t kCompressionTag = 259;
constexpr std::uint16_t kPhotometricTag = 262;
constexpr std::uint16_t kOffsetsTag = 273;
constexpr std::uint16_t kSamplesTag = 277;
constexpr std::uint16_t kStripRowsTag = 278;
constexpr std::uint16_t kCountsTag = 279;
constexpr std::uint16_t kTileWidthTag = 322;
constexpr std::uint16_t kTileLengthTag = 323;
constexpr std::uint16_t kTileOffsetsTag = 324;
constexpr std::uint16_t kTileCountsTag = 325;

std::vector<Entry> GreyPicture(std::uint32_t width, std::uint32_t length, std::uint32_t stripRows)
{
    return { { kWidthTag, 4, 1, width },   { kLengthTag, 4, 1, length },
             { kBitsTag, 3, 1, 8 },        { kCompressionTag, 3, 1, kUncompressed },
             { kPhotometricTag, 3, 1, 1 }, { kOffsetsTag, 4, 1, 8 },
             { kSamplesTag, 3, 1, 1 },     { kStripRowsTag, 4, 1, stripRows },
             { kCountsTag, 4, 1, 16 } };
}

std::vector<Entry> With(std::vector<Entry> entries, const std::vector<Entry>& changes)
{
    for (const Entry& change : changes) {
        std::erase_if(entries, [&](const Entry& entry) { return entry.tag == change.tag; });
        entries.push_back(change);
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry& left, const Entry& right) { return left.tag < right.tag; });
    return entries;
}

std::vector<Entry> Tiled(std::uint32_t width, std::uint32_t length)
{
    return With(GreyPicture(16, 16, 16), { { kTileWidthTag, 4, 1, width },
                                           { kTileLengthTag, 4, 1, length },
                                           { kTileOffsetsTag, 4, 1, 8 },
                                           { kTileCountsTag, 4, 1, 16 } });
}

// Puts another number into an entry of a little-endian file.
void SetEntry(Bytes& file, std::uint16_t tag, std::uint16_t value)
{
    const auto number = [&](std::size_t at) {
        return std::to_integer<std::size_t>(file[at]) | std::to_integer<std::size_t>(file[at + 1])
                                                            << 8U;
    };
    const std::size_t directory = number(4) | number(6) << 16U;
    for (std::size_t i = 0; i < number(directory); ++i) {
        const std::size_t entry = directory + 2 + 12 * i;
        if (number(entry) != tag)
            continue;
        file[entry + 8] = std::byte(value & 0xFFU);
        file[entry + 9] = std::byte(value >> 8U);
    }
}

// Strips and tiles of Deflate that hold more rows than the picture has. libtiff's fast way stops at
// what doesn't fit whole, a copied stretch or a stored one, and leaves the end as it was.
TEST_F(TiffLibraryTest, DeflateThatHoldsMoreThanThePictureIsReadToItsEnd)
{
    constexpr std::uint32_t kRows = 29;
    const TiffLayout noise{ .packed = kDeflate, .strip = 32, .length = kRows };
    TiffLayout alike = noise, differences = noise, words = noise, planes = noise, tile = noise;
    alike.grain = 64;
    differences.predictor = 2;
    words.predictor = 2;
    words.bits = 16;
    planes.predictor = 2;
    planes.planes = true;
    tile.tile = { 48, 32 };
    for (const TiffLayout& layout : { noise, alike, differences, words, planes, tile })
        for (std::uint16_t length = 1; length < kRows; ++length) {
            SCOPED_TRACE(std::to_string(layout.predictor) + ", " + std::to_string(length));
            Bytes file = MakeTiff(layout);
            SetEntry(file, kLengthTag, length);
            if (layout.tile.down != 0)
                SetEntry(file, kTileLengthTag, length < 16 ? 16 : 32);
            files_.Put("a.tif", file);
            const OpenedTiff opened = OpenTiffFile();
            ASSERT_NE(opened, nullptr);
            for (std::uint32_t row = 0; row < length; ++row)
                ASSERT_EQ(ReadRow(opened.get(), row), RowOf(layout, row)) << row;
        }
}

struct RefusalCase {
    const char* name;
    std::vector<Entry> entries;
    const char* reason; // why no row is read
};

const RefusalCase kRefusals[] = {
    { "a row of 4 GiB", GreyPicture(0xFFFFFFFF, 1, 1), "longer than the file" },
    { "a row of 32 TiB",
      With(GreyPicture(0xFFFFFFFF, 1, 1), { { kSamplesTag, 3, 1, 4096 }, { kBitsTag, 3, 1, 16 } }),
      "longer than the file" },
    { "a row of 17 MiB", GreyPicture(17 << 20, 1, 1), "longer than the file" },
    { "no rows", GreyPicture(4, 0, 1), "empty" },
    { "no bits", With(GreyPicture(4, 4, 4), { { kBitsTag, 3, 1, 0 } }), "empty" },
    { "tiles of 1 TiB", Tiled(1 << 20, 1 << 20), "larger than the file" },
    { "tiles without width", Tiled(0, 16), "empty" },
    { "chroma of 3 x 3 pixels",
      With(GreyPicture(4, 4, 4), { { kSamplesTag, 3, 1, 3 },
                                   { kPhotometricTag, 3, 1, kYCbCr },
                                   { 530, 3, 2, 3 | 3 << 16 } }),
      "chroma" },
    { "shared chroma in planes",
      With(GreyPicture(4, 4, 4),
           { { kSamplesTag, 3, 1, 3 }, { kPhotometricTag, 3, 1, kYCbCr }, { 284, 3, 1, 2 } }),
      "chroma" },
};

TEST_F(TiffLibraryTest, ClaimsThatNoFileFillsAreRefused)
{
    for (const RefusalCase& test : kRefusals) {
        SCOPED_TRACE(test.name);
        files_.Put("a.tif", DirectoryFile(test.entries));
        const OpenedTiff file = OpenTiffFile();
        if (!file)
            continue; // libtiff has refused it already
        std::byte untouched{ 7 };
        EXPECT_EQ(TiffReadScanline(file.get(), &untouched, 0, 0), -1);
        EXPECT_EQ(untouched, std::byte{ 7 });
        EXPECT_THAT(TiffErrorMsg().GetString(), HasSubstr(test.reason));
    }
}

TEST_F(TiffLibraryTest, AStripThatClaimsGigabytesGivesTheRowsThatAreThere)
{
    if (sizeof(std::size_t) < 8)
        GTEST_SKIP() << "libtiff refuses the file where memory has 32 bits";
    constexpr std::uint32_t kEndOfDirectory = 8 + 2 + 9 * 12 + 4;
    const auto entries =
        With(GreyPicture(8, 0xFFFFFFFF, 0xFFFFFFFF), { { kCompressionTag, 3, 1, kPackBits },
                                                       { kOffsetsTag, 4, 1, kEndOfDirectory },
                                                       { kCountsTag, 4, 1, 4 } });
    Bytes bytes = DirectoryFile(entries);
    ASSERT_EQ(bytes.size(), kEndOfDirectory);
    for (const int packed : { 0xF9, 0x55, 0xF9, 0x66 }) // eight of each
        bytes.push_back(std::byte(packed));
    files_.Put("a.tif", bytes);
    const OpenedTiff file = OpenTiffFile();
    ASSERT_NE(file, nullptr) << TiffErrorMsg();
    EXPECT_FALSE(ReadRow(file.get(), 0xFFFFFFFE));
    EXPECT_FALSE(ReadRow(file.get(), 2));
    EXPECT_EQ(ReadRow(file.get(), 1), Bytes(8, std::byte{ 0x66 }));
    EXPECT_EQ(ReadRow(file.get(), 0), Bytes(8, std::byte{ 0x55 }));
}

// The value of a tag in a little-endian file whose directory stands at 8.
std::uint32_t ValueOf(const Bytes& file, std::uint16_t tag)
{
    const auto number = [&](std::size_t place, std::size_t count) {
        std::uint32_t value = 0;
        for (std::size_t i = count; i-- != 0;)
            value = value << 8U | std::to_integer<std::uint32_t>(file.at(place + i));
        return value;
    };
    std::size_t entry = 10;
    while (number(entry, 2) != tag)
        entry += 12;
    return number(entry + 8, 4);
}

// The decoder would take memory and time by the size that the data tell.
TEST_F(TiffLibraryTest, JbigDataOfAnotherSizeAreRefused)
{
    Bytes file =
        MakeTiff({ .samples = 1, .bits = 1, .as = kWhiteIsZero, .packed = kJbig, .strip = 29 });
    const std::size_t jbigWidth = ValueOf(file, kOffsetsTag) + 4;
    file.at(jbigWidth) = std::byte{ 0x7F };
    files_.Put("a.tif", file);
    const OpenedTiff opened = OpenTiffFile();
    ASSERT_NE(opened, nullptr) << TiffErrorMsg();
    EXPECT_FALSE(ReadRow(opened.get(), 0));
    EXPECT_EQ(TiffErrorMsg(), "a.tif: the JBIG data are not of the picture's size");
    EXPECT_EQ(TiffSystemError(), 0);
}

// A file whose strip ends behind the picture gives its rows; where samples are missing, or those of
// a line would be taken for another's, there are none.
TEST_F(TiffLibraryTest, JpegDataOfAnotherSizeAreRefused)
{
    const std::string_view frame("\xFF\xC0\0\x11\x08", 5);        // ahead of rows and width
    const std::string_view counts("\x17\x01\x04\0\x01\0\0\0", 8); // ahead of the strip's length
    const struct {
        std::string_view head;
        std::size_t place; // of a byte behind that
        int byte;
        const char* reason; // null: the row is read
    } kCases[] = { { frame, 1, 29, nullptr },         { frame, 0, 7, nullptr },
                   { frame, 1, 28, "size" },          { frame, 3, 36, "size" },
                   { frame, 3, 38, "size" },          { frame, 2, 1, "size" },
                   { counts, 1, 0xFF, "in the file" } };
    const TiffLayout layout{ .as = kYCbCr, .packed = kJpeg, .strip = 32, .chroma = { 1, 2 } };
    for (const auto& [head, place, byte, reason] : kCases) {
        SCOPED_TRACE(byte);
        Bytes file = MakeTiff(layout);
        const Bytes wanted = TextBytes(head);
        const auto found = std::search(file.begin(), file.end(), wanted.begin(), wanted.end());
        file.at(static_cast<std::size_t>(found - file.begin()) + head.size() + place) =
            std::byte(byte);
        files_.Put("a.tif", file);
        const OpenedTiff opened = OpenTiffFile();
        ASSERT_NE(opened, nullptr) << TiffErrorMsg();
        const auto row = ReadRow(opened.get(), 28);
        EXPECT_EQ(row, reason ? std::nullopt : std::optional(RowOf(layout, 28)));
        EXPECT_THAT(row ? "" : TiffErrorMsg().GetString(), HasSubstr(reason ? reason : ""));
    }
}

TEST_F(TiffLibraryTest, ADirectoryThatLeadsToItselfIsReadOnce)
{
    files_.Put("a.tif", DirectoryFile(GreyPicture(4, 4, 4), 8));
    const OpenedTiff file = OpenTiffFile();
    ASSERT_NE(file, nullptr) << TiffErrorMsg();
    EXPECT_TRUE(ReadRow(file.get(), 3)) << TiffErrorMsg();
}

TEST_F(TiffLibraryTest, TagsThatShareTheirBytesDoNotMultiplyThem)
{
    constexpr std::uint32_t kShared = 1U << 20U;
    std::vector<Entry> entries = GreyPicture(4, 4, 4);
    for (std::uint16_t tag = 50'000; tag != 50'400; ++tag)
        entries.push_back({ tag, 1, kShared, 8 });
    Bytes bytes = DirectoryFile(entries);
    bytes.resize(kShared + 8);
    files_.Put("a.tif", bytes);
    WatchedFileSystem counting(files_);
    const ScopedFileSystem scope(counting);
    OpenTiffFile();
    EXPECT_LT(counting.ByteCount(FileOperation::readAt), 5 * kShared);
}

} // namespace

} // namespace tympan::test
