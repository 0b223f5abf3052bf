// Line work for a client that takes a whole file at a time: it opens without a look at the rows, and
// hands the rows out as one stream of colour indexes that serves all separations.
#pragma once

#include "lw/lw_file.h"
#include "platform/export.h"

#include <cstdint>

/// An LW file as a whole. The file is that of `LWFileInterface`; what differs is when it is read:
/// opening reads the header and the colour records, whatever the size of the file. Then the run stream,
/// its size, the colours and the side file can be asked for.
///
/// The walk that proves the rows and notes their places is the client's to ask for
/// (`FileValidityCheck`, `BuildLwOffsetBuffer`). Before it, the operations of the base that need a
/// row's place fail as they do for a row beyond the height. A second walk takes the place of the first
/// one. After a walk that failed, the rows that it noted have a place.
///
/// `create_velmar_lw_file_object` alone makes these objects.
class TYMPAN_API VelmarLWFileInterface : public LWFileInterface {
  public:
    /// Closes the file, and frees the places of the rows.
    ~VelmarLWFileInterface() override;

    /// File offset of row 0, from the record: also before a walk.
    unsigned long LwFirstRowPosition();
    /// The object's record; null when another kind has been put in its place.
    LwPictureParameters* GetLwPictureParams();

    /// \name Proving the rows
    /// All rows but the last are read, and each of their places noted.
    /// @{

    /// The strict check. \return false, with the file closed and `ObjectStatus` false: with 90025 for a
    ///   row whose delimiters or lengths are wrong, 90026 for a file that ends early, and no text for
    ///   either; 90001 and "LWInterface:\n Error Opening LineWork file, aborting!" for anything else: a
    ///   file failure, a height of 0, places that there is no memory for; without a code for a row
    ///   buffer that can't be had.
    bool FileValidityCheck();
    /// Tries to get the places. \return 1; 0 after any failure, which leaves nothing but the places
    ///   found before it: the object stays open.
    unsigned long BuildLwOffsetBuffer();
    /// @}

    /// \name The rows as colour indexes
    /// @{

    /// The placing run stream of `LWFileInterface`, with the colour indexes in place of ink values, as
    /// they stand in the file: they count from 1, and none is refused. `white` is an index too. It is
    /// read from the file's first row on; `firstRow` and `lastRow` give only the number of rows. The
    /// white of a completion is runs of 255 and one of the rest. `separation` and `reserved` have no
    /// effect. Room: `GetLWBufferSize(firstRow, lastRow, copies, whiteGap, true)`.
    ///
    /// A run of index 0, or the run of length 0 that dividing a run of length 1 gives, goes out as it
    /// is; where both are 0 a reader must know a delimiter by its place.
    /// \return the bytes written. A failure ends the stream where it came, with 90025 for wrong
    ///   delimiters or lengths, and 90020 and "LWInterface: Error Extracting LineWork RawBuffer,
    ///   aborting!" for anything else: a file that ends, a file failure, `copies` of 0. The result of a
    ///   failed call leaves out the start delimiter of the row that failed; `buffer` and `rowOffsets`
    ///   stay moved on past what was stored.
    unsigned long GetLWPictureRows(unsigned char*& buffer, unsigned int firstRow,
                                   unsigned int lastRow, unsigned long*& rowOffsets,
                                   unsigned long baseOffset, const ColorSeparationType& separation,
                                   unsigned long whiteGap, unsigned int copies, unsigned char white,
                                   unsigned long reserved, bool colorFirst) override;
    using LWFileInterface::GetLWPictureRows;

    /// The bytes that this stream needs, as `LWFileInterface` gives them, for the same number of rows
    /// from the file's first on. Success notes the size in the record's `LwFileSize`.
    /// \return 0, with `LwFileSize` as it was, for any failure: 90001 and "LWInterface: Error counting LW
    ///   buffer size, aborting!". A file that ends and `copies` of 0 are failures, and rows of width 0
    ///   that the file hasn't the length for.
    unsigned long GetLWBufferSize(unsigned int firstRow, unsigned int lastRow, unsigned int copies,
                                  unsigned long whiteGap, bool complete) override;
    /// The size of all rows as they stand in the file, and 2 bytes more: `GetLWBufferSize(0,
    /// HeightInPixels - 1, 1, 0, false)`. A height of 0 fails.
    /// \return the record's `LwFileSize`; after a failure that is its earlier content, 0 in a new
    ///   record.
    virtual unsigned long GetLWBufferSize();
    /// @}

    /// \name The colours
    /// They don't touch the file. A separation that isn't 0 to 3 has no ink in any colour: all values
    /// read as 255.
    /// @{

    /// Which ink value stands for transparent in a separation; 65535 for none.
    virtual unsigned long GetTransparentColor(const ColorSeparationType& separation);
    /// The table that makes ink values of one separation out of the stream: a byte for each of the
    /// file's colours, that of index k at k - 1. A value of 255 stays. The transparent value becomes 255
    /// with `transparentToWhite`, and stays without. Any other value v becomes `valueMap[v]`, if there is
    /// a map, of 256 bytes.
    /// \return an array that the caller deletes (`delete[]`). \throws std::bad_alloc.
    unsigned char* GetSeparationLut(const ColorSeparationType& separation, bool transparentToWhite,
                                    unsigned char* valueMap);
    /// The first colour that has an ink value in a separation. \return its number from 0, where the
    ///   stream counts from 1; the file's number of colours when there is none.
    unsigned char GetColorIndex(unsigned char value, const ColorSeparationType& separation);
    /// \return 1 when a colour has that ink value in the separation, else 0.
    unsigned char IsColorExist(unsigned char value, const ColorSeparationType& separation);
    /// The picture's first separation in the order of their numbers; `NoSeparation` without one.
    void SeperationBit(ColorSeparationType& separation);
    /// @}

    /// Makes or reads the side file, which keeps the size of the whole stream: the path up to its last
    /// point, wherever that is, and ".bin" (so just ".bin" for a path without a point). It is 100 bytes:
    /// the size as decimal text, signed as 32 bits are, and zeros behind it.
    ///
    /// With `readExisting` false: empties or creates the side file, asks `FileValidityCheck` and tells
    /// its answer in `fileIsValid`; of a sound file it counts the size, which stands in `LwFileSize` then,
    /// and writes it. A size that 32 bits don't hold is written as 0, so that readers count. A bad file
    /// leaves 0 bytes. When counting fails, the record's earlier `LwFileSize` is written and
    /// `TraceStatus` tells. The result is 0.
    ///
    /// With `readExisting` true: the side file's number, when it has one other than 0 that 32 bits hold,
    /// signed or not, without a look at the picture; else `GetLWBufferSize()`. `LwFileSize` is not set to
    /// the number. Nothing tells a side file of an earlier picture, or of another kind, from this one's:
    /// see `tympan::LineWorkSideFile`.
    /// \param fileName the picture's path
    /// \param fileIsValid told when the side file is made, left alone otherwise
    /// \throws CFileException* that the catcher deletes: for a side file that can't be created, with
    ///   `fileIsValid` not told (the open picture itself is refused as `sharingViolation`), and from its
    ///   reading, writing and closing. What is not written whole is cut to 0 bytes, as far as that goes.
    unsigned long CreateLwBinFile(CString& fileName, bool readExisting, bool& fileIsValid);

  protected:
    /// Appends the white that completes a row, as runs of 255 and one of the rest. `runs` has no effect.
    unsigned long CompleteLineTo4096(unsigned char*& buffer, unsigned long whiteGap,
                                     unsigned int copies, unsigned char white, unsigned long runs,
                                     bool colorFirst) override;
    /// True. Nothing in the library asks.
    virtual bool CanAddMarkers(unsigned long reserved);

  private:
    friend VelmarLWFileInterface* create_velmar_lw_file_object(const CString& fileName,
                                                               bool inputFile);

    VelmarLWFileInterface();
    static VelmarLWFileInterface* Create(const CString& fileName, bool inputFile);
    bool VelmarOpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                               CFileException* fileError);
    template <typename Work>
    void ForFirstRows(unsigned int firstRow, unsigned int lastRow, Work&& work);
    void MakeSideFile(const CString& path, bool& fileIsValid);
};

/// Opens an LW file as a whole, for reading or for writing a new one.
/// \return an object that the caller destroys. Null when the file can't be opened, its header is
///   refused, or memory ran out: nothing tells which.
TYMPAN_API VelmarLWFileInterface* create_velmar_lw_file_object(const CString& fileName,
                                                               bool inputFile);
