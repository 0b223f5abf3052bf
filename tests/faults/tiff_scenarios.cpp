#include "faults/scenarios.h"
#include "platform/tiff_samples.h"
#include "tiff/tiff_file.h"
#include "tympan/inspect.h"

#include <algorithm>

namespace tympan::test {

namespace {

constexpr char kPath[] = "pic.tif";
constexpr May kReopens{ kMemory, { 90050, 90051 } };
constexpr May kRows{ kMemory, { 90050 }, true };

void Ask(Run& run, TiffFileInterface& picture)
{
    run.Do("TIFF opened", kReopens,
           [&] { return picture.OpenPictureFile(kPath, true, true, nullptr) ? 1 : 0; });
    AskGeometry(run, picture);
    const std::uint64_t samples = std::max(1UL, picture.GetPictureParams()->ColorSeparation());
    const std::uint64_t bytes = picture.GetPictureParams()->RowSize() / samples;
    Room row(1024);
    std::uint64_t given = run.Do(
        "row", kRows, [&] { return picture.GetPictureRow(row.data(), 1, Cyan, 1, 1, row.size()); });
    run.FoldGiven(row, given * bytes);
    Room rows(1024);
    unsigned int rowsInfo = 0;
    given = run.Do("rows", kRows, [&] {
        return picture.GetPictureRows(rows.data(), 0, 4, rowsInfo, nullptr, Cyan, rows.size(),
                                      false);
    });
    run.FoldGiven(rows, given * 5 * bytes);
    run.Do("details", { kMemory, {}, true },
           [&] { return TiffDetailsOf(picture).has_value() ? 1 : 0; });
}

void Read(Run& run)
{
    AskFactory(run, kPath);
    AskCheck(run, kPath);
    PlayReading<TiffFileInterface>(
        run, kPath, { { kMemory }, kReopens, {} }, [] { return new TiffFileInterface; },
        [&](TiffFileInterface& picture) { Ask(run, picture); });
}

Scenario ScenarioOf(const char* name, const TiffLayout& layout)
{
    Scenario scenario{ .name = name, .files = { { kPath, MakeTiff(layout) } }, .play = Read };
    scenario.fields = DirectoryFields(scenario.files[0].second);
    return scenario;
}

} // namespace

std::vector<Scenario> TiffScenarios()
{
    const TiffLayout small{ .mode = "wl", .width = 7, .length = 5 };
    TiffLayout packed = small, separated = small, tiled = small, jpeg = small;
    packed.packed = kLzw;
    separated.samples = 4;
    separated.as = kSeparated;
    separated.planes = true;
    tiled.tile = { 16, 16 };
    jpeg.packed = kJpeg;
    return { ScenarioOf("TIFF plain", small), ScenarioOf("TIFF packed", packed),
             ScenarioOf("TIFF in planes", separated), ScenarioOf("TIFF in tiles", tiled),
             ScenarioOf("TIFF of JPEG", jpeg) };
}

} // namespace tympan::test
