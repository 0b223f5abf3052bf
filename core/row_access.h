// How a client asks for rows of picture data, and the colour of pixels. The formats do the reading.
#pragma once

#include "core/picture_object.h"

#include <cstddef>
#include <memory>

class PictureRowsData;

/// The layer of a picture object that deals in rows; all formats but the page file have it.
///
/// The buffer forms fill a caller's buffer and give 0 on failure. What else their result says, and
/// whether `lastRow` belongs to the range, each format tells. The object forms give a new
/// `PictureRowsData` that the caller destroys, or null from a format that has none.
class TYMPAN_API PictureFileInterface : public BasePictureIF {
  public:
    PictureFileInterface() = default;
    /// Closes the file and clears the record, then frees the row buffer.
    ~PictureFileInterface() override;

    /// One row of one separation as an object, at the output resolutions asked for, in pixels per
    /// inch.
    virtual PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                           double scanAxisResolution,
                                           double xScanAxisResolution) = 0;
    /// One row of one separation in `buffer`, which holds `bufferSize` bytes. The resolutions are
    /// those wanted in the output, in pixels per inch, and `row` counts in the output's, where the
    /// format honours them.
    virtual unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                        ColorSeparationType separation, double scanAxisResolution,
                                        double xScanAxisResolution, unsigned long bufferSize) = 0;
    /// A range of rows of one separation as an object.
    virtual PictureRowsData* GetPictureRows(const ColorSeparationType& separation,
                                            unsigned int firstRow, unsigned int lastRow,
                                            bool wrap) = 0;
    /// A range of rows of one separation in `buffer`, one behind the other, with the offset of each
    /// in `offsets`. `wrap` allows a range that runs over the end of a cyclic list of rows. What
    /// `rowsInfo` receives each format tells.
    virtual unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow,
                                         unsigned int lastRow, unsigned int& rowsInfo,
                                         unsigned long* offsets, ColorSeparationType separation,
                                         unsigned long bufferSize, bool wrap) = 0;

    /// Assigns the given record to the object's, by the rule of `PictureParameters::operator=`. A
    /// null pointer, here and below, changes nothing. The record given stays the caller's.
    virtual void StorePictureParams(const PictureParameters* const record);
    /// Assigns the other object's record to this object's.
    virtual void StorePictureParams(const PictureFileInterface* const other);

    /// The bytes that a caller must provide for a range of rows; 0 from a format that has no
    /// answer.
    virtual unsigned long GetBufferSize(unsigned int firstRow, unsigned int lastRow, bool wrap);

    /// The length of a range, both ends included, in a list of `rowsTotal` rows.
    /// \throws IllegalRowsException by value, for a row outside the list, or for `firstRow` above
    ///   `lastRow` without `wrap`.
    static unsigned int GetRowsNumber(unsigned int firstRow, unsigned int lastRow,
                                      unsigned int rowsTotal, bool wrap);

    /// \name The colour of a pixel on the screen
    /// Results are 0x00BBGGRR. Plate bytes are the inverse of ink (255 is no ink), unless an
    /// operation says that it takes ink. The four inks meet in one rule: black darkens red, green
    /// and blue alike, by 0.8 of its strength cut to a whole number, each of the others its own;
    /// what is below 0 is 0. The factor is that of a black ink that does not cover: black alone
    /// reaches the grey 51.
    /// @{

    /// The tint of one plate by itself; white for what is no plate, and for the byte 255.
    static unsigned long CalculatePixelAsRGB(unsigned char value, ColorSeparationType separation);
    /// `pixel` is C, M, Y, K.
    static unsigned long CalculatePixelAsRGB(const unsigned char* pixel);
    /// C, M, Y, K are at `index` of the four `planes`.
    static unsigned long CalculatePixelAsRGB(unsigned char** planes, unsigned long index);
    /// `pixels[index]` is C, M, Y, K as ink.
    static unsigned long CalculatePixelAsRGB2(unsigned char** pixels, unsigned long index);
    /// `pixel` is C, M, Y, K as ink.
    static unsigned long CalculatePixelAsRGB3(unsigned char* pixel);
    /// C in bits 24 to 31, then M, Y, and K in bits 0 to 7.
    static unsigned long CalculatePixelAsRGB(unsigned long packed, bool inkValues);
    /// @}

  protected:
    /// Replaces the row buffer by one of `size` bytes. Above 16 MiB the size is held against the
    /// length of a file opened as input, for a header can claim any.
    /// \return whether there is a buffer.
    virtual bool AllocateRowBuffer(unsigned int size);
    /// Frees the row buffer, if there is one.
    virtual void ReleaseRowBuffer();

    /// @{
    /// One row's scratch memory, owned by the object from its opening to the next one; null without
    /// one.
    unsigned char* CurrRowBuffer() { return rowBuffer_.get(); }
    const unsigned char* CurrRowBuffer() const { return rowBuffer_.get(); }
    /// @}
    /// Takes over an array made with `new[]`, of at least the record's `RowSize`. The one before is
    /// not freed.
    void CurrRowBuffer(unsigned char* buffer);

    /// Whether there is a row buffer of `size` bytes; one that is smaller, because the record was
    /// changed after the opening, is replaced.
    bool RowBufferHolds(unsigned int size);

  private:
    std::unique_ptr<unsigned char[]> rowBuffer_;
    std::size_t rowBufferSize_ = 0;
};
