// Any bytes as an LW file: opened and asked everything.
#include "fuzz/any_file.h"
#include "lw/lw_file.h"
#include "support/ask_lw.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::WithFile(data, size, [] {
        const std::unique_ptr<LWFileInterface> picture(
            create_lw_file_object(tympan::fuzz::kPath, true));
        tympan::test::AskEverything(*picture, "cropped");
        picture->ClosePictureFile();
    });
    return 0;
}
