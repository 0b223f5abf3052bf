// The header record of a line-work file: the common header, a table of colours, and which of them
// are transparent.
#pragma once

#include "core/picture_parameters.h"
#include "platform/export.h"
#include "platform/text.h"

#include <array>
#include <cstddef>
#include <memory>

class PageCTWindowEntry;

/// Header record of an LW file.
///
/// A row of an LW picture names colours by index, from 1; row index - 1 of `ColorsTable` holds the
/// colour's four ink values, a column for each separation: 255 is no ink, 0 full ink. The column is
/// the number of the separation (`Cyan` 0 to `Black` 3), whichever slot it has in the header.
///
/// A colour may be transparent in a separation. A reader tells such pixels by their value: after
/// `Load` all colours that are transparent in a separation share one ink value there, which no other
/// colour has, and `GetTransparentColor` gives it.
///
/// Neither `Clear()` nor closing a file touches the tables; the next `Load` replaces them.
class TYMPAN_API LwPictureParameters : public PictureParameters {
  public:
    /// Stands in `TransparentColor` and in rows of the transparent colour table for "none".
    static constexpr unsigned short kNoColour = 65535;

    /// Empty, without tables.
    LwPictureParameters();
    /// Takes over the transparent values, the file's number of colours, and the size of the colour
    /// table, whose values are all 0. Nothing of the common header comes along.
    /// \throws MemoryAllocException* when the table can't be had.
    LwPictureParameters(const LwPictureParameters& other);
    /// As the copy constructor, and the common header as `PictureParameters` assigns it. A source
    /// without a colour table takes this record's. The transparent colour table, the file name and
    /// `LwFileSize` stay. Assignment of a record to itself changes nothing.
    /// \throws MemoryAllocException* when the table can't be had.
    LwPictureParameters& operator=(const LwPictureParameters& other);
    ~LwPictureParameters() override;

    /// Reads the common header and the colour records. `RowSize` becomes the width, `BitsPerSample`
    /// 8 for each separation. What a file that ends early doesn't hold repeats the last byte read
    /// (ink values) or is 0 (the number of colours).
    /// \return false when the common header is refused, and then the tables stay as they were.
    /// \throws CFileException* from a seek or a read; MemoryAllocException* for a table.
    bool Load(CFile& file) override;

    /// Writes what `PictureParameters::Save` writes, and answers as it does.
    bool Save(CFile& file) const override;

    /// Writes the header of a new grey file of one separation, `Black`, with a table of 255 greys,
    /// and leaves the file at the place of the first row. The caller has set the sizes,
    /// `NumberOfSeparations` to 1, and `LwFileName`, of which the first 79 bytes are written; what is
    /// left of the field is zeros. Puts `Black` into the fourth slot and sets `FileColorsNumber`.
    /// When `Save` refuses the sizes, `TraceStatus` becomes 90066 and nothing behind is written.
    /// \throws CFileException* from a seek or a write.
    void SaveHader(CFile& file);

    /// For each separation of the picture: finds the smallest ink value from 0 to 254 that no colour
    /// has in it, makes it the separation's transparent value, and gives it to all colours that are
    /// transparent there. Where all 255 are in use, and for separations that the picture doesn't
    /// have, the transparent value is 65535 and the colours stay.
    virtual void CalcTableTransparentColor();

    /// Number of colours that the file's header declares.
    unsigned char FileColorsNumber() const { return fileColorsNumber_; }
    /// Rows of `ColorsTable`.
    unsigned char TableColorsNumber() const { return tableColorsNumber_; }
    /// The ink value of a row of `ColorsTable`, counted from 0; 255 for what isn't in the table.
    unsigned char GetColor(unsigned char row, const ColorSeparationType& separation) const;
    /// Sets an ink value; what isn't in the table takes none.
    void SetColor(const ColorSeparationType& separation, unsigned char row, unsigned char value);
    /// The ink value that stands for transparent in a separation; 65535 for none, and for what is
    /// no separation.
    unsigned short GetTransparentColor(const ColorSeparationType& separation) const;
    /// Sets that value, and nothing else; what is no separation takes none.
    void SetTransparentColor(const ColorSeparationType& separation, unsigned char value);
    /// `TableColorsNumber` rows of four ink values, or null; the record's, until the next `Load`,
    /// assignment or destruction.
    const unsigned char (*ColorsTable() const)[4] { return colorsTable_.get(); }
    /// Whether the colour of that row of `ColorsTable` (from 0) is transparent in the separation.
    bool IsColorTransparent(unsigned char row, ColorSeparationType separation) const;
    /// Whether an index, from 1, is not above the table's rows.
    bool IsColorIndexLegal(int index) const { return index <= tableColorsNumber_; }

    /// @{
    /// The name that `SaveHader` writes.
    CString LwFileName() const { return lwFileName_; }
    void LwFileName(CString name) { lwFileName_ = std::move(name); }
    /// @}
    /// @{
    /// Bytes of a run stream, as the whole-file object stored it; 0 until then.
    unsigned long LwFileSize() const { return lwFileSize_; }
    void LwFileSize(unsigned long bytes) { lwFileSize_ = bytes; }
    /// @}

  protected:
    /// @{
    /// Sets what the public one of the name tells; no table changes.
    void FileColorsNumber(unsigned char count) { fileColorsNumber_ = count; }
    void TableColorsNumber(unsigned char count) { tableColorsNumber_ = count; }
    /// @}
    /// @{
    /// The four transparent values, by separation. The setter copies four.
    const unsigned short* TransparentColor() const { return transparentColor_.data(); }
    void TransparentColor(const unsigned short* const values);
    /// @}
    /// As the public one.
    unsigned char (*ColorsTable())[4] { return colorsTable_.get(); }
    /// Takes over an array made with `new[]`, of `TableColorsNumber` rows. The one before is not
    /// freed.
    void ColorsTable(unsigned char (*const table)[4]);
    /// @{
    /// Rows of four numbers, or null: in each column the rows of `ColorsTable` that are transparent
    /// in that separation, 65535 for none, or what `ForceTransparentColorTable` noted. The record's,
    /// as `ColorsTable` is.
    const unsigned short (*TransparentColorTable() const)[4] { return transparentTable_.get(); }
    unsigned short (*TransparentColorTable())[4] { return transparentTable_.get(); }
    /// @}
    /// Takes over an array made with `new[]`, of `FileColorsNumber` rows. The one before is not
    /// freed.
    void TransparentColorTable(unsigned short (*const table)[4]);
    /// @{
    /// Rows of `TransparentColorTable` that count.
    unsigned short TransparentColorTableSize() const { return transparentTableSize_; }
    void TransparentColorTableSize(unsigned short rows) { transparentTableSize_ = rows; }
    /// @}
    /// Whether there is a colour table.
    bool ColorsTableExists() const { return colorsTable_ != nullptr; }

    /// The same record as an LW one; null when it is none.
    LwPictureParameters* operator()(PictureParameters* record);
    /// Copies the transparent values and the file's number of colours.
    void CopyParameters(const LwPictureParameters& other);

    /// \name The header field by field
    /// Each at the file's current position. All throw `CFileException*`.
    /// @{

    /// Reads one byte; 0 when the file has ended.
    void ReadColorsNumber(CFile& file);
    /// Writes one byte.
    void SaveLWNumberOfColors(CFile& file) const;
    /// Writes the first 80 bytes of `LwFileName`, with zeros behind a shorter one.
    void SaveFileName(CFile& file) const;
    /// Writes "LW".
    void SaveFileType(CFile& file) const;
    /// Replaces both tables by those of the `FileColorsNumber` records that follow.
    /// \throws MemoryAllocException* for a table.
    void ReadColorsTable(CFile& file);
    /// Writes `FileColorsNumber` records of greys.
    void SaveFullGrayScaleColorsTable(CFile& file) const;
    /// @}

    /// Makes a table of that many rows, all 0, or none for 0.
    /// \throws MemoryAllocException*.
    void CreateColorsTable(unsigned char rows);
    /// Makes a table of that many rows, and sets it and the transparent values to 65535.
    /// \throws MemoryAllocException*.
    void CreateTransparentColorTable(unsigned char rows);
    /// @{
    /// Frees the table, if there is one, and sets its size to 0.
    void DestroyColorsTable();
    void DestroyTransparentColorTable();
    /// @}

    /// Gives pictures without transparent colours transparent values of their own: in each column
    /// below `NumberOfSeparations` the smallest free value, noted for each of `count` colours (rows
    /// of `ColorsTable`, from 0) in the transparent colour table. The colour table stays.
    /// \return false, with the columns before done, for null `colors`, a column without a free value,
    ///   and a colour that the transparent colour table has no row for.
    bool ForceTransparentColorTable(const unsigned char* const colors, unsigned short count);

  private:
    friend PageCTWindowEntry; // makes colours of its container transparent

    std::array<bool, 255> UsedValues(std::size_t column) const;

    unsigned short transparentTableSize_ = 0;
    std::unique_ptr<unsigned short[][4]> transparentTable_;
    std::size_t transparentTableRows_ = 0; // allocated
    std::array<unsigned short, kSlots> transparentColor_{ kNoColour, kNoColour, kNoColour,
                                                          kNoColour };
    unsigned char fileColorsNumber_ = 0;
    unsigned char tableColorsNumber_ = 0;
    std::unique_ptr<unsigned char[][4]> colorsTable_;
    unsigned long lwFileSize_ = 0;
    CString lwFileName_;
};
