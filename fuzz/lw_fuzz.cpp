// Any bytes as an LW file, in an exact block of memory: recognised, opened and asked everything.
#include "core/factory.h"
#include "lw/lw_file.h"
#include "platform/memory_files.h"
#include "support/ask_lw.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto bytes = std::as_bytes(std::span(data, size));
    tympan::test::MemoryFileSystem files;
    files.Put("picture", tympan::test::Bytes(bytes.begin(), bytes.end()));
    const tympan::ScopedFileSystem scoped(files);
    const std::unique_ptr<BasePictureIF> recognised(create_picture_object("picture"));
    const std::unique_ptr<LWFileInterface> picture(create_lw_file_object("picture", true));
    tympan::test::AskEverything(*picture, "cropped");
    picture->ClosePictureFile();
    return 0;
}
