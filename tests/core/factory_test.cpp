#include "core/factory.h"
#include "ct/ct_file.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using tympan::test::CtSample;
using tympan::test::TemporaryFolder;

std::unique_ptr<BasePictureIF> Make(const std::string& path)
{
    return std::unique_ptr<BasePictureIF>(create_picture_object(path.c_str()));
}

std::vector<unsigned char> Short(std::size_t size)
{
    auto bytes = CtSample().Bytes();
    bytes.resize(size);
    return bytes;
}

std::vector<unsigned char> Marked(unsigned char count, unsigned char high, unsigned char low)
{
    auto bytes = CtSample().Bytes();
    bytes[1025] = count;
    bytes[1026] = high;
    bytes[1027] = low;
    return bytes;
}

struct TypeCase {
    const char* name;
    std::vector<unsigned char> bytes;
    bool isCt;  // by the weak test
    bool opens; // by the record
};

const TypeCase kTypeCases[] = {
    { "a CT", CtSample().Bytes(), true, true },
    { "one plate", Marked(1, 0, 8), true, true },
    { "three zeros", Marked(0, 0, 0), true, false },
    { "three plates", Marked(3, 0, 7), true, false },
    { "all sixteen bits count", Marked(16, 255, 255), true, false },
    { "bits of both bytes", Marked(4, 3, 3), true, false },
    { "count and mask differ", Marked(4, 0, 7), false, false },
    { "empty", {}, true, false },
    { "ends before the mask", Short(1026), false, false },
    { "ends in the mask", Short(1027), false, false },
    { "ends behind the mask", Short(1028), true, true },
};

TEST(Factory, MakesAnUnopenedObjectOfTheFormatThatRecognises)
{
    const TemporaryFolder folder;
    for (const TypeCase& type : kTypeCases) {
        SCOPED_TRACE(type.name);
        const std::string path = folder.File("picture", type.bytes);
        const auto picture = Make(path);
        ASSERT_EQ(picture != nullptr, type.isCt);
        if (picture == nullptr)
            continue;
        EXPECT_NE(dynamic_cast<CtFileInterface*>(picture.get()), nullptr);
        EXPECT_TRUE(picture->PictureFileName().IsEmpty());
        EXPECT_EQ(picture->OpenPictureFile(path.c_str(), true, false, nullptr), type.opens);
        const std::unique_ptr<CtFileInterface> direct(create_ct_file_object(path.c_str(), true));
        ASSERT_NE(direct, nullptr);
        EXPECT_EQ(direct->ObjectStatus(), type.opens);
    }
}

TEST(Factory, CutsBlanksAtTheEndOfANameAndNothingElse)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("picture.ct", CtSample().Bytes());
    EXPECT_NE(Make(path + "   "), nullptr);
    EXPECT_EQ(Make(path + "\t"), nullptr);
    EXPECT_EQ(Make(" " + path), nullptr);
}

TEST(Factory, GivesNullForWhatCannotBeOpened)
{
    const TemporaryFolder folder;
    EXPECT_EQ(Make(folder.Path("missing")), nullptr);
    EXPECT_EQ(Make(folder.Path("")), nullptr);
    EXPECT_EQ(Make(""), nullptr);
}

TEST(Inspect, OpensByTheFirstFormatThatTakesTheFile)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("picture.ct", CtSample().Bytes());
    const auto opened = tympan::OpenAnyPicture(path.c_str());
    EXPECT_TRUE(opened.isOpen);
    EXPECT_EQ(opened.format, "CT");
    EXPECT_EQ(opened.picture->FileWidthInPixels(), 4U);

    const auto refused = tympan::OpenAnyPicture(folder.File("zeros", Marked(0, 0, 0)).c_str());
    ASSERT_NE(refused.picture, nullptr);
    EXPECT_FALSE(refused.isOpen);
    EXPECT_EQ(refused.picture->PictureParams()->TraceStatus(), 90066U);

    auto lineWork = CtSample().Bytes(); // which passes for a CT, but for its type
    lineWork[80] = 'L';
    lineWork[81] = 'W';
    const auto damaged = tympan::OpenAnyPicture(folder.File("damaged.lw", lineWork).c_str());
    EXPECT_EQ(damaged.format, "LW");
    EXPECT_FALSE(damaged.isOpen);

    EXPECT_EQ(tympan::OpenAnyPicture(folder.File("other", Marked(4, 0, 0)).c_str()).picture,
              nullptr);
    EXPECT_EQ(tympan::OpenPictureAs(path.c_str(), "no such format").picture, nullptr);
    EXPECT_FALSE(tympan::OpenPictureAs(folder.Path("missing").c_str(), "CT").isOpen);
    EXPECT_THROW(
        try {
            tympan::OpenAnyPicture(folder.Path("missing").c_str());
        } catch (CFileException* failure) {
            EXPECT_EQ(failure->m_cause, CFileException::fileNotFound);
            failure->Delete();
            throw 1;
        },
        int);
}

} // namespace
