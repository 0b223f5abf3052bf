// Continuous-tone pictures: rows of ink bytes behind a 2048-byte header, read, written and shown.
#pragma once

#include "core/row_access.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <memory>
#include <vector>

namespace tympan {
struct CtLayout;
struct Format;
/// The format's row of the list that the factory walks; for the library alone.
Format CtFormat();
} // namespace tympan

/// A CT file: one byte for each pixel and separation, 255 for no ink and 0 for full ink.
///
/// The rows stand uncompressed behind the header, the separations of a row one behind the other,
/// each at an even distance from the first row. A reading client makes the object by
/// `create_ct_file_object(name, true)` or the factory, looks at `ObjectStatus()`, and asks for rows
/// or a display. A writing one makes it with `false`, calls `StorePictureParams` with a record that
/// describes the picture, sets `FileHeightInUnits` and `FileWidthInUnits` (which an assigned record
/// doesn't carry), calls `SavePictureParams`, and then `SavePictureRow` for each row and separation
/// in any order.
///
/// Sizes below 0 in a header count as 0. Positions are as wide as `unsigned long`: where that has
/// 64 bits, pictures go past 4 GiB; where it has 32, a row beyond them has no position.
class TYMPAN_API CtFileInterface : public PictureFileInterface {
  public:
    /// Makes the object and opens it; what `OpenPictureFile` gave stands in `ObjectStatus()`.
    CtFileInterface(CString fileName, bool inputFile);
    /// Closes the file, and destroys what `Display` and `ApplyPaletteChanges` made and the client
    /// has not: bitmaps, palettes, headers.
    ~CtFileInterface() override;

    /// Opens as `BasePictureIF` does, and takes a row buffer. `RowSize` of the record becomes the
    /// width, `BitsPerSample` 8 for each separation.
    /// \return false, with `ObjectStatus` false: for a file that can't be opened or whose header is
    ///   refused, with the file closed, and 90001 and "CT File Interface:\n:Error Opening file,
    ///   aborting!" if the object had failed before; for a file failure and for memory that runs
    ///   out while the header is read, 90001; for a row that no memory can be had for, or that is
    ///   larger than 16 MiB and the file, without a code. A `fileError` that the base would throw
    ///   ends here as a file failure, destroyed if it was made with `new`.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// \name Rows
    /// @{

    /// Null: this format has no rows as objects.
    PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                   double scanAxisResolution, double xScanAxisResolution) override;

    /// Reads one row, enlarged to the resolutions asked for by repeating pixels: the width by
    /// `scanAxisResolution` over the file's `ResolutionOnScanAxis`, the row number by the other two.
    /// A ratio of exactly 1.0 copies the row as stored.
    /// \return the bytes stored. 0 with 90064 and "Picture File:\nOutput Res requested smaller than
    ///   Input Res.\n" when a ratio is below 1.0 or not finite, when the output width exceeds
    ///   `bufferSize`, when no file is open or no row buffer can be had. 0 and no code, `buffer`
    ///   untouched, for a separation that the file doesn't hold and for a row that it doesn't hold
    ///   whole. 0 with 90001 for a file failure, with 90030 for any other. A file that is cut short
    ///   while it is open may leave part of a row in `buffer`.
    unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                ColorSeparationType separation, double scanAxisResolution,
                                double xScanAxisResolution, unsigned long bufferSize) override;

    /// Null: this format has no rows as objects.
    PictureRowsData* GetPictureRows(const ColorSeparationType& separation, unsigned int firstRow,
                                    unsigned int lastRow, bool wrap) override;

    /// Reads the rows from `firstRow` up to and without `lastRow` as stored, one behind the other
    /// without padding. `offsets` has an entry for each row and receives its place in `buffer`
    /// (null: no places are told). `rowsInfo` and `wrap` have no effect. What the file doesn't
    /// hold, a separation or rows past its end, leaves its bytes in `buffer` as they were.
    /// \return rows times width. 0 with 90032 and "Picture File :\nLast line must be greater than
    ///   first line.\n" for an empty range; 0 with 90033 and "Picture File:\nGiven buffer is too
    ///   small.\n"; 0 with 90001 for a file failure, with 90030 for any other.
    unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                                 unsigned int& rowsInfo, unsigned long* offsets,
                                 ColorSeparationType separation, unsigned long bufferSize,
                                 bool wrap) override;

    /// Writes as many bytes of `data` as the picture is wide, at the row's place. `size` has no
    /// effect. A separation that the record doesn't hold writes nothing.
    /// \throws CFileException* of a write that failed, or of a file that isn't open for writing.
    virtual void SavePictureRow(const unsigned char* const data, unsigned int row,
                                ColorSeparationType separation, unsigned long size);
    /// @}

    /// \name Drawing into a device context
    /// `firstRow` and `lastRow` are both drawn; the pixel of column x in row y goes to the point
    /// (x, y) of the context, which moves and clips it. Rows and separations that the file doesn't
    /// hold are no ink. Rows that the context can't show aren't read. A failure ends the drawing
    /// and leaves 90034 for a corrupted file, else 90030 and "CTInterface: Error Extracting CT
    /// RawBuffer, aborting!".
    /// @{

    /// All separations as one colour.
    void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc) override;
    /// The tint of one separation.
    virtual void Display(unsigned long firstRow, unsigned long lastRow, CDC* dc,
                         ColorSeparationType separation);
    /// As the one with a reference; null draws nothing.
    virtual void Display(unsigned long firstRow, unsigned long lastRow, CDC* dc);
    /// @}

    /// \name Drawing into a bitmap
    /// @{

    /// Draws the picture into a device-independent bitmap.
    ///
    /// With `bitmap` null, or naming a bitmap that is no more, and when the object's newest one is no
    /// more, a new one of the picture's size is made, rows from the top down, and the whole picture
    /// drawn whatever rows were asked for. Else the object's newest bitmap is filled again: row `firstRow` goes to the start of the pixel
    /// memory, and rows that would run past its end are left out. Failures while drawing are told
    /// as above; the bitmap is returned all the same.
    ///
    /// A bitmap that a newer one replaces stays the client's until `FreePreview` or `DeleteObject`.
    /// What is left of bitmaps, palettes and headers is destroyed with the object.
    /// \param hdc has no effect.
    /// \param separation a plate, or `AllSeparations` for the colour picture.
    /// \param bitsPerPixel 8, a plate with a palette: index 255 less the plate's byte; or 24.
    /// \param tables null, or for each plate a table of 256 corrected inks by ink, of which the low
    ///   byte counts (a null one corrects nothing). They have no effect at 8 bits: see
    ///   `ApplyPaletteChanges`. What the file doesn't hold is no ink, whatever they say.
    /// \param asGray shows a plate in the tint of black.
    /// \return the bitmap; `bitmap` itself when `lastRow` is below `firstRow`; null, with nothing
    ///   changed, for any other depth and for all separations in 8 bits; null when no bitmap can be
    ///   had, the palette and header staying.
    virtual HBITMAP Display(HDC hdc, HBITMAP bitmap, ColorSeparationType separation,
                            unsigned int firstRow, unsigned int lastRow, int bitsPerPixel,
                            int** tables, bool asGray);
    using BasePictureIF::Display;

    /// Deletes the bitmap, if it isn't null, and returns null. The next `Display` has to be given
    /// null.
    virtual HBITMAP FreePreview(HBITMAP bitmap);

    /// The inks of one pixel: `Cyan` in bits 24 to 31, then `Magenta`, `Yellow`, and `Black` in
    /// bits 0 to 7. What the file doesn't hold is 0, no ink.
    /// \throws CFileException* of a read that failed.
    virtual unsigned long ExtractCMYKPixelInfo(unsigned long x, unsigned long y);

    /// A palette of the tints of a plate in reversed order (index 0 is the tint of byte 255), which
    /// the colour table of `info` receives too. `info` has room for 2 to the power of its bit
    /// count.
    /// \return a palette that the caller owns; null for a bit count that isn't 1 to 8, and when no
    ///   palette can be had, with the colour table filled all the same.
    virtual HPALETTE CreateGrayScalePalette(BITMAPINFO* info, ColorSeparationType separation);

    /// A palette of corrected tints: index n - 1 - i gets the tint of n - 1 less the low byte of
    /// `changes[i]`, for i from 1 to n - 1, where n is 2 to the power of `bitsPerPixel`; index n -
    /// 1 is white. It becomes `Palette()`; the one before stays until the object goes.
    /// \return the palette, which the object owns; null, with nothing changed, for a depth that
    ///   isn't 1 to 8 or null changes.
    virtual HPALETTE ApplyPaletteChanges(int* changes, ColorSeparationType separation,
                                         int bitsPerPixel);

    /// The palette of the last 8-bit bitmap or of the last changes.
    HPALETTE Palette() const { return previewPalette_; }
    /// @}

    /// @{
    /// The record's sizes, cut to whole numbers.
    virtual unsigned long WidthInPixels() const;
    virtual unsigned long HeightInPixels() const;
    /// @}

  private:
    friend CtFileInterface* create_ct_file_object(const CString& fileName, bool inputFile);
    friend tympan::Format tympan::CtFormat();

    CtFileInterface();
    static CtFileInterface* Create(const CString& fileName, bool inputFile);
    static bool isTypeOf(CFile& file);
    void InitMembers();

    virtual void ExtractData(unsigned long firstRow, unsigned long lastRow, int** tables,
                             unsigned char* bits, int rowFill, bool paletteIndexes);
    virtual void ExtractData(unsigned long firstRow, unsigned long lastRow, int** tables,
                             unsigned char* bits, ColorSeparationType separation, int rowFill,
                             bool paletteIndexes, bool asGray);
    virtual void CleanAndClosePreview(HBITMAP bitmap);

    /// \cond
    struct FreeLocal {
        void operator()(BITMAPINFO* info) const;
    };
    struct DeleteDrawing {
        void operator()(HGDIOBJ object) const;
    };
    /// \endcond
    using Drawing = std::unique_ptr<void, DeleteDrawing>;

    tympan::CtLayout Layout() const;
    unsigned long RowPosition(unsigned int row, ColorSeparationType separation);
    unsigned long ReadRow(unsigned char* buffer, unsigned int row, ColorSeparationType separation,
                          double horizontal, double vertical, unsigned long bufferSize);
    unsigned long ReadRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                           unsigned long* offsets, ColorSeparationType separation,
                           unsigned long bufferSize);
    void MakePreview(ColorSeparationType separation, int bitsPerPixel);
    bool HasRoomFor(std::size_t drawings);
    void Keep(HGDIOBJ object);

    std::vector<Drawing> drawings_; // all bitmaps and palettes made; a client may delete bitmaps
    HBITMAP previewBitmap_ = nullptr;
    std::unique_ptr<BITMAPINFO, FreeLocal> previewInfo_;
    HPALETTE previewPalette_ = nullptr;
    unsigned char* previewBits_ = nullptr; // the bitmap's
    std::uint64_t heldAtOpening_ = 0;      // bytes of an input file
};

/// Makes a CT object and opens it, for reading (`inputFile` true) or for writing a new file.
/// \return an object that the caller destroys, also when the opening failed: see `ObjectStatus()`,
///   `TraceStatus()`, `ErrorMsg()`. Null when memory ran out.
TYMPAN_API CtFileInterface* create_ct_file_object(const CString& fileName, bool inputFile);
