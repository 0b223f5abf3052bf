// The header record of a picture file, and the header that CT, LW and page files have in common.
#pragma once

#include "core/failure_trace.h"
#include "platform/export.h"
#include "platform/text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

class CFile;

/// A printing plate, or what stands in its place. Holds any 32-bit value that a file brings.
enum ColorSeparationType : std::int32_t {
    Cyan = 0,
    Magenta = 1,
    Yellow = 2,
    Black = 3,
    NoSeparation = 4,   ///< an empty slot of a header record
    AllSeparations = 6, ///< only as a request to the CT bitmap display: all plates as one picture
};

/// Size, resolutions, separations and identification of one picture.
///
/// Sizes in pixels are whole numbers held as doubles. Sizes in units are inches once a file is
/// loaded, and resolutions are pixels per inch. The common header is text at fixed places of the
/// file's first bytes; its fields stand in one table in `picture_parameters.cpp`, which `Load` and
/// `Save` both walk.
///
/// A record is empty after construction or `Clear()`. `Load` fills it and expects no separations in
/// it, for it appends them.
class TYMPAN_API PictureParameters {
  public:
    static constexpr unsigned int kSlots = 4; ///< separations that a record has room for

    /// Empty.
    PictureParameters() = default;
    /// Takes over what assignment takes over; all else is as in a fresh record.
    PictureParameters(const PictureParameters& other);
    /// Takes over the resolutions, exchanged (the target's scan axis gets the source's cross-scan
    /// axis, and the other way round), `FileSizeUnitsFactor`, the size in pixels and the
    /// separations, and nothing else. Assignment of a record to itself changes nothing.
    PictureParameters& operator=(const PictureParameters& other);
    virtual ~PictureParameters();

    /// Reads the common header. Sizes come out in inches and `FileSizeUnitsFactor` becomes 1.0.
    /// A size that is not there reads as 0. One beyond its type reads, in pixels, as the nearest that
    /// is not, and in units as an infinity.
    /// \return true, with the file at 1080. False when the separations are refused: `TraceStatus`
    ///   is 90066 and the record is cleared, by the virtual `Clear()`.
    /// \throws CFileException* from a seek or a read.
    virtual bool Load(CFile& file);

    /// Writes the common header's offsets 1024 to 1079; the rest of the file is left alone. Sizes
    /// are written as they stand, without a factor. A size in units below 0.1 does not survive the
    /// text form; 0.0 does.
    /// \return true, with the file at 1080. False, and nothing written, for a size that the text
    ///   can't hold: in units below 0 or from 100000000 on, in pixels below 0 or above 2147483647,
    ///   or not a number.
    /// \throws CFileException* from a seek or a write.
    virtual bool Save(CFile& file) const;

    /// Sets `BitsPerSample`, `RowSize`, the resolutions, the size in pixels and the separations to
    /// those of a fresh record. The other fields keep their values.
    virtual void Clear();

    /// @{
    /// The code of the record's last failure, a number of docs/failure-codes.md; 0 until there is
    /// one. A picture object has a code of its own.
    unsigned long TraceStatus() const { return trace_.Status(); }
    void TraceStatus(unsigned long status) { trace_.Status(status); }
    /// @}

    /// @{
    /// Bytes of one row of one separation, where the format doesn't tell otherwise; set by the
    /// format after opening.
    unsigned int RowSize() const { return rowSize_; }
    void RowSize(unsigned int bytes) { rowSize_ = bytes; }
    /// @}
    /// @{
    /// Bits of one pixel over all separations, where the format doesn't tell otherwise; set by the
    /// format after opening.
    unsigned int BitsPerSample() const { return bitsPerSample_; }
    void BitsPerSample(unsigned int bits) { bitsPerSample_ = bits; }
    /// @}

    /// Pixels per inch along the height; `Load` works it out from the height.
    double ResolutionOnScanAxis() const { return resolution_.second; }
    /// Pixels per inch along the width; `Load` works it out from the width.
    double ResolutionOnXScanAxis() const { return resolution_.first; }
    /// -1.0, for none, when the two differ by more than 0.1; else the larger. A resolution that is
    /// not a number gives -1.0.
    double Resolution() const;
    /// Sets both: first `ResolutionOnXScanAxis`, second `ResolutionOnScanAxis`.
    void Resolution(std::pair<double, double> resolution) { resolution_ = resolution; }

    /// @{
    /// Factor from file units to inches, while a file is read; 1.0 in a fresh record and after
    /// `Load`. `Save` writes the code of millimetres for 0.0, else that of inches.
    double FileSizeUnitsFactor() const { return fileSizeUnitsFactor_; }
    void FileSizeUnitsFactor(double factor) { fileSizeUnitsFactor_ = factor; }
    /// @}

    /// @{
    /// The rows of the picture. References to sizes, here and below, hold as long as the record and
    /// follow it.
    const double& HeightInPixels() const { return sizeInPixels_.first; }
    void HeightInPixels(const double& height) { sizeInPixels_.first = height; }
    /// @}
    /// @{
    /// The pixels of a row.
    const double& WidthInPixels() const { return sizeInPixels_.second; }
    void WidthInPixels(const double& width) { sizeInPixels_.second = width; }
    /// @}
    /// @{
    /// In inches, once a file is loaded.
    const double& HeightInUnits() const { return sizeInUnits_.first; }
    void HeightInUnits(const double& height) { sizeInUnits_.first = height; }
    /// @}
    /// @{
    /// In inches, once a file is loaded.
    const double& WidthInUnits() const { return sizeInUnits_.second; }
    void WidthInUnits(const double& width) { sizeInUnits_.second = width; }
    /// @}
    /// First the height, second the width.
    const std::pair<double, double>& SizeInPixels() const { return sizeInPixels_; }
    /// First the height, second the width.
    const std::pair<double, double>& SizeInUnits() const { return sizeInUnits_; }

    /// @{
    /// How many of the four slots are in use. A count above four is kept, with four slots behind
    /// it.
    unsigned int NumberOfSeparations() const { return numberOfSeparations_; }
    void NumberOfSeparations(unsigned int count) { numberOfSeparations_ = count; }
    /// @}
    /// The separation in a slot; `NoSeparation` for a slot that isn't there.
    const ColorSeparationType& Separation(unsigned int slot) const;
    /// A slot that isn't there takes nothing.
    void Separation(unsigned int slot, const ColorSeparationType& separation);
    /// Whether one of the slots in use holds the separation.
    bool SeparationExists(const ColorSeparationType& separation) const;
    /// The first slot in use that holds the separation, or `kSlots`.
    unsigned int SlotOf(ColorSeparationType separation) const;

    /// @{
    /// A flag of the file for the client; nothing in the library acts on it.
    bool Nlw() const { return nlw_; }
    void Nlw(bool nlw) { nlw_ = nlw; }
    /// @}

    /// @{
    /// The two-letter type of the file; empty in a CT file written by this library.
    CString FileType() const { return fileType_; }
    void FileType(CString type) { fileType_ = std::move(type); }
    /// @}

    /// Whether the number is that of a real separation.
    static bool IsSeparationIndexLegal(unsigned int index) { return index < kSlots; }
    /// Whether a picture may have that many separations: 1 or 4.
    static bool IsNumberOfSeparationsLegal(unsigned int count) { return count == 1 || count == 4; }

    /// Pixels per unit, cut (not rounded) to four decimals. What has no finite answer, such as a
    /// size of 0.0 units, gives what the division gives: an infinity or no number.
    static double CalculateResolution(double pixels, double units);

    /// Digits before the point for a value of 1 or more; minus the zeros up to and with the first
    /// digit's place for one below 1 (0.5 gives -1); 0 for 0 and for what is not finite. The sign
    /// does not count.
    static int GetNumberOrder(double value);

    /// Writes the floating text, as in `+.12500000E+02` for 12.5, and a terminator: 15 bytes, all
    /// of them set. Serves values from 0 to below 100000000; one beyond is written as the nearest
    /// that it serves, what is not a number as 0.
    static void SizeToBuffer(double value, unsigned char* buffer);

    /// Writes the whole-number text, as in `+00000001234`, and a terminator: 13 bytes. Serves whole
    /// numbers from 0 to 2147483647, a fraction is cut; beyond as `SizeToBuffer`.
    static void SizeInPixelsToBuffer(double value, unsigned char* buffer);

    /// Appends the separations of a file's mask (bit 0 `Cyan` to bit 3 `Black`; higher bits don't
    /// count) and tells whether the resulting number of separations is legal.
    bool DefineAvailableSeparations(unsigned char mask);
    /// The mask for writing: bit i is set when slot i holds a separation, whichever that is. So a
    /// one-separation picture gets mask 1 and reads back as `Cyan`.
    unsigned char DefineAvailableSeparations() const;

  protected:
    /// @{
    /// Height first, width second.
    void SizeInPixels(const std::pair<double, double>& size) { sizeInPixels_ = size; }
    void SizeInUnits(const std::pair<double, double>& size) { sizeInUnits_ = size; }
    /// @}
    /// @{
    /// Width first, height second.
    void SizeInPixels(const double& width, const double& height)
    {
        sizeInPixels_ = { height, width };
    }
    void SizeInUnits(const double& width, const double& height)
    {
        sizeInUnits_ = { height, width };
    }
    /// @}

    /// Puts the value into the next free slot and counts it. Behind the fourth it is counted only.
    void AddSeparation(const ColorSeparationType& separation);
    /// Adds 1 to the number of separations.
    void IncreaseSeparationsNumber() { ++numberOfSeparations_; }

    /// \name The header field by field
    /// Each at the file's current position; `buffer` holds at least 15 bytes and gets the text,
    /// terminated. All throw `CFileException*` from a read or a write.
    /// @{

    /// Reads the field, or writes it.
    void LoadFileSizeUnits(CFile& file);
    void SaveFileSizeUnits(CFile& file) const;
    /// \throws LoadFailedException by value for a count other than 1 or 4 ("Illegal separations
    ///   number!") or a mask of another count ("Illegal separations mask!").
    void LoadSeparationsInfo(CFile& file);
    void SaveSeparationsInfo(CFile& file) const;
    void LoadFileHeight(CFile& file, unsigned char* buffer);
    void LoadFileWidth(CFile& file, unsigned char* buffer);
    void SaveFileHeight(CFile& file, unsigned char* buffer) const;
    void SaveFileWidth(CFile& file, unsigned char* buffer) const;
    void LoadFileHeightInPixels(CFile& file, unsigned char* buffer);
    void LoadFileWidthInPixels(CFile& file, unsigned char* buffer);
    void SaveFileHeightInPixels(CFile& file, unsigned char* buffer) const;
    void SaveFileWidthInPixels(CFile& file, unsigned char* buffer) const;
    void LoadFileNlwBit(CFile& file);
    void LoadFileType(CFile& file, unsigned char* buffer);
    /// @}

    /// For the failure tables of derived records.
    tympan::FailureTrace& Failures() { return trace_; }

  private:
    struct HeaderField;
    struct HeaderTable;
    using Size = std::pair<double, double>;

    void Copy(const PictureParameters& other);
    void LoadCommonHeader(CFile& file);
    void LoadField(const HeaderField& field, CFile& file, unsigned char* buffer);
    void SaveField(const HeaderField& field, CFile& file, unsigned char* buffer) const;
    void Decode(const HeaderField& field, std::string_view bytes);
    void Encode(const HeaderField& field, unsigned char* bytes) const;
    void TakeSeparations(std::string_view bytes);
    bool SizesFitText() const;

    tympan::FailureTrace trace_;
    unsigned int rowSize_ = 0;
    unsigned int bitsPerSample_ = 0;
    std::pair<double, double> resolution_{ 0.0, 0.0 };
    double fileSizeUnitsFactor_ = 1.0;
    Size sizeInPixels_{ 0.0, 0.0 };
    Size sizeInUnits_{ 0.0, 0.0 };
    unsigned int numberOfSeparations_ = 0;
    std::array<ColorSeparationType, kSlots> slots_{ NoSeparation, NoSeparation, NoSeparation,
                                                    NoSeparation };
    bool nlw_ = false;
    CString fileType_;
};
