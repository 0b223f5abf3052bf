// TIFF/IT P1 line work: runs of colour numbers that are only drawn, and the table of the colours.
#pragma once

#include "platform/export.h"
#include "tiff/tiff_it_parser.h"

/// A colour of a TIFF/IT LW file.
struct ColorTable {
    unsigned char Id;        ///< not used: a run's number is the place in the table
    unsigned char Values[4]; ///< C, M, Y, K as ink
    unsigned char Flags[4];  ///< each 0 or 1
};

/// A TIFF/IT P1 LW file. It gives no rows; `Display` draws it. The colour tables are kept once for all
/// objects, as the file's structure is.
class TYMPAN_API TiffItLwP1Interface : public tympan::TiffItWithoutRows {
  public:
    /// Opens the file; look at `TraceStatus()` and `ObjectStatus()`.
    /// \throws what `OpenPictureFile` throws.
    TiffItLwP1Interface(const CString& fileName, bool inputFile);
    /// Forgets the colour tables.
    ~TiffItLwP1Interface() override;

    /// As the base, and then builds the colour tables.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// Draws the runs of each strip that says that it holds the whole picture, all rows of it: the two
    /// numbers have no effect. A colour that isn't in the table of the directory of the strip's number is
    /// drawn as no ink. The end of the file ends a strip without a failure.
    ///
    /// Nothing is thrown: a failure leaves 90050 and "TiffInterface: Error Extracting Tiff"; strips that
    /// have more than 64 bytes of runs for each byte of the file leave 90051. What was drawn stays.
    void Display(unsigned long firstRow, unsigned long lastRow, CDC& dc) override;
    using BasePictureIF::Display;

  protected:
    /// Replaces the colour tables by those of the directories: one for each, that of the last field
    /// ColorTable up to its end. \throws std::bad_alloc.
    static void BuildColorTable();
    /// Copies the four inks of a colour to `values`: no ink when there is no such table or colour.
    /// \return `values`.
    unsigned char* GetColor(unsigned char table, unsigned char color, unsigned char* values);

  private:
    friend struct tympan::TiffItAccess;

    using Colours = std::vector<ColorTable>;

    TiffItLwP1Interface();

    /// Made and opened; kept also when the opening failed. Null for anything thrown.
    static TiffItLwP1Interface* Create(const CString& fileName, bool inputFile);
    /// Whether a file is a TIFF/IT P1 LW; it is left at position 0.
    bool isTypeOf(CFile& file);

    /// A pointer for each directory, null for one without colours.
    static std::vector<std::shared_ptr<const Colours>> m_ColorTable;
};
