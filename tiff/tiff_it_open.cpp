// Opening a TIFF/IT file, and telling of which kind it is.
#include "core/failure_codes.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_parser.h"

#include <algorithm>

std::uint16_t TiffItP1Interface::m_ByteOrder = 0;
std::uint32_t TiffItP1Interface::m_FirstIfdOffset = 0;
std::uint32_t TiffItP1Interface::m_ImageWidth = 0;
std::uint32_t TiffItP1Interface::m_ImageLength = 0;
std::uint32_t TiffItP1Interface::m_StripCount = 0;
std::optional<std::vector<StripInfo>> TiffItP1Interface::m_Strips;
std::vector<IfdEntries> TiffItP1Interface::m_Ifds;
std::uint32_t TiffItP1Interface::m_PreviousIfdCount = 0;

TiffItP1Interface::TiffItP1Interface()
{
    PictureParams(new PictureParameters);
    ForgetSizes();
}

TiffItP1Interface::~TiffItP1Interface()
{
    m_Strips.reset();
}

void TiffItP1Interface::ForgetSizes()
{
    m_ImageWidth = 0;
    m_ImageLength = 0;
    m_StripCount = 0;
    m_Strips.reset();
}

bool TiffItP1Interface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                        CFileException* fileError)
{
    ForgetSizes();
    if (!reopen && PictureFileName() == fileName)
        return true;
    if (IsPictureFileOpen())
        ClosePictureFile();
    PictureFileType(inputFile);
    CFile& file = FileHandle();
    const bool isOpen =
        file.Open(fileName, CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary,
                  fileError) != FALSE;
    if (isOpen) {
        if (!ReadHeader(file) || !ReadIfds(file))
            return false;
        file.SeekToBegin();
    }
    PictureParams()->WidthInPixels(m_ImageWidth);
    PictureParams()->HeightInPixels(m_ImageLength);
    if (isOpen)
        return true;
    ObjectStatus(false);
    if (fileError != nullptr)
        throw fileError;
    return false;
}

unsigned long TiffItP1Interface::DetectTiffItType(CFile& file)
{
    constexpr unsigned long kCt = 0;
    constexpr unsigned long kLw = 1;
    constexpr unsigned long kNeither = 2;
    ReadHeader(file);
    if (TraceStatus() != 0)
        return kNeither;
    ReadIfds(file);
    if (TraceStatus() != 0 || m_Ifds.empty())
        return kNeither;
    unsigned long type = kNeither;
    for (const IfdEntry& entry : m_Ifds.front().Entries()) {
        if (entry.Tag != tympan::tag::kBitsPerSample)
            continue;
        if (entry.Count != 1 && entry.Count != 4) {
            Fail(tympan::code::kTiffItNeitherKind);
            break;
        }
        type = entry.Count == 1 ? kLw : kCt;
    }
    return type;
}

std::span<const StripInfo> TiffItP1Interface::Strips()
{
    if (!m_Strips)
        return {};
    return std::span(*m_Strips).first(std::min<std::size_t>(m_StripCount, m_Strips->size()));
}
