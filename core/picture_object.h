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
/// leaves a code in `TraceStatus`, often with a text in `ErrorMsg`; nothing sets either back.
///
/// A format's constructor makes its record and hands it over with `PictureParams(record)`. Without
/// a record the accessors that forward to it answer as an empty record does, and setters do
/// nothing.
class TYMPAN_API BasePictureIF {
  public:
    BasePictureIF();
    BasePictureIF(const BasePictureIF&) = delete;
    BasePictureIF& operator=(const BasePictureIF&) = delete;
    /// Destroys the record and closes the file, without a call of `ClosePictureFile`.
    virtual ~BasePictureIF();

    /// Opens an existing file and loads its header record, or creates (and empties) one for writing
    /// and loads nothing. With `reopen` false, the bare name of the file that is open is answered
    /// with true at once. A path with directories never is such a name, but an empty name is that of
    /// an object without a file, which stays closed.
    /// \param fileError may be null; when given, a failed opening throws it: filled by `CFile::Open`
    ///   when the file can't be opened, as it was when the record refuses it. Nothing is thrown for
    ///   an opening that succeeds.
    /// \return false, and `ObjectStatus` false, when the file can't be opened or its record refuses
    ///   it; in the second case the file stays open. Neither `TraceStatus` nor `ErrorMsg` is
    ///   written.
    /// \throws CFileException* that loading or seeking throws; `ObjectStatus` is then as it was.
    virtual bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                 CFileException* fileError);

    /// `Save` of the record on a file opened as output; the file is left where that leaves it.
    virtual bool SavePictureParams();

    /// Draws nothing here; a format that can draw overrides it.
    virtual void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc);

    /// Closes the file if it is open, and clears the record in any case.
    /// \throws CFileException* of an output file whose closing failed; it is closed then, too.
    virtual void ClosePictureFile();

    /// The last part of the open file's path; empty when none is open.
    CString PictureFileName() const;

    unsigned long TraceStatus() const { return failures_.Status(); }
    void TraceStatus(unsigned long status) { failures_.Status(status); }
    const CString& TraceStatusString() const { return traceStatusString_; }
    void TraceStatusString(const CString& text) { traceStatusString_ = text; }
    const CString& ErrorMsg() const { return failures_.Text(); }
    /// False once an opening failed.
    bool ObjectStatus() const { return objectStatus_; }

    /// The object's own file; a client that writes picture data itself does it here.
    CFile& FileHandle() { return file_; }

    /// The header record, which the object owns.
    PictureParameters* PictureParams() { return record_.get(); }
    const PictureParameters* PictureParams() const { return record_.get(); }

    // The geometry of the file, as the record has it: sizes in pixels, sizes in inches, pixels per
    // inch. Sizes in pixels come out cut to whole numbers and held to their type.
    unsigned short FileSizeUnits() const;
    double FileSizeUnitsFactor() const;
    void FileSizeUnitsFactor(double factor);
    const double& FileHeightInUnits() const;
    void FileHeightInUnits(double height);
    const double& FileWidthInUnits() const;
    void FileWidthInUnits(double width);
    unsigned long FileHeightInPixels() const;
    void FileHeightInPixels(unsigned long height);
    unsigned long FileWidthInPixels() const;
    void FileWidthInPixels(unsigned long width);
    /// -1.0 when the axes differ by more than 0.1, else the larger of the two.
    double FileResolution() const;
    double ResolutionOnScanAxis() const;
    double ResolutionOnXScanAxis() const;
    unsigned int FileNumberOfSeparations() const;
    void FileNumberOfSeparations(int count);
    const ColorSeparationType& FileSeparation(unsigned int slot) const;
    /// False without a record.
    bool SeparationExists(const ColorSeparationType& separation) const;
    CString FileType() const;
    bool Nlw() const;

    /// The four real separations by number; `NoSeparation` for any other number.
    static const ColorSeparationType& AvailableSeps(unsigned int index);

  protected:
    void ErrorMsg(const CString& text) { failures_.Text(text); }
    void ObjectStatus(bool status) { objectStatus_ = status; }
    const CFile& FileHandle() const { return file_; }

    /// Takes over a record. The one before is not destroyed: who replaces it owns it.
    void PictureParams(PictureParameters* const record);

    void PictureFileType(bool inputFile) { inputFile_ = inputFile; }
    /// True for a file opened as input; false before the first opening.
    bool IsPictureInputFile() const { return inputFile_; }
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
