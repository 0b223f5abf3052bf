// Line work as pixels: rows and drawing.
#include "bench/lw_sides.h"
#include "core/pixel_colour.h"
#include "core/pixel_colour_vector.h"
#include "tests/support/canvas.h"

#include <cstring>

namespace tympan::bench {

namespace {

constexpr unsigned int kDisplayRows = 1000; // a bitmap of 60 MB

std::shared_ptr<Working> WorkingOnRows(const Picture& picture, unsigned int rows)
{
    return std::make_shared<Working>(picture, std::size_t{ kLwSize.width } * rows);
}

Contender FillingMemory(const std::shared_ptr<Working>& work)
{
    return { [=] {
        std::memset(work->buffer.data(), kWhite, work->buffer.size());
        benchmark::ClobberMemory();
    } };
}

// As many rows as the buffer has room for.
void ReadRows(Working& work)
{
    const std::size_t size = work.buffer.size();
    unsigned int rowsInfo = 0;
    const unsigned long stored = work.object->GetPictureRows(
        work.buffer.data(), 0, static_cast<unsigned int>(size / kLwSize.width), rowsInfo,
        work.offsets.data(), LwPicture::kPlate, size, false);
    Require(stored == size, "the library gave no rows");
}

void ReadOneByOne(Working& work)
{
    LWFileInterface& object = *work.object;
    for (unsigned int row = 0; row < kLwSize.height; ++row)
        Require(object.GetPictureRow(work.buffer.data() + std::size_t{ row } * kLwSize.width, row,
                                     LwPicture::kPlate, object.ResolutionOnScanAxis(),
                                     object.ResolutionOnXScanAxis(),
                                     kLwSize.width) == kLwSize.width,
                "the library gave no row");
}

// A contender whose work is the buffer's pixels.
Contender Decoding(const std::shared_ptr<Working>& work, void (*decode)(Working&))
{
    return { [=] { decode(*work); }, {}, [=] { RequireInks(*work->picture, work->buffer); } };
}

Sides RowsBy(void (*decode)(Working&), const Picture& picture)
{
    const auto work = WorkingOnRows(picture, kLwSize.height);
    return { FillingMemory(work), Decoding(work, decode) };
}

void OpenAndReadRows(Working& work)
{
    work.object = Open(*work.picture);
    ReadRows(work);
}

void RequireDrawn(const LwPicture& picture, const test::Canvas& canvas, unsigned int row)
{
    std::vector<std::uint8_t> ink(kLwSize.width);
    std::vector<std::uint8_t> bgr(std::size_t{ kLwSize.width } * 3);
    ExpandRow(picture.Row(row), Inks(), ink);
    PlatesToBgrPlain({ { ink.data(), ink.data(), ink.data(), ink.data() }, ink.size() },
                     bgr.data());
    for (std::size_t x = 0; x < kLwSize.width; ++x) {
        const ScreenColour colour{ bgr[x * 3 + 2], bgr[x * 3 + 1], bgr[x * 3] };
        Require(GetPixel(canvas.dc.GetSafeHdc(), static_cast<int>(x), static_cast<int>(row)) ==
                    colour.Packed(),
                "the picture is drawn wrong");
    }
}

} // namespace

Sides RowsAtOnce(const Picture& picture)
{
    return RowsBy(ReadRows, picture);
}

Sides RowsOneByOne(const Picture& picture)
{
    return RowsBy(ReadOneByOne, picture);
}

Sides Drawing(const Picture& picture)
{
    const auto work = WorkingOnRows(picture, kDisplayRows * 3);
    const auto canvas = std::make_shared<test::Canvas>(kLwSize.width, kDisplayRows);
    const auto draw = [=] {
        work->object->Display(0, kDisplayRows - 1, canvas->dc);
        Require(work->object->TraceStatus() == 0, "the library drew nothing");
    };
    return { FillingMemory(work),
             { draw, {}, [=] { RequireDrawn(*picture, *canvas, kDisplayRows - 1); } } };
}

Sides AgainstPeer(const Picture& picture, const PeerOfRows& peer, Opened opened,
                  const std::string& path)
{
    const std::shared_ptr<Peer> decoder = peer.make(path, { kLwSize.width, peer.rows });
    Require(decoder != nullptr, "built without this library");
    peer.write(*picture, peer.rows, path);
    return { { [=] { decoder->Decode(); }, [=] { decoder->Forget(); },
               [=] { decoder->Verify(*picture); } },
             Decoding(WorkingOnRows(picture, peer.rows),
                      opened == Opened::Timed ? OpenAndReadRows : ReadRows) };
}

} // namespace tympan::bench
