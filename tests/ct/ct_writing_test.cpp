// New CT files by the order of a writing client.
#include "ct/ct_file.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using tympan::test::BytesOf;
using tympan::test::CtSample;
using tympan::test::TemporaryFolder;
using Bytes = std::vector<unsigned char>;

std::unique_ptr<CtFileInterface> NewPicture(const std::string& path, const CtSample& sample)
{
    PictureParameters record;
    record.WidthInPixels(sample.width);
    record.HeightInPixels(sample.height);
    record.DefineAvailableSeparations(sample.separations == 4 ? 15 : 1);
    std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path.c_str(), false));
    picture->StorePictureParams(&record);
    picture->FileHeightInUnits(sample.inchesHigh);
    picture->FileWidthInUnits(sample.inchesWide);
    return picture;
}

// Written rows in the wrong order, last separation first: the file is the sample but for the
// padding.
TEST(CtWriting, WritesTheSampleByteForByte)
{
    for (const unsigned int separations : { 1U, 4U })
        for (const unsigned int width : { 6U, 7U }) {
            const CtSample sample{ .width = width, .height = 5, .separations = separations };
            Bytes expected = sample.Bytes();
            const TemporaryFolder folder;
            const std::string path = folder.Path("new.ct");
            {
                const auto picture = NewPicture(path, sample);
                ASSERT_TRUE(picture->ObjectStatus());
                for (unsigned int row = sample.height; row-- > 0;)
                    for (unsigned int slot = separations; slot-- > 0;)
                        picture->SavePictureRow(expected.data() + sample.Place(row, slot), row,
                                                static_cast<ColorSeparationType>(slot), 0);
                picture->SavePictureRow(expected.data(), 0, NoSeparation, 0); // nowhere
                ASSERT_TRUE(picture->SavePictureParams());
            }
            if (width % 2 == 1) {
                for (std::size_t at = 2048 + width; at < expected.size(); at += sample.Stride())
                    expected[at] = 0;
                expected.pop_back(); // the padding of the very last row
            }
            EXPECT_EQ(BytesOf(path), expected);
        }
}

TEST(CtWriting, AFailedWriteReachesTheCaller)
{
    const auto picture = NewPicture("/dev/full", CtSample{});
    ASSERT_TRUE(picture->ObjectStatus());
    const Bytes row(4);
    for (const bool header : { true, false }) {
        try {
            if (header)
                picture->SavePictureParams();
            else
                picture->SavePictureRow(row.data(), 0, Cyan, 4);
            FAIL() << "a full disk took the bytes";
        } catch (CFileException* failure) {
            EXPECT_EQ(failure->m_cause, CFileException::diskFull);
            failure->Delete();
        }
    }
}

TEST(CtWriting, AFileBeingWrittenGivesNoRows)
{
    const TemporaryFolder folder;
    const auto picture = NewPicture(folder.Path("new.ct"), CtSample{});
    picture->PictureParams()->Resolution({ 1.0, 1.0 });
    Bytes row(4);
    EXPECT_EQ(picture->GetPictureRow(row.data(), 0, Cyan, 1.0, 1.0, 4), 0U);
    EXPECT_EQ(picture->TraceStatus(), 90001U);
}

TEST(CtWriting, AnInputIsNeverWritten)
{
    const TemporaryFolder folder;
    const CtSample sample{};
    const std::string path = folder.File("sample.ct", sample.Bytes());
    const std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path.c_str(), true));
    const Bytes row(4, 1);
    EXPECT_THROW(
        try { picture->SavePictureRow(row.data(), 0, Cyan, 4); } catch (CFileException* failure) {
            failure->Delete();
            throw 1;
        },
        int);
    EXPECT_EQ(BytesOf(path), sample.Bytes());
}

} // namespace
