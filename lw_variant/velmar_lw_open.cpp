// Opening line work by its header alone, and the walk that a client asks for.
#include "core/create_opened.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "lw/lw_failures.h"
#include "lw/lw_layout.h"
#include "lw_variant/velmar_lw_file.h"

#include <memory>

namespace {

using tympan::Caught;
using tympan::FailureRow;

constexpr FailureRow kOpeningFailures[] = {
    { Caught::FileCorrupted, tympan::code::kLwCorrupted, nullptr },
    { Caught::Anything, tympan::code::kFileFailed, tympan::kLwNotOpened },
};

constexpr FailureRow kStrictFailures[] = {
    { Caught::FileCorrupted, tympan::code::kLwCorrupted, nullptr },
    { Caught::ReadFile, tympan::code::kLwValidityRead, nullptr },
    { Caught::Anything, tympan::code::kFileFailed, tympan::kLwNotOpened },
};

constexpr FailureRow kUntoldFailures[] = { { Caught::Anything, 0, nullptr } };

} // namespace

VelmarLWFileInterface::VelmarLWFileInterface() = default;

VelmarLWFileInterface::~VelmarLWFileInterface()
{
    DeallocateAll();
}

VelmarLWFileInterface* VelmarLWFileInterface::Create(const CString& fileName, bool inputFile)
{
    return tympan::CreateIfKept(
        [] { return std::unique_ptr<VelmarLWFileInterface>(new VelmarLWFileInterface); },
        [&](VelmarLWFileInterface& picture) {
            return picture.VelmarOpenPictureFile(fileName, inputFile, false, nullptr);
        });
}

VelmarLWFileInterface* create_velmar_lw_file_object(const CString& fileName, bool inputFile)
{
    return VelmarLWFileInterface::Create(fileName, inputFile);
}

bool VelmarLWFileInterface::VelmarOpenPictureFile(const CString& fileName, bool inputFile,
                                                  bool reopen, CFileException* fileError)
{
    bool taken = false;
    const bool cameBack = tympan::Guarded(Failures(), kOpeningFailures, [&] {
        // Not the base class's, which walks the rows. NOLINTNEXTLINE(bugprone-parent-virtual-call)
        taken = BasePictureIF::OpenPictureFile(fileName, inputFile, reopen, fileError);
    });
    if (taken)
        return true;
    if (cameBack)
        Failures().Leave(tympan::kLwFileRefused);
    ClosePictureFile();
    if (!cameBack)
        ObjectStatus(false);
    return false;
}

unsigned long VelmarLWFileInterface::LwFirstRowPosition()
{
    return static_cast<unsigned long>(tympan::LwFirstRow(ColorsNumber()));
}

LwPictureParameters* VelmarLWFileInterface::GetLwPictureParams()
{
    return dynamic_cast<LwPictureParameters*>(PictureParams());
}

bool VelmarLWFileInterface::FileValidityCheck()
{
    return ProveRowsOrClose(kStrictFailures);
}

unsigned long VelmarLWFileInterface::BuildLwOffsetBuffer()
{
    return tympan::Guarded(tympan::NoTrace(), kUntoldFailures, [&] { ProveRows(); }) ? 1 : 0;
}
