// The two kinds of TIFF/IT pictures: making, opening and telling them, and the rows that they don't
// have.
#include "core/create_opened.h"
#include "tiff/tiff_it_access.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_failures.h"
#include "tiff/tiff_it_lw.h"

namespace {

constexpr tympan::FailureRow kNothingMade[] = { { tympan::Caught::Anything, 0, nullptr } };

} // namespace

unsigned long tympan::TiffItWithoutRows::RowPosition(unsigned int, ColorSeparationType)
{
    return 0;
}

PictureRowsData* tympan::TiffItWithoutRows::GetPictureRow(const ColorSeparationType&, unsigned int,
                                                          double, double)
{
    return nullptr;
}

unsigned long tympan::TiffItWithoutRows::GetPictureRow(unsigned char*, unsigned int,
                                                       ColorSeparationType, double, double,
                                                       unsigned long)
{
    return 0;
}

PictureRowsData* tympan::TiffItWithoutRows::GetPictureRows(const ColorSeparationType&, unsigned int,
                                                           unsigned int, bool)
{
    return nullptr;
}

unsigned long tympan::TiffItWithoutRows::GetPictureRows(unsigned char*, unsigned int, unsigned int,
                                                        unsigned int&, unsigned long*,
                                                        ColorSeparationType, unsigned long, bool)
{
    return 0;
}

TiffItCtP1Interface::TiffItCtP1Interface() = default;

TiffItCtP1Interface::TiffItCtP1Interface(const CString& fileName, bool inputFile)
{
    TiffItP1Interface::OpenPictureFile(fileName, inputFile, false, nullptr);
}

TiffItCtP1Interface::~TiffItCtP1Interface() = default;

TiffItCtP1Interface* TiffItCtP1Interface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateOpened(
        [] { return std::unique_ptr<TiffItCtP1Interface>(new TiffItCtP1Interface); }, fileName,
        inputFile, kNothingMade);
}

bool TiffItCtP1Interface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                          CFileException* fileError)
{
    return TiffItP1Interface::OpenPictureFile(fileName, inputFile, reopen, fileError);
}

bool TiffItCtP1Interface::isTypeOf(CFile& file)
{
    const bool isCt = DetectTiffItType(file) == 0;
    file.SeekToBegin();
    return isCt;
}

TiffItLwP1Interface::TiffItLwP1Interface()
{
    m_ColorTable.clear();
}

TiffItLwP1Interface::TiffItLwP1Interface(const CString& fileName, bool inputFile)
{
    if (TiffItP1Interface::OpenPictureFile(fileName, inputFile, false, nullptr))
        BuildColorTable();
}

TiffItLwP1Interface::~TiffItLwP1Interface()
{
    m_ColorTable.clear();
}

TiffItLwP1Interface* TiffItLwP1Interface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateOpened(
        [] { return std::unique_ptr<TiffItLwP1Interface>(new TiffItLwP1Interface); }, fileName,
        inputFile, kNothingMade);
}

bool TiffItLwP1Interface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                          CFileException* fileError)
{
    if (!TiffItP1Interface::OpenPictureFile(fileName, inputFile, reopen, fileError))
        return false;
    BuildColorTable();
    return true;
}

bool TiffItLwP1Interface::isTypeOf(CFile& file)
{
    const bool isLw = DetectTiffItType(file) == 1;
    file.SeekToBegin();
    return isLw;
}

std::unique_ptr<TiffItP1Interface> tympan::TiffItAccess::Make(TiffItKind kind)
{
    if (kind == TiffItKind::ContinuousTone)
        return std::unique_ptr<TiffItP1Interface>(new TiffItCtP1Interface);
    return std::unique_ptr<TiffItP1Interface>(new TiffItLwP1Interface);
}

std::optional<tympan::TiffItKind> tympan::TiffItAccess::KindOf(TiffItP1Interface& picture,
                                                               CFile& file)
{
    TiffItP1Interface::ForgetSizes();
    file.SeekToBegin();
    const unsigned long type = picture.DetectTiffItType(file);
    if (type == 2)
        return std::nullopt;
    return type == 0 ? TiffItKind::ContinuousTone : TiffItKind::LineWork;
}

tympan::TiffItFacts tympan::TiffItAccess::Facts()
{
    using P = TiffItP1Interface;
    return { P::m_ImageWidth, P::m_ImageLength, P::Strips(), P::m_Ifds };
}
