// Any bytes as an LW file that is opened as a whole, and as the side file beside it: asked
// everything, and held to the answers of the object that reads rows.
#include "fuzz/any_file.h"
#include "fuzz/headed_file.h"
#include "lw_variant/velmar_lw_file.h"
#include "support/ask_lw.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

using tympan::test::Require;
using Pixels = std::vector<unsigned char>;

constexpr std::uint64_t kMostRoom = 64U << 20U;
constexpr char kCalled[] = "picture.lw"; // what the side file's name is made of
constexpr char kSide[] = "picture.bin";

struct Stream {
    std::unique_ptr<unsigned char[]> room;
    std::uint64_t bytes = 0;            // that came
    std::vector<unsigned long> offsets; // of all rows, or empty
};

struct Layout {
    unsigned int height, copies;
    unsigned long gap;
    bool colorFirst;
};

/// The stream in room of the very size that it is told to have; `most` where no size is told.
Stream StreamOf(LWFileInterface& picture, const Layout& layout, ColorSeparationType separation,
                unsigned char white, std::uint64_t most)
{
    const unsigned long told =
        picture.GetLWBufferSize(0, layout.height - 1, layout.copies, layout.gap, true);
    const std::uint64_t size = told != 0 ? told : most;
    Stream stream;
    if (size > kMostRoom)
        return stream;
    stream.room.reset(new unsigned char[size]); // known to the sanitizer to the byte, not set
    std::vector<unsigned long> offsets(std::min<std::uint64_t>(layout.height, size));
    unsigned char* end = stream.room.get();
    unsigned long* offsetsEnd = offsets.data();
    picture.TraceStatus(0);
    picture.GetLWPictureRows(end, 0, layout.height - 1, offsetsEnd, 0, separation, layout.gap,
                             layout.copies, white, 0, layout.colorFirst);
    stream.bytes = static_cast<std::uint64_t>(end - stream.room.get());
    if (picture.TraceStatus() == 0)
        stream.offsets = std::move(offsets);
    return stream;
}

/// The pixels of a row, with `inkOf(colour)` of its runs.
template <typename InkOf>
Pixels RowOf(const Stream& stream, std::size_t row, const Layout& layout, InkOf inkOf)
{
    const std::uint64_t end =
        row + 1 < stream.offsets.size() ? stream.offsets[row + 1] : stream.bytes;
    Pixels pixels;
    for (std::uint64_t at = stream.offsets[row] + 2; at < end - 2; at += 2) {
        const unsigned char length = stream.room[at + (layout.colorFirst ? 1 : 0)];
        if (length != 0)
            pixels.insert(pixels.end(), length,
                          inkOf(stream.room[at + (layout.colorFirst ? 0 : 1)]));
    }
    return pixels;
}

/// Rows that the object of rows streams are streamed here with the same pixels.
void CompareStreams(VelmarLWFileInterface& whole, LWFileInterface& byRows, const Layout& layout,
                    std::uint64_t most)
{
    const std::uint8_t white = 1;
    const Stream ours = StreamOf(whole, layout, Black, white, most);
    if (!byRows.ObjectStatus() || whole.GetLwPictureParams()->FileColorsNumber() == 0)
        return;
    const std::unique_ptr<unsigned char[]> inks(whole.GetSeparationLut(Black, false, nullptr));
    const Stream base = StreamOf(byRows, layout, Black, inks[0], most);
    if (base.offsets.empty())
        return;
    Require(!ours.offsets.empty(), "what one object streams the other does");
    for (unsigned int row = 0; row < layout.height; ++row)
        Require(RowOf(ours, row, layout, [&](unsigned char index) { return inks[index - 1]; }) ==
                    RowOf(base, row, layout, [](unsigned char ink) { return ink; }),
                "the streams have the same pixels");
}

void AskColours(VelmarLWFileInterface& whole)
{
    const unsigned char count = whole.GetLwPictureParams()->FileColorsNumber();
    unsigned char map[256] = {};
    for (const int number : { 0, 1, 2, 3, 4, -1 }) {
        auto separation = static_cast<ColorSeparationType>(number);
        const std::unique_ptr<unsigned char[]> inks(
            whole.GetSeparationLut(separation, false, nullptr));
        const std::unique_ptr<unsigned char[]> mapped(
            whole.GetSeparationLut(separation, true, map));
        for (unsigned char row = 0; row < count; ++row) {
            Require(whole.GetColorIndex(inks[row], separation) <= row, "a colour's ink is found");
            Require(mapped[row] == 0 || mapped[row] == 255, "inks are mapped or white");
        }
        Require((whole.IsColorExist(9, separation) != 0) ==
                    (whole.GetColorIndex(9, separation) != count),
                "an ink that exists is found");
        Require(whole.GetTransparentColor(separation) <= 65535, "a transparent ink is an ink");
        whole.SeperationBit(separation);
        Require(separation <= NoSeparation, "a separation is one or none");
    }
}

void AskSideFile(VelmarLWFileInterface& whole, bool isSound)
{
    CString name = kCalled;
    bool isValid = false;
    whole.CreateLwBinFile(name, true, isValid); // what the fuzzer has put there
    Require(!isValid, "reading tells nothing of the picture");
    whole.CreateLwBinFile(name, false, isValid);
    Require(isValid == isSound, "a side file is made of what is sound");
    const std::uint64_t size = whole.GetLwPictureParams()->LwFileSize();
    Require(CFile(kSide, CFile::modeRead).GetLength() == (isValid ? 100U : 0U),
            "a side file is whole or empty");
    Require(whole.CreateLwBinFile(name, true, isValid) == size, "a side file tells the size");
}

void AskWhole(std::uint64_t fileLength)
{
    const std::unique_ptr<VelmarLWFileInterface> whole(
        create_velmar_lw_file_object(tympan::fuzz::kPath, true));
    if (whole == nullptr)
        return;
    const std::unique_ptr<LWFileInterface> byRows(create_lw_file_object(tympan::fuzz::kPath, true));
    AskColours(*whole);
    const unsigned long height = whole->FileHeightInPixels();
    whole->GetLWBufferSize();
    for (const Layout& layout : { Layout{ static_cast<unsigned int>(height), 1, 0, true },
                                  { static_cast<unsigned int>(height), 3, 300, false } }) {
        // No more rows come than the file can hold, each with white for its completion and gaps.
        const std::uint64_t most = layout.copies * fileLength + (fileLength / 4 + 1) * 60;
        if (height != 0 && height * whole->FileWidthInPixels() <= kMostRoom)
            CompareStreams(*whole, *byRows, layout, most);
    }
    whole->BuildLwOffsetBuffer();
    unsigned char* const none = nullptr;
    Require(whole->GetOriginalPictureRow(none, 4294967295U, false) == 0, "there is no such row");
    AskSideFile(*whole, byRows->ObjectStatus());
}

} // namespace

// The first byte tells how many bytes behind it are the side file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::Drawn drawn(data, size);
    const tympan::fuzz::Input side = drawn.Bytes(drawn.Byte());
    const auto file = tympan::fuzz::HeadedFile(drawn.Rest());
    tympan::fuzz::WithFile(file, [&](auto& files) {
        tympan::fuzz::Put(files, kSide, side);
        AskWhole(file.size());
    });
    return 0;
}
