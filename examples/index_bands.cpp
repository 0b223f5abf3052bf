// Copies a JPEG that has a restart marker behind each 8 rows, and writes the side file that tells where
// these bands stand, by which `serve_bands` and the command take rows out of it.
#include "example.h"
#include "jpeg_frame.h"

#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

example::Bytes ReadAll(const std::string& path)
{
    CFile file(path.c_str(), CFile::modeRead);
    if (file.GetLength() > std::numeric_limits<std::uint32_t>::max())
        throw example::Failure(path, "is larger than what an index has places for");
    example::Bytes bytes(static_cast<std::size_t>(file.GetLength()));
    bytes.resize(file.Read(bytes.data(), static_cast<UINT>(bytes.size())));
    return bytes;
}

// In the scan a 0xFF that stands for itself has a 0 behind it; any other one makes a marker.
std::vector<CompressedLine> BandsOf(const example::Bytes& bytes, std::size_t scanAt)
{
    std::vector<CompressedLine> bands;
    std::size_t first = scanAt;
    for (std::size_t at = scanAt; at + 1 < bytes.size(); ++at) {
        const std::uint8_t next = bytes[at + 1];
        const bool isRestart = next >= example::kFirstRestart && next <= example::kLastRestart;
        if (bytes[at] != example::kMarker || (!isRestart && next != example::kEndOfImage))
            continue;
        bands.push_back({ static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(at - 1) });
        first = at + 2;
        if (!isRestart)
            break;
    }
    return bands;
}

void Write(const std::string& path, const example::Bytes& bytes, const example::JpegFrame& frame,
           const std::vector<CompressedLine>& bands, double resolution)
{
    const std::unique_ptr<JpegFileInterface> picture(create_jpeg_file_object(path.c_str(), false));
    if (picture == nullptr)
        throw example::Failure(path, "there is no memory for a picture object");
    if (!picture->ObjectStatus())
        throw example::FailureOf(*picture, path, "can't be created");
    picture->JpegFileHandle()->Write(bytes.data(), static_cast<UINT>(bytes.size()));
    for (const CompressedLine& band : bands)
        picture->StoreCompressedLinesBlock(band);
    picture->StorePictureParams(resolution, resolution, 1.0, frame.height / resolution,
                                frame.width / resolution, frame.height, frame.width);
    picture->ClosePictureFile();
} // the object writes the side file as it goes

// The side file is written without a word of failure, so that it has to be read to be sure of it.
void RequireIndex(const std::string& path)
{
    const auto picture = example::Open<JpegFileInterface>(path);
    const auto index = tympan::IndexOf(*picture);
    if (!index || !index->fitsFile)
        throw example::Failure(path, "its side file isn't whole");
}

void IndexBands(const example::Arguments& arguments)
{
    const unsigned int resolution = example::NumberIn(arguments[2]);
    if (resolution == 0)
        throw std::runtime_error("a resolution of 0 gives no size");
    const example::Bytes bytes = ReadAll(arguments[0]);
    const auto frame = example::FrameOf(bytes);
    if (!frame)
        throw example::Failure(arguments[0], "has no whole head of a baseline JPEG");
    const std::vector<CompressedLine> bands = BandsOf(bytes, frame->scanAt);
    if (bands.size() != (frame->height + example::kBandRows - 1) / example::kBandRows)
        throw example::Failure(arguments[0], "has no restart marker behind each 8 rows");
    Write(arguments[1], bytes, *frame, bands, resolution);
    RequireIndex(arguments[1]);
    std::cout << arguments[1] << ": " << bands.size() << " bands of " << frame->height << " rows\n";
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "FILE.jpg", "NEW.jpg", "PIXELS-PER-INCH" }, IndexBands);
}
