// Rows as bands of the stream, in both forms, held against bands that the sample is made of; and
// files that are not what they say.
#include "core/failures.h"
#include "jpeg_pictures.h"
#include "support/ask_jpeg.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace tympan::test;
using Bytes = JpegSample::Bytes;
using Blocks = JpegSample::Blocks;
using Numbers = std::vector<unsigned int>;

constexpr char kTooSmall[] = "Given buffer is too small! The reading is stopped!";
constexpr char kUnexpectedEnd[] = "Unexpected end of file encountered! The reading is stopped!";
constexpr unsigned long kUnset = 77;

// What a call left.
struct Outcome {
    std::string failure; // text of a ReadFileException; empty for none
    unsigned long result = 0;
    unsigned long status = 0;
    unsigned int lastBlock = kUnset;
    std::vector<unsigned long> offsets;
    Bytes bytes;
};

struct Request {
    unsigned int first, last;
    bool hasOffsets = true;
    bool wrap = false;
    unsigned long bufferSize = 1000;
    int separation = 0;
};

template <typename Work>
std::string ReadFailureOf(Work&& work)
{
    try {
        work();
    } catch (ReadFileException* thrown) {
        const std::unique_ptr<ReadFileException> owned(thrown);
        return std::string(thrown->MessageText());
    }
    return "";
}

Outcome Fetch(JpegFileInterface& picture, const Request& request)
{
    Outcome outcome;
    outcome.offsets.assign(20, kUnset);
    outcome.bytes.assign(request.bufferSize, 0);
    outcome.failure = ReadFailureOf([&] {
        outcome.result = picture.GetPictureRows(
            outcome.bytes.data(), request.first, request.last, outcome.lastBlock,
            request.hasOffsets ? outcome.offsets.data() : nullptr,
            static_cast<ColorSeparationType>(request.separation), request.bufferSize, request.wrap);
    });
    outcome.status = picture.TraceStatus();
    return outcome;
}

struct RowsCase {
    const char* name;
    Request request;
    Numbers blocks;
    bool isWhole = true; // else 90062 behind the blocks
};

// Of a picture of 27 rows: blocks 0 to 3.
const RowsCase kRowsCases[] = {
    { "one block by its rows", { 0, 7 }, { 0 } },
    { "a row", { 3, 3, false }, { 0 } },
    { "a row of the next", { 8, 8, false }, { 1 } },
    { "a row of the last", { 26, 26, false }, { 3 } },
    { "all", { 0, 26 }, { 0, 1, 2, 3 } },
    { "padding of the last band", { 24, 31 }, { 3 } },
    { "two rows across a border", { 15, 16 }, { 1, 2 } },
    { "over the end", { 24, 8, true, true }, { 3, 0, 1 } },
    { "reversed inside a block", { 6, 2, true, true }, { 0 } },
    { "all from the third on", { 16, 8, true, true }, { 2, 3, 0, 1 } },
    { "a row with offsets and wrap", { 9, 9, true, true }, { 1 } },
    { "rows without offsets and wrap", { 0, 15, false, true }, { 0, 1 } },
    { "another separation", { 0, 7, true, false, 1000, 3 }, { 0 } },
    { "a separation below 0", { 0, 7, true, false, 1000, -1 }, { 0 } },
    { "beyond the end", { 16, 47 }, { 2, 3 }, false },
    { "behind the end", { 32, 47 }, {}, false },
    { "from behind over the end", { 40, 2, true, true }, {}, false },
    { "the last row there can be", { 4294967295, 4294967295, false }, {}, false },
};

TEST(JpegRows, AreTheBandsOfTheStream)
{
    const JpegFiles files;
    for (const RowsCase& one : kRowsCases) {
        SCOPED_TRACE(one.name);
        const Bytes expected = files.Bands(one.blocks);
        const auto picture = JpegFiles::Open();
        const Outcome got = Fetch(*picture, one.request);
        EXPECT_EQ(got.failure, "");
        EXPECT_EQ(got.result, expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.bytes.begin()));
        EXPECT_EQ(got.status, one.isWhole ? 0U : 90062U);
        EXPECT_EQ(got.lastBlock, one.blocks.empty() ? kUnset : one.blocks.back());
        std::vector<unsigned long> offsets;
        unsigned long at = 0;
        for (const unsigned int block : one.blocks) {
            offsets.push_back(at);
            at += static_cast<unsigned long>(JpegSample{}.Band(block).size());
        }
        if (one.isWhole)
            offsets.push_back(0);
        if (!one.request.hasOffsets)
            offsets.clear();
        offsets.resize(20, kUnset);
        EXPECT_EQ(got.offsets, offsets);

        // The same as an object.
        const std::unique_ptr<PictureRowsData> object(JpegFiles::Open()->GetPictureRows(
            Black, one.request.first, one.request.last, one.request.wrap));
        ASSERT_EQ(object != nullptr, one.isWhole);
        if (object == nullptr)
            continue;
        EXPECT_EQ(Bytes(object->Data(), object->Data() + object->DataSize()), expected);
        EXPECT_EQ(object->DataBufferSize(), expected.size());
        EXPECT_EQ(object->DataBlocks(), one.blocks.size());
        ASSERT_EQ(object->RowsOffsetsSize(), one.blocks.size());
        EXPECT_EQ(object->RowsOffsetsBufferSize(), one.blocks.size());
        EXPECT_EQ(object->RowsOffsets()[object->RowsOffsetsSize() - 1],
                  expected.size() - JpegSample{}.Band(one.blocks.back()).size());
    }
}

TEST(JpegRows, RefusedArgumentsChangeNothing)
{
    const JpegFiles files;
    const auto picture = JpegFiles::Open();
    const Request kRefused[] = { { 5, 5 }, { 0, 7, false }, { 9, 2 }, { 0, 7, true, true, 0 } };
    for (const Request& request : kRefused) {
        const Outcome got = Fetch(*picture, request);
        EXPECT_EQ(got.result, 0U);
        EXPECT_EQ(got.status, 0U);
        EXPECT_EQ(got.lastBlock, kUnset);
        EXPECT_EQ(got.offsets[0], kUnset);
    }
    unsigned int lastBlock = 0;
    EXPECT_EQ(picture->GetPictureRows(nullptr, 0, 0, lastBlock, nullptr, Cyan, 9, true), 0U);
    for (const int separation : { 4, 6, 2147483647 })
        try {
            picture->GetPictureRows(nullptr, 9, 2, lastBlock, nullptr,
                                    static_cast<ColorSeparationType>(separation), 0, false);
            FAIL() << separation;
        } catch (IllegalSeparationException* thrown) {
            delete thrown;
        }
    EXPECT_EQ(picture->GetBufferSize(0, 7, false), 0U);
    EXPECT_EQ(picture->GetOriginalPictureRow(nullptr, 0), 0U);
}

TEST(JpegRows, OfARowIgnoreResolutions)
{
    const JpegFiles files;
    const auto picture = JpegFiles::Open();
    const Bytes expected = files.Bands({ 1 });
    Bytes bytes(expected.size());
    const auto size = static_cast<unsigned long>(bytes.size());
    EXPECT_EQ(picture->GetPictureRow(bytes.data(), 9, Cyan, 0.0, -1.0, size), size);
    EXPECT_EQ(bytes, expected);
    const std::unique_ptr<PictureRowsData> row(picture->GetPictureRow(Cyan, 9, 0.0, 0.0));
    EXPECT_EQ(row->DataSize(), expected.size());
}

TEST(JpegRows, ABufferTakesTheBlocksThatFit)
{
    const JpegFiles files;
    const Bytes two = files.Bands({ 0, 1 });
    for (const std::size_t missing : { 0U, 1U }) {
        const auto picture = JpegFiles::Open();
        const Outcome got = Fetch(
            *picture, { 0, 15, true, false, static_cast<unsigned long>(two.size() - missing) });
        const Bytes expected = missing == 0 ? two : files.Bands({ 0 });
        EXPECT_EQ(got.failure, missing == 0 ? "" : kTooSmall);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.bytes.begin()));
        EXPECT_EQ(std::count(got.bytes.begin() + std::ssize(expected), got.bytes.end(), 0),
                  std::ssize(got.bytes) - std::ssize(expected)); // nothing of the second is read
        EXPECT_EQ(got.status, 0U);
        EXPECT_EQ(got.lastBlock, 1U - missing);
    }
}

TEST(JpegRows, OffsetsInTheFileEncloseTheBlocks)
{
    const JpegFiles files;
    const auto picture = JpegFiles::Open();
    const Blocks index = JpegSample{}.Index();
    unsigned long start = 1, end = 2;
    EXPECT_TRUE(picture->GetCompressedBlocksOffsetInfo(9, 20, start, end));
    EXPECT_EQ(start, index[1].first);
    EXPECT_EQ(end, index[2].second);
    EXPECT_EQ(picture->TraceStatus(), 0U);
    EXPECT_FALSE(picture->GetCompressedBlocksOffsetInfo(9, 32, start, end));
    EXPECT_FALSE(picture->GetCompressedBlocksOffsetInfo(9, 2, start, end));
    EXPECT_EQ(start, index[1].first);
    EXPECT_EQ(picture->TraceStatus(), 90062U);
    EXPECT_EQ(picture->GetMcuNumber(), 12U);
}

TEST(JpegRows, CopiesOfAnObjectShareItsBuffers)
{
    const JpegFiles files;
    std::unique_ptr<PictureRowsData> rows(JpegFiles::Open()->GetPictureRows(Cyan, 0, 26, false));
    PictureRowsData copy(*rows);
    PictureRowsData assigned;
    assigned = copy;
    EXPECT_EQ(copy.Data(), rows->Data());
    rows.reset();
    const Bytes expected = files.Bands({ 0, 1, 2, 3 });
    EXPECT_EQ(Bytes(assigned.Data(), assigned.Data() + assigned.DataSize()), expected);
    EXPECT_EQ(assigned.RowsOffsets()[3], copy.RowsOffsets()[3]);
}

// After a failed walk, objects come without blocks.
TEST(JpegRows, AMissingBlockIsTold)
{
    const JpegFiles files;
    const auto picture = JpegFiles::Open();
    EXPECT_EQ(picture->GetPictureRows(Cyan, 0, 32, false), nullptr);
    EXPECT_EQ(picture->TraceStatus(), 90063U);
    const std::unique_ptr<PictureRowsData> rows(picture->GetPictureRows(Cyan, 0, 7, false));
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows->TraceStatus(), 90062U);
    EXPECT_EQ(rows->DataBlocks(), 0U);
    EXPECT_EQ(rows->DataSize(), 0U);
    EXPECT_EQ(picture->GetPictureRows(Cyan, 9, 7, false), nullptr);
    EXPECT_EQ(picture->TraceStatus(), 90062U);
    EXPECT_EQ(Fetch(*picture, { 0, 7 }).result, files.Bands({ 0 }).size());
}

class FilledByHand : public PictureRowsData {
  public:
    using PictureRowsData::AddOffset;
    using PictureRowsData::AllocateBuffers;
    using PictureRowsData::Data;
    using PictureRowsData::Load;
    using PictureRowsData::ReleaseBuffers;
    using PictureRowsData::RowsOffsets;
};

TEST(JpegRows, BuffersKeepToTheirSizes)
{
    const JpegFiles files;
    CFile file("pic.jpg", CFile::modeRead);
    FilledByHand rows;
    for (const unsigned int size : { 0U, 1U })
        try {
            rows.AllocateBuffers(size, 0);
            FAIL();
        } catch (IllegalSizeException* thrown) {
            EXPECT_STREQ(thrown->MessageText(), size == 0 ? "Data" : "Rows Offsets");
            delete thrown;
        }
    rows.AllocateBuffers(4, 1);
    EXPECT_THROW(rows.Load(file, 5), BufferSizeException);
    EXPECT_THROW(rows.Load(file, 4294967295U), BufferSizeException);
    EXPECT_EQ(file.GetPosition(), 0U);
    rows.Load(file, 4);
    EXPECT_THROW(rows.AddOffset(0), BufferSizeException);
    EXPECT_EQ(rows.DataSize(), 4U);
    rows.Data(rows.Data()); // its own
    rows.RowsOffsets(rows.RowsOffsets());
    EXPECT_EQ(rows.RowsOffsets()[0], 0U);
    rows.RowsOffsets(new unsigned int[1]{ 7 });
    EXPECT_EQ(rows.RowsOffsets()[0], 7U);
    rows.ReleaseBuffers();
    rows.ReleaseBuffers();
    EXPECT_EQ(rows.Data(), nullptr);
    EXPECT_EQ(rows.DataBufferSize() + rows.RowsOffsetsSize() + rows.RowsOffsetsBufferSize(), 0U);
}

struct BadBlockCase {
    const char* name;
    std::pair<std::uint32_t, std::uint32_t> block;
    const char* failure;
};

TEST(JpegRows, ABlockThatTheFileDoesNotHoldReachesTheCaller)
{
    const JpegSample sample;
    const auto end = static_cast<std::uint32_t>(sample.Stream().size());
    const BadBlockCase kCases[] = {
        { "reversed", { 100, 99 }, kTooSmall },
        { "of a size that wraps", { 0, 4294967295 }, kTooSmall },
        { "past the end", { end - 1, end }, kUnexpectedEnd },
        { "behind the end", { end + 900, end + 901 }, kUnexpectedEnd },
        { "at the end of positions", { 4294967295, 4294967295 }, kUnexpectedEnd },
        { "before the data", { 0, 1 }, "" },
        { "to the last byte", { end - 2, end - 1 }, "" },
    };
    for (const BadBlockCase& one : kCases) {
        SCOPED_TRACE(one.name);
        JpegFiles files(sample);
        Blocks blocks = sample.Index();
        blocks[1] = one.block;
        files.Put("pic.bin", sample.SideFile(blocks));
        const auto picture = JpegFiles::Open();
        const Outcome got = Fetch(*picture, { 0, 15 });
        EXPECT_EQ(got.failure, one.failure);
        EXPECT_EQ(got.lastBlock, *one.failure == '\0' ? 1U : 0U);
        EXPECT_EQ(got.offsets[1] == kUnset, *one.failure != '\0');
        std::unique_ptr<PictureRowsData> rows;
        EXPECT_EQ(ReadFailureOf([&] { rows.reset(picture->GetPictureRows(Cyan, 0, 15, false)); }),
                  one.failure);
        EXPECT_EQ(picture->TraceStatus(), 0U);
        AskEverything(*picture);
    }
}

TEST(JpegRows, BuffersAreBoundedByTheFile)
{
    JpegFiles files;
    files.Put("pic.bin", JpegSample{}.SideFile({ { 0, 17U << 20U }, { 0, 4294967294 } }));
    for (const unsigned int row : { 0U, 8U }) {
        const auto picture = JpegFiles::Open();
        EXPECT_EQ(picture->GetPictureRows(Cyan, row, row, false), nullptr);
        EXPECT_EQ(picture->TraceStatus(), 90001U);
    }
}

TEST(JpegRows, DisplayTakesWhatItsScratchMemoryHolds)
{
    JpegSample sample;
    JpegFiles files(sample);
    Canvas canvas(4, 4);
    const auto reads = [&](const Blocks& blocks, unsigned long first, unsigned long last) {
        files.Put("pic.bin", sample.SideFile(blocks));
        const auto picture = JpegFiles::Open();
        const std::size_t before = files.Watched().Count(FileOperation::readAt);
        EXPECT_EQ(ReadFailureOf([&] { picture->Display(first, last, canvas.dc); }), "");
        return std::pair{ files.Watched().Count(FileOperation::readAt) - before,
                          picture->TraceStatus() };
    };
    const auto expected = [](std::size_t count, unsigned long status) {
        return std::pair{ count, status };
    };
    Bytes stream = sample.Stream();
    stream.resize(1'000'000);
    files.Put("pic.jpg", stream);
    EXPECT_EQ(reads(sample.Index(), 0, 26), expected(4, 0));
    EXPECT_EQ(reads(sample.Index(), 0, ~0UL), expected(4, 90062));
    EXPECT_EQ(reads(sample.Index(), 5, 5), expected(0, 0));
    EXPECT_EQ(reads(sample.Index(), ~0UL - 1, ~0UL), expected(0, 90062));
    EXPECT_EQ(reads({ { 0, 999'999 }, { 0, 0 } }, 0, 15), expected(1, 0));
    EXPECT_EQ(reads({ { 0, 1'000'000 } }, 0, 15), expected(0, 0));
    EXPECT_EQ(reads({ { 0, 0 }, { 5, 4 }, { 0, 0 } }, 0, 23), expected(1, 0));
    EXPECT_EQ(reads(Blocks(20'000, { 7, 7 }), 0, 160'000), expected(9'999, 0));
    EXPECT_EQ(GetPixel(canvas.dc.m_hDC, 0, 0), Canvas::kUntouched);
}

// ---- opening

struct SizeCase {
    const char* name;
    unsigned int width, height, components;
    const char *high, *wide; // after "+."
    double resolution, xResolution;
    unsigned int rowSize;
};

constexpr double kInfinite = HUGE_VAL;
const SizeCase kSizeCases[] = {
    { "a multiple of 32", 800, 600, 4, "20000000E+01", "40000000E+01", 300.0, 200.0, 3200 },
    { "a multiple of 4", 801, 600, 4, "20000000E+01", "40000000E+01", 300.0, 200.25, 3208 },
    { "neither", 33, 600, 1, "20000000E+01", "33000000E+00", 300.0, 100.0, 36 },
    { "cut to four decimals", 100, 100, 1, "30000000E+01", "30000000E+01", 33.3333, 33.3333, 104 },
    { "no sizes", 64, 64, 1, "00000000E+00", "00000000E+00", kInfinite, kInfinite, 64 },
    { "tiny sizes", 64, 64, 1, "10000000E-99", "1E-999", 64e100, kInfinite, 64 },
    { "huge sizes", 64, 64, 1, "1E999", "1E999", 0.0, 0.0, 64 },
    { "no pixels and no sizes", 0, 0, 1, "0", "0", NAN, NAN, 0 },
    { "below the limit of the height", 1, 65534, 1, "65534000E+05", "1E+01", 1.0, 1.0, 4 },
};

TEST(JpegOpening, GivesTheRecordItsSizes)
{
    for (const SizeCase& one : kSizeCases) {
        SCOPED_TRACE(one.name);
        const auto text = [](std::string digits) {
            digits.insert(0, "+.").resize(14);
            return digits;
        };
        JpegSample sample{ .width = one.width, .height = one.height, .components = one.components };
        sample.inchesHigh = text(one.high);
        sample.inchesWide = text(one.wide);
        JpegFiles files(sample);
        files.Put("pic.bin", sample.SideFile({}));
        const auto picture = JpegFiles::Open();
        ASSERT_TRUE(picture->ObjectStatus());
        const auto near = [](double left, double right) {
            return left == right || (std::isnan(left) && std::isnan(right)) ||
                   std::abs(left - right) < 1e-9 * std::abs(right);
        };
        EXPECT_PRED2(near, picture->ResolutionOnScanAxis(), one.resolution);
        EXPECT_PRED2(near, picture->ResolutionOnXScanAxis(), one.xResolution);
        EXPECT_EQ(picture->PictureParams()->RowSize(), one.rowSize);
        EXPECT_EQ(picture->PictureParams()->BitsPerSample(), 8 * one.components);
        EXPECT_EQ(picture->FileHeightInPixels(), one.height);
        EXPECT_EQ(picture->FileSizeUnitsFactor(), 1.0);
        EXPECT_EQ(picture->FileHeightInUnits(), 0.0);
    }
}

struct OpeningCase {
    const char* name;
    const char* path;
    unsigned long status;
    const char* text;
};

TEST(JpegOpening, FailsWithTheRightCode)
{
    constexpr char kNothing[] = "BasePictureIF:\n No Error !";
    const OpeningCase kCases[] = {
        { "an empty name", "", 0, kNothing },
        { "no file", "missing.jpg", 0, kNothing },
        { "no side file", "alone.jpg", 90001, kNothing },
        { "no frame header", "progressive.jpg", 90040, "General error!" },
        { "frame header first", "swapped.jpg", 90040, "General error!" },
    };
    const JpegSample sample;
    JpegFiles files(sample);
    files.Put("alone.jpg", sample.Stream());
    Bytes progressive = sample.Stream();
    progressive[20 + 134 + 1] = 0xC2;
    files.Put("progressive.jpg", progressive);
    Bytes swapped = sample.Stream();
    std::rotate(swapped.begin() + 20, swapped.begin() + 154, swapped.begin() + 154 + 19);
    files.Put("swapped.jpg", swapped);
    for (const OpeningCase& one : kCases) {
        SCOPED_TRACE(one.name);
        const auto picture = JpegFiles::Open(one.path);
        ASSERT_NE(picture, nullptr);
        EXPECT_FALSE(picture->ObjectStatus());
        EXPECT_EQ(picture->TraceStatus(), one.status);
        EXPECT_STREQ(picture->ErrorMsg(), one.text);
        AskEverything(*picture);
        EXPECT_TRUE(picture->OpenPictureFile("pic.jpg", true, false, nullptr));
        AskEverything(*picture);
    }
    const auto picture = JpegFiles::Open();
    EXPECT_FALSE(picture->OpenPictureFile("missing.jpg", true, false, new CFileException));
    EXPECT_EQ(picture->TraceStatus(), 90001U);
}

TEST(JpegOpening, SurvivesRandomBytes)
{
    const JpegSample sample;
    std::mt19937 random(53);
    JpegFiles files(sample);
    const auto shaken = [&](Bytes bytes, std::size_t from) {
        bytes.resize(random() % 4 == 0 ? random() % bytes.size() : bytes.size());
        for (int change = 0; change < 5 && bytes.size() > from; ++change)
            bytes[from + random() % (bytes.size() - from)] = static_cast<unsigned char>(random());
        return bytes;
    };
    for (int trial = 0; trial < 300; ++trial) {
        files.Put("pic.jpg", shaken(sample.Stream(), 2));
        files.Put("pic.bin", shaken(sample.SideFile(), random() % 2 == 0 ? 0 : 256));
        AskEverything(*JpegFiles::Open());
    }
}

} // namespace
