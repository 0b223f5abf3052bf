// TIFF pictures: rows of one separation out of the rows of all samples that the TIFF library gives.
#pragma once

#include "core/row_access.h"
#include "platform/export.h"

#include <cstdint>
#include <memory>

struct tiff;

namespace tympan {
struct Format;
/// The format's row of the list that the factory walks; for the library alone.
Format TiffFormat();
struct TiffDetailsAccess;
/// Closes a file of the TIFF library.
struct CloseTiff {
    /// Null is left alone.
    void operator()(tiff* file) const noexcept;
};
} // namespace tympan

/// Kinds of pictures that a TIFF can hold: by bits of a sample, samples of a pixel, photometric.
enum ColorSetType {
    NoColorSet = 0,           ///< none of those below
    CmykColorSet = 1,         ///< 8 bits, 4 samples, separated
    FiveColorSet = 5,         ///< 8 bits, 5 samples, separated; the next three alike
    SixColorSet = 6,          ///< of 6 samples
    SevenColorSet = 7,        ///< of 7
    EightColorSet = 8,        ///< of 8
    GrayColorSet = 13,        ///< 8 bits, black is zero; a palette's numbers count as grey
    BilevelColorSet = 14,     ///< 1 bit, white is zero
    RgbColorSet = 15,         ///< 8 bits, 3 samples
    YCbCrColorSet = 16,       ///< 8 bits, 3 samples
    InverseGrayColorSet = 17, ///< 8 bits, white is zero
};

/// The header record of a TIFF. It neither loads nor saves: the picture object fills it from what the
/// TIFF library tells. Of the fields of every record, `RowSize` has the bytes of a row of all samples,
/// `BitsPerSample` the bits of one sample, and the resolutions stand as in the file, in the file's own
/// unit; sizes in units, separations and type stay empty.
class TYMPAN_API TiffFileParam : public PictureParameters {
  public:
    /// Empty.
    TiffFileParam() = default;
    /// Takes over this class's fields, `RowSize` and `BitsPerSample`, and nothing else.
    TiffFileParam(const TiffFileParam& other);
    /// Takes over the same, and then what `PictureParameters` assigns.
    TiffFileParam& operator=(const TiffFileParam& other);
    ~TiffFileParam() override;

    /// Does nothing. \return false.
    bool Load(CFile& file) override;
    /// Does nothing. \return false.
    bool Save(CFile& file) const override;
    /// Clears the base's fields and all of this class.
    void Clear() override;

    /// @{
    /// The kind of the picture.
    ColorSetType ColorSet() const { return colorSet_; }
    void ColorSet(ColorSetType set) { colorSet_ = set; }
    /// @}
    /// @{
    /// The file's number of its compression, 0 for none.
    unsigned long Compression() const { return compression_; }
    void Compression(unsigned long number) { compression_ = number; }
    /// @}
    /// @{
    /// Free for the client.
    CString PictureFileName() const { return pictureFileName_; }
    void PictureFileName(CString name) { pictureFileName_ = name; }
    /// @}
    /// @{
    /// The file's number of its photometric interpretation.
    unsigned long Photometric() const { return photometric_; }
    void Photometric(unsigned long number) { photometric_ = number; }
    /// @}
    /// @{
    /// The samples of a pixel.
    unsigned long ColorSeparation() const { return colorSeparation_; }
    void ColorSeparation(unsigned long samples) { colorSeparation_ = samples; }
    /// @}
    /// @{
    /// 1 from the first opening on, until `Clear()`.
    int InitTiff() const { return initTiff_; }
    void InitTiff(int init) { initTiff_ = init; }
    /// @}

  protected:
    /// Takes over what the copy constructor does.
    void CopyParameters(const TiffFileParam& other);

  private:
    ColorSetType colorSet_ = NoColorSet;
    unsigned long compression_ = 0;
    CString pictureFileName_;
    unsigned long photometric_ = 0;
    unsigned long colorSeparation_ = 0;
    int initTiff_ = 0;
};

/// A TIFF file, read through the TIFF library; nothing is written. The object's own `CFile` stays
/// closed, so that `PictureFileName()` is empty and `Display` draws nothing.
///
/// A separation is the number of a sample in its pixel, from 0 on, whatever it is called: `Cyan` is the
/// first sample of an RGB picture too. `TiffDetailsOf` (tympan/inspect.h) tells the names.
///
/// Failures leave their code in `TraceStatus` and one text in `ErrorMsg` and `TraceStatusString`.
/// Nothing here sets `ObjectStatus` to false, and nothing but memory that runs out is thrown.
class TYMPAN_API TiffFileInterface : public PictureFileInterface {
  public:
    /// Closed.
    TiffFileInterface();
    /// Closes the file, if one is open.
    ~TiffFileInterface() override;

    /// Whether the TIFF library opens the file, which stays open, its position where it was.
    static bool isTypeOf(CFile& file, const CString& name);

    /// Opens the file and fills the record; only the name has a meaning. Whatever was open is closed
    /// first.
    /// \return false with 90051 and the library's message when it can't open the file: the record
    ///   keeps what it held. False with 90050 for a kind that no `ColorSetType` stands for: the
    ///   record is filled, with `NoColorSet` and `BitsPerSample` 0, and rows can be read. The text
    ///   then is "Unknown palette type.\nBitPerSample=...,\nSamplePerPixel=...,\nPhotometric=...."
    ///   with the file's numbers.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;
    /// Closes the file, if one is open, and clears the record.
    void ClosePictureFile() override;

    /// \name The kind of picture
    /// @{

    /// Whether it is a `GrayColorSet`.
    bool IsTiff8Bit() const;
    /// Whether it is a `BilevelColorSet`.
    bool IsTiff1Bit() const;
    /// Whether it is a `CmykColorSet`.
    bool IsTiffCMYK() const;
    /// @}

    /// @{
    /// The record, the object's for as long as it lives.
    TiffFileParam* GetPictureParams();
    const TiffFileParam* GetPictureParams() const;
    /// @}

    /// None. \return null.
    PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                   double scanAxisResolution, double xScanAxisResolution) override;
    /// None. \return null.
    PictureRowsData* GetPictureRows(const ColorSeparationType& separation, unsigned int firstRow,
                                    unsigned int lastRow, bool wrap) override;

    /// A row of one separation: `RowSize` over the number of samples bytes, which `buffer` must hold.
    /// Of a picture with one sample the separation has no effect. The resolutions have none.
    /// \return 1. 0 with 90050 and "Zero color separation number." for a record without samples,
    ///   which is that of an object that never opened a file, and for a separation that the picture
    ///   of several samples hasn't; with 90050 and "Incorrect tiff parameters or incompatibility
    ///   them (discrepancy)." when no file is open, for a row above the height, for a null or too
    ///   small buffer, and for a record that isn't the file's any more; with 90050 and the
    ///   library's message for a row that can't be read, the one at the height among them.
    unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                ColorSeparationType separation, double scanAxisResolution,
                                double xScanAxisResolution, unsigned long bufferSize) override;

    /// The rows from `firstRow` to `lastRow`, both included, one behind the other. `rowsInfo`,
    /// `offsets` and `wrap` have no effect; `offsets` may be null.
    /// \return 1, also for no rows (`firstRow` above `lastRow`, where the buffer is large enough
    ///   for as many as their difference in 32 bits). 0 as `GetPictureRow`, but without a code for
    ///   a separation that isn't there and for a row of a picture with one sample that can't be
    ///   read. The rows before one that can't be read are in `buffer`.
    unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                                 unsigned int& rowsInfo, unsigned long* offsets,
                                 ColorSeparationType separation, unsigned long bufferSize,
                                 bool wrap) override;

  private:
    friend struct tympan::TiffDetailsAccess;

    struct Samples;

    bool TakeKind();
    bool Fail(unsigned long code, const CString& text);
    bool FailAsLibrary(unsigned long code);
    bool Fits(const unsigned char* buffer, unsigned int lastRow, unsigned long bufferSize,
              std::uint64_t bytes) const;
    bool ReadToRowBuffer(std::uint64_t row);
    bool ReadWhole(unsigned char* buffer, std::uint64_t row);
    Samples SamplesOf(ColorSeparationType separation) const;
    bool ReadSeparation(unsigned char* buffer, std::uint64_t row, const Samples& samples);

    std::unique_ptr<tiff, tympan::CloseTiff> tiff_;
};
