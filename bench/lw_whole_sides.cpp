// Line work as a whole file: opening by the header, and the stream of colour indexes.
#include "bench/lw_sides.h"
#include "core/header_layout.h"
#include "lw_variant/velmar_lw_file.h"
#include "tests/support/ct_samples.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstring>

namespace tympan::bench {

namespace {

using WholeFile = std::unique_ptr<VelmarLWFileInterface>;

constexpr std::size_t kWholeWidth = 4096; // a row of the stream is a multiple of it wide
constexpr unsigned char kWhiteIndex = 1;

WholeFile OpenWhole(const std::string& path)
{
    WholeFile object(create_velmar_lw_file_object(path.c_str(), true));
    Require(object != nullptr, "the library can't open the picture");
    return object;
}

struct WholeWork {
    WholeFile object;
    std::vector<std::uint8_t> buffer;
    std::vector<unsigned long> offsets;

    std::size_t Stream()
    {
        unsigned char* end = buffer.data();
        unsigned long* offset = offsets.data();
        return object->GetLWPictureRows(end, 0, kLwSize.height - 1, offset, 0, LwPicture::kPlate, 0,
                                        1, kWhiteIndex, 0, true);
    }
};

void RequireIndexes(const LwPicture& picture, std::span<const std::uint8_t> stream)
{
    const std::size_t white = kWholeWidth - kLwSize.width % kWholeWidth;
    std::vector<std::uint8_t> expected(white + kLwSize.width, kWhiteIndex);
    PlainRows rows(stream, expected.size());
    for (unsigned int row = 0; row < kLwSize.height; ++row) {
        ExpandRow(picture.Row(row), Indexes(), std::span(expected).subspan(white));
        const std::span<const std::uint8_t> given = rows.Next();
        Require(std::equal(given.begin(), given.end(), expected.begin()), "the stream is wrong");
    }
    Require(rows.Position() == stream.size(), "the stream is too long");
}

void WriteHuge(const LwPicture& picture, const std::string& path)
{
    std::vector<std::uint8_t> bytes = test::BytesOf(picture.Path());
    test::CtSample::PutText(bytes, static_cast<std::size_t>(kHeaderHeightInPixels.offset),
                            test::CtSample::Text("+%011u", kHugeRows));
    const std::size_t start = bytes.size() - picture.RowBytes();
    NewFile file(path);
    file.Write(std::span(bytes).first(start));
    for (unsigned int rows = 0; rows < kHugeRows; rows += kLwSize.height)
        file.Write(std::span(bytes).subspan(start));
    BringIntoCache(path);
}

// Copies each block to its place in memory as large as the file.
Contender CopyingTheFile(const Picture& picture)
{
    const auto copy = std::make_shared<std::vector<std::uint8_t>>(
        TouchedMemory(static_cast<std::size_t>(picture->FileBytes())));
    const auto at = std::make_shared<std::size_t>(0);
    return ReadingInBlocks(picture, [=](std::span<const std::uint8_t> block) {
        std::memcpy(copy->data() + *at, block.data(), block.size());
        *at = (*at + block.size()) % copy->size();
    });
}

} // namespace

Sides StreamingIndexes(const Picture& picture)
{
    const auto work = std::make_shared<WholeWork>();
    work->object = OpenWhole(picture->Path());
    work->buffer = TouchedMemory(work->object->GetLWBufferSize(0, kLwSize.height - 1, 1, 0, true));
    work->offsets.resize(kLwSize.height);
    const std::size_t bytes = work->Stream();
    RequireIndexes(*picture, std::span(work->buffer).first(bytes));
    return { CopyingTheFile(picture),
             { [=] { Require(work->Stream() == bytes, "the stream's size changed"); } } };
}

Sides OpeningByHeader(const Picture& picture, const std::string& folder)
{
    const std::string path = folder + "huge.lw";
    WriteHuge(*picture, path);
    const auto base = std::make_shared<std::unique_ptr<LWFileInterface>>();
    const auto whole = std::make_shared<WholeFile>();
    const auto openBase = [=] {
        base->reset(create_lw_file_object(path.c_str(), true));
        Require(*base != nullptr && (*base)->ObjectStatus(), "the library can't open the picture");
    };
    return { { openBase, [=] { base->reset(); } },
             { [=] { *whole = OpenWhole(path); }, [=] { whole->reset(); } } };
}

} // namespace tympan::bench
