// Holds what the library allocates for a file against the bound that it promises. The files claim much, or are made of as many pieces as their bytes can hold.
#include "core/failures.h"
#include "core/row_access.h"
#include "faults/allocations.h"
#include "faults/held_memory.h"
#include "platform/memory_files.h"
#include "support/many_pieces.h"
#include "tympan/check.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::test {

namespace {

using Content = std::vector<unsigned char>;

Content WithoutRows(Content bytes)
{
    bytes.resize(2048 + 64);
    return bytes;
}

// What a header may claim whatever the file holds, and what it may not.
constexpr std::uint32_t kGranted = 16U << 20U, kRefused = 0x7FFFFFFF;

Content WideTone(std::uint32_t width)
{
    return WithoutRows(CtSample{ .width = width, .height = kRefused }.Header());
}

Content WideLineWork(std::uint32_t width)
{
    Content bytes = LwPicture{ .width = width, .height = kRefused }.Header();
    bytes.resize(bytes.size() + 64);
    return bytes;
}

Content ManyBlocks()
{
    return JpegSample{}.SideFile(JpegSample::Blocks(1U << 20U, { 700, 710 }));
}

// A strip that claims more than the file holds.
Content WideStrip(std::uint32_t width)
{
    Content bytes{ 'I', 'I', 42, 0, 8, 0, 0, 0 };
    PutDirectory(bytes,
                 { { 256, 1, width },
                   { 257, 1, kRefused },
                   { 258, 1, 8 },
                   { 259, 1, 8 },
                   { 262, 1, 1 },
                   { 273, 1, 8 },
                   { 278, 1, kRefused },
                   { 279, 1, kRefused } },
                 true);
    return bytes;
}

struct HeldCase {
    const char* name;
    const char* path;
    Held held;
    Content bytes;
    Content side{}; ///< the side file
    bool isTiffIt = false;
};

std::vector<HeldCase> HeldCases()
{
    return {
        { "a CT that claims", "pic.ct", kHeldByCt, WideTone(kGranted) },
        { "a CT that claims too much", "pic.ct", kHeldByCt, WideTone(kRefused) },
        { "many rows of a CT", "pic.ct", kHeldByCt, NarrowTone(100000) },
        { "an LW that claims", "pic.lw", kHeldByLw, WideLineWork(kGranted) },
        { "an LW that claims too much", "pic.lw", kHeldByLw, WideLineWork(kRefused) },
        { "many rows of an LW", "pic.lw", kHeldByLw, ShortRows(400000) },
        { "many faults of an LW", "pic.lw", kHeldByLw, FaultyRows(400000) },
        { "many blocks", "pic.jpg", kHeldByJpeg, JpegSample{}.Stream(), ManyBlocks() },
        { "many segments", "pic.jpg", kHeldByJpeg, ManySegments(400000) },
        { "many entries", "pic.page", kHeldByPage, ManyEntries(65535) },
        { "a strip that claims", "pic.tif", kHeldByTiff, WideStrip(kGranted) },
        { "a strip that claims too much", "pic.tif", kHeldByTiff, WideStrip(kRefused) },
        { "many strips", "pic.tif", kHeldByTiff, ManyStrips(400000) },
        { "many directories", "pic.tif", kHeldByTiff, ManyDirectories(100000) },
        { "many directories", "pic.tif", kHeldByTiffIt, ManyDirectories(100000), {}, true },
        { "many strips", "pic.tif", kHeldByTiffIt, ManyStrips(400000), {}, true },
    };
}

// Opens the file, and asks for its first row and its last.
void OpenAndAsk(const HeldCase& row)
{
    const OpenedPicture opened = row.isTiffIt ? OpenTiffIt(row.path) : OpenAnyPicture(row.path);
    auto* const picture = dynamic_cast<PictureFileInterface*>(opened.picture.get());
    if (picture == nullptr || !opened.isOpen)
        return;
    static std::array<unsigned char, kGranted> buffer; // of the caller's
    for (const unsigned long at : { 0UL, std::max(1UL, picture->FileHeightInPixels()) - 1 })
        try {
            picture->GetPictureRow(buffer.data(), static_cast<unsigned int>(at),
                                   picture->FileSeparation(0), picture->ResolutionOnScanAxis(),
                                   picture->ResolutionOnXScanAxis(), buffer.size());
        } catch (ReadFileException* refused) { // of a JPEG's band that isn't there
            delete refused;
        }
}

template <typename Work>
std::size_t PeakOf(Work work)
{
    Allocations::Plan(0, false, 0);
    const AllocationsArmed armed;
    work();
    return Allocations::PeakBytes();
}

} // namespace

TEST(HeldMemory, GoesByTheFile)
{
    for (const HeldCase& row : HeldCases()) {
        SCOPED_TRACE(row.name);
        MemoryFileSystem files;
        const auto put = [&](const char* path, const Content& bytes) {
            files.Put(path,
                      std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
        };
        put(row.path, row.bytes);
        if (!row.side.empty())
            put("pic.bin", row.side);
        const ScopedFileSystem scoped(files);
        const std::size_t most = row.held.Most(row.bytes.size() + row.side.size());
        EXPECT_LE(PeakOf([&] { OpenAndAsk(row); }), most) << "opened";
        EXPECT_LE(PeakOf([&] { CheckFile(row.path, {}); }), most) << "checked";
    }
}

} // namespace tympan::test
