// Recognising, opening and closing a CT file.
#include "core/create_opened.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/format.h"
#include "ct/ct_check.h"
#include "ct/ct_file.h"
#include "ct/ct_layout.h"

#include <bit>

namespace {

constexpr LONGLONG kSeparationCount = 1025; // one byte, then the two of the mask

constexpr tympan::FailureRow kOpeningFailures[] = {
    { tympan::Caught::File, tympan::code::kFileFailed, nullptr },
    { tympan::Caught::Memory, tympan::code::kFileFailed, nullptr },
};

constexpr tympan::FailureRow kNotOpened{ tympan::Caught::Anything, tympan::code::kFileFailed,
                                         "CT File Interface:\n:Error Opening file, aborting!" };

} // namespace

CtFileInterface::CtFileInterface()
{
    InitMembers();
}

CtFileInterface::CtFileInterface(CString fileName, bool inputFile)
{
    InitMembers();
    CtFileInterface::OpenPictureFile(fileName, inputFile, false, nullptr);
}

CtFileInterface::~CtFileInterface() = default;

void CtFileInterface::InitMembers()
{
    PictureParams(new PictureParameters);
}

CtFileInterface* CtFileInterface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateOpened(
        [] { return std::unique_ptr<CtFileInterface>(new CtFileInterface); }, fileName, inputFile);
}

CtFileInterface* create_ct_file_object(const CString& fileName, bool inputFile)
{
    return CtFileInterface::Create(fileName, inputFile);
}

// The count of separations equals the set bits of the two bytes behind it. That is all that old
// files can be held to, and little: the line work and page tests come first. Bytes that a short
// file doesn't hold count as 0, so that it passes here and its opening fails.
bool CtFileInterface::isTypeOf(CFile& file)
{
    unsigned char bytes[3] = {};
    file.Seek(kSeparationCount, CFile::begin);
    file.Read(bytes, sizeof bytes);
    return std::popcount(bytes[1]) + std::popcount(bytes[2]) == bytes[0];
}

tympan::Format tympan::CtFormat()
{
    return {
        .name = "CT",
        .recognises = [](CFile& file, const CString&) { return CtFileInterface::isTypeOf(file); },
        .make = [] { return std::unique_ptr<BasePictureIF>(new CtFileInterface); },
        .check = CtFileCheck(),
        .recognisesMuch = true,
    };
}

bool CtFileInterface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                      CFileException* fileError)
{
    bool opened = false;
    heldAtOpening_ = 0;
    const bool cameBack = tympan::Guarded(Failures(), kOpeningFailures, [&] {
        opened = BasePictureIF::OpenPictureFile(fileName, inputFile, reopen, fileError);
        if (!opened)
            return;
        if (inputFile)
            heldAtOpening_ = FileHandle().GetLength();
        FileHandle().Seek(tympan::kCtFirstRow, CFile::begin);
    });
    if (cameBack && !opened) {
        if (TraceStatus() != 0)
            Failures().Leave(kNotOpened);
        ClosePictureFile();
        return false;
    }
    if (!cameBack) {
        PictureParams()->Clear();
        ObjectStatus(false);
    }

    const tympan::CtLayout layout = Layout();
    const bool result = AllocateRowBuffer(layout.width) && cameBack;
    PictureParams()->RowSize(layout.width);
    PictureParams()->BitsPerSample(layout.separations * 8);
    if (!result)
        ObjectStatus(false);
    return result;
}

tympan::CtLayout CtFileInterface::Layout() const
{
    return tympan::CtLayout(*PictureParams());
}

unsigned long CtFileInterface::WidthInPixels() const
{
    return FileWidthInPixels();
}

unsigned long CtFileInterface::HeightInPixels() const
{
    return FileHeightInPixels();
}
