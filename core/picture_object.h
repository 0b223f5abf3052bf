// The frame that every picture object shares: one open file, its header record, and what the last
// failure left.
#pragma once

#include "core/failure_trace.h"
#include "core/picture_parameters.h"
#include "platform/export.h"
#include "platform/file.h"
#include "platform/text.h"

#include <memory>

class CDC;

/// Root of all picture objects. An object stands for exactly one file of one format.
///
/// It starts closed, with `ObjectStatus` true. `OpenPictureFile` opens it, `ClosePictureFile`
/// brings it back to closed with an emptied record, and from there it can be opened again. A failed
/// opening marks the object for good, unless its format says otherwise. An operation that fails
/// leaves a code in `TraceStatus`, often with a text in `ErrorMsg`; nothing sets either back. Where
/// an operation tells a code and no text for it, `ErrorMsg` stays as it was.
///
/// A format's constructor makes its record and hands it over with `PictureParams(record)`. Without
/// a record the accessors that forward to it answer as an empty record does, and setters do
/// nothing.
///
/// An object is used by one thread at a time; different objects, but for those of TIFF/IT, by any.
class TYMPAN_API BasePictureIF {
  public:
    /// Closed and without a record. `ErrorMsg` is "BasePictureIF:\n No Error !".
    BasePictureIF();
    BasePictureIF(const BasePictureIF&) = delete;
    BasePictureIF& operator=(const BasePictureIF&) = delete;
    /// Destroys the record and closes the file, without a call of `ClosePictureFile`.
    virtual ~BasePictureIF();

    /// Opens an existing file and loads its header record, or creates (and empties) one for writing
    /// and loads nothing. With `reopen` false, the bare name of the file that is open is answered
    /// with true at once. A path with directories never is such a name, but an empty name is that of
    /// an object without a file, which stays closed.
    /// \param fileName the file's path; its last part is what `reopen` looks at.
    /// \param inputFile true to read, false to create.
    /// \param reopen false to leave a file of that name open as it is.
    /// \param fileError may be null; when given, a failed opening throws it: filled by `CFile::Open`
    ///   when the file can't be opened, as it was when the record refuses it. Nothing is thrown for
    ///   an opening that succeeds.
    /// \return false, and `ObjectStatus` false, when the file can't be opened or its record refuses
    ///   it; in the second case the file stays open. Neither `TraceStatus` nor `ErrorMsg` is
    ///   written.
    /// \throws CFileException* that loading or seeking throws, std::bad_alloc; `ObjectStatus` is
    ///   then as it was.
    virtual bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                 CFileException* fileError);

    /// `Save` of the record on a file opened as output; the file is left where that leaves it.
    /// \return what `Save` returns; false without a record.
    /// \throws CFileException* of a write that failed, or of a file that isn't open for writing.
    virtual bool SavePictureParams();

    /// Draws rows, the last one included, into a device context. Nothing here; a format that can
    /// draw overrides it and tells what fails.
    virtual void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc);

    /// Closes the file if it is open, and clears the record in any case.
    /// \throws CFileException* of an output file whose closing failed; it is closed then, too.
    virtual void ClosePictureFile();

    /// The last part of the open file's path; empty when none is open.
    CString PictureFileName() const;

    /// @{
    /// The code of the last failure, a number of docs/failure-codes.md; 0 until there is one.
    unsigned long TraceStatus() const { return failures_.Status(); }
    void TraceStatus(unsigned long status) { failures_.Status(status); }
    /// @}
    /// @{
    /// A second text of the last failure, which TIFF and TIFF/IT objects set; empty until then. The
    /// reference, here and of `ErrorMsg`, holds as long as the object.
    const CString& TraceStatusString() const { return traceStatusString_; }
    void TraceStatusString(const CString& text) { traceStatusString_ = text; }
    /// @}
    /// The text of the last failure that had one.
    const CString& ErrorMsg() const { return failures_.Text(); }
    /// False once an opening failed.
    bool ObjectStatus() const { return objectStatus_; }

    /// The object's own file, for as long as the object lives; a client that writes picture data
    /// itself does it here.
    CFile& FileHandle() { return file_; }

    /// @{
    /// The header record, which the object owns; null from an object that has none. It stays the
    /// same one from construction to destruction, unless a derived class replaces it.
    PictureParameters* PictureParams() { return record_.get(); }
    const PictureParameters* PictureParams() const { return record_.get(); }
    /// @}

    /// \name What the record has
    /// Each is told with its namesake of `PictureParameters`. Sizes in pixels come out cut to whole
    /// numbers and held to their type. References hold until the record changes or goes.
    /// @{

    /// The factor, cut to a whole number: 1 once a file is loaded.
    unsigned short FileSizeUnits() const;
    /// The factor from file units to inches.
    double FileSizeUnitsFactor() const;
    /// Sets the factor.
    void FileSizeUnitsFactor(double factor);
    /// In inches, once a file is loaded.
    const double& FileHeightInUnits() const;
    /// Sets the height in units, for a file that is written.
    void FileHeightInUnits(double height);
    /// In inches, once a file is loaded.
    const double& FileWidthInUnits() const;
    /// Sets the width in units, for a file that is written.
    void FileWidthInUnits(double width);
    /// The rows of the picture.
    unsigned long FileHeightInPixels() const;
    /// Sets the rows.
    void FileHeightInPixels(unsigned long height);
    /// The pixels of a row.
    unsigned long FileWidthInPixels() const;
    /// Sets the pixels of a row.
    void FileWidthInPixels(unsigned long width);
    /// -1.0 when the axes differ by more than 0.1, else the larger of the two.
    double FileResolution() const;
    /// Pixels per inch along the height.
    double ResolutionOnScanAxis() const;
    /// Pixels per inch along the width.
    double ResolutionOnXScanAxis() const;
    /// How many separations the picture has.
    unsigned int FileNumberOfSeparations() const;
    /// Sets how many; the count is taken without a sign.
    void FileNumberOfSeparations(int count);
    /// The separation in a slot, from 0; `NoSeparation` for a slot that isn't there.
    const ColorSeparationType& FileSeparation(unsigned int slot) const;
    /// False without a record.
    bool SeparationExists(const ColorSeparationType& separation) const;
    /// The two-letter type of the file, or an empty text.
    CString FileType() const;
    /// A flag of the file for the client.
    bool Nlw() const;
    /// @}

    /// The four real separations by number; `NoSeparation` for any other number.
    static const ColorSeparationType& AvailableSeps(unsigned int index);

  protected:
    /// Sets the text of the last failure.
    void ErrorMsg(const CString& text) { failures_.Text(text); }
    /// Sets what `ObjectStatus()` tells.
    void ObjectStatus(bool status) { objectStatus_ = status; }
    /// The object's own file.
    const CFile& FileHandle() const { return file_; }

    /// Takes over a record. The one before is not destroyed: who replaces it owns it.
    void PictureParams(PictureParameters* const record);

    /// Sets what `IsPictureInputFile()` tells.
    void PictureFileType(bool inputFile) { inputFile_ = inputFile; }
    /// True for a file opened as input; false before the first opening.
    bool IsPictureInputFile() const { return inputFile_; }
    /// Whether the object's own file is open.
    bool IsPictureFileOpen() const { return file_.m_hFile != CFile::hFileNull; }

    /// For the failure tables of the formats.
    tympan::FailureTrace& Failures() { return failures_; }

  private:
    static const ColorSeparationType m_AvailableSeps[PictureParameters::kSlots];

    const PictureParameters& Record() const;
    bool OpenAndLoad(const CString& fileName, CFileException* fileError);

    tympan::FailureTrace failures_;
    CString traceStatusString_;
    CFile file_;
    bool inputFile_ = false;
    std::unique_ptr<PictureParameters> record_;
    bool objectStatus_ = true;
};
