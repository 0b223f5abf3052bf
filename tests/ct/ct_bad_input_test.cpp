// Files that are not what they say: the code, the text, the result, and an object that can still be
// asked, opened again and destroyed.
#include "ct/ct_file.h"
#include "support/ask_ct.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
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
    std::function<void(Bytes&)> change;
    bool opens;
    unsigned long recordStatus;
};

void PutPixels(Bytes& bytes, const char* height, const char* width)
{
    CtSample::PutText(bytes, 1056, height);
    CtSample::PutText(bytes, 1068, width);
}

const BadCase kBadCases[] = {
    { "empty", [](Bytes& bytes) { bytes.clear(); }, false, 90066 },
    { "ends before the count", [](Bytes& bytes) { bytes.resize(1025); }, false, 90066 },
    { "ends in the sizes", [](Bytes& bytes) { bytes.resize(1060); }, true, 0 },
    { "ends behind the header's fields", [](Bytes& bytes) { bytes.resize(1080); }, true, 0 },
    { "ends in a row", [](Bytes& bytes) { bytes.resize(2055); }, true, 0 },
    { "three separations",
      [](Bytes& bytes) {
          bytes[1025] = 3;
          bytes[1027] = 7;
      },
      false, 90066 },
    { "no separations",
      [](Bytes& bytes) {
          bytes[1025] = 0;
          bytes[1027] = 0;
      },
      false, 90066 },
    { "a mask of two", [](Bytes& bytes) { bytes[1027] = 3; }, false, 90066 },
    { "sizes of 0", [](Bytes& bytes) { PutPixels(bytes, "+00000000000", "+00000000000"); }, true,
      0 },
    { "sizes below 0", [](Bytes& bytes) { PutPixels(bytes, "-00000000004", "-00000000004"); }, true,
      0 },
    { "sizes that are words",
      [](Bytes& bytes) { PutPixels(bytes, "four pixels ", "four pixels "); }, true, 0 },
    { "the tallest", [](Bytes& bytes) { PutPixels(bytes, "+02147483647", "+00000000004"); }, true,
      0 },
    { "the widest", [](Bytes& bytes) { PutPixels(bytes, "+00000000003", "+02147483647"); }, false,
      0 },
    { "just wider than is taken on trust",
      [](Bytes& bytes) { PutPixels(bytes, "+00000000003", "+00016777217"); }, false, 0 },
    { "as wide as is taken on trust",
      [](Bytes& bytes) { PutPixels(bytes, "+00000000003", "+00016777216"); }, true, 0 },
    { "no units",
      [](Bytes& bytes) {
          CtSample::PutSize(bytes, 1028, 0.0);
          CtSample::PutSize(bytes, 1042, 0.0);
      },
      true, 0 },
};

TEST(CtBadInput, EndsInTheRightCode)
{
    const TemporaryFolder folder;
    const std::string good = folder.File("good.ct", CtSample{}.Bytes());
    for (const BadCase& bad : kBadCases) {
        SCOPED_TRACE(bad.name);
        Bytes bytes = CtSample{}.Bytes();
        bad.change(bytes);
        const std::string path = folder.File("bad.ct", bytes);
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
