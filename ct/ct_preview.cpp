// CT pictures in bitmaps that the client keeps.
#include "core/whole_numbers.h"
#include "ct/ct_file.h"
#include "ct/ct_layout.h"
#include "ct/ct_screen.h"
#include "platform/gdi_spans.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using tympan::Plates;

// What of a bitmap a processor's caches may still hold when the whole of it is drawn.
constexpr std::uint64_t kCachedBytes = 8U << 20U;

// The bytes of a row of a bitmap of some depth.
struct RowForm {
    bool sound = false; // the depths for which the rows fit their bitmap
    unsigned int colours = 0;
    unsigned int bytesPerPixel = 0;
    bool paletteIndexes = false;

    std::uint64_t Fill(std::uint32_t width) const
    {
        return (4 - std::uint64_t{ width } * bytesPerPixel % 4) % 4;
    }
    std::uint64_t Bytes(std::uint32_t width) const
    {
        return std::uint64_t{ width } * bytesPerPixel + Fill(width);
    }
};

RowForm FormOf(int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 8: return { true, 256, 1, true };
    case 24: return { true, 0, 3, false };
    default: return {};
    }
}

// Where the rows of a bitmap go, one behind the other from the start of its memory.
class BitmapRows {
  public:
    BitmapRows(unsigned char* bits, std::uint32_t width, unsigned int bytesPerPixel, int rowFill)
        : bits_(bits), bytesPerPixel_(bytesPerPixel), fill_(static_cast<std::size_t>(rowFill)),
          width_(width)
    {}

    std::uint8_t* At(std::uint64_t row, std::size_t column) const
    {
        return bits_ + BytesOf(row) + std::uint64_t{ column } * bytesPerPixel_;
    }
    std::uint64_t BytesOf(std::uint64_t rows) const
    {
        return rows * (std::uint64_t{ width_ } * bytesPerPixel_ + fill_);
    }
    // Zeroes the fill once the last stretch of a row is there.
    void Finish(std::uint64_t row, std::size_t columnsDone) const
    {
        if (columnsDone == width_)
            std::memset(At(row, width_), 0, fill_);
    }

  private:
    unsigned char* bits_;
    unsigned int bytesPerPixel_;
    std::size_t fill_;
    std::uint32_t width_;
};

// What each byte of a plate becomes by the client's table of corrected inks.
tympan::ByteTable CorrectionOf(int** tables, ColorSeparationType separation)
{
    tympan::ByteTable table = tympan::UnchangedBytes();
    const bool isPlate = separation >= Cyan && separation <= Black;
    if (!isPlate || tables[separation] == nullptr)
        return table;
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<std::uint8_t>(255 - (tables[separation][255 - byte] & 0xFF));
    return table;
}

// The corrections of the separations; none when the client gave no tables.
std::vector<tympan::ByteTable> CorrectionsOf(int** tables,
                                             std::span<const ColorSeparationType> separations)
{
    std::vector<tympan::ByteTable> corrections;
    if (tables != nullptr)
        for (const ColorSeparationType separation : separations)
            corrections.push_back(CorrectionOf(tables, separation));
    return corrections;
}

// All columns of the rows from `first` to `last`, both included.
tympan::CtArea WholeRows(unsigned long first, unsigned long last, const tympan::CtLayout& layout)
{
    return { first, last + std::uint64_t{ 1 }, 0, layout.width };
}

} // namespace

HBITMAP CtFileInterface::Display(HDC, HBITMAP bitmap, ColorSeparationType separation,
                                 unsigned int firstRow, unsigned int lastRow, int bitsPerPixel,
                                 int** tables, bool asGray)
{
    if (lastRow < firstRow)
        return bitmap;
    const RowForm form = FormOf(bitsPerPixel);
    const bool inColour = separation == AllSeparations;
    if (!form.sound || (inColour && form.paletteIndexes))
        return nullptr;

    if (!tympan::IsLiveBitmap(bitmap) || !tympan::IsLiveBitmap(previewBitmap_)) {
        MakePreview(separation, bitsPerPixel);
        firstRow = 0;
        lastRow = std::numeric_limits<unsigned int>::max(); // all that the bitmap has room for
    }
    if (previewBitmap_ == nullptr)
        return nullptr;

    const std::uint32_t width = Layout().width;
    const std::uint64_t room =
        width == 0 ? 0 : tympan::BitmapBytes(previewBitmap_) / form.Bytes(width);
    const std::uint64_t rows =
        std::min<std::uint64_t>(std::uint64_t{ lastRow } - firstRow + 1, room);
    if (rows == 0)
        return previewBitmap_;
    const auto last = static_cast<unsigned long>(firstRow + (rows - 1));
    const int fill = static_cast<int>(form.Fill(width));
    if (inColour)
        ExtractData(firstRow, last, tables, previewBits_, fill, form.paletteIndexes);
    else
        ExtractData(firstRow, last, tables, previewBits_, separation, fill, form.paletteIndexes,
                    asGray);
    return previewBitmap_;
}

void CtFileInterface::MakePreview(ColorSeparationType separation, int bitsPerPixel)
{
    const RowForm form = FormOf(bitsPerPixel);
    constexpr std::size_t kHeaderAndOne = sizeof(BITMAPINFOHEADER) + sizeof(RGBQUAD);
    previewBitmap_ = nullptr;
    previewBits_ = nullptr;
    if (!HasRoomFor(2))
        return;
    previewInfo_.reset(
        static_cast<BITMAPINFO*>(LocalAlloc(LPTR, kHeaderAndOne + form.colours * sizeof(RGBQUAD))));
    if (previewInfo_ == nullptr)
        return;
    BITMAPINFOHEADER& header = previewInfo_->bmiHeader;
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = tympan::CutToWhole<LONG>(PictureParams()->WidthInPixels());
    header.biHeight = -tympan::CutToWhole<LONG>(std::max(PictureParams()->HeightInPixels(), 0.0));
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bitsPerPixel);
    header.biCompression = BI_RGB;
    header.biClrUsed = form.colours;
    header.biClrImportant = form.colours;
    if (form.paletteIndexes) {
        previewPalette_ = CreateGrayScalePalette(previewInfo_.get(), separation);
        Keep(previewPalette_);
    }

    void* bits = nullptr;
    const HBITMAP bitmap =
        CreateDIBSection(nullptr, previewInfo_.get(), DIB_RGB_COLORS, &bits, nullptr, 0);
    Keep(bitmap);
    previewBitmap_ = bitmap;
    previewBits_ = static_cast<unsigned char*>(bits);
}

void CtFileInterface::ExtractData(unsigned long firstRow, unsigned long lastRow, int** tables,
                                  unsigned char* bits, ColorSeparationType separation, int rowFill,
                                  bool paletteIndexes, bool asGray)
{
    tympan::Guarded(Failures(), tympan::kCtDisplayFailures, [&] {
        const tympan::CtLayout layout = Layout();
        const BitmapRows rows(bits, layout.width, paletteIndexes ? 1 : 3, rowFill);
        const tympan::TintTable tints(asGray ? Black : separation);
        const std::span<const ColorSeparationType> wanted(&separation, 1);
        // A palette's client corrects the palette, by ApplyPaletteChanges.
        tympan::CtBands bands(FileHandle(), layout, wanted,
                              CorrectionsOf(paletteIndexes ? nullptr : tables, wanted));
        bands.ForEachStretch(
            WholeRows(firstRow, lastRow, layout),
            [&](std::uint64_t row, std::size_t column, const Plates& plates) {
                std::uint8_t* const target = rows.At(row - firstRow, column);
                const std::uint8_t* const plate = plates.plate[0];
                if (paletteIndexes)
                    std::transform(plate, plate + plates.count, target, [](std::uint8_t byte) {
                        return static_cast<std::uint8_t>(255 - byte);
                    });
                else
                    tints.ToBgr(plate, plates.count, target);
                rows.Finish(row - firstRow, column + plates.count);
            });
        tympan::LeaveBehindRow(FileHandle(), layout, wanted, lastRow);
    });
}

void CtFileInterface::ExtractData(unsigned long firstRow, unsigned long lastRow, int** tables,
                                  unsigned char* bits, int rowFill, bool)
{
    tympan::Guarded(Failures(), tympan::kCtDisplayFailures, [&] {
        const tympan::CtLayout layout = Layout();
        const BitmapRows rows(bits, layout.width, 3, rowFill);
        const auto toBgr = rows.BytesOf(lastRow - firstRow + std::uint64_t{ 1 }) > kCachedBytes
                               ? tympan::PlatesToBgrStreamed
                               : tympan::PlatesToBgr;
        tympan::CtBands bands(FileHandle(), layout, tympan::kCtColour,
                              CorrectionsOf(tables, tympan::kCtColour));
        bands.ForEachStretch(WholeRows(firstRow, lastRow, layout),
                             [&](std::uint64_t row, std::size_t column, const Plates& plates) {
                                 toBgr(plates, rows.At(row - firstRow, column));
                                 rows.Finish(row - firstRow, column + plates.count);
                             });
        tympan::LeaveBehindRow(FileHandle(), layout, tympan::kCtColour, lastRow);
    });
}

HBITMAP CtFileInterface::FreePreview(HBITMAP bitmap)
{
    CleanAndClosePreview(bitmap);
    return nullptr;
}

void CtFileInterface::CleanAndClosePreview(HBITMAP bitmap)
{
    if (bitmap != nullptr)
        DeleteObject(bitmap);
}
