// The cases of line work that random pictures don't come upon, each with the answer it must have, and
// the objects that no picture is open in.
#include "core/failures.h"
#include "lw/lw_trial.h"
#include "support/ask_lw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>

namespace {

using namespace tympan::test;
using tympan::ScopedFileSystem;
using Bytes = std::vector<unsigned char>;
using Lengths = std::vector<unsigned int>;

// ---- run streams

Lengths Many(std::size_t count, unsigned int length, const Lengths& more)
{
    Lengths lengths(count, length);
    lengths.insert(lengths.end(), more.begin(), more.end());
    return lengths;
}

LwPicture TwoRowsOf(unsigned int width, const Lengths& lengths)
{
    LwRow row;
    for (const unsigned int length : lengths)
        row.push_back(
            { static_cast<unsigned char>(1 + row.size() % 2), static_cast<unsigned char>(length) });
    return { .width = width, .height = 2, .rows = { row, row } };
}

struct PlacingCase {
    const char* name;
    unsigned int width;
    Lengths row;
    unsigned int copies;
    unsigned long gap;
    unsigned long runs; // of each row of the stream
    Lengths front, end; // of each row
};

const Lengths kFour = Many(3, 255, { 235 });

const PlacingCase kPlacingCases[] = {
    { "17 runs become 18", 4096, Many(16, 255, { 16 }), 1, 0, 18, { 255 }, { 255, 15, 1 } },
    { "18 runs stay", 4096, Many(16, 255, { 8, 8 }), 1, 0, 18, { 255 }, { 8, 8 } },
    { "the last of 1", 4096, Many(15, 255, { 100, 100, 70, 1 }), 1, 0, 20, {}, { 70, 0, 1 } },
    { "white of 3096", 1000, kFour, 1, 0, 17, Many(12, 255, { 36 }), { 235 } },
    { "white of 396", 3700, Many(14, 255, { 130 }), 1, 0, 18, { 254, 1, 141 }, { 255, 130 } },
    { "three copies", 1000, kFour, 3, 100, 19, { 255, 255, 254, 1, 131 }, Many(1, 100, kFour) },
};

TEST(LwCases, ThePlacingStreamKeepsItsParity)
{
    for (const PlacingCase& placing : kPlacingCases) {
        SCOPED_TRACE(placing.name);
        LwTrial trial(TwoRowsOf(placing.width, placing.row));
        const LwAnswer answer = trial.Same(
            kPlacing,
            { .last = 1, .baseOffset = 1000, .whiteGap = placing.gap, .copies = placing.copies });
        ASSERT_EQ(answer.result, 2U);
        ASSERT_EQ(answer.offsets, (std::vector<unsigned long>{ 1000, 1004 + 2 * placing.runs }));
        Lengths lengths; // of the first row
        for (std::size_t run = 1; run <= placing.runs; ++run)
            lengths.push_back(answer.bytes[2 * run + 1]);
        EXPECT_EQ(std::accumulate(lengths.begin(), lengths.end(), 0U), 4096U);
        EXPECT_TRUE(std::equal(placing.front.begin(), placing.front.end(), lengths.begin()));
        EXPECT_TRUE(std::equal(placing.end.rbegin(), placing.end.rend(), lengths.rbegin()));
    }
}

// The hook by itself, with runs in front that the library's own calls never have.
TEST(LwCases, WhiteIsThatOfTheRulesForAnyRuns)
{
    for (const unsigned int width : { 1U, 254U, 3586U, 3700U, 4000U, 4096U, 70000U }) {
        OpenLw picture;
        picture.PictureParams()->WidthInPixels(width);
        const LwReference reference({},
                                    dynamic_cast<LwPictureParameters&>(*picture.PictureParams()));
        for (unsigned int runs = 0; runs < 24; ++runs) {
            LwCall call{ .flag = runs % 3 == 0, .whiteGap = runs * 85UL, .copies = 1 + runs % 4 };
            const Bytes wanted = reference.Completion(call, runs);
            Bytes given(wanted.size());
            unsigned char* end = given.data();
            EXPECT_EQ(picture.CompleteLineTo4096(end, call.whiteGap, call.copies, call.white, runs,
                                                 !call.flag),
                      wanted.size());
            EXPECT_EQ(end, given.data() + given.size());
            EXPECT_EQ(given, wanted) << width << ' ' << runs;
        }
    }
}

// ---- rows

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(LwCases, ARowAtAnyResolution)
{
    LwTrial trial(TwoRowsOf(5, { 3, 2 }));
    const auto ask = [&](unsigned int row, double across, double along, unsigned long code) {
        const LwAnswer answer =
            trial.Same(kRow, { .first = row, .across = across, .along = along });
        EXPECT_EQ(answer.code, code) << row << ' ' << across << ' ' << along;
        EXPECT_EQ(answer.result, 0U) << row << ' ' << across << ' ' << along;
    };
    for (const double bad : { 0.0, -1.0, kNan, std::numeric_limits<double>::infinity() }) {
        ask(1, bad, 1, 90020);
        ask(1, 1, bad, 90020);
    }
    for (const double along : { 1.0, 0.5, 1e-300 })
        for (const unsigned int row : { 2U, 4294967295U })
            ask(row, 1, along, 0);
    for (const double inches : { 0.0, 1e9 }) { // resolutions without end, and of 0
        LwPicture picture = TwoRowsOf(5, { 3, 2 });
        picture.inchesHigh = inches;
        EXPECT_EQ(LwTrial(picture).Same(kRow).code, 90020U) << inches;
    }
}

TEST(LwCases, RowsThatHaveNoPlaceAreRefused)
{
    LwTrial trial(TwoRowsOf(5, { 3, 2 }));
    OpenLw& picture = trial.Picture();
    const unsigned long long* const places = picture.LwFileArray();
    const std::unique_ptr<const unsigned long long[]> owned(places); // no longer the object's
    unsigned char buffer[8] = {};
    picture.LwFileArray(new unsigned long long[2]{ 1ULL << 32U, 0 });
    for (const unsigned int row : { 0U, 1U })
        EXPECT_EQ(picture.GetPictureRow(buffer, row, Cyan, picture.ResolutionOnScanAxis(),
                                        picture.ResolutionOnXScanAxis(), 8),
                  0U);
    EXPECT_EQ(picture.TraceStatus(), 0U);
    EXPECT_EQ(picture.GetOriginalPictureRow(buffer, 1, false), 0U);
    EXPECT_EQ(picture.TraceStatus(), 90020U);
    EXPECT_EQ(picture.GetPictureRow(Cyan, 0, 1, 1), nullptr);
    EXPECT_EQ(picture.GetPictureRows(Cyan, 0, 1, false), nullptr);
    EXPECT_EQ(picture.GetBufferSize(0, 1, false), 10U);
    EXPECT_THROW(picture.GetBufferSize(0, 2, false), IllegalRowsException);
}

template <typename Failure>
bool Throws(OpenLw& picture, int index, int separation)
{
    try {
        picture.GetColorValue(index, static_cast<ColorSeparationType>(separation));
    } catch (Failure* failure) {
        delete failure;
        return true;
    }
    return false;
}

TEST(LwCases, AColourByItsIndex)
{
    LwTrial trial{ LwPicture{} };
    EXPECT_EQ(trial.Picture().GetColorValue(2, Black), 80);
    for (const int index : { -1, 0, 3 })
        EXPECT_TRUE(Throws<LWFileInterface::IllegalColorIndexException>(trial.Picture(), index, 3));
    for (const int separation : { -1, 4, 6 }) // which is looked at first
        EXPECT_TRUE(Throws<IllegalSeparationException>(trial.Picture(), 3, separation));
}

// ---- opening

struct OpeningCase {
    const char* name = "";
    LwPicture picture{};
    bool opens = false;
    unsigned long code = 0;
};

TEST(LwCases, OpeningProvesAllRowsButTheLast)
{
    const LwRow good{ { 1, 3 }, { 2, 2 } }, bad{ { 1, 3 }, { 2, 3 } };
    const LwRow three{ { 1, 3 } }, two{ { 1, 2 } };
    const OpeningCase kOpenings[] = {
        { "no colours", { .height = 2, .colours = {}, .rows = { good, good } }, true, 0 },
        { "no width", { .width = 0, .height = 2, .rows = { {}, {} } }, true, 0 },
        { "no height", { .height = 0 }, false, 90001 },
        { "the tallest", { .height = 2147483647 }, false, 90001 },
        { "wider than a file so short may ask memory for", { .width = 2147483647 }, false, 0 },
        { "the first wrong", { .height = 2, .rows = { bad, good } }, false, 90025 },
        { "the last wrong", { .height = 2, .rows = { good, bad } }, true, 0 },
        { "two short rows as one", { .height = 2, .rows = { three, two } }, true, 0 },
    };
    for (const OpeningCase& opening : kOpenings) {
        SCOPED_TRACE(opening.name);
        LwTrial trial(opening.picture);
        EXPECT_EQ(trial.IsOpen(), opening.opens);
        EXPECT_EQ(trial.Picture().TraceStatus(), opening.code);
        AskEverything(trial.Picture(), "cropped.lw");
    }
}

class LwObjects : public testing::Test {
  protected:
    ~LwObjects() override { EXPECT_EQ(files_.OpenCount(), 0U); }
    MemoryFileSystem files_;
    ScopedFileSystem scoped_{ files_ };
};

TEST_F(LwObjects, WithoutRowsAnswerAllTheSame)
{
    LwPictureParameters sizes;
    sizes.HeightInPixels(3);
    sizes.WidthInPixels(3);
    for (const bool isOutput : { false, true }) {
        OpenLw picture(isOutput ? "new.lw" : "missing.lw", !isOutput);
        EXPECT_EQ(picture.ObjectStatus(), isOutput);
        EXPECT_EQ(picture.TraceStatus(), 0U);
        EXPECT_EQ(picture.ErrorMsg(), kNoError);
        EXPECT_EQ(picture.LwDataStartPosition(), 255);
        EXPECT_EQ(picture.LwFileArray(), nullptr);
        picture.StorePictureParams(&sizes);
        EXPECT_EQ(picture.FileWidthInPixels(), 3U);
        AskEverything(picture, "cropped.lw");
        EXPECT_EQ(files_.Contents("cropped.lw").size(), 0U);
        EXPECT_FALSE(picture.FileValidityCheck());
        EXPECT_EQ(picture.TraceStatus(), 90001U);
        EXPECT_EQ(picture.ErrorMsg(), kOpeningFailed);
    }
}

TEST_F(LwObjects, OpenAgain)
{
    files_.Put("one.lw", AsText(LwPicture{}.Bytes()));
    OpenLw picture("one.lw");
    ASSERT_TRUE(picture.ObjectStatus());
    const LwPicture taller = TwoRowsOf(5, { 1, 1, 3 });
    CFile file("one.lw", CFile::modeReadWrite);
    file.Write(taller.Bytes().data(), static_cast<UINT>(taller.Bytes().size()));
    // By its title: the rows are walked anew, by the record as it stands.
    EXPECT_TRUE(picture.OpenPictureFile("one.lw", true, false, nullptr));
    EXPECT_EQ(picture.FileHeightInPixels(), 1U);
    EXPECT_TRUE(picture.OpenPictureFile("one.lw", true, true, nullptr));
    EXPECT_EQ(picture.FileHeightInPixels(), 2U);
    EXPECT_EQ(picture.LwFileArray()[1], taller.Place(1));

    EXPECT_FALSE(picture.OpenPictureFile("missing.lw", true, false, nullptr));
    EXPECT_EQ(picture.TraceStatus(), 0U);
    EXPECT_EQ(picture.PictureParams()->BitsPerSample(), 8U);
    EXPECT_EQ(picture.ResolutionOnScanAxis(), 0.0);
    picture.TraceStatus(90020);
    EXPECT_FALSE(picture.OpenPictureFile("missing.lw", true, false, nullptr));
    EXPECT_EQ(picture.TraceStatus(), 90001U);
    EXPECT_EQ(picture.ErrorMsg(), "LW File Interface:\n:Error Opening file, aborting!");
    CFileException mine;
    EXPECT_FALSE(picture.OpenPictureFile("missing.lw", true, false, &mine));
    EXPECT_EQ(picture.ErrorMsg(), kOpeningFailed);
    EXPECT_EQ(mine.m_cause, CFileException::fileNotFound);
}

// ---- for derived classes

template <typename Failure, typename Work>
std::string TextOfFailure(Work&& work)
{
    try {
        work();
    } catch (Failure* thrown) {
        const std::unique_ptr<Failure> owned(thrown);
        return owned->MessageText().GetString();
    }
    return {};
}

TEST_F(LwObjects, ReadTwoBytesAtATime)
{
    const LwPicture sample{ .colours = { { { 7, 7, 7, 7 }, 0xF0 } } };
    files_.Put("sample.lw", AsText(sample.Bytes()));
    OpenLw picture("sample.lw");
    picture.FileHandle().Seek(picture.LwDataStartPosition(), CFile::begin);
    unsigned char pair[] = { 9, 9 };
    unsigned char copy[] = { 9, 9, 9 };
    unsigned char* out = copy;
    picture.CopyRowDelimiters(pair, out);
    EXPECT_EQ(out, copy + 2);
    EXPECT_EQ(Bytes(copy, copy + 3), (Bytes{ 0, 0, 9 }));
    const auto check = [&] { picture.CheckRowDelimiters(pair); };
    EXPECT_EQ(TextOfFailure<FileCorruptedException>(check), "Row delimiter missing!"); // a run
    picture.FileHandle().Seek(-1, CFile::end);
    EXPECT_EQ(TextOfFailure<ReadFileException>(check), "Could not read LW file!");

    const int width = static_cast<int>(sample.width);
    EXPECT_NO_THROW(picture.CheckRowIntegrity(width));
    EXPECT_EQ(TextOfFailure<FileCorruptedException>([&] { picture.CheckRowIntegrity(width + 1); }),
              "Bad row integrity!");

    auto& record = dynamic_cast<LwPictureParameters&>(*picture.PictureParams());
    record.SetTransparentColor(Cyan, 99);
    picture.CalcTableTransparentColor();
    EXPECT_NE(record.GetTransparentColor(Cyan), 99);
    const std::unique_ptr<unsigned long long[]> places(picture.LwFileArray());
    picture.LwFileArray(nullptr);
    EXPECT_EQ(picture.LwFileArray(), nullptr);
}

// ---- writing

TEST_F(LwObjects, GreyRowsBecomeRuns)
{
    const struct {
        Bytes pixels, bytes; // of the row
    } kGreys[] = {
        { {}, {} },
        { { 0, 0, 64, 63 }, { 0, 0, 1, 2, 64, 1, 64, 1, 0, 0 } },
        { { 255, 65, 62 }, { 0, 0, 255, 1, 65, 1, 63, 1, 0, 0 } },
        { Bytes(255, 9), { 0, 0, 10, 255, 0, 0 } },
        { Bytes(300, 200), { 0, 0, 200, 255, 200, 45, 0, 0 } },
    };
    OpenLw picture;
    for (const auto& [pixels, bytes] : kGreys) {
        Bytes copy = pixels;
        CFile file("row", CFile::modeCreate | CFile::modeWrite);
        EXPECT_EQ(
            picture.SetLWPictureRow(copy.data(), file, static_cast<unsigned long>(copy.size())),
            bytes.empty() ? 0 : bytes.size() / 2 - 2);
        EXPECT_EQ(UnsignedBytes(files_.Contents("row")), bytes);
    }
    CFile file("row", CFile::modeCreate | CFile::modeWrite);
    unsigned char row[] = { 1, 2, 3 };
    picture.SaveLWRun(file, 7, 8);
    picture.SaveLWRow(file, row, 3);
    picture.SaveLWRow(file, row, 0);
    picture.SaveLWRow(file, row, -1);
    EXPECT_EQ(UnsignedBytes(files_.Contents("row")), (Bytes{ 7, 8, 1, 2, 3 }));
}

// ---- crops

TEST(LwCases, CropsByNumbersOfAnyKind)
{
    const struct {
        CompressParameters crop;
        double width, height;
    } kCrops[] = {
        { { 0, 0, 0, 0 }, 300, 2 },
        { { 20, 40, 2, 2 }, 21, 1 },
        { { 4.9, 9.9, 1.9, 2.9 }, 6, 2 },
        { { 0.5, 1.5, 0.5, 1.5 }, 1, 1 },
        { { kNan, kNan, kNan, kNan }, 300, 2 },
    };
    LwPicture picture = TwoRowsOf(300, { 3, 0, 5, 255, 37 });
    picture.inchesHigh = 2.0;
    picture.inchesWide = 300.0;
    for (const auto& [crop, width, height] : kCrops) {
        SCOPED_TRACE(width);
        LwTrial trial(picture);
        LwTrial cropped(trial.Same(kCrop, { .crop = crop }).bytes);
        ASSERT_TRUE(cropped.IsOpen());
        EXPECT_EQ(cropped.Picture().PictureParams()->WidthInPixels(), width);
        EXPECT_EQ(cropped.Picture().PictureParams()->HeightInPixels(), height);
        EXPECT_NEAR(cropped.Picture().ResolutionOnScanAxis(), 1.0, 0.001);
        EXPECT_NEAR(cropped.Picture().ResolutionOnXScanAxis(), 1.0, 0.001);
    }
    LwTrial trial(picture);
    CFile target;
    trial.Picture().CreateCropedLWFile(trial.Picture().FileHandle(), target, nullptr);
}

} // namespace
