// TIFF/IT P1 continuous tone: a picture of C, M, Y, K bytes side by side that is only drawn.
#pragma once

#include "platform/export.h"
#include "tiff/tiff_it_parser.h"

/// A TIFF/IT P1 CT file. It gives no rows; `Display` draws it. Compression, photometric and the bits of
/// a sample are not looked at: the strip's bytes are drawn as they stand.
class TYMPAN_API TiffItCtP1Interface : public tympan::TiffItWithoutRows {
  public:
    /// Opens the file; look at `TraceStatus()` and `ObjectStatus()`.
    /// \throws what `OpenPictureFile` throws.
    TiffItCtP1Interface(const CString& fileName, bool inputFile);
    ~TiffItCtP1Interface() override;

    /// As the base.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// Draws the first pixels of each strip that says that it holds the whole picture, at the rows from
    /// `firstRow` to `lastRow`, both included: the strip's first row is drawn at `firstRow`. The picture's
    /// height doesn't limit `lastRow`. A pixel that the file doesn't hold is drawn as the one above it,
    /// in the first row as no ink. Strips that a later one hides are left out, and of those none of
    /// whose rows is whole all but the last 16.
    ///
    /// Nothing is thrown. A platform failure leaves 90001 and its message in `TraceStatusString`,
    /// anything else 90050; what was drawn stays.
    void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc) override;
    using BasePictureIF::Display;

  private:
    friend struct tympan::TiffItAccess;

    TiffItCtP1Interface();

    /// Made and opened; kept also when the opening failed. Null for anything thrown.
    static TiffItCtP1Interface* Create(const CString& fileName, bool inputFile);
    /// Whether a file is a TIFF/IT P1 CT; it is left at position 0.
    bool isTypeOf(CFile& file);
};
