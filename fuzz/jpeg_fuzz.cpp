// Any bytes as a JPEG and its side file: the first byte tells how many of the others, by the four,
// are the side file's.
#include "fuzz/any_file.h"
#include "jpeg/jpeg_file.h"
#include "support/ask_jpeg.h"

#include <algorithm>

namespace {

void PutSideFile(std::span<const std::uint8_t> bytes)
{
    CFile file("picture.bin", CFile::modeCreate | CFile::modeWrite);
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t sideBytes = std::min<std::size_t>(data[0] * std::size_t{ 4 }, size - 1);
    const auto bytes = std::span(data, size).subspan(1);
    const auto stream = bytes.subspan(sideBytes);
    tympan::fuzz::WithFile(stream.data(), stream.size(), [&] {
        PutSideFile(bytes.first(sideBytes));
        tympan::CheckFile(tympan::fuzz::kPath, {});
        const std::unique_ptr<JpegFileInterface> picture(
            create_jpeg_file_object(tympan::fuzz::kPath, true));
        tympan::test::AskEverything(*picture);
        picture->ClosePictureFile();
        unsigned char band[8];
        picture->GetPictureRow(band, 0, Cyan, 1.0, 1.0, sizeof band);
    });
    return 0;
}
