// Files that are not what they say: the code, the text, the result, and an object that can still be
// asked, opened again and destroyed.
#include "ct/ct_file.h"
#include "support/ask_ct.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>

namespace {

using tympan::test::CtSample;
using tympan::test::TemporaryFolder;
using Bytes = std::vector<unsigned char>;

constexpr char kNothingSaid[] = "BasePictureIF:\n No Error !";
constexpr char kAborting[] = "CT File Interface:\n:Error Opening file, aborting!";

struct BadCase {
    const char* name;
    std::size_t length; // of the file
    int count, mask;
    const char *height, *width;
    bool opens;
    unsigned long recordStatus;
};

constexpr std::size_t kAll = 2048 + 3 * 4 * 4;
constexpr char kFour[] = "+00000000004", kNone[] = "+00000000000", kMost[] = "+02147483647";

const BadCase kBadCases[] = {
    { "empty", 0, 4, 15, kFour, kFour, false, 90066 },
    { "ends before the count", 1025, 4, 15, kFour, kFour, false, 90066 },
    { "ends in the sizes", 1060, 4, 15, kFour, kFour, true, 0 },
    { "ends behind the header's fields", 1080, 4, 15, kFour, kFour, true, 0 },
    { "ends in a row", 2055, 4, 15, kFour, kFour, true, 0 },
    { "three separations", kAll, 3, 7, kFour, kFour, false, 90066 },
    { "no separations", kAll, 0, 0, kFour, kFour, false, 90066 },
    { "a mask of two", kAll, 4, 3, kFour, kFour, false, 90066 },
    { "sizes of 0", kAll, 4, 15, kNone, kNone, true, 0 },
    { "sizes below 0", kAll, 4, 15, "-00000000004", "-00000000004", true, 0 },
    { "sizes that are words", kAll, 4, 15, "four pixels ", "four pixels ", true, 0 },
    { "the tallest", kAll, 4, 15, kMost, kFour, true, 0 },
    { "the widest", kAll, 4, 15, kFour, kMost, false, 0 },
    { "just wider than is taken on trust", kAll, 4, 15, kFour, "+00016777217", false, 0 },
    { "as wide as is taken on trust", kAll, 4, 15, kFour, "+00016777216", true, 0 },
};

Bytes BytesOf(const BadCase& bad, double inches)
{
    Bytes bytes = CtSample{ .inchesHigh = inches, .inchesWide = inches }.Bytes();
    bytes[1025] = static_cast<unsigned char>(bad.count);
    bytes[1027] = static_cast<unsigned char>(bad.mask);
    CtSample::PutText(bytes, 1056, bad.height);
    CtSample::PutText(bytes, 1068, bad.width);
    bytes.resize(bad.length);
    return bytes;
}

TEST(CtBadInput, EndsInTheRightCode)
{
    const TemporaryFolder folder;
    const std::string good = folder.File("good.ct", CtSample{}.Bytes());
    for (std::size_t i = 0; i < 2 * std::size(kBadCases); ++i) {
        const BadCase& bad = kBadCases[i / 2];
        SCOPED_TRACE(bad.name);
        const double inches = i % 2 == 0 ? 0.0 : 1.0; // resolutions without bound, and finite ones
        const std::string path = folder.File("bad.ct", BytesOf(bad, inches));
        const std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path.c_str(), true));
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->ObjectStatus(), bad.opens);
        EXPECT_EQ(picture->TraceStatus(), 0U);
        EXPECT_STREQ(picture->ErrorMsg(), kNothingSaid);
        EXPECT_EQ(picture->PictureParams()->TraceStatus(), bad.recordStatus);
        tympan::test::AskEverything(*picture);

        picture->ClosePictureFile();
        EXPECT_TRUE(picture->OpenPictureFile(good.c_str(), true, false, nullptr));
        EXPECT_EQ(picture->ObjectStatus(), bad.opens);
        tympan::test::AskEverything(*picture);
    }
}

TEST(CtBadInput, ASecondFailureSaysThatItAborts)
{
    const TemporaryFolder folder;
    const std::unique_ptr<CtFileInterface> picture(
        create_ct_file_object(folder.Path("missing").c_str(), true));
    EXPECT_FALSE(picture->ObjectStatus());
    EXPECT_STREQ(picture->ErrorMsg(), kNothingSaid);
    picture->TraceStatus(90064);
    EXPECT_FALSE(picture->OpenPictureFile(folder.Path("missing").c_str(), true, false, nullptr));
    EXPECT_EQ(picture->TraceStatus(), 90001U);
    EXPECT_STREQ(picture->ErrorMsg(), kAborting);
}

TEST(CtBadInput, WhatCannotBeOpenedIsRefused)
{
    const TemporaryFolder folder;
    for (const std::string& path : { folder.Path("missing"), folder.Path(""),
                                     std::string("/dev/zero"), folder.Path("no/such/folder") }) {
        SCOPED_TRACE(path);
        CtFileInterface picture(path.c_str(), true);
        EXPECT_FALSE(picture.ObjectStatus());
        EXPECT_EQ(picture.TraceStatus(), 0U);
        tympan::test::AskEverything(picture);
    }
    CtFileInterface output(folder.Path("no/such/folder").c_str(), false);
    EXPECT_FALSE(output.ObjectStatus());
}

// The failure that a caller hands in is caught here: deleted if it was made with new.
TEST(CtBadInput, TakesTheFailureThatItWasGiven)
{
    const TemporaryFolder folder;
    CtFileInterface picture(folder.File("good.ct", CtSample{}.Bytes()).c_str(), true);
    EXPECT_FALSE(
        picture.OpenPictureFile(folder.Path("missing").c_str(), true, false, new CFileException));
    EXPECT_EQ(picture.TraceStatus(), 90001U);
    EXPECT_FALSE(picture.ObjectStatus());
    CFileException mine;
    EXPECT_FALSE(picture.OpenPictureFile(folder.Path("missing").c_str(), true, false, &mine));
    EXPECT_EQ(mine.m_cause, CFileException::fileNotFound);
}

// Headers of random bytes in the fields that are read.
TEST(CtBadInput, SurvivesRandomHeaders)
{
    const TemporaryFolder folder;
    std::mt19937 random(23);
    for (int i = 0; i < 300; ++i) {
        Bytes bytes = CtSample{}.Bytes();
        constexpr char kLetters[] = "0123456789+-.E e";
        for (int change = 0; change < 6; ++change)
            bytes[1024 + random() % 56] = static_cast<unsigned char>(
                random() % 3 == 0 ? static_cast<char>(random()) : kLetters[random() % 16]);
        bytes.resize(random() % 2 == 0 ? bytes.size() : random() % bytes.size());
        CtFileInterface picture(folder.File("random.ct", bytes).c_str(), true);
        tympan::test::AskEverything(picture);
    }
}

} // namespace
