// Growth: hostile files of each format against files of a quarter of their pieces. Work that is linear
// in a file takes four times as long for four times as many; more would show as a low ratio.
#include "bench/benches.h"
#include "core/row_access.h"
#include "tests/support/many_pieces.h"
#include "tympan/check.h"
#include "tympan/inspect.h"

namespace tympan::bench {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned int kTimes = 4;
constexpr double kWantedRatio = 0.8;

// Checks the file to its end, then opens it as a client does that doesn't know it.
void CheckAndOpen(const std::string& path)
{
    CheckFile(path.c_str(), {});
    OpenAnyPicture(path.c_str());
}

void OpenTiffItAndClose(const std::string& path)
{
    OpenTiffIt(path.c_str());
}

// Rows from the last to the first, so that nothing is saved by going forwards.
void AskBackwards(const std::string& path)
{
    const OpenedPicture opened = OpenAnyPicture(path.c_str());
    auto* const picture = dynamic_cast<PictureFileInterface*>(opened.picture.get());
    Require(picture != nullptr && opened.isOpen, "the library can't open the picture");
    constexpr unsigned long kWidest = 64;
    const double scan = picture->ResolutionOnScanAxis(), xScan = picture->ResolutionOnXScanAxis();
    std::vector<unsigned char> buffer(kWidest);
    for (auto row = static_cast<unsigned int>(picture->FileHeightInPixels()); row-- != 0;)
        Require(picture->GetPictureRow(buffer.data(), row, picture->FileSeparation(0), scan, xScan,
                                       kWidest) != 0,
                "the library gives no row");
}

struct Growing {
    const char* what;
    Bytes (*make)(unsigned int pieces);
    unsigned int pieces; // of the smaller file
    void (*work)(const std::string& path);
};

using namespace test;

constexpr Growing kGrowing[] = {
    { "CT rows of two pixels, asked backwards", NarrowTone, 50000, AskBackwards },
    { "LW runs of no length, checked and opened", HollowRows, 10000, CheckAndOpen },
    { "LW runs of no length, asked backwards", HollowRows, 10000, AskBackwards },
    { "LW rows with a fault each, checked and opened", FaultyRows, 20000, CheckAndOpen },
    { "JPEG segments, checked and opened", ManySegments, 200000, CheckAndOpen },
    { "page entries, checked and opened", ManyEntries, 2000, CheckAndOpen },
    { "TIFF strips of a byte, checked and opened", ManyStrips, 20000, CheckAndOpen },
    { "TIFF strips of a byte, asked backwards", ManyStrips, 20000, AskBackwards },
    { "TIFF directories, checked and opened", ManyDirectories, 20000, CheckAndOpen },
    { "TIFF/IT directories, opened", ManyDirectories, 20000, OpenTiffItAndClose },
};

Sides Grown(const Growing& growing, const std::string& folder)
{
    const std::string small = folder + "small.any", large = folder + "large.any";
    NewFile(small).Write(growing.make(growing.pieces));
    NewFile(large).Write(growing.make(growing.pieces * kTimes));
    BringIntoCache(small);
    BringIntoCache(large);
    const auto work = growing.work;
    const auto often = [=] {
        for (unsigned int i = 0; i < kTimes; ++i)
            work(small);
    };
    return { { often }, { [=] { work(large); } } };
}

} // namespace

void RegisterGrowth(const std::string& folder)
{
    constexpr int kRounds = 7;
    for (const Growing& growing : kGrowing)
        Register({ std::string("growth: ") + growing.what + " / four times a quarter",
                   [&growing, folder] { return Grown(growing, folder); }, kWantedRatio, kRounds });
}

} // namespace tympan::bench
