// A rectangle of an LW file as a new one: its rows cut run by run, its colour records as they stand.
#include "core/block_size.h"
#include "core/failure_guard.h"
#include "core/header_layout.h"
#include "core/whole_numbers.h"
#include "lw/lw_file.h"
#include "lw/lw_layout.h"
#include "lw/run_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace {

using tympan::Run;
using tympan::RunReader;
using tympan::RunStretch;

// Columns or rows of a picture, from 1, both ends included.
struct Side {
    std::uint64_t first;
    std::uint64_t last;

    std::uint64_t Length() const { return last - first + 1; }
};

// What is not there, 0 or below keeps all on its side.
std::optional<Side> SideOf(double wantedFirst, double wantedLast, double length)
{
    const auto whole = [](double place) { return tympan::CutToWhole<std::uint64_t>(place); };
    Side side{ std::max<std::uint64_t>(whole(wantedFirst), 1), whole(wantedLast) };
    if (side.last == 0 || !(wantedLast < length))
        side.last = whole(length);
    if (side.last < side.first)
        return std::nullopt;
    return side;
}

// Gathers what is written from the file's start on into blocks, which stand at whole multiples of
// their size: so the system keeps them in large pieces. The caller ends with `Flush`.
class BlockWriter {
  public:
    explicit BlockWriter(CFile& file)
        : file_(file), block_(std::make_unique_for_overwrite<unsigned char[]>(tympan::kBlockBytes))
    {}

    void Put(std::uint8_t index, std::uint64_t length)
    {
        const Run run{ index, static_cast<std::uint8_t>(length) };
        Put(std::span(&run, 1));
    }
    void Put(std::span<const Run> runs)
    {
        Put({ reinterpret_cast<const unsigned char*>(runs.data()), runs.size_bytes() });
    }
    void Put(std::span<const unsigned char> bytes)
    {
        while (!bytes.empty()) {
            const std::size_t count = std::min(bytes.size(), tympan::kBlockBytes - size_);
            std::memcpy(block_.get() + size_, bytes.data(), count);
            size_ += count;
            bytes = bytes.subspan(count);
            if (size_ == tympan::kBlockBytes)
                Flush();
        }
    }
    void Flush()
    {
        file_.Write(block_.get(), static_cast<unsigned int>(size_));
        size_ = 0;
    }

  private:
    CFile& file_;
    std::unique_ptr<unsigned char[]> block_;
    std::size_t size_ = 0;
};

constexpr tympan::FailureRow kShortRow[] = { { tympan::Caught::ReadFile, 0, nullptr } };

// Cuts the columns out of one row after the other.
class RowCutter {
  public:
    RowCutter(RunReader& reader, const Side& columns, BlockWriter& out)
        : reader_(reader), columns_(columns), out_(out)
    {}

    // The row that stands between two places of the file. One that the file doesn't hold whole ends
    // where the file does.
    void Cut(std::uint64_t place, std::uint64_t end)
    {
        end_ = end;
        column_ = 0;
        out_.Put(0, 0);
        tympan::Guarded(tympan::NoTrace(), kShortRow, [&] {
            reader_.GoTo(place + tympan::kLwDelimiterBytes);
            CutFirstRun();
            CutOthers();
        });
        out_.Put(0, 0);
    }

  private:
    // Passes the runs in front of the columns, and writes what is inside of the one that reaches them.
    void CutFirstRun()
    {
        Run run{};
        std::size_t passed = 0;
        while (column_ < columns_.first) {
            const RunStretch stretch =
                reader_.TakeInside(columns_.first - column_, end_, expectedBefore_);
            column_ += stretch.pixels;
            passed += stretch.runs.size();
            run = stretch.runs.back();
        }
        expectedBefore_ = passed - passed / 8;
        out_.Put(run.index, std::min(column_, columns_.last) - columns_.first + 1);
    }

    // Copies the runs behind it, and cuts what reaches beyond the columns off the last. A delimiter
    // that comes too early ends the row; a run of length 0 that has a colour doesn't, for the row's
    // other pixels would be lost.
    void CutOthers()
    {
        std::size_t taken = 0;
        while (column_ < columns_.last) {
            const std::uint64_t wanted = columns_.last - column_;
            const RunStretch stretch = reader_.TakeInside(wanted, end_, expectedInside_);
            const auto runs = tympan::RunsBeforeDelimiter(stretch.runs);
            const bool isWhole = runs.size() == stretch.runs.size();
            const bool isLast = isWhole && stretch.pixels >= wanted;
            out_.Put(isLast ? runs.first(runs.size() - 1) : runs);
            if (isLast)
                out_.Put(runs.back().index, runs.back().length - (stretch.pixels - wanted));
            if (!isWhole)
                return;
            column_ += stretch.pixels;
            taken += stretch.runs.size();
        }
        expectedInside_ = taken - taken / 8;
    }

    RunReader& reader_;
    const Side& columns_;
    BlockWriter& out_;
    std::uint64_t end_ = 0;    // of the row in hand
    std::uint64_t column_ = 0; // the last that was passed, from 1
    std::size_t expectedBefore_ = 0;
    std::size_t expectedInside_ = 0;
};

// In blocks that stand at whole multiples of their size in the target, as those of a BlockWriter.
void CopyBytes(CFile& source, std::uint64_t from, std::uint64_t to, CFile& target)
{
    const auto block = std::make_unique_for_overwrite<unsigned char[]>(tympan::kBlockBytes);
    source.Seek(static_cast<LONGLONG>(from), CFile::begin);
    std::uint64_t room = tympan::kBlockBytes - target.GetPosition() % tympan::kBlockBytes;
    while (from < to) {
        const auto wanted = static_cast<unsigned int>(std::min(room, to - from));
        const unsigned int count = source.Read(block.get(), wanted);
        if (count == 0)
            return;
        target.Write(block.get(), count);
        from += count;
        room = tympan::kBlockBytes;
    }
}

// The source's bytes in front of its rows, with the sizes of the rectangle in place of its own. The
// texts end in a terminator, which the next one, or the number of colours, is put over.
std::vector<unsigned char> CroppedHeader(CFile& source, std::size_t size,
                                         const PictureParameters& record, const Side& columns,
                                         const Side& rows)
{
    std::vector<unsigned char> header(size);
    source.Seek(0, CFile::begin);
    source.Read(header.data(), static_cast<unsigned int>(size));
    const auto width = static_cast<double>(columns.Length());
    const auto height = static_cast<double>(rows.Length());
    const double factor = record.FileSizeUnitsFactor();
    const unsigned char colours = header[tympan::kLwColoursNumber.offset];
    header[tympan::kHeaderUnitsCode.offset] = tympan::kInchesCode; // as the record has the sizes
    PictureParameters::SizeToBuffer(record.HeightInUnits() / factor *
                                        (height / record.HeightInPixels()),
                                    header.data() + tympan::kHeaderHeight.offset);
    PictureParameters::SizeToBuffer(record.WidthInUnits() / factor *
                                        (width / record.WidthInPixels()),
                                    header.data() + tympan::kHeaderWidth.offset);
    PictureParameters::SizeInPixelsToBuffer(height,
                                            header.data() + tympan::kHeaderHeightInPixels.offset);
    PictureParameters::SizeInPixelsToBuffer(width,
                                            header.data() + tympan::kHeaderWidthInPixels.offset);
    header[tympan::kLwColoursNumber.offset] = colours;
    return header;
}

} // namespace

void LWFileInterface::CreateCropedLWFile(CFile& source, CFile& target, CompressParameters* crop)
{
    if (crop == nullptr || placesKnown_ == 0 || lwDataStartPosition_ < tympan::kLwColours)
        return;
    const LwPictureParameters& record = LwRecord();
    const auto columns = SideOf(crop->CropLeft, crop->CropRight, record.WidthInPixels());
    const auto rows = SideOf(crop->CropTop, crop->CropBottom, record.HeightInPixels());
    if (!columns || !rows || rows->last > placesKnown_)
        return;

    const auto header = CroppedHeader(source, static_cast<std::size_t>(lwDataStartPosition_),
                                      record, *columns, *rows);
    const std::uint64_t start = PlaceOf(rows->first - 1);
    const std::uint64_t end = rows->last < placesKnown_ ? PlaceOf(rows->last) : source.GetLength();
    target.Seek(0, CFile::begin);
    BlockWriter out(target);
    out.Put(header);
    if (static_cast<double>(columns->Length()) == record.WidthInPixels()) {
        out.Flush();
        CopyBytes(source, start, end, target);
    } else {
        RunReader reader(source, *block_, start, end);
        RowCutter cutter(reader, *columns, out);
        for (std::uint64_t row = rows->first; row <= rows->last; ++row)
            cutter.Cut(PlaceOf(row - 1), row < rows->last ? PlaceOf(row) : end);
        out.Flush();
    }
    source.Seek(static_cast<LONGLONG>(end), CFile::begin);
}
