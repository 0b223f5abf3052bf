// JPEG pictures: bands of 8 rows, handed out as the compressed bytes of the stream by means of an
// index beside it, and the tables that are needed to decode them. Nothing here decodes.
#pragma once

#include "core/row_access.h"
#include "core/rows_buffer.h"
#include "jpeg/compressed_blocks.h"
#include "jpeg/jpeg_parameters.h"
#include "platform/export.h"

#include <cstddef>

namespace tympan {
struct Format;
/// The format's row of the list that the factory walks; for the library alone.
Format JpegFormat();
struct JpegIndexAccess;
} // namespace tympan

/// A JPEG file (JFIF, baseline) and its index, the side file ".bin" that tells the file position of
/// each band of 8 rows. A row operation gives the compressed bytes of the bands that its rows are
/// in; all components of a band come together, so that a separation selects nothing. Who wants
/// pixels decodes the bands with the tables that `RetrieveQuantizationTable` and
/// `RetrieveHuffmanTable` give.
///
/// A reading client makes the object by `create_jpeg_file_object(name, true)` or the factory, looks
/// at `ObjectStatus()`, and asks for tables, geometry and rows. A writing one makes it with
/// `false`, writes the stream through `JpegFileHandle()`, calls `StoreCompressedLinesBlock` for
/// each band from the first on, then `StorePictureParams`, and destroys the object: that writes the
/// index. An index that can't be written is left with 0 bytes.
///
/// `ClosePictureFile` closes the stream and leaves the index. A block that ends before it starts,
/// or whose size 32 bits don't hold, counts as one that no buffer has room for.
class TYMPAN_API JpegFileInterface : public PictureFileInterface {
  public:
    /// Closes both files; an output's index is written then. Nothing is thrown.
    ~JpegFileInterface() override;

    /// Whether the file begins as a JPEG and has "JFIF" at offset 6; nothing else is looked at. A
    /// file failure counts as no. The file is left where the test ended.
    static bool isTypeOf(CFile& file);

    /// Opens as `BasePictureIF` does, and then the side file: that of an input must be there. For
    /// an input the record's resolutions then are those of the sizes in units that the side file
    /// has (an infinity or no number for sizes of 0), `FileSizeUnitsFactor` its factor,
    /// `BitsPerSample` 8 for each component, and `RowSize` the bytes of a row, as they are when
    /// they are a multiple of 32, else the next multiple of 4 above them. The frame header has 16
    /// bits for the height: `HeightInPixels` becomes 65535 higher as often as the size in units
    /// times the factor and the resolution holds 65535 (the lowest 8 bits of that count).
    /// \return false, with `ObjectStatus` false: for an empty name, or a file that can't be opened,
    ///   without a code; with 90001 for a side file that can't be opened, an output that has the
    ///   side file's name, and a file failure; with 90040 and "General error!" for anything else, a
    ///   head without a frame header among it. The file then stays open. A `fileError` that the
    ///   base would throw ends here as a file failure, destroyed if it was made with `new`.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// Draws nothing. Takes the bands of the rows into memory of its own as `GetPictureRows` does,
    /// up to 1,000,000 bytes and 9,999 bands, and drops them.
    /// \throws ReadFileException* for a band that the file doesn't hold whole; std::bad_alloc.
    void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc) override;
    using BasePictureIF::Display;

    /// @{
    /// The object's file, for a client that writes the stream or reads its head. It holds as long
    /// as the object.
    CFile* JpegFileHandle() { return &FileHandle(); }
    const CFile* JpegFileHandle() const { return &FileHandle(); }
    /// @}

    /// \name Bands of rows
    /// @{

    /// As the object form of `GetPictureRows` for one row; the resolutions have no effect.
    PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                   double scanAxisResolution, double xScanAxisResolution) override;

    /// As the buffer form of `GetPictureRows` for one row, without offsets: the whole band that the
    /// row is in. The resolutions have no effect.
    unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                ColorSeparationType separation, double scanAxisResolution,
                                double xScanAxisResolution, unsigned long bufferSize) override;

    /// The bands of the rows from `firstRow` to `lastRow`, both included, in a new object that the
    /// caller destroys. With `wrap`, a first band behind the last runs over the end of the index.
    /// `separation` has no effect.
    /// \return null with 90001 for a file failure, when memory runs out, and for a buffer that is
    ///   above 16 MiB and longer than the file; with 90062 for a first band behind the last without
    ///   `wrap`; with 90063 for a band that isn't in the index. From then on every object comes
    ///   with 90062 in its own `TraceStatus`, and no bands.
    /// \throws ReadFileException* for a band that has no size ("Given buffer is too small! The
    ///   reading is stopped!") or that the file doesn't hold whole ("Unexpected end of file
    ///   encountered! The reading is stopped!"); MemoryAllocException* when not even the object can
    ///   be had.
    PictureRowsData* GetPictureRows(const ColorSeparationType& separation, unsigned int firstRow,
                                    unsigned int lastRow, bool wrap) override;

    /// Stores the bands of the rows from `firstRow` to `lastRow`, both included, in `buffer`, one
    /// behind the other. With `wrap`, a first band behind the last runs over the end of the index.
    /// \param rowsInfo receives the number of the last band stored.
    /// \param offsets receives the place of each band in `buffer` and then a 0, so it has an entry
    ///   more than there are bands; may be null.
    /// \return the bytes stored. 0, and nothing changed, for a null `buffer` or a `bufferSize` of
    ///   0, and without `wrap` for a single row with `offsets`, several rows without, and a first
    ///   row above the last. 0 with 90001 for a file failure and when memory runs out. The bytes up
    ///   to there, without the closing 0, with 90062 for a band that isn't in the index.
    /// \throws IllegalSeparationException* for a separation of 4 or more, before anything else;
    ///   ReadFileException* for a band that `buffer` has no room for or that has no size ("Given
    ///   buffer is too small! The reading is stopped!"), of which nothing is read, and for one that
    ///   the file doesn't hold whole ("Unexpected end of file encountered! The reading is
    ///   stopped!"). What was stored before stays.
    unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                                 unsigned int& rowsInfo, unsigned long* offsets,
                                 ColorSeparationType separation, unsigned long bufferSize,
                                 bool wrap) override;

    /// Does nothing. \return 0.
    unsigned int GetOriginalPictureRow(unsigned char* buffer, unsigned int row);
    /// @}

    /// \name What is needed to decode
    /// @{

    /// The payload of the quantization segment without its first byte, in a new array that the
    /// caller releases with `delete[]`.
    /// \param table receives the array; null when the head has no such segment, or no memory could
    ///   be had.
    /// \return its bytes, also when no memory could be had; 0 without a segment, and when the
    ///   opening couldn't read it, which nothing else tells.
    virtual unsigned short RetrieveQuantizationTable(unsigned char*& table) const;

    /// The payloads of the first two Huffman segments, each without its first byte, one behind the
    /// other, as `RetrieveQuantizationTable` gives its own.
    /// \param dcLength receives the bytes of the first.
    /// \return the bytes of both, in 16 bits.
    virtual unsigned short RetrieveHuffmanTable(unsigned char*& table,
                                                unsigned short& dcLength) const;
    /// @}

    /// \name Writing
    /// @{

    /// Records a band: call it once for each, in their order.
    /// \throws std::bad_alloc.
    void StoreCompressedLinesBlock(const CompressedLine& line);

    /// Assigns to the record what `PictureParameters` assigns of a record that has these values
    /// (the resolutions exchanged, no sizes in units), and gives factor and sizes in units to the
    /// index. Resolutions are in pixels per inch; the factor is 1.0 for sizes in inches.
    virtual void StorePictureParams(double xScanResolution, double scanResolution,
                                    double sizeUnitsFactor, double heightInUnits,
                                    double widthInUnits, double heightInPixels,
                                    double widthInPixels);
    /// As the base, and gives factor and sizes in units of the other object's record to the index.
    void StorePictureParams(const PictureFileInterface* const other) override;
    /// The record alone, as the base.
    using PictureFileInterface::StorePictureParams;
    /// @}

    /// \name What the index tells
    /// @{

    /// A number of the side file that the library only carries.
    virtual unsigned int GetMcuNumber() const;

    /// The file positions of the first byte of the first row's band and of the last byte of the
    /// last row's, which enclose those of the rows between them.
    /// \return false, and the outputs as they were: with 90062 for a band that isn't in the index
    ///   or a first one behind the last, with 90001 when memory runs out.
    virtual bool GetCompressedBlocksOffsetInfo(unsigned int firstRow, unsigned int lastRow,
                                               unsigned long& startOffset,
                                               unsigned long& endOffset);
    /// @}

  protected:
    /// Whether "JFIF" stands at offset 6. \throws CFileException*, as the next two.
    static bool isJFIF(CFile& file);
    /// Whether 0xFF and `marker` stand at `offset`.
    static bool isJpegMarker(CFile& file, unsigned short offset, unsigned char marker);
    /// Whether the file begins with 0xFF 0xD8.
    static bool isM_SOI(CFile& file);

    /// Whether the buffer form of `GetPictureRows` takes its arguments.
    /// \throws IllegalSeparationException* for a separation of 4 or more.
    bool IsValidParameters(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                           unsigned long* offsets, ColorSeparationType separation,
                           unsigned long bufferSize, bool wrap);

    /// Opens the index of the open file by the last part of its path. \throws as the index does.
    void OpenCompressedBlocksInfoFile();
    /// @{
    /// The index, the object's own.
    const JpegCompBlocksInfo& CompressedBlocksInfo() const { return compressedBlocksInfo_; }
    JpegCompBlocksInfo& CompressedBlocksInfo() { return compressedBlocksInfo_; }
    /// @}

  private:
    friend JpegFileInterface* create_jpeg_file_object(const CString& fileName, bool inputFile);
    friend tympan::Format tympan::JpegFormat();
    friend struct tympan::JpegIndexAccess;

    struct Fetch;

    JpegFileInterface();
    static JpegFileInterface* Create(const CString& fileName, bool inputFile);

    const JpegPictureParameters& JpegRecord() const;
    void TakeIndexedSizes();
    void FetchBlocks(const CompressedBlocksRange& range, Fetch& fetch);
    void FetchBlock(const CompressedLine& line, Fetch& fetch);
    std::size_t LimitToScratch(CompressedBlocksRange& range) const;

    JpegCompBlocksInfo compressedBlocksInfo_;
};

/// Makes a JPEG object and opens it with its side file, for reading (`inputFile` true) or for writing
/// new ones.
/// \return an object that the caller destroys, also when the opening failed: see `ObjectStatus()`,
///   `TraceStatus()`, `ErrorMsg()`. Null when memory ran out.
TYMPAN_API JpegFileInterface* create_jpeg_file_object(const CString& fileName, bool inputFile);
