// TIFF/IT continuous tone on a device context. A strip is one row of pixels after the other, so that
// the bytes of any row have a known place; what the context doesn't show is not read.
#include "core/block_size.h"
#include "core/whole_numbers.h"
#include "platform/gdi_spans.h"
#include "tiff/busy_cursor.h"
#include "tiff/ink_colours.h"
#include "tiff/strip_bytes.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_failures.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_strips.h"

#include <algorithm>
#include <vector>

namespace {

using tympan::StripBytes;

constexpr std::size_t kPixelBytes = tympan::kCtPixelBytes;
// Colours are made nearly as fast as bytes are read, so that calls of the system count: larger than
// other blocks of a strip.
constexpr std::size_t kMostRead = std::min<std::size_t>(tympan::kBlockBytes, 256U << 10U);

// The part of the rows from `first` to `last` and of a width that a context shows.
struct Shown {
    std::uint64_t firstRow, endRow;
    std::uint64_t firstColumn, endColumn;

    Shown(HDC dc, std::uint64_t first, std::uint64_t last, std::uint64_t width)
    {
        const tympan::DrawableArea area = tympan::DrawableAreaOf(dc);
        const auto place = [](std::int64_t coordinate) {
            return static_cast<std::uint64_t>(std::max<std::int64_t>(coordinate, 0));
        };
        firstRow = std::max(first, place(area.top));
        endRow = last < place(area.bottom) ? last + 1 : place(area.bottom);
        firstColumn = std::min(place(area.left), width);
        endColumn = std::max(std::min(place(area.right), width), firstColumn);
    }
    std::size_t Columns() const { return static_cast<std::size_t>(endColumn - firstColumn); }
};

// Draws strips, one after the other, on the rows from `first` to `last`.
class StripsOnScreen {
  public:
    StripsOnScreen(CFile& file, HDC dc, std::uint64_t width, std::uint64_t first,
                   std::uint64_t last)
        : file_(file), dc_(dc), rowBytes_(width * kPixelBytes), first_(first), last_(last),
          length_(file.GetLength()), shown_(dc, first, last, width),
          slots_(shown_.Columns() * kPixelBytes), bgr_(shown_.Columns() * 3)
    {}

    void Draw(std::uint64_t offset)
    {
        offset_ = offset;
        if (first_ > last_ || rowBytes_ == 0)
            return;
        wholeRows_ = (length_ - std::min(length_, offset_)) / rowBytes_;
        if (!bgr_.empty()) {
            DrawWholeRows();
            Settle(last_ - first_);
            DrawRowsBehind();
        }
        LeaveBehind();
    }

  private:
    std::uint64_t PlaceOf(std::uint64_t row) const
    {
        return offset_ + row * rowBytes_ + shown_.firstColumn * kPixelBytes;
    }

    // Rows of which nearly all is shown are read on over what isn't.
    std::size_t BlockBytes() const
    {
        return slots_.size() * 2 >= rowBytes_ ? kMostRead : std::min(slots_.size(), kMostRead);
    }

    void DrawWholeRows()
    {
        const std::uint64_t end = std::min(shown_.endRow, EndOfWholeRows());
        if (shown_.firstRow >= end)
            return;
        StripBytes bytes(file_, PlaceOf(shown_.firstRow - first_), BlockBytes());
        for (std::uint64_t y = shown_.firstRow; y < end; ++y) {
            TakeColours(bytes);
            tympan::SetPixelSpan(dc_, static_cast<std::int64_t>(shown_.firstColumn),
                                 static_cast<std::int64_t>(y), bgr_);
            bytes.Skip(rowBytes_ - slots_.size());
        }
    }

    std::uint64_t EndOfWholeRows() const
    {
        return tympan::Sum(first_, wholeRows_).value_or(shown_.endRow);
    }

    void TakeColours(StripBytes& bytes)
    {
        for (std::size_t done = 0; done < shown_.Columns();) {
            const auto ahead = bytes.Ahead(kPixelBytes);
            const std::size_t count = std::min(ahead.size() / kPixelBytes, shown_.Columns() - done);
            if (count == 0) // a file that was cut meanwhile
                return;
            tympan::InksToBgr(ahead.data(), count, bgr_.data() + done * 3);
            bytes.Pass(count * kPixelBytes);
            done += count;
        }
    }

    // The slots as they are when a row has been read: bytes that the file doesn't hold stay those of
    // the row before.
    void Settle(std::uint64_t row)
    {
        if (row < wholeRows_)
            return LoadSlots(row);
        if (wholeRows_ != 0)
            LoadSlots(wholeRows_ - 1);
        LoadSlots(wholeRows_);
    }

    void LoadSlots(std::uint64_t row)
    {
        file_.Seek(static_cast<LONGLONG>(PlaceOf(row)), CFile::begin);
        file_.Read(slots_.data(), static_cast<UINT>(slots_.size()));
    }

    void DrawRowsBehind()
    {
        const std::uint64_t start = std::max(shown_.firstRow, EndOfWholeRows());
        if (start >= shown_.endRow)
            return;
        tympan::InksToBgr(slots_.data(), shown_.Columns(), bgr_.data());
        for (std::uint64_t y = start; y < shown_.endRow; ++y)
            tympan::SetPixelSpan(dc_, static_cast<std::int64_t>(shown_.firstColumn),
                                 static_cast<std::int64_t>(y), bgr_);
    }

    void LeaveBehind()
    {
        const std::uint64_t there = length_ - std::min(length_, offset_);
        const auto rows = tympan::Sum(last_ - first_, 1);
        const std::uint64_t asked =
            tympan::Product(rows.value_or(there), rowBytes_).value_or(there);
        file_.Seek(static_cast<LONGLONG>(offset_ + std::min(asked, there)), CFile::begin);
    }

    CFile& file_;
    HDC dc_;
    std::uint64_t rowBytes_;
    std::uint64_t first_, last_;
    std::uint64_t length_;
    Shown shown_;
    std::vector<std::uint8_t> slots_; // one for each column shown; no ink at first
    std::vector<std::uint8_t> bgr_;
    std::uint64_t offset_ = 0;
    std::uint64_t wholeRows_ = 0; // that the file holds from the strip's start on
};

} // namespace

void TiffItCtP1Interface::Display(unsigned long firstRow, unsigned long lastRow, CDC& dc)
{
    const tympan::BusyCursor busy;
    const auto draw = [&] {
        const auto width = tympan::CutToWhole<std::uint32_t>(PictureParams()->WidthInPixels());
        const double height = PictureParams()->HeightInPixels();
        if (Strips().empty())
            return;
        StripsOnScreen screen(FileHandle(), dc.GetSafeHdc(), width, firstRow, lastRow);
        for (const StripInfo& strip : tympan::StripsOnTop(
                 Strips(), height, width * tympan::kCtPixelBytes, FileHandle().GetLength())) {
            FileHandle().Seek(strip.Offset, CFile::begin);
            if (!(strip.RowsPerStrip < height))
                screen.Draw(strip.Offset);
        }
    };
    tympan::Guarded(Failures(), tympan::kTiffItFailures, [&] {
        tympan::KeepingMessage(draw, [&](const CString& text) { TraceStatusString(text); });
    });
}
