// The TIFF library of a build without libtiff: no file opens.
#include "platform/tiff_library.h"
#include "platform/tiff_messages.h"

#include <string>

namespace {

tiff* Refuse(const char* name)
{
    tympan::KeepTiffMessage([&] {
        return std::string(name ? name : "") +
               ": TIFF files can't be read: the library was built without libtiff";
    });
    return nullptr;
}

} // namespace

tiff* TiffOpen(const char* name, const char*)
{
    return Refuse(name);
}

tiff* TifffdOpen(int, const char* name, const char*)
{
    return Refuse(name);
}

void TiffClose(tiff*) {}

int TiffReadScanline(tiff*, void*, unsigned int, unsigned short)
{
    return -1;
}

std::int64_t TiffScanlineSize(tiff*)
{
    return 0;
}

bool TiffGivesRows(tiff*)
{
    return false;
}

TiffInfo TiffInfoOf(tiff*)
{
    return {};
}
