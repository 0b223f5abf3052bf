// The index and its side file: read, written, ranges, and what inspecting it tells.
#include "core/failures.h"
#include "core/picture_parameters.h"
#include "jpeg_pictures.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

using namespace tympan::test;
using Bytes = JpegSample::Bytes;
using Blocks = JpegSample::Blocks;

Blocks BlocksIn(const JpegCompBlocksInfo& index)
{
    Blocks blocks;
    for (const CompressedLine& line : index.Blocks())
        blocks.emplace_back(line.StartOffset, line.EndOffset);
    return blocks;
}

// Whether the work throws a pointer of that kind.
template <typename Failure, typename Work>
bool Throws(Work&& work)
{
    try {
        work();
    } catch (Failure* thrown) {
        delete thrown;
        return true;
    }
    return false;
}

// What is left of a text at a place of a file that is cut.
double NumberIn(const std::string& text, std::size_t length, std::size_t place)
{
    return std::atof(text.substr(0, std::max(length, place) - place).c_str());
}

TEST(JpegIndex, IsReadAsFarAsTheSideFileGoes)
{
    const JpegSample sample;
    const Bytes whole = JpegSample{ .height = 100 }.SideFile();
    const Blocks all = JpegSample{ .height = 100 }.Index();
    for (std::size_t length = 0; length <= 300; ++length) {
        SCOPED_TRACE(length);
        JpegFiles files(sample);
        files.Put("pic.bin",
                  Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        JpegCompBlocksInfo index;
        index.Open("pic.jpg", true);
        const std::size_t count = length < 256 ? 0 : (length - 256) / 8;
        EXPECT_EQ(BlocksIn(index),
                  Blocks(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)));
        EXPECT_EQ(index.FileSizeUnitsFactor(), length < 1 ? 0.03937007874015748 : 1.0);
        EXPECT_EQ(index.HeightInUnits(), NumberIn(sample.inchesHigh, length, 1));
        EXPECT_EQ(index.WidthInUnits(), NumberIn(sample.inchesWide, length, 15));
        EXPECT_EQ(index.McuNumber(), length < 30 ? 0U : 12U);
        EXPECT_TRUE(JpegFiles::Open()->ObjectStatus());
    }
}

TEST(JpegIndex, UnitsAreInchesForCodeOneAlone)
{
    for (const char code : { '\0', '\1', '\2', '\xFF' }) {
        const JpegFiles files({ .units = std::string(1, code), .inchesHigh = "+.10000000E+02" });
        JpegCompBlocksInfo index;
        index.Open("pic.jpg", true);
        EXPECT_DOUBLE_EQ(index.HeightInUnits(), code == 1 ? 10.0 : 0.3937007874015748);
        EXPECT_EQ(index.FileSizeUnitsFactor(), code == 1 ? 1.0 : 0.03937007874015748);
    }
}

struct NameCase {
    const char *picture, *sideFile;
};

TEST(JpegIndex, StandsUnderThePicturesNameUpToTheLastPoint)
{
    const NameCase kCases[] = {
        { "x.jpg", "x.bin" }, { "x", "x.bin" },  { "a.b/x.y.jpeg", "a.b/x.y.bin" },
        { "a.b/x", "a.bin" }, { "x.", "x.bin" }, { ".jpg", ".bin" },
    };
    for (const NameCase& one : kCases) {
        JpegFiles files;
        JpegCompBlocksInfo index;
        EXPECT_TRUE(Throws<OpenFileException>([&] { index.Open(one.picture, true); }));
        EXPECT_FALSE(index.IsOpen());
        index.Open(one.picture, false);
        EXPECT_TRUE(files.Memory().Exists(one.sideFile)) << one.sideFile;
    }
}

struct RangeCase {
    const char* name;
    unsigned int first, last;
    bool rowsGiven, wrap;
    CompressedBlocksRange range; // Count 0: refused
    std::vector<unsigned int> blocks;
    bool isWhole = true;
};

// In an index of 10 blocks; block n has n + 1 bytes.
const RangeCase kRangeCases[] = {
    { "two rows, two blocks", 7, 8, true, false, { 0, 1, 2, 10 }, { 0, 1 } },
    { "two rows, one block", 0, 7, true, false, { 0, 0, 1, 10 }, { 0 } },
    { "numbers of blocks", 7, 8, false, false, { 7, 8, 2, 10 }, { 7, 8 } },
    { "reversed", 2, 1, false, false, {}, {} },
    { "rows reversed inside a block", 7, 3, true, false, { 0, 0, 1, 10 }, { 0 } },
    { "over the end", 9, 1, false, true, { 9, 1, 3, 10 }, { 9, 0, 1 } },
    { "all, from the middle",
      4,
      3,
      false,
      true,
      { 4, 3, 10, 10 },
      { 4, 5, 6, 7, 8, 9, 0, 1, 2, 3 } },
    { "wrap without need", 3, 4, false, true, { 3, 4, 2, 10 }, { 3, 4 } },
    { "to the end", 9, 9, false, false, { 9, 9, 1, 10 }, { 9 } },
    { "beyond the end", 8, 10, false, false, { 8, 10, 3, 10 }, { 8, 9 }, false },
    { "beyond with wrap", 8, 10, false, true, { 8, 10, 3, 10 }, { 8, 9 }, false },
    { "all behind", 10, 10, false, false, { 10, 10, 1, 10 }, {}, false },
    { "from behind over the end", 12, 1, false, true, { 12, 1, 1, 10 }, {}, false },
    { "the most",
      0,
      4294967295,
      false,
      false,
      { 0, 4294967295, 4294967295, 10 },
      { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9 },
      false },
};

TEST(JpegIndex, RangesAreWalkedToTheirEndOrTheFirstMissingBlock)
{
    for (const RangeCase& one : kRangeCases) {
        SCOPED_TRACE(one.name);
        JpegCompBlocksInfo index;
        std::uint32_t at = 1000;
        for (std::uint32_t i = 0; i < 10; ++i, at += 100)
            index.StoreBlock({ at, at + i });
        CompressedBlocksRange range{};
        const auto make = [&] {
            index.GetBlocksRange(one.first, one.last, one.rowsGiven, one.wrap, range);
        };
        if (one.range.Count == 0) {
            EXPECT_TRUE(Throws<OutOfRangeException>(make));
            continue;
        }
        make();
        EXPECT_EQ(range.First, one.range.First);
        EXPECT_EQ(range.Last, one.range.Last);
        EXPECT_EQ(range.Count, one.range.Count);
        EXPECT_EQ(range.Total, one.range.Total);
        unsigned long size = 0;
        for (const unsigned int block : one.blocks)
            size += block + 1;
        EXPECT_EQ(index.GetBlocksSize(range), one.isWhole ? size : 0);
        EXPECT_EQ(index.TraceStatus(), one.isWhole ? 0U : 90062U);
    }
}

TEST(JpegIndex, RangesThatNobodyMadeEnd)
{
    JpegCompBlocksInfo empty;
    EXPECT_EQ(empty.GetBlocksSize({ 0, 0, 1, 0 }), 0U);
    EXPECT_EQ(empty.TraceStatus(), 90062U);
    CompressedLine line{ 1, 2 };
    EXPECT_TRUE(Throws<OutOfRangeException>([&] { empty.GetBlock(0, line); }));
    EXPECT_EQ(line.EndOffset, 0U);

    JpegCompBlocksInfo index;
    index.StoreBlock({ 5, 5 });
    index.StoreBlock({ 5, 5 });
    EXPECT_EQ(index.GetBlocksSize({ 1, 0, 4000000000, 2 }), 0U);
    EXPECT_EQ(index.GetBlocksSize({ 1, 0, 2, 0 }), 0U);
    EXPECT_EQ(index.GetBlocksSize({ 1, 0, 2, 2 }), 2U);
}

TEST(JpegIndex, ABlockWithoutASizeIsRefused)
{
    for (const CompressedLine line :
         { CompressedLine{ 5, 4 }, CompressedLine{ 5, 0 }, CompressedLine{ 0, 4294967295 } }) {
        JpegCompBlocksInfo index;
        index.StoreBlock(line);
        EXPECT_TRUE(Throws<ReadFileException>([&] { index.GetBlocksSize({ 0, 0, 1, 1 }); }));
    }
    JpegCompBlocksInfo index;
    for (int i = 0; i < 3; ++i)
        index.StoreBlock({ 1, 4294967295 });
    constexpr std::uint64_t kMost = std::numeric_limits<unsigned long>::max();
    EXPECT_EQ(index.GetBlocksSize({ 0, 2, 3, 3 }),
              std::min(3 * std::uint64_t{ 4294967295 }, kMost));
}

class OpenIndex : public JpegFileInterface {
  public:
    using JpegFileInterface::OpenCompressedBlocksInfoFile;
};

TEST(JpegIndex, ASecondOpeningLeavesItAsOneReading)
{
    const JpegSample sample;
    JpegFiles files(sample);
    const auto picture = JpegFiles::Open();
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(picture->OpenPictureFile("pic.jpg", true, false, nullptr));
        EXPECT_EQ(tympan::IndexOf(*picture)->blocks.size(), 4U);
        EXPECT_EQ(picture->FileHeightInPixels(), 27U);
    }
    (picture.get()->*&OpenIndex::OpenCompressedBlocksInfoFile)();
    EXPECT_EQ(tympan::IndexOf(*picture)->blocks.size(), 4U);
    EXPECT_EQ(files.Memory().OpenCount(), 2U);
    files.Put("other.jpg", sample.Stream());
    EXPECT_FALSE(picture->OpenPictureFile("other.jpg", true, false, nullptr));
    EXPECT_FALSE(tympan::IndexOf(*picture)); // there is no side file
}

// ---- writing

std::unique_ptr<JpegFileInterface> WrittenPicture(const JpegSample& sample)
{
    std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object("new.jpg", false));
    EXPECT_TRUE(picture->ObjectStatus());
    const Bytes stream = sample.Stream();
    picture->JpegFileHandle()->Write(stream.data(), static_cast<UINT>(stream.size()));
    for (const auto& [first, last] : sample.Index())
        picture->StoreCompressedLinesBlock({ first, last });
    picture->StorePictureParams(10.0, 11.0, 1.0, 2.7, 2.0, 27.0, 20.0);
    return picture;
}

TEST(JpegIndex, IsWrittenInOnePieceWhenTheObjectGoes)
{
    const JpegSample sample{ .mcuNumber = 0 };
    JpegFiles files(sample);
    {
        const auto picture = WrittenPicture(sample);
        EXPECT_EQ(picture->ResolutionOnScanAxis(), 10.0); // assigning exchanges the two
        EXPECT_EQ(picture->ResolutionOnXScanAxis(), 11.0);
        EXPECT_EQ(picture->FileHeightInUnits(), 0.0);
        EXPECT_EQ(picture->FileWidthInPixels(), 20U);
        picture->ClosePictureFile();
        EXPECT_TRUE(files.Get("new.bin").empty());
    }
    EXPECT_EQ(files.Get("new.bin"), sample.SideFile());
    EXPECT_EQ(files.Watched().Count(FileOperation::writeAt), 2U); // the stream, the index
    EXPECT_EQ(files.Memory().OpenCount(), 0U);
    EXPECT_TRUE(tympan::IndexOf(*JpegFiles::Open("new.jpg"))->fitsFile);
}

TEST(JpegIndex, WithoutBlocksEndsBehindTheSizes)
{
    JpegFiles files;
    {
        const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object("new.jpg", false));
    }
    EXPECT_EQ(files.Get("new.bin").size(), 29U);
    EXPECT_EQ(files.Get("new.bin")[0], 0); // no factor was stored
}

TEST(JpegIndex, TakesTheSizesOfAnotherPicture)
{
    JpegFiles files;
    {
        const auto source = JpegFiles::Open();
        source->FileHeightInUnits(2.5);
        source->FileWidthInUnits(0.5);
        const std::unique_ptr<JpegFileInterface> copy(create_jpeg_file_object("copy.jpg", false));
        copy->StorePictureParams(source.get());
        EXPECT_EQ(copy->FileHeightInPixels(), 27U);
        copy->StorePictureParams(static_cast<const PictureFileInterface*>(nullptr));
    }
    EXPECT_EQ(files.Memory().Text("copy.bin"), "\1+.25000000E+01+.50000000E+00");
}

TEST(JpegIndex, ThatCannotBeWrittenIsLeftEmpty)
{
    const JpegSample sample;
    JpegFiles files(sample);
    for (const FileOperation operation : { FileOperation::writeAt, FileOperation::close }) {
        auto picture = WrittenPicture(sample);
        files.Watched().Fail(operation, 1, ENOSPC);
        picture.reset();
        EXPECT_TRUE(files.Watched().HasFailed());
        EXPECT_TRUE(files.Memory().Exists("new.bin"));
        EXPECT_TRUE(files.Get("new.bin").empty());
        EXPECT_EQ(files.Memory().OpenCount(), 0U);
        files.Watched().FailAny(0, 0);
    }
    auto picture = WrittenPicture(sample);
    files.Watched().FailAny(1, EIO, Failing::fromThereOn); // nothing helps, and nothing is thrown
    picture.reset();
    files.Watched().FailAny(0, 0);
    EXPECT_EQ(files.Memory().OpenCount(), 0U);
}

// ---- what inspecting tells

struct FitCase {
    const char* name;
    Blocks blocks; // instead of the index's last ones
    bool fits;
};

TEST(JpegIndex, FitsWhenItHasEachBandInOrderInsideTheFile)
{
    const JpegSample sample;
    const Blocks index = sample.Index();
    const auto end = static_cast<std::uint32_t>(sample.Stream().size());
    const auto [first, last] = index[2];
    const auto [lastFirst, lastLast] = index[3];
    const FitCase kCases[] = {
        { "as written", { { first, last }, { lastFirst, lastLast } }, true },
        { "to the file's end", { { first, last }, { lastFirst, end - 1 } }, true },
        { "beyond the file's end", { { first, last }, { lastFirst, end } }, false },
        { "reversed", { { first, last }, { lastFirst, lastFirst - 1 } }, false },
        { "the other way round", { { lastFirst, lastLast }, { first, last } }, false },
        { "a byte shared", { { first, lastFirst }, { lastFirst, lastLast } }, false },
        { "side by side", { { first, lastFirst - 1 }, { lastFirst, lastLast } }, true },
        { "one too few", { { first, last } }, false },
        { "one too many",
          { { first, last }, { lastFirst, lastFirst }, { lastLast, lastLast } },
          false },
    };
    for (const FitCase& one : kCases) {
        SCOPED_TRACE(one.name);
        Blocks blocks(index.begin(), index.begin() + 2);
        blocks.insert(blocks.end(), one.blocks.begin(), one.blocks.end());
        JpegFiles files(sample);
        files.Put("pic.bin", sample.SideFile(blocks));
        const auto picture = JpegFiles::Open();
        const auto told = tympan::IndexOf(*picture);
        ASSERT_TRUE(told);
        EXPECT_EQ(told->fitsFile, one.fits);
        EXPECT_EQ(told->blocks.size(), blocks.size());
        EXPECT_EQ(told->heightInUnits, 2.7);
        EXPECT_EQ(told->mcuNumber, 12U);
        picture->ClosePictureFile();
        EXPECT_FALSE(tympan::IndexOf(*picture)->fitsFile);
    }
}

} // namespace
