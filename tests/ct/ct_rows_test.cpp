// Rows of CT files, held against the bytes they were made of.
#include "ct/ct_file.h"
#include "ct/ct_layout.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>

namespace {

using tympan::test::CtSample;
using tympan::test::TemporaryFolder;
using Bytes = std::vector<unsigned char>;

struct OpenSample {
    explicit OpenSample(const CtSample& made, std::size_t cutTo = ~std::size_t{ 0 })
        : sample(made), bytes(made.Bytes())
    {
        bytes.resize(std::min(bytes.size(), cutTo));
        picture.reset(create_ct_file_object(folder.File("sample.ct", bytes).c_str(), true));
    }
    Bytes StoredRow(unsigned int row, unsigned int slot) const
    {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(sample.Place(row, slot));
        return { begin, begin + sample.width };
    }
    unsigned long Row(Bytes& buffer, unsigned int row, ColorSeparationType type,
                      unsigned long room) const
    {
        return picture->GetPictureRow(buffer.data(), row, type, Y(), X(), room);
    }
    double X() const { return picture->ResolutionOnXScanAxis(); }
    double Y() const { return picture->ResolutionOnScanAxis(); }

    TemporaryFolder folder;
    CtSample sample;
    Bytes bytes;
    std::unique_ptr<CtFileInterface> picture;
};

TEST(CtRows, OpeningTellsTheGeometry)
{
    const OpenSample open(CtSample{ .width = 101, .height = 7 });
    ASSERT_TRUE(open.picture->ObjectStatus());
    EXPECT_EQ(open.picture->WidthInPixels(), 101U);
    EXPECT_EQ(open.picture->HeightInPixels(), 7U);
    EXPECT_EQ(open.picture->PictureParams()->RowSize(), 101U);
    EXPECT_EQ(open.picture->PictureParams()->BitsPerSample(), 32U);
    EXPECT_EQ(open.picture->FileHandle().GetPosition(), 2048U);
    EXPECT_EQ(open.picture->GetBufferSize(0, 3, false), 0U);
    EXPECT_EQ(open.picture->GetPictureRow(Cyan, 0, 1.0, 1.0), nullptr);
    EXPECT_EQ(open.picture->GetPictureRows(Cyan, 0, 1, false), nullptr);
}

// Every row, one by one and as ranges, for odd and even widths of one and four separations.
TEST(CtRows, RowsAreTheBytesOfTheFile)
{
    for (const unsigned int separations : { 1U, 4U })
        for (const unsigned int width : { 1U, 2U, 7U, 8U, 101U }) {
            SCOPED_TRACE(std::to_string(width) + " of " + std::to_string(separations));
            const OpenSample open(
                CtSample{ .width = width, .height = 5, .separations = separations });
            for (unsigned int slot = 0; slot < separations; ++slot) {
                const auto separation = static_cast<ColorSeparationType>(slot);
                Bytes all;
                for (unsigned int row = 0; row < 5; ++row) {
                    Bytes buffer(width + 1, 0xA5);
                    ASSERT_EQ(open.Row(buffer, row, separation, width), width);
                    ASSERT_EQ(buffer.back(), 0xA5);
                    buffer.pop_back();
                    ASSERT_EQ(buffer, open.StoredRow(row, slot));
                    all.insert(all.end(), buffer.begin(), buffer.end());
                }
                Bytes rows(all.size() - width);
                unsigned int rowsInfo = 99;
                unsigned long offsets[4] = {};
                ASSERT_EQ(
                    open.picture->GetPictureRows(rows.data(), 1, 5, rowsInfo, offsets, separation,
                                                 static_cast<unsigned long>(rows.size()), true),
                    rows.size());
                ASSERT_EQ(rows, Bytes(all.begin() + width, all.end()));
                ASSERT_EQ(offsets[3], 3UL * width);
                ASSERT_EQ(rowsInfo, 99U);
            }
            EXPECT_EQ(open.picture->TraceStatus(), 0U);
        }
}

struct EnlargementCase {
    double horizontal, vertical;
    unsigned int row;
};

// Pixel i of the output is the pixel at the sum of i steps, row r is row r over the ratio.
TEST(CtRows, EnlargesByRepeatingPixels)
{
    const EnlargementCase kCases[] = { { 1.0, 1.0, 4 },  { 2.0, 2.0, 5 },  { 1.0, 3.0, 14 },
                                       { 1.5, 1.0, 0 },  { 3.7, 1.01, 2 }, { 1.0000001, 1.0, 1 },
                                       { 100.0, 1.0, 3 } };
    const OpenSample open(
        CtSample{ .width = 9, .height = 5, .inchesHigh = 1.0, .inchesWide = 2.0 });
    for (const EnlargementCase& one : kCases) {
        SCOPED_TRACE(one.horizontal);
        // The horizontal ratio rests on the scan axis, whichever side that is of.
        const double horizontal = one.horizontal * open.Y() / open.Y();
        const auto width = static_cast<unsigned long>(std::floor(horizontal * 9 + 0.5));
        Bytes expected(width);
        const Bytes stored = open.StoredRow(static_cast<unsigned int>(one.row / one.vertical), 2);
        double position = 0.0;
        for (std::size_t i = 0; i < width; ++i) {
            expected[i] = stored[static_cast<std::size_t>(position)];
            position += 1.0 / horizontal;
        }
        Bytes buffer(width);
        ASSERT_EQ(open.picture->GetPictureRow(buffer.data(), one.row, Yellow,
                                              one.horizontal * open.Y(), one.vertical * open.X(),
                                              width),
                  width);
        EXPECT_EQ(buffer, expected);
    }
}

struct RefusalCase {
    const char* name;
    double horizontal, vertical;
    unsigned long room;
};

TEST(CtRows, RefusesWhatItCannotEnlargeTo)
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const RefusalCase kCases[] = {
        { "a hair too coarse", 1.0 - 1e-15, 1.0, 100 },
        { "too coarse down", 1.0, 0.5, 100 },
        { "no room", 1.0, 1.0, 8 },
        { "no room enlarged", 2.0, 1.0, 17 },
        { "not a number", kNan, 1.0, 100 },
        { "not a number down", 1.0, kNan, 100 },
        { "infinite", kInf, 1.0, ~0UL },
        { "infinite down", 1.0, kInf, 100 },
        { "beyond all buffers", 1e300, 1.0, ~0UL },
        { "negative", -1.0, 1.0, 100 },
    };
    for (const RefusalCase& one : kCases) {
        SCOPED_TRACE(one.name);
        const OpenSample open(CtSample{ .width = 9, .height = 5 });
        Bytes buffer(100);
        EXPECT_EQ(open.picture->GetPictureRow(buffer.data(), 0, Cyan, one.horizontal * open.Y(),
                                              one.vertical * open.X(), one.room),
                  0U);
        EXPECT_EQ(open.picture->TraceStatus(), 90064U);
        EXPECT_STREQ(open.picture->ErrorMsg(),
                     "Picture File:\nOutput Res requested smaller than Input Res.\n");
    }
}

TEST(CtRows, RefusesRowsOfAClosedFile)
{
    const OpenSample open(CtSample{});
    const double y = open.Y();
    const double x = open.X();
    open.picture->ClosePictureFile();
    Bytes buffer(100);
    EXPECT_EQ(open.picture->GetPictureRow(buffer.data(), 0, Cyan, y, x, 100), 0U);
    EXPECT_EQ(open.picture->TraceStatus(), 90064U);
}

TEST(CtRows, RefusesRangesAndBuffers)
{
    const OpenSample open(CtSample{ .width = 9, .height = 5 });
    Bytes buffer(100, 0xA5);
    unsigned int rowsInfo = 0;
    unsigned long offsets[5] = {};
    const auto rows = [&](unsigned int first, unsigned int last, unsigned long room) {
        return open.picture->GetPictureRows(buffer.data(), first, last, rowsInfo, offsets, Cyan,
                                            room, false);
    };
    EXPECT_EQ(rows(3, 3, 100), 0U);
    EXPECT_EQ(open.picture->TraceStatus(), 90032U);
    EXPECT_STREQ(open.picture->ErrorMsg(),
                 "Picture File :\nLast line must be greater than first line.\n");
    EXPECT_EQ(rows(0, 5, 44), 0U);
    EXPECT_EQ(open.picture->TraceStatus(), 90033U);
    EXPECT_STREQ(open.picture->ErrorMsg(), "Picture File:\nGiven buffer is too small.\n");
    EXPECT_EQ(rows(0, ~0U, 1000), 0U);
    EXPECT_EQ(open.picture->GetPictureRows(nullptr, 0, 5, rowsInfo, offsets, Cyan, 100, false), 0U);
    EXPECT_EQ(buffer, Bytes(100, 0xA5));
    EXPECT_EQ(rows(0, 5, 45), 45U);

    // A product that 32 bits don't hold, and no number, by a record changed after the opening.
    for (const double width : { 65536.0, std::nan("") }) {
        open.picture->PictureParams()->WidthInPixels(width);
        open.picture->TraceStatus(0);
        EXPECT_EQ(rows(0, 0x10000, 100), 0U);
        EXPECT_EQ(open.picture->TraceStatus(), 90033U);
    }
}

TEST(CtRows, WhatTheFileDoesNotHoldIsNotGivenOut)
{
    const CtSample sample{ .width = 8, .height = 5 };
    const OpenSample open(sample, sample.Place(3, 1) + 3); // ends in magenta of row 3
    Bytes buffer(40);
    EXPECT_EQ(open.Row(buffer, 3, Cyan, 40), 8U);
    buffer.assign(40, 0xA5);
    EXPECT_EQ(open.Row(buffer, 3, Magenta, 40), 0U);
    EXPECT_EQ(open.Row(buffer, 4, Cyan, 40), 0U);
    EXPECT_EQ(open.Row(buffer, ~0U, Cyan, 40), 0U);
    EXPECT_EQ(open.Row(buffer, 0, NoSeparation, 40), 0U);

    EXPECT_EQ(buffer, Bytes(40, 0xA5)); // also of the row that is there in part

    unsigned int rowsInfo = 0;
    unsigned long offsets[5] = {};
    EXPECT_EQ(
        open.picture->GetPictureRows(buffer.data(), 2, 7, rowsInfo, offsets, Magenta, 40, false),
        40U);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 8), open.StoredRow(2, 1));
    EXPECT_EQ(Bytes(buffer.begin() + 11, buffer.end()), Bytes(29, 0xA5));
    EXPECT_EQ(offsets[4], 32U);
    EXPECT_EQ(open.picture->GetPictureRows(buffer.data(), 0, 1, rowsInfo, offsets, AllSeparations,
                                           40, false),
              8U);
    EXPECT_EQ(open.picture->TraceStatus(), 0U);
}

TEST(CtRows, AOneSeparationFileHoldsOne)
{
    CtSample sample{ .width = 4, .height = 2, .separations = 1 };
    const TemporaryFolder folder;
    Bytes bytes = sample.Bytes();
    bytes[1027] = 8;
    const std::unique_ptr<CtFileInterface> black(
        create_ct_file_object(folder.File("black.ct", bytes).c_str(), true));
    Bytes buffer(4);
    EXPECT_EQ(black->GetPictureRow(buffer.data(), 1, Cyan, 2.0, 4.0, 4), 0U);
    EXPECT_EQ(black->GetPictureRow(buffer.data(), 1, Black, 2.0, 4.0, 4), 4U);
    EXPECT_EQ(buffer, Bytes(bytes.end() - 4, bytes.end()));
}

// A client may change the record of an open object: no read goes past a buffer.
TEST(CtRows, ARecordMadeWiderReadsWithinItsBuffers)
{
    const OpenSample open(CtSample{ .width = 4, .height = 40 });
    open.picture->FileWidthInPixels(50);
    Bytes buffer(100);
    EXPECT_EQ(open.picture->GetPictureRow(buffer.data(), 0, Cyan, 2 * open.Y(), open.X(), 100),
              100U);
    open.picture->PictureParams()->WidthInPixels(1e300);
    EXPECT_EQ(open.picture->GetPictureRow(buffer.data(), 0, Cyan, open.Y(), open.X(), ~0UL), 0U);
}

// Positions are as wide as the interface's: with 32 bits, what lies past 4 GiB isn't reached.
constexpr bool kReachesFarther = std::numeric_limits<unsigned long>::digits > 32;

TEST(CtLayout, PositionsDoNotWrap)
{
    PictureParameters record;
    record.DefineAvailableSeparations(15);
    record.WidthInPixels(101.0);
    EXPECT_EQ(tympan::CtLayout(record).PositionOf(3, Yellow), 3476U);
    EXPECT_EQ(tympan::CtLayout(record).PositionOf(0, NoSeparation), std::nullopt);
    EXPECT_EQ(tympan::CtLayout(record).PositionOf(~std::uint64_t{ 0 }, Cyan), std::nullopt);
    record.WidthInPixels(4294967295.0);
    record.NumberOfSeparations(4294967295U);
    EXPECT_EQ(tympan::CtLayout(record).PositionOf(4294967295U, Cyan), std::nullopt);
    const auto far = tympan::CtLayout(record).PositionOf(0, Black);
    EXPECT_EQ(far.has_value(), kReachesFarther);
    EXPECT_EQ(far.value_or(0), kReachesFarther ? 2048U + 3 * 4294967296U : 0U);
}

// Positions past 4 GiB, in a file that is mostly a hole.
TEST(CtRows, ReadsPastFourGigabytes)
{
    const CtSample sample{ .width = 100000, .height = 20000 };
    const TemporaryFolder folder;
    const std::string path = folder.File("large.ct", sample.Header());
    const std::uint64_t place = sample.Place(19999, 3);
    ASSERT_GT(place, 0xFFFFFFFFU);
    std::filesystem::resize_file(path, place);
    std::ofstream(path, std::ios::binary | std::ios::app) << std::string(100000, 'k');
    const std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path.c_str(), true));
    Bytes row(100000);
    EXPECT_EQ(picture->GetPictureRow(row.data(), 19999, Black, picture->ResolutionOnScanAxis(),
                                     picture->ResolutionOnXScanAxis(), 100000),
              kReachesFarther ? 100000U : 0U);
    EXPECT_EQ(row, Bytes(100000, kReachesFarther ? 'k' : 0));
    EXPECT_EQ(picture->ExtractCMYKPixelInfo(99999, 19999),
              kReachesFarther ? 0xFFFFFF00U + (255U - 'k') : 0U);
}

} // namespace
