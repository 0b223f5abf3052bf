// The JPEG comparisons: bands handed out, and an index opened, against reads of the same bytes.
#include "bench/benches.h"
#include "jpeg/jpeg_file.h"
#include "tests/support/jpeg_samples.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace tympan::bench {

namespace {

constexpr unsigned int kBands = 8000;
constexpr unsigned int kManyBands = 1U << 20U;
constexpr unsigned int kRowsOfBand = 8;

// A JPEG file of bands of random bytes and its side file, in the page cache.
class BandedFile {
  public:
    // `bandBytes` in the mean; 0 for no bytes at all.
    BandedFile(const std::string& stem, unsigned int bands, std::size_t bandBytes)
        : path_(stem + ".jpg"), sidePath_(stem + ".bin")
    {
        sample_.height = std::min(bands, kBands) * kRowsOfBand;
        std::vector<std::uint8_t> bytes = sample_.Head();
        std::mt19937 random(1);
        for (unsigned int band = 0; band < bands; ++band) {
            const std::size_t start = bytes.size();
            const std::size_t size = bandBytes / 2 + random() % (bandBytes + 1) + 1;
            if (bandBytes != 0)
                bytes.resize(start + size + 2, static_cast<std::uint8_t>(random() % 255));
            blocks_.emplace_back(start, start + size - 1);
        }
        NewFile(path_).Write(bytes);
        NewFile(sidePath_).Write(sample_.SideFile(blocks_));
        BringIntoCache(path_);
        BringIntoCache(sidePath_);
    }

    const std::string& Path() const { return path_; }
    const std::string& SidePath() const { return sidePath_; }
    const test::JpegSample::Blocks& Blocks() const { return blocks_; }
    unsigned int Rows() const { return sample_.height; }
    std::size_t BandBytes() const
    {
        std::size_t bytes = 0;
        for (const auto& [first, last] : blocks_)
            bytes += last - first + 1;
        return bytes;
    }

  private:
    test::JpegSample sample_;
    std::string path_;
    std::string sidePath_;
    test::JpegSample::Blocks blocks_;
};

using File = std::shared_ptr<const BandedFile>;

std::unique_ptr<JpegFileInterface> OpenJpeg(const BandedFile& file)
{
    std::unique_ptr<JpegFileInterface> object(create_jpeg_file_object(file.Path().c_str(), true));
    Require(object != nullptr && object->ObjectStatus(), "the library can't open the picture");
    return object;
}

Sides Rows(const File& file)
{
    const auto raw = std::make_shared<RawFile>(file->Path());
    const auto expected =
        std::make_shared<std::vector<std::uint8_t>>(TouchedMemory(file->BandBytes()));
    const auto given =
        std::make_shared<std::vector<std::uint8_t>>(TouchedMemory(file->BandBytes()));
    const auto offsets = std::make_shared<std::vector<unsigned long>>(file->Blocks().size() + 1);
    const std::shared_ptr<JpegFileInterface> object = OpenJpeg(*file);
    const auto read = [=] {
        std::size_t at = 0;
        for (const auto& [first, last] : file->Blocks()) {
            const std::size_t size = last - first + 1;
            raw->ReadAt(first, std::span(*expected).subspan(at, size));
            at += size;
        }
    };
    const auto take = [=] {
        unsigned int lastBand = 0;
        const unsigned long bytes =
            object->GetPictureRows(given->data(), 0, file->Rows() - 1, lastBand, offsets->data(),
                                   Cyan, given->size(), false);
        Require(bytes == given->size(), "the library gave other bands");
    };
    return { { read }, { take, {}, [=] { Require(*given == *expected, "a band is wrong"); } } };
}

Sides OpeningTheIndex(const File& file)
{
    const auto raw = std::make_shared<RawFile>(file->SidePath());
    const auto bytes = std::make_shared<std::unique_ptr<std::uint8_t[]>>(); // new, as the library's
    const auto object = std::make_shared<std::unique_ptr<JpegFileInterface>>();
    return { { [=] {
                  const std::size_t length = raw->Length();
                  bytes->reset(new std::uint8_t[length]);
                  raw->ReadAt(0, { bytes->get(), length });
              },
               [=] { bytes->reset(); } },
             { [=] { *object = OpenJpeg(*file); }, [=] { object->reset(); },
               [=] {
                   unsigned long first = 0;
                   unsigned long last = 0;
                   const unsigned int row = (kManyBands - 1) * kRowsOfBand;
                   Require((*object)->GetCompressedBlocksOffsetInfo(row, row, first, last) &&
                               first == file->Blocks().back().first &&
                               last == file->Blocks().back().second,
                           "the last block is wrong");
               } } };
}

} // namespace

void RegisterJpeg(const std::string& folder)
{
    const auto large = MadeOnce<BandedFile>(folder + "large", kBands, 24U << 10U);
    const auto small = MadeOnce<BandedFile>(folder + "small", kBands, 1U << 10U);
    const auto many = MadeOnce<BandedFile>(folder + "many", kManyBands, 0U);
    Register({ "JPEG: rows of bands of 24 KiB / pread", [=] { return Rows(large()); }, 0.9 });
    Register({ "JPEG: rows of bands of 1 KiB / pread", [=] { return Rows(small()); } });
    Register({ "JPEG: opening an index of 1048576 blocks / pread",
               [=] { return OpeningTheIndex(many()); }, 1 / 1.5 });
}

} // namespace tympan::bench
