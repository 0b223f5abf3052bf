// Line-work pictures: rows kept as runs of colour indexes, proved when the file is opened, and then
// decoded, handed out as runs, drawn, cropped and written.
#pragma once

#include "core/failures.h"
#include "core/row_access.h"
#include "lw/lw_parameters.h"
#include "platform/export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

class VelmarLWFileInterface;

namespace tympan {
struct FailureRow;
struct Format;
/// The format's row of the list that the factory walks; for the library alone.
Format LwFormat();
struct PlacedRows;
struct RowWidth;
class RunBlock;
class RunReader;
} // namespace tympan

/// What the plain run stream appends to each row.
struct LwRowPadding {
    unsigned long FullRuns;   ///< runs of 255 pixels
    unsigned char LastRun;    ///< length of one more run; 0 for none
    unsigned char ColorIndex; ///< their colour: an index into the colour table, from 1
};

/// A rectangle of a picture, in pixels that count from 1; both ends belong to it.
struct CompressParameters {
    double CropLeft;   ///< the first column
    double CropRight;  ///< the last column
    double CropTop;    ///< the first row
    double CropBottom; ///< the last row
};

/// An LW file: a table of up to 255 colours, and rows of runs, each a colour index (from 1) and a
/// length of up to 255 pixels. The lengths of a row add up to the width. All separations share the
/// runs; a pixel's value in a separation is that of its run's colour.
///
/// A reading client makes the object by `create_lw_file_object(name, true)` or the factory, looks at
/// `ObjectStatus()`, and asks for rows, runs or a display. A writing one makes it with `false`, sets
/// up the record (sizes, `NumberOfSeparations` 1, `LwFileName`), calls the record's `SaveHader` on
/// `FileHandle()`, and then `SetLWPictureRow` for each row from the first on.
///
/// Rows have no fixed length. Opening an input file walks all rows but the last once: it proves them
/// and notes where each begins. An operation on a row that has no such place (at or beyond the height,
/// or of an object that was never open for input) fails as each operation tells, and touches neither
/// file nor buffer for that row. After closing, all fail as at a file failure. A run of length 0 holds no pixel. A run of index 0 with a
/// length has no colour: it fails as an index above the table does.
///
/// Where an operation fails in the middle, what it stored before stays. A row is never stored past
/// its width, whatever its runs say. Each operation leaves the file behind the last bytes that it
/// needed.
class TYMPAN_API LWFileInterface : public PictureFileInterface {
  public:
    /// The failure of an index that isn't in the table, by its name here.
    using IllegalColorIndexException = ::IllegalColorIndexException;

    ~LWFileInterface() override;

    /// Opens as `BasePictureIF` does. For input it then walks the rows and takes a row buffer of twice
    /// the width. The colour indexes and the last row are not looked at. An object that opens the
    /// same title again walks again. Memory follows the rows that the file can hold.
    /// \return false, with the file closed and `ObjectStatus` false: for a file that can't be opened
    ///   or whose header is refused, with 90001 and "LW File Interface:\n:Error Opening file,
    ///   aborting!" if the object had failed before; for a row whose delimiters or lengths are wrong,
    ///   90025; for a file that ends early, a height of 0, a file failure, or places that there is
    ///   no memory for, 90001 and "LWInterface:\n Error Opening LineWork file, aborting!"; for a row
    ///   buffer that can't be had, or is above 16 MiB and longer than the file, without a code. A
    ///   `fileError` that the base would throw ends here as a file failure, destroyed if it was made
    ///   with `new`.
    /// \throws CFileException* from the closing of an output file that turns out not to be sound.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// Proves the rows of the open file and notes their places again, as opening does.
    /// \return true when all rows but the last are sound; false, with the file closed, `ObjectStatus`
    ///   false and code and text as told for opening.
    bool FileValidityCheck();

    /// The ink value of a colour, by its index from 1.
    /// \throws IllegalSeparationException* for a separation that isn't 0 to 3 (negative ones too),
    ///   then IllegalColorIndexException* for an index above the table or below 1.
    unsigned char GetColorValue(int index, const ColorSeparationType& separation);

    /// Draws the rows from `firstRow` to `lastRow`, both included: the pixel of column x in row y
    /// goes to the point (x, y) of the context, in the composite of the picture's separations.
    /// Failures end the drawing behind what was drawn: 90025 for a row whose lengths are wrong, behind
    /// that row; 90001 for a file failure; 90020 and "LWInterface: Error Extracting LineWork
    /// RawBuffer, aborting!" for an illegal index, a file that ends, or a row beyond the height.
    void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc) override;
    using BasePictureIF::Display;

    /// \name Rows as pixels
    /// @{

    /// Null: this format has no rows as objects.
    PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                   double scanAxisResolution, double xScanAxisResolution) override;

    /// Decodes one row at the resolutions asked for, by repeating or dropping pixels and rows: the
    /// width by `scanAxisResolution` over the file's `ResolutionOnScanAxis`, the row number by the
    /// other two. `buffer` has room for the output row, the ratio times the width and 0.5, cut;
    /// `bufferSize` has no effect. The picture may lack the separation.
    /// \return the pixels of the file's row: the width, or more when its last run passes it and the
    ///   row's end follows all the same. 0 and no code for a row without a place, or whose place has
    ///   32 low bits of 0. 0 with 90024 and "LWInterface:\n Error Illegal line format, aborting", or
    ///   "LWInterface:\nIllegal line format , aborting!", when the first byte of the start's or the
    ///   end's delimiter isn't 0. 0 with 90020 and "LWInterface: Error Extracting LineWork RawBuffer,
    ///   aborting!" for a separation or an index that is illegal, a row that the file doesn't hold
    ///   whole, and ratios that are not finite and above 0. The pixels decoded so far with 90001 for a
    ///   file failure. Failures leave `buffer` as it was.
    unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                ColorSeparationType separation, double scanAxisResolution,
                                double xScanAxisResolution, unsigned long bufferSize) override;

    /// Null: this format has no rows as objects.
    PictureRowsData* GetPictureRows(const ColorSeparationType& separation, unsigned int firstRow,
                                    unsigned int lastRow, bool wrap) override;

    /// Decodes the rows from `firstRow` up to and without `lastRow`, one behind the other, a byte for
    /// each pixel. `buffer` has room for all; `offsets` (null: not told) has an entry for each row and
    /// receives its place in `buffer`, `rowsInfo` the number of rows done. `bufferSize` and `wrap`
    /// have no effect. An empty range gives 0 and no failure.
    /// \return the bytes stored. 0 and `rowsInfo` 0 with 90025 for a row whose delimiters or lengths
    ///   are wrong. The bytes stored so far with 90001 for a file failure. 0, `rowsInfo` as far as it
    ///   came, with 90020 and "LWInterface: Error Extracting LineWork RawBuffer, aborting!" for
    ///   anything else: a separation or an index that is illegal, a file that ends, a row beyond the
    ///   height.
    unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                                 unsigned int& rowsInfo, unsigned long* offsets,
                                 ColorSeparationType separation, unsigned long bufferSize,
                                 bool wrap) override;

    /// The bytes of the rows from `firstRow` to `lastRow` decoded, here both included.
    /// \throws IllegalRowsException by value, as `GetRowsNumber` does.
    unsigned long GetBufferSize(unsigned int firstRow, unsigned int lastRow, bool wrap) override;
    /// @}

    /// \name Rows as runs
    /// @{

    /// Copies one row as the file has it, delimiters included; `lengthFirst` exchanges the bytes of
    /// each run. `buffer` has room for 2 bytes for each run and 4; `GetLWBufferSize(row, row, 1, 0,
    /// false)` is enough for any row.
    /// \return the number of runs. 0 with 90025 for wrong delimiters or lengths, 90001 for a file
    ///   failure, 90020 and "LWInterface: Error Extracting LineWork RawBuffer, aborting!" for a row
    ///   without a place or that the file doesn't hold whole.
    virtual unsigned int GetOriginalPictureRow(unsigned char* buffer, unsigned int row,
                                               bool lengthFirst);

    /// The placing run stream: the rows from `firstRow` to `lastRow`, both included, with the ink
    /// values of one separation in place of the indexes. A row is: delimiter, white that brings its
    /// width to a multiple of 4096, `copies` of the row's runs with `whiteGap` white pixels between
    /// each two, delimiter. `white` is an ink value. `colorFirst` gives a run as value, length; else
    /// length, value. Of a row that needs no completion, a copy's last run is divided in two where
    /// that makes the stream's number of runs even; the white of a completion has an odd number of
    /// runs.
    ///
    /// `buffer` and `rowOffsets` move on past what was written; each offset is the place of its row
    /// in this call's bytes plus `baseOffset`. `GetLWBufferSize(firstRow, lastRow, copies, whiteGap,
    /// true)` tells the room that is needed. `reserved` has no effect.
    /// \return `lastRow` + 1; `firstRow` when it is above `lastRow`, with nothing written. 0 with
    ///   90025 for wrong delimiters or lengths, 90001 for a file failure, 90020 and "LWInterface:
    ///   Error Extracting LineWork RawBuffer, aborting!" for anything else: a separation or an index
    ///   that is illegal, a file that ends, a row beyond the height, `copies` of 0.
    virtual unsigned long GetLWPictureRows(unsigned char*& buffer, unsigned int firstRow,
                                           unsigned int lastRow, unsigned long*& rowOffsets,
                                           unsigned long baseOffset,
                                           const ColorSeparationType& separation,
                                           unsigned long whiteGap, unsigned int copies,
                                           unsigned char white, unsigned long reserved,
                                           bool colorFirst);

    /// The plain run stream: the same rows, with `padding` behind each row's runs. `rowOffsets` has an
    /// entry for each row. `lengthFirst` is the opposite of the placing form's choice. Room:
    /// `GetLWBufferSize(firstRow, lastRow, 1, 0, false)` and 2 bytes for each padding run of each row.
    /// `reserved` has no effect.
    /// \return as the placing form. A padding colour that is illegal fails with 90020.
    virtual unsigned long GetLWPictureRows(unsigned char* buffer, unsigned int firstRow,
                                           unsigned int lastRow, unsigned long* rowOffsets,
                                           const ColorSeparationType& separation,
                                           const LwRowPadding& padding, unsigned long reserved,
                                           bool lengthFirst);

    /// Walks the rows and gives the bytes that the placing form needs for the same arguments, without
    /// its completion when `complete` is false. For one copy without completion it is the exact size
    /// plus 2; else it may be more than what is needed. Colours are not looked at, and delimiters
    /// taken for runs of length 0.
    /// \return 0 with 90001 and "LWInterface: Error counting LW buffer size, aborting!" for any
    ///   failure: a file failure, a file that ends, a row beyond the height, `copies` of 0, a size
    ///   that its type can't hold. A picture of width 0 takes 4 bytes for each row and copy, and 4.
    virtual unsigned long GetLWBufferSize(unsigned int firstRow, unsigned int lastRow,
                                          unsigned int copies, unsigned long whiteGap,
                                          bool complete);
    /// @}

    /// \name Writing
    /// @{

    /// Copies a rectangle of the open picture into a new LW file, run by run, with the colour records
    /// as they stand; the sizes in units shrink with the pixels, so that the resolution stays. They are
    /// written in inches, as the record has them, whatever units the source has.
    ///
    /// Each side of the rectangle is cut to a whole number. A left or top of 0 or less is 1; a right
    /// or bottom of 0 or less, or beyond the picture, is the picture's last. With right below left or
    /// bottom below top, without a rectangle (null), and from an object that is not open for input,
    /// nothing is written. A row that isn't sound gives one that isn't. The last row reaches to the
    /// end of `source`. Both files stay open, behind the last row read and written.
    /// \param source the object's file, or another opening of it.
    /// \param target open for writing; written from its start on.
    /// \param crop the rectangle; may be null.
    /// \throws CFileException* from either file; std::bad_alloc.
    void CreateCropedLWFile(CFile& source, CFile& target, CompressParameters* crop);

    /// Compresses a row of `count` grey bytes and writes it, delimiters included, at the file's
    /// position, in one write (above 1 GiB in several). A value below 64 becomes the index one higher,
    /// any other the index of its number, as the table of `SaveHader` has them: so 64 comes back as 63.
    /// Nothing is written for a `count` of 0.
    /// \return the number of runs.
    /// \throws CFileException* from the write; std::bad_alloc.
    unsigned int SetLWPictureRow(unsigned char* pixels, CFile& file, unsigned long count);
    /// Writes a run at the file's position. \throws CFileException*.
    void SaveLWRun(CFile& file, unsigned char index, unsigned char length);
    /// Writes `size` bytes of a row, delimiters included, that the caller made. Nothing for a size
    /// below 1. \throws CFileException*.
    void SaveLWRow(CFile& file, unsigned char* data, long size);
    /// @}

  protected:
    /// Closed, with a fresh `LwPictureParameters`.
    LWFileInterface();

    /// Whether the first row ends exactly at the width. Looks at no more than that row.
    /// \throws CFileException*.
    static bool isTypeOf(CFile& file);
    /// What `create_lw_file_object` gives.
    static LWFileInterface* Create(const CString& fileName, bool inputFile);

    /// \name A reader of two bytes at a time
    /// Each step is done at the file's current position. \throws CFileException*, all of them.
    /// @{

    /// Reads two bytes.
    /// \throws ReadFileException* ("Could not read LW file!") when fewer than two bytes come.
    void ReadFile(unsigned char* buffer);
    /// Reads a delimiter into `buffer`.
    /// \throws as `ReadFile`; FileCorruptedException* ("Row delimiter missing!") for bytes that are
    ///   no delimiter.
    void CheckRowDelimiters(unsigned char* buffer);
    /// As `CheckRowDelimiters`, and copies the two bytes to `out`, which moves on.
    void CopyRowDelimiters(unsigned char* buffer, unsigned char*& out);
    /// Whether both bytes are 0.
    bool IsRowDelimiter(unsigned char* pair);
    /// @}
    /// Proves a row's sum of lengths.
    /// \throws FileCorruptedException* ("Bad row integrity!") unless `pixels` is the width.
    void CheckRowIntegrity(int pixels);
    /// Rows of the colour table.
    unsigned char ColorsNumber() const;

    /// @{
    /// File offset of row 0; 255 until an input file is opened.
    int LwDataStartPosition() const { return lwDataStartPosition_; }
    void LwDataStartPosition(int position) { lwDataStartPosition_ = position; }
    /// @}
    /// File offset of each row, or null. The object's, until the next opening or validity check.
    unsigned long long* LwFileArray() const { return lwFileArray_.get(); }
    /// Takes over an array made with `new[]`, of an entry for each row of the record. The one before
    /// is not freed.
    void LwFileArray(unsigned long long* offsets);
    /// Frees the offsets.
    void DeallocateAll();
    /// As the record's of that name.
    void CalcTableTransparentColor();

    /// Appends the padding of a row of the plain stream at `buffer`, which moves on. `value` and
    /// `length` are the bytes of a run that the caller holds; `first` and `second` are the same two
    /// in the stream's order.
    /// \return the bytes appended. \throws as `GetColorValue`.
    unsigned long RowPadding(const LwRowPadding& padding, const ColorSeparationType& separation,
                             unsigned char* const value, unsigned char* const length,
                             unsigned char* const first, unsigned char* const second,
                             unsigned char*& buffer);
    /// Appends `whiteGap` white pixels at `buffer`, which moves on. A replacement may divide them in
    /// any runs. \return the bytes appended.
    virtual unsigned long AddWhiteColsGap(unsigned long whiteGap, unsigned char*& buffer,
                                          unsigned char white, bool lengthFirst);
    /// Appends the white that completes a row of the placing form at `buffer`, which moves on. `runs`
    /// is the number of runs that stand in the row already. A replacement appends as many pixels.
    /// \return the bytes appended.
    virtual unsigned long CompleteLineTo4096(unsigned char*& buffer, unsigned long whiteGap,
                                             unsigned int copies, unsigned char white,
                                             unsigned long runs, bool colorFirst);

  private:
    friend LWFileInterface* create_lw_file_object(const CString& fileName, bool inputFile);
    friend VelmarLWFileInterface; // the same rows, read without their places
    friend tympan::Format tympan::LwFormat();

    const LwPictureParameters& LwRecord() const;
    tympan::RowWidth Width() const;
    std::uint64_t MostRows(std::uint64_t fileLength) const;
    bool ProveRows();
    bool ProveRowsOrClose(std::span<const tympan::FailureRow> failures);
    void NoteSoundRows(tympan::RunReader& reader, std::uint64_t places);
    void ProveRow(tympan::RunReader& reader) const;
    bool CloseUnlessSound(bool sound);
    void TakeNotOpened();

    std::uint64_t PlaceOf(std::uint64_t row) const;
    std::uint64_t EndOf(std::uint64_t row) const;
    tympan::RunReader ReaderOf(std::uint64_t firstRow, std::uint64_t endRow);
    template <typename Work>
    void ForEachRow(std::uint64_t firstRow, std::uint64_t endRow, Work&& work);

    std::uint32_t DecodedWidth() const;
    bool DecodeRow(std::uint64_t row, ColorSeparationType separation, std::uint64_t& pixels);
    void DecodeRows(unsigned char*& out, unsigned int firstRow, unsigned int endRow,
                    unsigned int& rowsDone, unsigned long* offsets, ColorSeparationType separation);
    std::uint64_t CompletionOf(unsigned int copies, unsigned long whiteGap) const;
    template <typename Store>
    void PlaceRow(tympan::RunReader& reader, tympan::PlacedRows& rows, Store&& store);
    template <typename ForRows, typename Store>
    void PlaceRows(tympan::PlacedRows& rows, ForRows&& forRows, Store&& store);
    std::uint64_t BytesBesideRuns(unsigned int copies, unsigned long whiteGap, bool complete) const;
    template <typename ForRows>
    unsigned long SizeOfRows(unsigned int copies, std::uint64_t bytesBeside,
                             ForRows&& forRows) const;

    int lwDataStartPosition_;
    std::unique_ptr<unsigned long long[]> lwFileArray_;
    std::uint64_t placesKnown_ = 0; // entries of the array
    std::unique_ptr<tympan::RunBlock> block_;
};

/// Makes an LW object and opens it, for reading (`inputFile` true) or for writing a new file.
/// \return an object that the caller destroys, also when the opening failed: see `ObjectStatus()`,
///   `TraceStatus()`, `ErrorMsg()`. Null when memory ran out.
TYMPAN_API LWFileInterface* create_lw_file_object(const CString& fileName, bool inputFile);
