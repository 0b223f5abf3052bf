// Whole-file line work: what opening reads, how a walk ends, the numbers of the stream, and the
// colours.
#include "lw_variant/lw_whole_trial.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace tympan::test;
using tympan::ScopedFileSystem;
using Bytes = std::vector<unsigned char>;

// ---- opening

TEST(LwWholeOpening, ReadsNoMoreThanTheHeaderOfAHugeFile)
{
    const TemporaryFolder folder;
    const LwPicture picture{ .width = 100000,
                             .height = 60000,
                             .colours = std::vector<LwColour>(255) };
    const std::string path = folder.File("huge.lw", picture.Header());
    std::filesystem::resize_file(path, std::uintmax_t{ 5 } << 30U);
    WatchedFileSystem files(tympan::SystemFiles());
    const ScopedFileSystem scoped(files);
    const auto whole = OpenedWhole(path.c_str());
    EXPECT_EQ(whole->LwFirstRowPosition(), picture.Start());
    EXPECT_EQ(whole->GetColorIndex(255, Black), 0U);
    EXPECT_EQ(whole->IsColorExist(0, Black), 0U);
    EXPECT_EQ(whole->GetTransparentColor(Cyan), 65535U);
    const std::unique_ptr<unsigned char[]> inks(whole->GetSeparationLut(Cyan, true, nullptr));
    ColorSeparationType first = NoSeparation;
    whole->SeperationBit(first);
    EXPECT_LE(files.ByteCount(FileOperation::readAt), picture.Start());
    EXPECT_GT(files.ByteCount(FileOperation::readAt), 0U);
}

TEST(LwWholeOpening, GivesNothingForAFileThatIsRefused)
{
    MemoryFileSystem files;
    const ScopedFileSystem scoped(files);
    files.Put("refused.lw", AsText(LwPicture{ .mask = 3 }.Bytes()));
    files.Put("empty.lw", "");
    for (const char* path : { "missing.lw", "refused.lw", "empty.lw" }) {
        const std::unique_ptr<VelmarLWFileInterface> whole(
            create_velmar_lw_file_object(path, true));
        EXPECT_EQ(whole, nullptr) << path;
        const std::unique_ptr<LWFileInterface> byRows(create_lw_file_object(path, true));
        EXPECT_FALSE(byRows->ObjectStatus()) << path;
    }
    EXPECT_EQ(files.OpenCount(), 0U);
}

// ---- walks

struct WalkCase {
    const char* name = nullptr;
    LwPicture picture;
    std::size_t cut = 0; // from the file's end
    bool isSound = false;
    unsigned long code = 0;
    const char* text = kNoError;
    unsigned long built = 0;
};

const LwRow kRow5{ { 1, 3 }, { 2, 2 } }, kRow4{ { 1, 3 }, { 2, 1 } };

const WalkCase kWalkCases[] = {
    { "sound", { .height = 2, .rows{ kRow5, kRow5 } }, 0, true, 0, kNoError, 1 },
    { "one row, which isn't read", { .rows{ kRow4 } }, 6, true, 0, kNoError, 1 },
    { "a bad last row", { .height = 2, .rows{ kRow5, kRow4 } }, 0, true, 0, kNoError, 1 },
    { "a bad row", { .height = 3, .rows{ kRow5, kRow4, kRow5 } }, 0, false, 90025, kNoError, 0 },
    { "cut short", { .height = 3, .rows{ kRow5, kRow5 } }, 1, false, 90026, kNoError, 0 },
    { "no height", { .height = 0 }, 0, false, 90001, kOpeningFailed, 0 },
    { "too wide for the file", { .width = 9000000 }, 0, false, 0, kNoError, 1 },
};

TEST(LwWholeWalks, EndAsTheyAreToldTo)
{
    for (const WalkCase& walk : kWalkCases) {
        SCOPED_TRACE(walk.name);
        Bytes bytes = walk.picture.Bytes();
        bytes.resize(bytes.size() - walk.cut);
        LwWholeTrial trial(bytes);
        VelmarLWFileInterface& whole = trial.Whole();
        const auto start = [&] {
            return (whole.*
                    static_cast<int (LWFileInterface::*)() const>(&OpenLw::LwDataStartPosition))();
        };
        EXPECT_EQ(start(), 255);
        EXPECT_EQ(OpenLw::PlacesOf(whole), nullptr);
        for (int twice = 0; twice < 2; ++twice)
            EXPECT_EQ(whole.BuildLwOffsetBuffer(), walk.built);
        EXPECT_EQ(static_cast<unsigned long>(start()), whole.LwFirstRowPosition());
        EXPECT_EQ(whole.TraceStatus(), 0U);
        EXPECT_EQ(whole.ErrorMsg(), kNoError);
        EXPECT_TRUE(whole.ObjectStatus() && IsFileOpen(whole));
        EXPECT_EQ(whole.FileValidityCheck(), walk.isSound);
        EXPECT_EQ(whole.TraceStatus(), walk.code);
        EXPECT_EQ(whole.ErrorMsg(), walk.text);
        EXPECT_EQ(whole.ObjectStatus(), walk.isSound);
        EXPECT_EQ(IsFileOpen(whole), walk.isSound);
    }
}

TEST(LwWholeWalks, TheInheritedOpeningWalks)
{
    LwWholeTrial trial(LwPicture{});
    EXPECT_TRUE(trial.Whole().OpenPictureFile("sample.lw", true, true, nullptr));
    EXPECT_NE(OpenLw::PlacesOf(trial.Whole()), nullptr);
}

// Rows that can't be counted, objects without rows, and no record at all.
TEST(LwWholeWalks, WhatHasNoRowsIsRefused)
{
    MemoryFileSystem files;
    const ScopedFileSystem scoped(files);
    files.Put("flat.lw", AsText(LwPicture{ .height = 0 }.Bytes()));
    files.Put("thin.lw", AsText(LwPicture{ .width = 0, .height = 2147483647 }.Bytes()));
    for (const char* path : { "flat.lw", "thin.lw", "new.lw" }) {
        SCOPED_TRACE(path);
        const auto whole = OpenedWhole(path, path != std::string("new.lw"));
        EXPECT_EQ(whole->GetLWBufferSize(), 0U);
        EXPECT_EQ(whole->TraceStatus(), 90001U);
        EXPECT_EQ(whole->ErrorMsg(), "LWInterface: Error counting LW buffer size, aborting!");
        EXPECT_EQ(whole->GetLWBufferSize(0, 2147483646, 1, 0, false), 0U);
        EXPECT_EQ(whole->BuildLwOffsetBuffer(), 0U);
        EXPECT_FALSE(whole->FileValidityCheck());
        EXPECT_EQ(whole->TraceStatus(), path == std::string("thin.lw") ? 90025U : 90001U);
    }
    const auto whole = OpenedWhole("flat.lw");
    const std::unique_ptr<PictureParameters> record(whole->PictureParams());
    (whole.get()->*static_cast<void (BasePictureIF::*)(PictureParameters* const)>(
                       &LwWholeHooks::PictureParams))(nullptr);
    ColorSeparationType first = Cyan;
    whole->SeperationBit(first);
    EXPECT_EQ(first, NoSeparation);
    EXPECT_EQ(whole->GetLWBufferSize(), 0U);
    EXPECT_EQ(whole->GetLwPictureParams(), nullptr);
    EXPECT_EQ(whole->GetLWBufferSize(0, 0, 1, 0, false), 8U); // of a row without a width
    EXPECT_FALSE(whole->FileValidityCheck());
}

// ---- the stream

struct StreamCase {
    const char* name;
    unsigned int width;
    std::vector<unsigned char> row; // lengths
    unsigned int first, last;
    std::size_t runs;                 // of each row of the stream
    std::vector<unsigned char> front; // their lengths
    std::size_t rows;                 // that come
};

std::vector<unsigned char> Full(std::size_t count, std::vector<unsigned char> more)
{
    more.insert(more.begin(), count, 255);
    return more;
}

const StreamCase kStreamCases[] = {
    { "17 runs become 18", 4096, Full(16, { 16 }), 0, 1, 18, Full(16, { 15, 1 }), 2 },
    { "18 runs stay", 4096, Full(16, { 8, 8 }), 0, 1, 18, Full(16, { 8, 8 }), 2 },
    { "white of 3096", 1000, Full(3, { 235 }), 0, 0, 17, Full(12, { 36, 255 }), 1 },
    { "white of 396", 3700, Full(14, { 130 }), 0, 0, 17, { 255, 141, 255 }, 1 },
    { "white of 510", 3586, Full(14, { 16 }), 0, 0, 17, { 255, 255, 255 }, 1 },
    { "one row, the first", 4096, Full(16, { 16 }), 5, 5, 18, Full(16, { 15, 1 }), 1 },
    { "the highest number", 4096, Full(16, { 16 }), ~0U, ~0U, 18, Full(16, { 15, 1 }), 1 },
    { "no row", 4096, Full(16, { 16 }), 6, 5, 0, {}, 0 },
};

TEST(LwWholeStream, BeginsWithTheFirstRow)
{
    for (const StreamCase& stream : kStreamCases) {
        SCOPED_TRACE(stream.name);
        LwRow row;
        for (const unsigned char length : stream.row)
            row.push_back({ static_cast<unsigned char>(200 + row.size()), length });
        LwRow second = row;
        second.front().index = 9; // no colour has it, nor 200
        LwWholeTrial trial(LwPicture{ .width = stream.width, .height = 2, .rows{ row, second } });
        const LwAnswer answer =
            trial.Same(kPlacing, { .first = stream.first, .last = stream.last, .white = 1 });
        EXPECT_EQ(answer.code, 0U);
        EXPECT_EQ(answer.result, stream.rows * (4 + 2 * stream.runs));
        for (std::size_t i = 0; i < stream.front.size(); ++i)
            EXPECT_EQ(answer.bytes[2 * i + 3], stream.front[i]) << i;
        EXPECT_EQ(answer.bytes[2], stream.rows == 0 ? kUnstored : stream.width == 4096 ? 200 : 1);
        EXPECT_GE(answer.position, trial.Whole().LwFirstRowPosition());
    }
}

// The hook by itself: the runs in front make no difference.
TEST(LwWholeStream, WhiteIsDividedByItsLengthAlone)
{
    LwWholeTrial trial(LwPicture{ .width = 3700 });
    for (unsigned long runs = 0; runs < 4; ++runs) {
        Bytes given(6);
        unsigned char* end = given.data();
        EXPECT_EQ(
            (trial.Whole().*&LwWholeHooks::CompleteLineTo4096)(end, 0, 1, 7, runs, runs % 3 == 0),
            4U);
        EXPECT_EQ(end, given.data() + 4);
        EXPECT_EQ(given, runs % 3 == 0 ? Bytes({ 7, 255, 7, 141, 0, 0 })
                                       : Bytes({ 255, 7, 141, 7, 0, 0 }));
    }
    EXPECT_TRUE((trial.Whole().*&LwWholeHooks::CanAddMarkers)(7));
}

TEST(LwWholeStream, ItsSizeStaysWhenAnotherCantBeCounted)
{
    LwWholeTrial trial(LwPicture{ .height = 2, .rows{ { { 1, 5 } }, { { 2, 5 } } } });
    VelmarLWFileInterface& whole = trial.Whole();
    EXPECT_EQ(whole.GetLwPictureParams()->LwFileSize(), 0U);
    EXPECT_EQ(trial.Same(kWholeSize).result, 14U);
    unsigned char none[1] = {};
    unsigned char* buffer = none;
    unsigned long* offsets = nullptr;
    EXPECT_EQ(whole.GetLWPictureRows(buffer, 0, 1, offsets, 0, Cyan, 0, 0, 1, 0, true), 0U);
    EXPECT_EQ(whole.TraceStatus(), 90020U);
    EXPECT_EQ(whole.GetLWBufferSize(0, 1, 0, 0, true), 0U);
    EXPECT_EQ(whole.GetLWBufferSize(0, 2, 1, 0, false), 0U);
    EXPECT_EQ(whole.GetLWBufferSize(0, 1, ~0U, ~0UL, false), 0U);
    EXPECT_EQ(whole.TraceStatus(), 90001U);
    EXPECT_EQ(whole.GetLwPictureParams()->LwFileSize(), 14U);
}

// ---- colours

// By loading, the transparent ink of cyan becomes 0, and that of black 1.
const LwPicture kColours{ .colours{ { { 100, 7, 9, 0 } },
                                    { { 50, 60, 70, 8 }, 0x80 },
                                    { { 255, 255, 255, 255 } },
                                    { { 100, 7, 9, 0 }, 0x10 } } };

struct TableCase {
    const char* name;
    int separation;
    bool transparentToWhite, isMapped;
    std::vector<unsigned char> inks;
};

const TableCase kTableCases[] = {
    { "as it stands", Cyan, false, false, { 100, 0, 255, 100 } },
    { "transparent to white", Cyan, true, false, { 100, 255, 255, 100 } },
    { "mapped", Cyan, false, true, { 155, 0, 255, 155 } },
    { "mapped and white", Cyan, true, true, { 155, 255, 255, 155 } },
    { "another separation", Black, true, true, { 255, 247, 255, 255 } },
    { "none transparent", Magenta, true, true, { 248, 195, 255, 248 } },
    { "no separation", 4, true, true, { 255, 255, 255, 255 } },
    { "below all", -1, false, false, { 255, 255, 255, 255 } },
};

TEST(LwWholeColours, AreInTheTablesByTheRules)
{
    LwWholeTrial trial(kColours);
    unsigned char complement[256];
    for (int value = 0; value < 256; ++value)
        complement[value] = static_cast<unsigned char>(255 - value);
    for (const TableCase& table : kTableCases) {
        const std::unique_ptr<unsigned char[]> inks(trial.Whole().GetSeparationLut(
            static_cast<ColorSeparationType>(table.separation), table.transparentToWhite,
            table.isMapped ? complement : nullptr));
        EXPECT_EQ(Bytes(inks.get(), inks.get() + 4), table.inks) << table.name;
    }
}

TEST(LwWholeColours, AreFoundByTheirInk)
{
    LwWholeTrial trial(kColours);
    LwWholeTrial empty(LwPicture{ .mask = 8, .colours{} });
    const auto ask = [](LwWholeTrial& asked, unsigned char value, int separation) {
        const auto as = static_cast<ColorSeparationType>(separation);
        return std::pair<int, int>(asked.Whole().GetColorIndex(value, as),
                                   asked.Whole().IsColorExist(value, as));
    };
    EXPECT_EQ(ask(trial, 100, Cyan), std::pair(0, 1));
    EXPECT_EQ(ask(trial, 255, Yellow), std::pair(2, 1));
    EXPECT_EQ(ask(trial, 100, Black), std::pair(4, 0));
    EXPECT_EQ(ask(trial, 100, 4), std::pair(4, 0));
    EXPECT_EQ(ask(trial, 255, -1), std::pair(0, 1));
    EXPECT_EQ(ask(empty, 100, Cyan), std::pair(0, 0));
    const unsigned long kTransparent[] = { 0, 0, 0, 1 };
    for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black })
        EXPECT_EQ(trial.Whole().GetTransparentColor(separation),
                  kTransparent[static_cast<std::size_t>(separation)]);
    EXPECT_EQ(trial.Whole().GetTransparentColor(NoSeparation), 65535U);
    EXPECT_EQ(empty.Whole().GetTransparentColor(Cyan), 65535U);
    ColorSeparationType first = NoSeparation;
    trial.Whole().SeperationBit(first);
    EXPECT_EQ(first, Cyan);
    empty.Whole().SeperationBit(first);
    EXPECT_EQ(first, Black);
}

} // namespace
