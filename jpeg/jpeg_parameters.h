// The header record of a JPEG file: four segments of the stream's head, found by a scan for their
// markers and kept as tables of bytes.
#pragma once

#include "core/picture_parameters.h"
#include "platform/export.h"

#include <memory>

class CFile;

/// The two bytes of the value exchanged.
TYMPAN_API unsigned short swap_bytes(unsigned short value);

/// Looks for 0xFF and `marker` byte by byte, from `startOffset` up to position 328 of the file, and
/// through whatever stands there: it knows nothing of segments. A byte behind a 0xFF belongs to it,
/// so that 0xFF 0xFF `marker` is missed. Beyond the end of the file bytes read as 0.
/// \return the position behind the marker; 0 when it isn't found, for a marker that ends at 328,
///   and for a start at or beyond it. A marker whose 0xFF is at 327 is found. The file is left
///   behind the last byte that was looked at.
/// \throws CFileException*.
TYMPAN_API unsigned short find_jpeg_marker(CFile& file, unsigned char marker,
                                           unsigned short startOffset);

/// The bytes of one segment, without the first one behind its length field.
class JpegTable {
  public:
    /// A value was asked for that the table doesn't hold. Thrown by value.
    class TYMPAN_API RetrieveValueException {};

    /// An empty table that looks for the segment of a marker.
    explicit JpegTable(unsigned char marker) : marker_(marker) {}
    JpegTable(const JpegTable&) = delete;
    JpegTable& operator=(const JpegTable&) = delete;
    virtual ~JpegTable();

    /// Finds the segment as `find_jpeg_marker` does and reads it. A segment that isn't found leaves
    /// the table as it was, with an offset of 0. Bytes that the file doesn't hold are 0.
    /// \return false for any failure, with the table empty: a length field of 3, no memory, a file
    ///   failure. Nothing is thrown.
    bool Load(CFile& file, unsigned short startOffset);

    /// The big-endian value at an index of the table. \throws RetrieveValueException by value.
    unsigned short RetrieveWordValue(unsigned short index) const;
    /// The byte at an index of the table. \throws RetrieveValueException by value.
    unsigned char RetrieveByteValue(unsigned short index) const;
    /// Copies all bytes of the table to an array that has room for them; nothing to a null one.
    void CopyData(unsigned char* target) const;

    /// @{
    /// File position of the segment's length field; 0 when the segment wasn't found.
    unsigned short Offset() const { return offset_; }
    void Offset(unsigned short offset) { offset_ = offset; }
    /// @}
    /// Bytes of the table: the segment's length field less 3, in 16 bits.
    unsigned short Length() const { return length_; }
    /// Second byte of the marker that the table looks for.
    unsigned char Marker() const { return marker_; }
    /// Position behind the segment, in 16 bits.
    unsigned short End() const;

  private:
    void ReadSegment(CFile& file);

    unsigned short offset_ = 0;
    unsigned short length_ = 0;
    std::unique_ptr<unsigned char[]> data_;
    unsigned char marker_;
};

/// Header record of a JPEG file. The head has to hold its segments in one order: quantization
/// tables, baseline frame header, Huffman tables of the DC coefficients, those of the AC ones. Each
/// is looked for behind the one before, in the file's first 328 bytes.
///
/// Sizes in units aren't in the head: `JpegFileInterface` takes them from its index. Neither
/// `Clear()` nor closing a file touches the tables; the next `Load` replaces those that it finds.
class TYMPAN_API JpegPictureParameters : public PictureParameters {
  public:
    /// Empty, with tables that look for their segments.
    JpegPictureParameters();
    /// A fresh record whose tables look for no marker; of the source only the `CurrentOffset`.
    JpegPictureParameters(const JpegPictureParameters& other);
    /// Takes over what `PictureParameters` takes over; tables and `CurrentOffset` stay.
    JpegPictureParameters& operator=(const JpegPictureParameters& other);
    ~JpegPictureParameters() override;

    /// Reads the segments and takes sizes in pixels, `NumberOfSeparations` (the components) and the
    /// first separation (the identifier of the first component, less 1) from the frame header. A
    /// file failure in the reading of a segment, or memory that runs out, leaves that one's table
    /// empty, and the sizes at 0 where it is the frame header's; neither is told.
    /// Resolutions follow from the sizes in units that the record has.
    /// \return true. (90043, a cleared record and false stand for a `LoadFailedException`, which no
    ///   step of this class throws.)
    /// \throws JpegTable::RetrieveValueException by value, when no frame header was found or it is
    ///   too short.
    bool Load(CFile& file) override;

    /// Writes nothing. \return true.
    bool Save(CFile& file) const override;

  protected:
    /// \name Steps of `Load`, in their order
    /// Each begins at `CurrentOffset` and moves it behind what it read.
    /// @{

    /// Reads the quantization segment.
    void LoadQuantizationTable(CFile& file);
    /// Reads the frame header, and takes sizes and components out of it.
    /// \throws JpegTable::RetrieveValueException by value.
    void LoadImageParameters(CFile& file);
    /// Reads the two Huffman segments.
    void LoadHuffmanTable(CFile& file);
    /// @}

    /// Takes the sizes out of the frame header. \throws JpegTable::RetrieveValueException by value.
    void RetrieveFileSizeInPixels();
    /// Takes the number of components and the first one out of the frame header.
    /// \throws JpegTable::RetrieveValueException by value.
    void RetrieveSeparationsInfo();

    /// Copies the two Huffman tables, that of DC first, into a new array that the caller releases.
    /// \param table receives the array; null when the tables are empty or it can't be had.
    /// \param dcLength receives the length of the first.
    /// \return the length of both, in 16 bits; the array holds both whole.
    unsigned short RetrieveHuffmanTableData(unsigned char*& table, unsigned short& dcLength) const;
    /// As that, for the quantization table.
    unsigned short RetrieveQuantizationTableData(unsigned char*& table) const;

    /// @{
    /// Where the next segment is looked for.
    unsigned short CurrentOffset() const { return currentOffset_; }
    void CurrentOffset(unsigned short offset) { currentOffset_ = offset; }
    /// @}
    /// @{
    /// The `Offset` of each table.
    unsigned short ImageParamsOffset() const { return imageParamsTable_.Offset(); }
    void ImageParamsOffset(unsigned short offset) { imageParamsTable_.Offset(offset); }
    unsigned short HuffmanDcOffset() const { return huffmanDcTable_.Offset(); }
    void HuffmanDcOffset(unsigned short offset) { huffmanDcTable_.Offset(offset); }
    unsigned short HuffmanAcOffset() const { return huffmanAcTable_.Offset(); }
    void HuffmanAcOffset(unsigned short offset) { huffmanAcTable_.Offset(offset); }
    unsigned short QuantizationOffset() const { return quantizationTable_.Offset(); }
    void QuantizationOffset(unsigned short offset) { quantizationTable_.Offset(offset); }
    /// @}

    /// @{
    /// The four tables, the record's own.
    const JpegTable& ImageParamsTable() const { return imageParamsTable_; }
    JpegTable& ImageParamsTable() { return imageParamsTable_; }
    const JpegTable& HuffmanDcTable() const { return huffmanDcTable_; }
    JpegTable& HuffmanDcTable() { return huffmanDcTable_; }
    const JpegTable& HuffmanAcTable() const { return huffmanAcTable_; }
    JpegTable& HuffmanAcTable() { return huffmanAcTable_; }
    const JpegTable& QuantizationTable() const { return quantizationTable_; }
    JpegTable& QuantizationTable() { return quantizationTable_; }
    /// @}

  private:
    friend class JpegFileInterface; // hands the tables out

    explicit JpegPictureParameters(unsigned short currentOffset);
    void LoadSegments(CFile& file);

    JpegTable imageParamsTable_;
    JpegTable huffmanDcTable_;
    JpegTable huffmanAcTable_;
    JpegTable quantizationTable_;
    unsigned short currentOffset_ = 0;
};
