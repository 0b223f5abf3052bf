// The scan for markers and the tables that it finds, held against a scan byte by byte.
#include "core/block_size.h"
#include "core/format.h"
#include "jpeg/block_file.h"
#include "jpeg_pictures.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

namespace {

using namespace tympan::test;
using Bytes = JpegSample::Bytes;

struct Found {
    unsigned short result;
    ULONGLONG position;

    bool operator==(const Found&) const = default;
};

Found FoundBy(unsigned short (*find)(CFile&, unsigned char, unsigned short), const Bytes& bytes,
              unsigned char marker, unsigned short start)
{
    MemoryFileSystem files;
    files.Put("head", { reinterpret_cast<const char*>(bytes.data()), bytes.size() });
    const tympan::ScopedFileSystem scoped(files);
    CFile file("head", CFile::modeRead);
    const unsigned short result = find(file, marker, start);
    return { result, file.GetPosition() };
}

unsigned short FindByteByByte(CFile& file, unsigned char marker, unsigned short start)
{
    const auto next = [&] {
        unsigned char byte = 0;
        file.Read(&byte, 1);
        return byte;
    };
    unsigned short position = start;
    file.Seek(start, CFile::begin);
    while (position < 328) {
        ++position;
        if (next() != 0xFF)
            continue;
        ++position;
        if (next() == marker)
            return position == 328 ? 0 : position;
    }
    return 0;
}

struct ScanCase {
    const char* name;
    std::size_t at;
    std::string bytes; // there, in zeros
    unsigned short start;
    Found found;
};

const ScanCase kScanCases[] = {
    { "at the start", 0, "\xFF\xC0", 0, { 2, 2 } },
    { "before the start", 4, "\xFF\xC0", 5, { 0, 328 } },
    { "the second of two", 9, "\xFF\xDB\xFF\xC0", 3, { 13, 13 } },
    { "behind two 0xFF it is missed", 9, "\xFF\xFF\xC0", 0, { 0, 328 } },
    { "behind three it isn't", 9, "\xFF\xFF\xFF\xC0", 0, { 13, 13 } },
    { "marker byte at 326", 325, "\xFF\xC0", 0, { 327, 327 } },
    { "marker byte at 327 is not found", 326, "\xFF\xC0", 0, { 0, 328 } },
    { "marker byte at 328 is", 327, "\xFF\xC0", 0, { 329, 329 } },
    { "another at 328", 327, "\xFF\xDB", 0, { 0, 329 } },
    { "beyond", 328, "\xFF\xC0", 0, { 0, 328 } },
    { "start at 328", 328, "\xFF\xC0", 328, { 0, 328 } },
    { "start beyond the file", 0, "\xFF\xC0", 65535, { 0, 65535 } },
};

TEST(JpegScan, FindsMarkersUpToItsLimit)
{
    for (const ScanCase& one : kScanCases) {
        SCOPED_TRACE(one.name);
        Bytes bytes(400);
        std::copy(one.bytes.begin(), one.bytes.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(one.at));
        EXPECT_EQ(FoundBy(find_jpeg_marker, bytes, 0xC0, one.start), one.found);
    }
}

Bytes RandomHead(std::mt19937& random)
{
    constexpr unsigned char kBytes[] = { 0xFF, 0xFF, 0xC0, 0xC4, 0xDB, 0, 3, 19 };
    Bytes head(random() % 420);
    for (unsigned char& byte : head)
        byte =
            random() % 4 == 0 ? kBytes[random() % 8] : static_cast<unsigned char>(random() % 200);
    return head;
}

TEST(JpegScan, EqualsAScanByteByByte)
{
    std::mt19937 random(51);
    for (int trial = 0; trial < 3000; ++trial) {
        const Bytes head = RandomHead(random);
        const auto start = static_cast<unsigned short>(random() % 3 == 0 ? random() % 340 : 0);
        SCOPED_TRACE(trial);
        ASSERT_EQ(FoundBy(find_jpeg_marker, head, 0xC4, start),
                  FoundBy(FindByteByByte, head, 0xC4, start));
    }
}

// The record with what it keeps open, and the same tables by the scan above.
class Record : public JpegPictureParameters {
  public:
    using JpegPictureParameters::CurrentOffset;
    using JpegPictureParameters::HuffmanAcTable;
    using JpegPictureParameters::HuffmanDcTable;
    using JpegPictureParameters::ImageParamsTable;
    using JpegPictureParameters::QuantizationTable;
    using JpegPictureParameters::RetrieveHuffmanTableData;
};

struct ExpectedTable {
    unsigned short offset = 0;
    Bytes data;
    bool isRefused = false;

    ExpectedTable(CFile& file, const Bytes& bytes, unsigned char marker, unsigned short& current)
    {
        const auto byteAt = [&](std::size_t at) { return at < bytes.size() ? bytes[at] : 0; };
        offset = FindByteByByte(file, marker, current);
        if (offset != 0) {
            const auto length =
                static_cast<unsigned short>(byteAt(offset) * 256 + byteAt(offset + 1U) - 3);
            isRefused = length == 0;
            for (std::size_t i = 0; i < length; ++i)
                data.push_back(static_cast<unsigned char>(byteAt(offset + 3U + i)));
        }
        if (!isRefused || marker != 0xC0)
            current = static_cast<unsigned short>(offset + data.size() + 3);
    }
};

void ExpectTable(const JpegTable& table, const ExpectedTable& expected)
{
    EXPECT_EQ(table.Offset(), expected.offset);
    ASSERT_EQ(table.Length(), expected.data.size());
    Bytes data(table.Length());
    table.CopyData(data.data());
    EXPECT_EQ(data, expected.data);
}

void ExpectSameHead(const Bytes& bytes)
{
    MemoryFileSystem files;
    files.Put("head", { reinterpret_cast<const char*>(bytes.data()), bytes.size() });
    const tympan::ScopedFileSystem scoped(files);
    CFile file("head", CFile::modeRead);
    unsigned short current = 0;
    const ExpectedTable quantization(file, bytes, 0xDB, current);
    const ExpectedTable frame(file, bytes, 0xC0, current);
    Record record;
    bool threw = false;
    try {
        EXPECT_TRUE(record.Load(file));
    } catch (JpegTable::RetrieveValueException&) {
        threw = true;
    }
    EXPECT_EQ(threw, !frame.isRefused && frame.data.size() < 6);
    ExpectTable(record.QuantizationTable(), quantization);
    ExpectTable(record.ImageParamsTable(), frame);
    if (threw)
        return;
    ExpectTable(record.HuffmanDcTable(), ExpectedTable(file, bytes, 0xC4, current));
    ExpectTable(record.HuffmanAcTable(), ExpectedTable(file, bytes, 0xC4, current));
    EXPECT_EQ(record.CurrentOffset(), current);
    if (!frame.isRefused) {
        EXPECT_EQ(record.HeightInPixels(), frame.data[0] * 256 + frame.data[1]);
        EXPECT_EQ(record.WidthInPixels(), frame.data[2] * 256 + frame.data[3]);
        EXPECT_EQ(record.NumberOfSeparations(), frame.data[4]);
        EXPECT_EQ(static_cast<int>(record.Separation(0)), frame.data[5] - 1);
    }
}

TEST(JpegHead, TablesAreThoseOfAScanByteByByte)
{
    std::mt19937 random(52);
    for (int trial = 0; trial < 2000; ++trial) {
        SCOPED_TRACE(trial);
        ExpectSameHead(RandomHead(random));
    }
}

TEST(JpegHead, CutAnywhereItHoldsWhatIsThere)
{
    const Bytes stream = JpegSample{ .height = 100, .components = 4 }.Stream();
    ASSERT_GT(stream.size(), 400U);
    for (std::size_t length = 0; length <= 400; ++length) {
        SCOPED_TRACE(length);
        const Bytes head(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
        ExpectSameHead(head);
        JpegFiles files;
        files.Put("pic.jpg", head);
        CFile file("pic.jpg", CFile::modeRead);
        EXPECT_EQ(tympan::JpegFormat().recognises(file, "pic.jpg"), length >= 10);
        EXPECT_EQ(JpegFileInterface::isTypeOf(file), length >= 10); // a client may ask, too
        const auto picture = JpegFiles::Open();
        const bool hasFrame = length >= 156; // the two bytes of its marker
        EXPECT_EQ(picture->TraceStatus(), hasFrame ? 0U : 90040U);
        EXPECT_STREQ(picture->ErrorMsg(),
                     hasFrame ? "BasePictureIF:\n No Error !" : "General error!");
    }
}

TEST(JpegHead, LengthsThatWrapAskForWhatWrappingGives)
{
    for (const unsigned int length : { 0U, 1U, 2U, 3U, 4U }) {
        SCOPED_TRACE(length);
        Bytes bytes{ 0xFF, 0xC4, 0, static_cast<unsigned char>(length), 9, 8, 7 };
        bytes.insert(bytes.end(), bytes.begin(), bytes.end());
        MemoryFileSystem files;
        files.Put("head", { reinterpret_cast<const char*>(bytes.data()), bytes.size() });
        const tympan::ScopedFileSystem scoped(files);
        CFile file("head", CFile::modeRead);
        JpegTable table(0xC4);
        EXPECT_EQ(table.Load(file, 0), length != 3);
        EXPECT_EQ(table.Length(), static_cast<unsigned short>(length - 3));
        if (length < 3) {
            EXPECT_EQ(table.RetrieveByteValue(1), 7);
            EXPECT_EQ(table.RetrieveByteValue(60000), 0);
        }
        // Both tables of such a length are more than 16 bits tell, and all of them are there.
        Record record;
        record.HuffmanDcTable().Load(file, 0);
        record.HuffmanAcTable().Load(file, 7);
        unsigned char* both = nullptr;
        unsigned short dcLength = 1;
        const unsigned short told = record.RetrieveHuffmanTableData(both, dcLength);
        const std::unique_ptr<unsigned char[]> owned(both);
        EXPECT_EQ(told, static_cast<unsigned short>(2 * (length - 3)));
        EXPECT_EQ(dcLength, table.Length());
        if (table.Length() > 1) {
            EXPECT_EQ(both[dcLength + 1U], 7);
        }
    }
}

TEST(JpegHead, ValuesOutsideATableAreRefused)
{
    const Bytes bytes{ 0xFF, 0xC0, 0, 5, 8, 1, 2 };
    JpegFiles files;
    files.Put("head", bytes);
    CFile file("head", CFile::modeRead);
    JpegTable table(0xC0);
    EXPECT_THROW(table.RetrieveByteValue(0), JpegTable::RetrieveValueException);
    EXPECT_THROW(table.RetrieveWordValue(0), JpegTable::RetrieveValueException);
    table.CopyData(nullptr);
    ASSERT_TRUE(table.Load(file, 0));
    EXPECT_EQ(table.RetrieveWordValue(0), 0x0102);
    EXPECT_EQ(table.RetrieveByteValue(1), 2);
    EXPECT_THROW(table.RetrieveWordValue(1), JpegTable::RetrieveValueException);
    EXPECT_THROW(table.RetrieveByteValue(2), JpegTable::RetrieveValueException);
    EXPECT_THROW(table.RetrieveWordValue(65535), JpegTable::RetrieveValueException);
    EXPECT_EQ(swap_bytes(0x1234), 0x3412);
}

TEST(JpegHead, TablesOutliveAHeadWithoutThem)
{
    JpegFiles files;
    files.Put("other.jpg", Bytes(500));
    Record record;
    CFile file("pic.jpg", CFile::modeRead);
    ASSERT_TRUE(record.Load(file));
    const unsigned short length = record.QuantizationTable().Length();
    record.Clear();
    CFile other("other.jpg", CFile::modeRead);
    EXPECT_TRUE(record.Load(other));
    EXPECT_EQ(record.QuantizationTable().Offset(), 0);
    EXPECT_EQ(record.QuantizationTable().Length(), length);
    EXPECT_EQ(record.HeightInPixels(), 27);

    const Record copy(record);
    EXPECT_EQ(copy.CurrentOffset(), record.CurrentOffset());
    EXPECT_EQ(copy.HuffmanDcTable().Marker(), 0);
    EXPECT_EQ(copy.QuantizationTable().Length(), 0);
    EXPECT_EQ(copy.HeightInPixels(), 0);
}

TEST(JpegHead, IsReadInOneBlock)
{
    JpegFiles files;
    const auto picture = JpegFiles::Open();
    EXPECT_TRUE(picture->ObjectStatus());
    const std::size_t reads = files.Watched().Count(FileOperation::readAt);
    if (tympan::kBlockBytes >= JpegSample{}.Head().size())
        EXPECT_EQ(reads, 2U); // and the side file
    else                      // as where faults at block borders are hunted
        EXPECT_LT(reads, JpegSample{}.Head().size() / 8);
}

TEST(JpegHead, ABlockStandsInThePlaceOfItsFile)
{
    JpegFiles files;
    files.Put("digits", { '0', '1', '2', '3', '4', '5', '6', '7', '8', '9' });
    CFile file("digits", CFile::modeRead);
    file.Seek(3, CFile::begin);
    {
        tympan::BlockFile block(file, 4);
        EXPECT_EQ(block.GetLength(), 10U);
        unsigned char bytes[4] = {};
        EXPECT_EQ(block.Seek(-2, CFile::end), 8U);
        EXPECT_EQ(block.Read(bytes, 4), 2U);
        EXPECT_EQ(bytes[1], '9');
        EXPECT_EQ(block.Seek(1, CFile::begin), 1U);
        EXPECT_EQ(block.Read(bytes, 4), 4U);
        EXPECT_EQ(bytes[3], '4');
        EXPECT_EQ(block.Seek(-1, CFile::current), 4U);
        EXPECT_EQ(block.GetPosition(), 4U);
    }
    EXPECT_EQ(file.GetPosition(), 4U);
}

TEST(JpegHead, ACopyTakesWhatAllFormatsHave)
{
    Record source;
    source.WidthInPixels(7.0);
    source.CurrentOffset(5);
    Record assigned;
    assigned = source;
    EXPECT_EQ(assigned.WidthInPixels(), 7.0);
    EXPECT_EQ(assigned.CurrentOffset(), Record().CurrentOffset());
    CFile closed;
    EXPECT_TRUE(source.Save(closed)); // which writes nothing
}

TEST(JpegHead, HandsOutTheTables)
{
    for (const unsigned int components : { 1U, 3U, 4U }) {
        const JpegSample sample{ .components = components };
        const JpegFiles files(sample);
        const auto picture = JpegFiles::Open();
        unsigned char* table = nullptr;
        unsigned short dcLength = 0;
        EXPECT_EQ(picture->RetrieveQuantizationTable(table), sample.Tables() * 65 - 1);
        const std::unique_ptr<unsigned char[]> quantization(table);
        EXPECT_EQ(quantization[0], 1);
        EXPECT_EQ(quantization[sample.Tables() * 65U - 2], sample.Tables() * 64);
        EXPECT_EQ(picture->RetrieveHuffmanTable(table, dcLength), 2 * (sample.Tables() * 17 - 1));
        const std::unique_ptr<unsigned char[]> huffman(table);
        EXPECT_EQ(dcLength, sample.Tables() * 17 - 1);
        EXPECT_EQ(picture->FileNumberOfSeparations(), components);
        EXPECT_EQ(picture->FileSeparation(0), Cyan);
        EXPECT_EQ(picture->FileSeparation(1), NoSeparation);
    }
}

} // namespace
