// The cases of line work that random pictures don't come upon, each with the answer it must have, and
// the objects that no picture is open in.
#include "core/failures.h"
#include "lw/lw_trial.h"
#include "support/ask_lw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <numeric>
#include <random>

namespace {

using tympan::ScopedFileSystem;
using tympan::test::AsText;
using tympan::test::kNoError;
using tympan::test::kOpeningFailed;
using tympan::test::LwAnswer;
using tympan::test::LwCall;
using tympan::test::LwPicture;
using tympan::test::LwRow;
using tympan::test::LwTrial;
using tympan::test::MemoryFileSystem;
using tympan::test::OpenLw;
using tympan::test::UnsignedBytes;
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
    std::size_t runs;   // of each row of the stream
    Lengths front, end; // of each row
};

const Lengths kFour = Many(3, 255, { 235 });

const PlacingCase kPlacingCases[] = {
    { "17 runs become 18", 4096, Many(16, 255, { 16 }), 1, 0, 18, { 255 }, { 255, 15, 1 } },
    { "18 runs stay", 4096, Many(16, 255, { 8, 8 }), 1, 0, 18, { 255 }, { 8, 8 } },
    { "the last of 1", 4096, Many(15, 255, { 100, 100, 70, 1 }), 1, 0, 20, {}, { 70, 0, 1 } },
    { "exact with a gap", 2000, Many(7, 255, { 215 }), 2, 96, 18, { 255 }, { 255, 214, 1 } },
    { "white of 3096", 1000, kFour, 1, 0, 17, Many(12, 255, { 36 }), { 235 } },
    { "white of 396", 3700, Many(14, 255, { 130 }), 1, 0, 18, { 254, 1, 141 }, { 255, 130 } },
    { "white of 96", 4000, Many(15, 255, { 175 }), 1, 0, 17, { 96, 255 }, { 175 } },
    { "white of 510", 3586, Many(14, 255, { 16 }), 1, 0, 18, { 255, 254, 1, 255 }, { 16 } },
    { "three copies", 1000, kFour, 3, 100, 19, { 255, 255, 254, 1, 131 }, Many(1, 100, kFour) },
    { "a gap of 255", 1000, kFour, 2, 255, 18, Many(6, 255, { 254, 1 }), Many(1, 255, kFour) },
    { "a gap of 256", 1000, kFour, 2, 256, 19, Many(6, 255, { 254, 1 }), Many(1, 1, kFour) },
};

TEST(LwCases, ThePlacingStreamKeepsItsParity)
{
    for (const PlacingCase& placing : kPlacingCases) {
        SCOPED_TRACE(placing.name);
        LwTrial trial(TwoRowsOf(placing.width, placing.row));
        LwCall call{ .last = 1 };
        call.copies = placing.copies;
        call.whiteGap = placing.gap;
        call.baseOffset = 1000;
        const LwAnswer answer = trial.Same(tympan::test::kPlacing, call);
        ASSERT_EQ(answer.result, 2U);
        ASSERT_EQ(answer.offsets, (std::vector<unsigned long>{ 1000, 1004 + 2 * placing.runs }));
        for (const std::size_t start : { std::size_t{ 0 }, 4 + 2 * placing.runs }) {
            Lengths lengths;
            for (std::size_t run = 1; run <= placing.runs; ++run)
                lengths.push_back(answer.bytes[start + 2 * run + 1]);
            EXPECT_EQ(std::accumulate(lengths.begin(), lengths.end(), 0U), 4096U);
            EXPECT_TRUE(std::equal(placing.front.begin(), placing.front.end(), lengths.begin()));
            EXPECT_TRUE(std::equal(placing.end.rbegin(), placing.end.rend(), lengths.rbegin()));
        }
    }
}

TEST(LwCases, ThePlainStreamIsTheRowInInk)
{
    LwTrial trial(LwPicture{ .mask = 8, .colours = { { { 1, 2, 3, 200 } }, { { 1, 2, 3, 10 } } } });
    LwCall call{ .separation = Black };
    const auto stream = [&] {
        LwAnswer answer = trial.Same(tympan::test::kPlain, call);
        answer.bytes.resize(answer.bytes.size() - 64);
        return answer.bytes;
    };
    EXPECT_EQ(stream(), (Bytes{ 0, 0, 200, 3, 10, 2, 0, 0 }));
    call.flag = true;
    call.padding = { 1, 7, 2 };
    EXPECT_EQ(stream(), (Bytes{ 0, 0, 3, 200, 2, 10, 255, 10, 7, 10, 0, 0 }));
    call.padding = { 0, 1, 3 };
    EXPECT_EQ(trial.Same(tympan::test::kPlain, call).code, 90020U);
    call.padding = { 0, 0, 3 };
    EXPECT_EQ(trial.Same(tympan::test::kPlain, call).code, 0U);
}

// The hooks by themselves, with runs in front of them that the library's own calls never have.
TEST(LwCases, WhiteIsThatOfTheRulesForAnyRuns)
{
    for (const unsigned int width : { 1U, 254U, 3586U, 3700U, 4000U, 4095U, 4096U, 70000U }) {
        OpenLw picture;
        picture.PictureParams()->WidthInPixels(width);
        const tympan::test::LwReference reference(
            {}, dynamic_cast<LwPictureParameters&>(*picture.PictureParams()));
        for (unsigned int runs = 0; runs < 24; ++runs) {
            LwCall call{ .flag = runs % 3 == 0 };
            call.copies = 1 + runs % 4;
            call.whiteGap = runs * 85UL;
            call.white = 77;
            Bytes wanted = reference.Completion(call, runs);
            const Bytes gap = tympan::test::LwReference::Gap(call);
            wanted.insert(wanted.end(), gap.begin(), gap.end());
            Bytes given(wanted.size());
            unsigned char* end = given.data();
            unsigned long count =
                picture.CompleteLineTo4096(end, call.whiteGap, call.copies, 77, runs, !call.flag);
            count += picture.AddWhiteColsGap(call.whiteGap, end, 77, call.flag);
            EXPECT_EQ(count, wanted.size()) << width << ' ' << runs;
            EXPECT_EQ(end, given.data() + given.size());
            EXPECT_EQ(given, wanted) << width << ' ' << runs;
        }
    }
}

// ---- rows

struct RowCase {
    const char* name;
    unsigned int row;
    double across, along;
    ColorSeparationType separation;
    unsigned long code, result;
};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

constexpr RowCase kRowCases[] = {
    { "as it is", 1, 1, 1, Black, 0, 5 },
    { "twice as wide", 1, 2, 1, Black, 0, 5 },
    { "rows repeated", 3, 1, 2, Black, 0, 5 },
    { "no pixel left", 1, 0.01, 1, Black, 0, 5 },
    { "just beyond", 2, 1, 1, Black, 0, 0 },
    { "mapped beyond", 1, 1, 0.5, Black, 0, 0 },
    { "the highest", 4294967295U, 1, 1, Black, 0, 0 },
    { "the highest, mapped further", 4294967295U, 1, 1e-300, Black, 0, 0 },
    { "no plate", 1, 1, 1, NoSeparation, 90020, 0 },
    { "below the plates", 1, 1, 1, static_cast<ColorSeparationType>(-1), 90020, 0 },
    { "0 across", 1, 0, 1, Black, 90020, 0 },
    { "0 along", 1, 1, 0, Black, 90020, 0 },
    { "below 0", 1, -1, 1, Black, 90020, 0 },
    { "below 0 along", 1, 1, -1, Black, 90020, 0 },
    { "not a number", 1, kNan, 1, Black, 90020, 0 },
    { "not a number along", 1, 1, kNan, Black, 90020, 0 },
    { "without end", 1, kInfinite, 1, Black, 90020, 0 },
    { "without end along", 1, 1, kInfinite, Black, 90020, 0 },
};

TEST(LwCases, ARowAtAnyResolution)
{
    LwTrial trial(TwoRowsOf(5, { 3, 2 }));
    for (const RowCase& asked : kRowCases) {
        SCOPED_TRACE(asked.name);
        LwCall call{ asked.row, 0, asked.separation };
        call.across = asked.across;
        call.along = asked.along;
        const LwAnswer answer = trial.Same(tympan::test::kRow, call);
        EXPECT_EQ(answer.code, asked.code);
        EXPECT_EQ(answer.result, asked.result);
    }
    for (const double inches : { 0.0, 1e9 }) { // resolutions without end, and of 0
        LwPicture picture = TwoRowsOf(5, { 3, 2 });
        picture.inchesHigh = inches;
        EXPECT_EQ(LwTrial(picture).Same(tympan::test::kRow).code, 90020U) << inches;
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

struct ColourCase {
    int index, separation, value; // below 0: -1 the index, -2 the separation is illegal
};

TEST(LwCases, AColourByItsIndex)
{
    LwTrial trial{ LwPicture{} };
    for (const ColourCase colour : { ColourCase{ 1, 0, 10 },
                                     { 2, 3, 80 },
                                     { 0, 0, -1 },
                                     { 3, 0, -1 },
                                     { -1, 3, -1 },
                                     { 1, 4, -2 },
                                     { 1, -1, -2 },
                                     { 3, 6, -2 } }) {
        int value = 0;
        try {
            value = trial.Picture().GetColorValue(
                colour.index, static_cast<ColorSeparationType>(colour.separation));
        } catch (LWFileInterface::IllegalColorIndexException* failure) {
            delete failure;
            value = -1;
        } catch (IllegalSeparationException* failure) {
            delete failure;
            value = -2;
        }
        EXPECT_EQ(value, colour.value) << colour.index << ' ' << colour.separation;
    }
}

// ---- opening

struct OpeningCase {
    const char* name = "";
    LwPicture picture{};
    std::size_t cutBy = 0; // bytes off the end
    bool opens = false;
    unsigned long code = 0;
};

TEST(LwCases, OpeningProvesAllRowsButTheLast)
{
    const auto with = [](unsigned int height, std::size_t colours, std::vector<LwRow> rows) {
        return LwPicture{ .height = height,
                          .colours = std::vector<tympan::test::LwColour>(colours),
                          .rows = std::move(rows) };
    };
    const LwRow good{ { 1, 3 }, { 2, 2 } }, bad{ { 1, 3 }, { 2, 3 } }, hollow{ { 1, 0 }, { 9, 5 } };
    const OpeningCase kOpenings[] = {
        { "one row", with(1, 2, { good }), 0, true, 0 },
        { "one row that isn't there", with(1, 2, { good }), 12, true, 0 },
        { "no colours", with(2, 0, { good, good }), 0, true, 0 },
        { "all colours", with(2, 255, { good, good }), 0, true, 0 },
        { "no width", LwPicture{ .width = 0, .height = 2, .rows = { {}, {} } }, 0, true, 0 },
        { "no height", with(0, 2, { good }), 0, false, 90001 },
        { "the tallest", with(2147483647, 2, { good }), 0, false, 90001 },
        { "the first wrong", with(2, 2, { bad, good }), 0, false, 90025 },
        { "the last wrong", with(2, 2, { good, bad }), 0, true, 0 },
        { "runs without pixels", with(2, 2, { hollow, good }), 0, true, 0 },
        { "two short rows as one", with(2, 2, { { { 1, 3 } }, { { 1, 2 } } }), 0, true, 0 },
        { "ends in a row", with(3, 2, { good, good }), 5, false, 90001 },
    };
    for (const OpeningCase& opening : kOpenings) {
        SCOPED_TRACE(opening.name);
        Bytes bytes = opening.picture.Bytes();
        bytes.resize(bytes.size() - opening.cutBy);
        LwTrial trial(bytes);
        EXPECT_EQ(trial.IsOpen(), opening.opens);
        EXPECT_EQ(trial.Picture().TraceStatus(), opening.code);
        tympan::test::AskEverything(trial.Picture(), "cropped.lw");
    }
    LwPicture widest;
    widest.width = 2147483647; // more than a file so short may ask memory for
    LwTrial trial(widest);
    EXPECT_FALSE(trial.IsOpen());
}

class LwObjects : public testing::Test {
  protected:
    ~LwObjects() override { EXPECT_EQ(files_.OpenCount(), 0U); }
    void Put(const char* name, const LwPicture& picture)
    {
        files_.Put(name, AsText(picture.Bytes()));
    }

    MemoryFileSystem files_;
    ScopedFileSystem scoped_{ files_ };
};

TEST_F(LwObjects, WithoutRowsAnswerAllTheSame)
{
    for (const bool isOutput : { false, true }) {
        OpenLw picture(isOutput ? "new.lw" : "missing.lw", !isOutput);
        EXPECT_EQ(picture.ObjectStatus(), isOutput);
        EXPECT_EQ(picture.TraceStatus(), 0U);
        EXPECT_EQ(picture.ErrorMsg(), kNoError);
        EXPECT_EQ(picture.LwDataStartPosition(), 255);
        EXPECT_EQ(picture.LwFileArray(), nullptr);
        picture.PictureParams()->HeightInPixels(3);
        picture.PictureParams()->WidthInPixels(3);
        tympan::test::AskEverything(picture, "cropped.lw");
        EXPECT_EQ(files_.Contents("cropped.lw").size(), 0U);
        EXPECT_FALSE(picture.FileValidityCheck());
        EXPECT_EQ(picture.TraceStatus(), 90001U);
        EXPECT_EQ(picture.ErrorMsg(), kOpeningFailed);
    }
}

TEST_F(LwObjects, OpenAgain)
{
    Put("one.lw", {});
    OpenLw picture("one.lw");
    ASSERT_TRUE(picture.ObjectStatus());
    const LwPicture taller = TwoRowsOf(5, { 1, 1, 3 });
    {
        CFile file("one.lw", CFile::modeReadWrite);
        file.Write(taller.Bytes().data(), static_cast<UINT>(taller.Bytes().size()));
    }
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

// ---- writing

struct GreyCase {
    const char* name;
    Bytes pixels;
    Bytes runs; // as bytes
};

TEST_F(LwObjects, GreyRowsBecomeRuns)
{
    const GreyCase kGreys[] = {
        { "nothing", {}, {} },
        { "one", { 0 }, { 1, 1 } },
        { "both ways to one index", { 0, 0, 64, 63 }, { 1, 2, 64, 1, 64, 1 } },
        { "the ends", { 255, 65, 62 }, { 255, 1, 65, 1, 63, 1 } },
        { "255 alike", Bytes(255, 9), { 10, 255 } },
        { "300 alike", Bytes(300, 200), { 200, 255, 200, 45 } },
    };
    OpenLw picture;
    for (const GreyCase& grey : kGreys) {
        SCOPED_TRACE(grey.name);
        Bytes wanted = grey.runs;
        if (!wanted.empty()) {
            wanted.insert(wanted.begin(), { 0, 0 });
            wanted.insert(wanted.end(), { 0, 0 });
        }
        Bytes pixels = grey.pixels;
        CFile file("row", CFile::modeCreate | CFile::modeWrite);
        EXPECT_EQ(picture.SetLWPictureRow(pixels.data(), file, pixels.size()),
                  grey.runs.size() / 2);
        EXPECT_EQ(UnsignedBytes(files_.Contents("row")), wanted);
    }
    CFile file("row", CFile::modeCreate | CFile::modeWrite);
    unsigned char row[] = { 1, 2, 3 };
    picture.SaveLWRun(file, 7, 8);
    picture.SaveLWRow(file, row, 3);
    picture.SaveLWRow(file, row, 0);
    picture.SaveLWRow(file, row, -1);
    EXPECT_EQ(UnsignedBytes(files_.Contents("row")), (Bytes{ 7, 8, 1, 2, 3 }));
}

TEST_F(LwObjects, AGreyPictureComesBack)
{
    constexpr std::size_t kWidth = 700;
    constexpr unsigned int kHeight = 20;
    std::mt19937 random(6);
    Bytes pixels;
    while (pixels.size() < kWidth * kHeight)
        pixels.insert(pixels.end(), 1 + random() % (random() % 9 == 0 ? 600 : 3),
                      static_cast<unsigned char>(random()));
    pixels.resize(kWidth * kHeight);
    {
        OpenLw picture("grey.lw", false);
        LwPictureParameters sizes;
        sizes.WidthInPixels(kWidth);
        sizes.HeightInPixels(kHeight);
        picture.StorePictureParams(&sizes);
        auto& record = dynamic_cast<LwPictureParameters&>(*picture.PictureParams());
        record.NumberOfSeparations(1);
        record.WidthInUnits(7.0);
        record.HeightInUnits(0.2);
        record.SaveHader(picture.FileHandle());
        for (std::size_t row = 0; row < kHeight; ++row)
            picture.SetLWPictureRow(pixels.data() + row * kWidth, picture.FileHandle(), kWidth);
    }
    std::replace(pixels.begin(), pixels.end(), static_cast<unsigned char>(64),
                 static_cast<unsigned char>(63));
    LwTrial trial(UnsignedBytes(files_.Contents("grey.lw")));
    ASSERT_TRUE(trial.IsOpen());
    EXPECT_TRUE(trial.Picture().SeparationExists(Black));
    LwAnswer rows = trial.Same(tympan::test::kRows, { 0, kHeight, Black });
    rows.bytes.resize(pixels.size());
    EXPECT_EQ(rows.bytes, pixels);
}

// ---- crops

struct CropCase {
    const char* name;
    CompressParameters crop;
    Lengths row; // of the cut rows; none: nothing is written
    unsigned int height;
};

TEST(LwCases, ACropIsTheRunsOfItsRectangle)
{
    const CropCase kCrops[] = {
        { "all", { 0, 0, 0, 0 }, { 3, 0, 5, 255, 37 }, 4 },
        { "more than all", { -7, 301, -1, 99 }, { 3, 0, 5, 255, 37 }, 4 },
        { "fewer rows", { 1, 300, 2, 3 }, { 3, 0, 5, 255, 37 }, 2 },
        { "a column", { 2, 2, 1, 4 }, { 1 }, 4 },
        { "inside a run", { 20, 40, 4, 4 }, { 21 }, 1 },
        { "to a run's last pixel", { 1, 8, 1, 4 }, { 3, 0, 5 }, 4 },
        { "from a run's first pixel", { 4, 9, 1, 4 }, { 5, 1 }, 4 },
        { "fractions are cut", { 4.9, 9.9, 1.9, 4.9 }, { 5, 1 }, 4 },
        { "a fraction of the first", { 0.5, 1.5, 0.5, 1.5 }, { 1 }, 1 },
        { "not numbers", { kNan, kNan, kNan, kNan }, { 3, 0, 5, 255, 37 }, 4 },
        { "right below left", { 9, 8, 1, 4 }, {}, 0 },
        { "bottom above top", { 1, 8, 3, 2 }, {}, 0 },
        { "beyond the right", { 301, 0, 1, 4 }, {}, 0 },
        { "below the bottom", { 1, 9, 5, 0 }, {}, 0 },
    };
    for (const CropCase& cropping : kCrops) {
        SCOPED_TRACE(cropping.name);
        LwPicture picture = TwoRowsOf(300, { 3, 0, 5, 255, 37 });
        picture.height = 4;
        picture.inchesHigh = 4.0;
        picture.inchesWide = 300.0;
        picture.rows.resize(4, picture.rows[0]);
        LwTrial trial(picture);
        const LwCall call{ .crop = cropping.crop };
        const Bytes out = trial.Same(tympan::test::kCrop, call).bytes;
        ASSERT_EQ(out.size(),
                  cropping.row.empty()
                      ? 0
                      : picture.Start() + cropping.height * (2 * cropping.row.size() + 4));
        for (std::size_t run = 0; run < cropping.row.size(); ++run)
            EXPECT_EQ(out[picture.Start() + 2 * run + 3], cropping.row[run]);
        if (out.empty())
            continue;
        LwTrial cropped(out); // as sound as the picture, and of its resolution
        ASSERT_TRUE(cropped.IsOpen());
        EXPECT_NEAR(cropped.Picture().ResolutionOnScanAxis(), 1.0, 0.001);
        EXPECT_NEAR(cropped.Picture().ResolutionOnXScanAxis(), 1.0, 0.001);
    }
    LwTrial trial{ LwPicture{} };
    CFile target;
    trial.Picture().CreateCropedLWFile(trial.Picture().FileHandle(), target, nullptr);
}

} // namespace
