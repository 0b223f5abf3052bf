// Rows of one separation, one by one and many in a call, against a bare loop of reads of the same
// bytes into the same kind of buffer.
#include "bench/benches.h"
#include "bench/comparison.h"

#include <algorithm>

namespace tympan::bench {

namespace {

constexpr ColorSeparationType kPlate = Magenta;
constexpr unsigned int kRange = 256; // rows

// What both sides of a comparison work on.
struct RowReading {
    explicit RowReading(std::shared_ptr<const BigPicture> bigPicture, unsigned int rowsHeld)
        : picture(std::move(bigPicture)), object(picture->Open()), file(picture->Path()),
          buffer(TouchedMemory(std::size_t{ rowsHeld } * picture->Size().width))
    {}

    // Reads the rows from `first` on, as many as the buffer holds, one read each.
    void ReadBare(unsigned int first, unsigned int count)
    {
        const std::size_t width = picture->Size().width;
        for (unsigned int i = 0; i < count; ++i)
            file.ReadAt(picture->PlaceOf(first + i, kPlate),
                        std::span(buffer).subspan(i * width, width));
    }

    std::shared_ptr<const BigPicture> picture;
    std::unique_ptr<CtFileInterface> object;
    RawFile file;
    std::vector<std::uint8_t> buffer; // one for both: its alignment is a part of the time
};

void ReadOneByOne(RowReading& reading)
{
    const auto [width, height] = reading.picture->Size();
    const double scan = reading.object->ResolutionOnScanAxis();
    const double xScan = reading.object->ResolutionOnXScanAxis();
    for (unsigned int row = 0; row < height; ++row) {
        const unsigned long stored = reading.object->GetPictureRow(
            reading.buffer.data(), row, kPlate, scan, xScan, reading.buffer.size());
        Require(stored == width, "the library gave no row");
    }
}

// Calls `read(first, count)` for all ranges of the picture.
template <typename Read>
void ForEachRange(PictureSize size, Read&& read)
{
    for (unsigned int first = 0; first < size.height; first += kRange)
        read(first, std::min(kRange, size.height - first));
}

void ReadRange(RowReading& reading, unsigned int first, unsigned int count)
{
    unsigned int rowsInfo = 0;
    unsigned long offsets[kRange];
    const unsigned long stored =
        reading.object->GetPictureRows(reading.buffer.data(), first, first + count, rowsInfo,
                                       offsets, kPlate, reading.buffer.size(), false);
    Require(stored == std::uint64_t{ count } * reading.picture->Size().width,
            "the library gave no rows");
}

Sides OneByOne(const std::shared_ptr<const BigPicture>& picture)
{
    const auto reading = std::make_shared<RowReading>(picture, 1);
    const auto bare = [reading] {
        for (unsigned int row = 0; row < reading->picture->Size().height; ++row)
            reading->ReadBare(row, 1);
    };
    return { { bare }, { [reading] { ReadOneByOne(*reading); } } };
}

Sides InRanges(const std::shared_ptr<const BigPicture>& picture)
{
    const auto reading = std::make_shared<RowReading>(picture, kRange);
    const auto bare = [reading] {
        ForEachRange(reading->picture->Size(), [&](unsigned int first, unsigned int count) {
            reading->ReadBare(first, count);
        });
    };
    const auto byRanges = [reading] {
        ForEachRange(reading->picture->Size(), [&](unsigned int first, unsigned int count) {
            ReadRange(*reading, first, count);
        });
    };
    return { { bare }, { byRanges } };
}

} // namespace

void RegisterRows(PictureSize size, const Source<BigPicture>& picture)
{
    const std::string name = "rows of " + std::to_string(size.width) + " bytes";
    Register({ name + " one by one / bare reads", [=] { return OneByOne(picture()); }, 0.95 });
    Register(
        { name + " in ranges of 256 / bare reads", [=] { return InRanges(picture()); }, 0.95 });
}

} // namespace tympan::bench
