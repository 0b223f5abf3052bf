// The check of JPEG files: a change of the stream or of the side file, and what is told of it.
#include "jpeg_pictures.h"
#include "support/checking.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tympan::test;
using tympan::Verdict;
using Bytes = JpegSample::Bytes;
using Blocks = JpegSample::Blocks;

// The head of three components: SOI 0, APP0 2, DQT 20, SOF 154, DHT 173 and 211, DRI 249, SOS 255.
constexpr std::size_t kQuantization = 20, kFrame = 154, kHuffmanDc = 173, kHuffmanAc = 211,
                      kRestarts = 249, kScan = 255, kData = 269;

struct JpegCase {
    const char* name;
    std::vector<Edit> edits;
    std::vector<std::string> findings; // of the head; the index moves with it
};

std::string TextOf(const Bytes& bytes, std::size_t at, std::size_t count)
{
    return { reinterpret_cast<const char*>(bytes.data()) + at, count };
}

const Bytes kHead = JpegSample{}.Head();
const std::string kDqt = TextOf(kHead, kQuantization, kFrame - kQuantization);
const std::string kSof = TextOf(kHead, kFrame, kHuffmanDc - kFrame);
const std::string kDht = TextOf(kHead, kHuffmanDc, kHuffmanAc - kHuffmanDc);
const std::string kComment = std::string("\xFF\xFE\0\x62", 4) + std::string(96, 'c');

const JpegCase kHeadCases[] = {
    { "nothing", {}, {} },
    { "a comment",
      { { kQuantization, 0, kComment.substr(0, 2) + std::string("\0\4\1\2", 4) } },
      {} },
    { "a byte to fill up with", { { kScan, 0, "\xFF" } }, {} },
    { "no JFIF", { { 6, 4, "Exif" } }, { "JPEG-0002 byte 6" } },
    { "another start", { { 1, 1, "\xD9" } }, { "JPEG-0001 byte 0" } },
    { "a segment that is no marker", { { kFrame, 1, "\1" } }, { "JPEG-0003 byte 154" } },
    { "a length below 2", { { kFrame + 3, 1, "\1" } }, { "JPEG-0003 byte 154" } },
    { "a length beyond the file", { { kFrame + 2, 1, "\x40" } }, { "JPEG-0003 byte 154" } },
    { "progressive", { { kFrame + 1, 1, "\xC2" } }, { "JPEG-0004 byte 154" } },
    { "no quantization", { { kQuantization, kDqt.size(), "" } }, { "JPEG-0005 byte 135" } },
    { "no frame header", { { kFrame, kSof.size(), "" } }, { "JPEG-0005 byte 250" } },
    { "one Huffman segment", { { kHuffmanAc, kDht.size(), "" } }, { "JPEG-0005 byte 231" } },
    { "frame header first",
      { { kFrame, kSof.size(), "" }, { kQuantization, 0, kSof } },
      { "JPEG-0006 byte 20" } },
    { "Huffman before the frame",
      { { kHuffmanDc, kDht.size(), "" }, { kFrame, 0, kDht } },
      { "JPEG-0006 byte 154", "JPEG-0006 byte 211" } },
    { "beyond what is searched",
      { { kHuffmanAc, 0, kComment + kComment.substr(0, 3) + '\x12' + std::string(16, 'c') } },
      { "JPEG-0006 byte 331" } },
    { "a marker in a comment",
      { { kQuantization, 0, std::string("\xFF\xFE\0\6\xFF\xDB\0\4", 8) } },
      { "JPEG-0006 byte 28" } },
    { "two quantization segments", { { kScan, 0, kDqt } }, { "JPEG-0007 byte 255" } },
    { "three Huffman segments", { { kScan, 0, kDht } }, { "JPEG-0007 byte 255" } },
    { "DC and AC exchanged",
      { { kHuffmanDc + 4, 1, "\x10" }, { kHuffmanAc + 4, 1, { 0 } } },
      { "JPEG-0008 byte 173", "JPEG-0008 byte 211" } },
    { "16 bits of quantization", { { kQuantization + 4, 1, "\x10" } }, { "JPEG-0008 byte 20" } },
    { "tables that don't add up", { { kHuffmanDc + 5, 1, "\7" } }, { "JPEG-0008 byte 173" } },
    { "12 bits", { { kFrame + 4, 1, "\x0C" } }, { "JPEG-0009 byte 154" } },
    { "width of 0", { { kFrame + 8, 1, { 0 } } }, { "JPEG-0009 byte 154", "JPEG-0013 byte 255" } },
    { "two components",
      { { kFrame + 9, 1, "\2" } },
      { "JPEG-0009 byte 154", "JPEG-0012 byte 255" } },
    { "identifiers from 0",
      { { kFrame + 10, 1, { 0 } } },
      { "JPEG-0009 byte 154", "JPEG-0012 byte 255" } },
    { "subsampled", { { kFrame + 11, 1, "\x22" } }, { "JPEG-0010 byte 154" } },
    { "another quantization table", { { kFrame + 15, 1, { 0 } } }, { "JPEG-0011 byte 154" } },
    { "another Huffman table", { { kScan + 8, 1, "\1" } }, { "JPEG-0011 byte 255" } },
    { "a part of the coefficients", { { kScan + 12, 1, "\5" } }, { "JPEG-0012 byte 255" } },
    { "no restarts", { { kRestarts, 6, "" } }, { "JPEG-0013 byte 249" } },
    { "other restarts", { { kRestarts + 5, 1, "\6" } }, { "JPEG-0013 byte 255" } },
};

CheckedBytes Check(const Bytes& stream, const Bytes& sideFile)
{
    JpegFiles files;
    files.Put("pic.jpg", stream);
    files.Put("pic.bin", sideFile);
    tympan::CheckOptions options;
    options.formats = { "JPEG" };
    return CheckPath("pic.jpg", options);
}

TEST(JpegCheck, TellsEachFaultOfTheHead)
{
    for (const JpegCase& one : kHeadCases) {
        SCOPED_TRACE(one.name);
        const Bytes stream = Edited(JpegSample{}.Stream(), one.edits);
        Blocks blocks = JpegSample{}.Index();
        for (auto& [first, last] : blocks) {
            first += static_cast<std::uint32_t>(stream.size() - JpegSample{}.Stream().size());
            last += static_cast<std::uint32_t>(stream.size() - JpegSample{}.Stream().size());
        }
        EXPECT_EQ(Check(stream, JpegSample{}.SideFile(blocks)).findings, one.findings);
    }
}

struct SideCase {
    const char* name;
    std::vector<Edit> edits;
    std::vector<std::string> findings;
};

TEST(JpegCheck, TellsEachFaultOfTheSideFile)
{
    constexpr std::size_t kSecond = 256 + 8, kThird = 256 + 16; // records
    const std::string beyond("\xFF\xFF\xFF\0", 4);
    const std::string inHead("\x0C\1\0\0", 4); // 268
    const SideCase kCases[] = {
        { "nothing", {}, {} },
        { "millimetres", { { 0, 1, { 0 } } }, {} },
        { "unknown units", { { 0, 1, "\3" } }, { "JPEG-0016" } },
        { "no height", { { 1, 14, "+.00000000E+00" } }, { "JPEG-0017" } },
        { "sizes below 0 and in words",
          { { 1, 28, "-.10000000E+01half an inch  " } },
          { "JPEG-0017", "JPEG-0017" } },
        { "one block too few", { { kThird + 8, 8, "" } }, { "JPEG-0019" } },
        { "half a block too few", { { kThird + 12, 4, "" } }, { "JPEG-0018", "JPEG-0019" } },
        { "half a block behind", { { kThird + 16, 0, "half" } }, { "JPEG-0018" } },
        { "as an empty index is written", { { 29, kToTheEnd, "" } }, { "JPEG-0019" } },
        { "cut in the sizes", { { 28, kToTheEnd, "" } }, { "JPEG-0015", "JPEG-0019" } },
        { "empty", { { 0, kToTheEnd, "" } }, { "JPEG-0015", "JPEG-0019" } },
        { "a block reversed", { { kSecond + 4, 4, inHead } }, { "JPEG-0020 row 8" } },
        { "a block beyond the file", { { kSecond + 4, 4, beyond } }, { "JPEG-0021 row 8" } },
        { "a block in the head", { { 256, 4, inHead } }, { "JPEG-0023 row 0" } },
        { "a block before the last", { { kThird, 4, inHead } }, { "JPEG-0022 row 16" } },
    };
    for (const SideCase& one : kCases) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(Check(JpegSample{}.Stream(), Edited(JpegSample{}.SideFile(), one.edits)).findings,
                  one.findings);
    }
}

TEST(JpegCheck, SaysWhatWasExpected)
{
    const Bytes stream = JpegSample{}.Stream();
    JpegFiles files;
    files.Put("alone.jpg", stream);
    const auto alone = CheckPath("alone.jpg");
    EXPECT_EQ(alone.findings, std::vector<std::string>{ "JPEG-0014" });
    EXPECT_EQ(alone.sentences[0], "The side file \"alone.bin\" can't be opened.");
    EXPECT_EQ(Check(stream, JpegSample{}.SideFile({ { kData, kData } })).sentences[0],
              "The index has 1 block; with 27 rows 4 were expected.");
    EXPECT_EQ(Check(stream, JpegSample{}.SideFile()).result.verdict, Verdict::Valid);
    EXPECT_EQ(Check(Bytes(100), {}).findings, std::vector<std::string>{ "JPEG-0001 byte 0" });
}

TEST(JpegCheck, WhatIsCutShortIsNeverValid)
{
    const Bytes stream = JpegSample{}.Stream();
    const Bytes sideFile = JpegSample{}.SideFile();
    for (std::size_t length = 0; length < stream.size() - 2; ++length) // an end marker isn't missed
        EXPECT_FALSE(IsCalledValid(Check(Edited(stream, { { length, kToTheEnd, "" } }), sideFile)))
            << length;
    for (std::size_t length = 0; length < sideFile.size(); ++length)
        EXPECT_FALSE(IsCalledValid(Check(stream, Edited(sideFile, { { length, kToTheEnd, "" } }))))
            << length;
}

TEST(JpegCheck, SurvivesRandomBytes)
{
    std::mt19937 random(54);
    for (int trial = 0; trial < 500; ++trial) {
        Bytes stream = JpegSample{}.Stream();
        Bytes sideFile = JpegSample{}.SideFile();
        for (int change = 0; change < 4; ++change) {
            stream[2 + random() % (kData - 2)] = static_cast<unsigned char>(random());
            sideFile[random() % sideFile.size()] = static_cast<unsigned char>(random());
        }
        Check(stream, sideFile);
    }
}

} // namespace
