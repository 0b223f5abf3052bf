// Files of the system under the library: disks that are full, and pictures that another program cuts
// short while they are open.
#include "ct/ct_file.h"
#include "jpeg/jpeg_file.h"
#include "lw/lw_file.h"
#include "lw_variant/velmar_lw_file.h"
#include "platform/file_expectations.h"
#include "support/jpeg_samples.h"
#include "support/lw_samples.h"
#include "support/small_disk.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace tympan::test;
using Bytes = std::vector<unsigned char>;

// ---- disks that are full

LwPicture LineWork()
{
    std::mt19937 random(1);
    return RandomPicture(random, 300, 40, 5, LwRuns::dense);
}

// The picture that the writers read, as "a.lw".
struct Source : TemporaryFolder {
    Source() { File("a.lw", LineWork().Bytes()); }
};

void WriteCt(const std::string&, const std::string& output)
{
    const struct CtSample sample {
        .width = 60, .height = 50
    };
    const Bytes bytes = sample.Bytes();
    PictureParameters record;
    record.WidthInPixels(sample.width);
    record.HeightInPixels(sample.height);
    record.DefineAvailableSeparations(15);
    const std::unique_ptr<CtFileInterface> picture(create_ct_file_object(output.c_str(), false));
    picture->StorePictureParams(&record);
    for (unsigned int row = 0; row < sample.height; ++row)
        for (unsigned int slot = 0; slot < sample.separations; ++slot)
            picture->SavePictureRow(bytes.data() + sample.Place(row, slot), row,
                                    static_cast<ColorSeparationType>(slot), 0);
    picture->SavePictureParams();
}

void WriteLw(const std::string&, const std::string& output)
{
    constexpr unsigned int kWidth = 700, kHeight = 9;
    const std::unique_ptr<LWFileInterface> picture(create_lw_file_object(output.c_str(), false));
    auto& record = dynamic_cast<LwPictureParameters&>(*picture->PictureParams());
    record.WidthInPixels(kWidth);
    record.HeightInPixels(kHeight);
    record.NumberOfSeparations(1);
    record.LwFileName("new");
    record.SaveHader(picture->FileHandle());
    Bytes pixels(kWidth);
    for (unsigned int i = 0; i < kWidth; ++i)
        pixels[i] = static_cast<unsigned char>(i);
    for (unsigned int row = 0; row < kHeight; ++row)
        picture->SetLWPictureRow(pixels.data(), picture->FileHandle(), kWidth);
    picture->ClosePictureFile();
}

void CropLw(const std::string& input, const std::string& output)
{
    const std::unique_ptr<LWFileInterface> picture(create_lw_file_object(input.c_str(), true));
    CFile target(output.c_str(), CFile::modeCreate | CFile::modeWrite);
    CompressParameters crop{ 2, 299, 2, 39 };
    picture->CreateCropedLWFile(picture->FileHandle(), target, &crop);
    target.Close();
}

void IndexLw(const std::string& input, const std::string& output)
{
    const std::unique_ptr<VelmarLWFileInterface> picture(
        create_velmar_lw_file_object(input.c_str(), true));
    CString path((output.substr(0, output.rfind('.')) + ".lw").c_str());
    bool isValid = false;
    picture->CreateLwBinFile(path, false, isValid);
    EXPECT_TRUE(isValid);
}

struct Writer {
    const char* name;
    const char* output;
    void (*write)(const std::string& input, const std::string& output);
    unsigned int pages; ///< that it can't do with
};

constexpr Writer kWriters[] = {
    { "CT", "new.ct", WriteCt, 2 },
    { "LW", "new.lw", WriteLw, 2 },
    { "crop", "new.lw", CropLw, 1 },
    { "LW side file", "new.bin", IndexLw, 0 },
};

TEST(FullDisk, EveryWriterTellsItAndWritesTheSameOnceThereIsRoom)
{
    const Source source;
    for (const Writer& writer : kWriters) {
        SCOPED_TRACE(writer.name);
        const SmallDisk disk;
        if (!disk.IsThere())
            GTEST_SKIP() << "only root can mount a small disk";
        writer.write(source / "a.lw", source / writer.output);
        unsigned int pages = 0;
        int cause = -1;
        do {
            disk.LeaveFree(pages);
            cause = ThrownCause([&] { writer.write(source / "a.lw", disk / writer.output); });
            EXPECT_TRUE(cause == CFileException::diskFull || cause == -1) << cause;
        } while (cause != -1 && ++pages < 14);
        EXPECT_GT(pages, writer.pages);
        EXPECT_EQ(BytesOf(disk / writer.output), BytesOf(source / writer.output));
    }
}

TEST(FullDisk, DevicesThatTakeNothingAreTold)
{
    const Source source;
    for (const Writer& writer : kWriters) {
        std::filesystem::create_symlink("/dev/full", source / writer.output);
        EXPECT_EQ(ThrownCause([&] { writer.write(source / "a.lw", source / writer.output); }),
                  CFileException::diskFull)
            << writer.name;
        std::filesystem::remove(source / writer.output);
    }
}

void WriteJpeg(const std::string& path)
{
    const JpegSample sample;
    const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object(path.c_str(), false));
    for (const auto& [first, last] : sample.Index())
        picture->StoreCompressedLinesBlock({ first, last });
    picture->StorePictureParams(10.0, 10.0, 1.0, 2.7, 2.0, 27.0, 20.0);
    const Bytes stream = sample.Stream();
    picture->JpegFileHandle()->Write(stream.data(), static_cast<UINT>(stream.size()));
    picture->ClosePictureFile();
}

TEST(FullDisk, LeavesAJpegsIndexWholeOrEmpty)
{
    const SmallDisk disk;
    if (!disk.IsThere())
        GTEST_SKIP() << "only root can mount a small disk";
    const TemporaryFolder roomy;
    WriteJpeg(roomy / "new.jpg");
    const Bytes stream = BytesOf(roomy / "new.jpg"), index = BytesOf(roomy / "new.bin");
    ASSERT_TRUE(stream.size() < 4096 && !index.empty());
    for (const std::uint64_t pages : { 0U, 1U, 2U }) {
        SCOPED_TRACE(pages);
        disk.LeaveFree(pages);
        EXPECT_EQ(ThrownCause([&] { WriteJpeg(disk / "new.jpg"); }),
                  pages == 0 ? int{ CFileException::diskFull } : -1);
        EXPECT_EQ(BytesOf(disk / "new.jpg"), pages == 0 ? Bytes{} : stream);
        EXPECT_EQ(BytesOf(disk / "new.bin"), pages == 2 ? index : Bytes{});
        std::filesystem::remove(disk / "new.jpg");
        std::filesystem::remove(disk / "new.bin");
    }
}

// ---- pictures that are cut short while they are open

using Picture = std::unique_ptr<PictureFileInterface>;

struct OpenPicture {
    const char* name;
    Picture (*open)(const CString& path);
    Bytes bytes;
    std::size_t start; ///< of the rows
    unsigned int lastRow;
};

std::vector<OpenPicture> OpenPictures()
{
    const struct CtSample ct {
        .width = 200, .height = 200
    };
    const LwPicture lw = LineWork();
    return {
        { "a.ct", [](const CString& path) { return Picture(create_ct_file_object(path, true)); },
          ct.Bytes(), 2048, 199 },
        { "a.lw", [](const CString& path) { return Picture(create_lw_file_object(path, true)); },
          lw.Bytes(), lw.Start(), 39 }
    };
}

struct Row {
    Bytes bytes;
    bool failed = true;
};

Row RowOf(PictureFileInterface& picture, unsigned int number)
{
    Row row{ Bytes(1000) };
    const unsigned long given =
        picture.GetPictureRow(row.bytes.data(), number, Black, picture.ResolutionOnScanAxis(),
                              picture.ResolutionOnXScanAxis(), row.bytes.size());
    row.failed = given == 0;
    return row;
}

// Whatever the reader still holds of the file: a row is as it was, or it isn't given.
TEST(CutShort, RowsAreAsTheyWereOrFail)
{
    for (const OpenPicture& sample : OpenPictures()) {
        SCOPED_TRACE(sample.name);
        const TemporaryFolder folder;
        const std::string path = folder.File(sample.name, sample.bytes);
        const auto whole = sample.open(path.c_str());
        std::vector<Row> rows;
        for (unsigned int row = 0; row <= sample.lastRow; ++row) {
            rows.push_back(RowOf(*whole, row));
            ASSERT_FALSE(rows.back().failed) << row;
        }
        for (const std::size_t left : { (sample.start + sample.bytes.size()) / 2, sample.start,
                                        std::size_t{ 100 }, std::size_t{ 0 } }) {
            SCOPED_TRACE(left);
            const auto picture = sample.open(path.c_str());
            ASSERT_FALSE(RowOf(*picture, 0).failed);
            std::filesystem::resize_file(path, left);
            EXPECT_TRUE(RowOf(*picture, sample.lastRow).failed);
            for (unsigned int number = 0; number < sample.lastRow; ++number) {
                const Row row = RowOf(*picture, number);
                EXPECT_TRUE(row.failed || row.bytes == rows[number].bytes) << number;
            }
            folder.File(sample.name, sample.bytes);
            EXPECT_TRUE(RowOf(*picture, sample.lastRow).bytes == rows.back().bytes);
        }
    }
}

} // namespace
