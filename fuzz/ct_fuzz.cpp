// Any bytes as a CT file: opened and asked everything.
#include "ct/ct_file.h"
#include "fuzz/any_file.h"
#include "support/ask_ct.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::WithFile(data, size, [] {
        CtFileInterface picture(tympan::fuzz::kPath, true);
        tympan::test::AskEverything(picture);
        picture.ClosePictureFile();
    });
    return 0;
}
