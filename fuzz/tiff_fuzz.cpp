// Any bytes as a TIFF: opened and asked everything.
#include "fuzz/any_file.h"
#include "support/ask_tiff.h"
#include "tiff/tiff_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::WithFile(data, size, [] {
        TiffFileInterface picture;
        picture.OpenPictureFile(tympan::fuzz::kPath, true, false, nullptr);
        tympan::test::AskEverything(picture);
        picture.ClosePictureFile();
        tympan::test::AskEverything(picture);
    });
    return 0;
}
