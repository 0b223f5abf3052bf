#include "ct/ct_file.h"
#include "faults/scenarios.h"
#include "support/ct_samples.h"

#include <vector>

namespace tympan::test {

namespace {

constexpr char kPath[] = "pic.ct";
constexpr char kNewPath[] = "new.ct";
constexpr May kOpens{ kNothing, { 90001, 90066 }, true };
constexpr May kShows{ kNothing, { 90030, 90034 } };

struct Preview {
    ColorSeparationType separation;
    int bits;
    const char* drawn; // the names of its steps
    const char* drawnAgain;
};

constexpr Preview kPreviews[] = { { AllSeparations, 24, "preview", "preview again" },
                                  { Yellow, 8, "plate's preview", "plate's preview again" } };

// A bitmap of the object's own, small enough to be had, and filled a second time.
void AskPreview(Run& run, CtFileInterface& picture, const Preview& preview)
{
    if (!IsSmall(picture.PictureParams()->WidthInPixels(),
                 picture.PictureParams()->HeightInPixels()))
        return;
    constexpr May kMay{ kNothing, { 90030, 90034 }, true };
    HBITMAP bitmap = nullptr;
    const auto draw = [&](const char* name, unsigned int firstRow) {
        run.Do(name, kMay, [&] {
            bitmap = picture.Display(nullptr, bitmap, preview.separation, firstRow, 99,
                                     preview.bits, nullptr, false);
            return bitmap != nullptr ? 1 : 0;
        });
        run.FoldBitmap(bitmap);
    };
    draw(preview.drawn, 0);
    if (bitmap != nullptr)
        draw(preview.drawnAgain, 1);
    run.Do("preview freed", {}, [&] { return picture.FreePreview(bitmap), 1; });
}

void AskPalette(Run& run, CtFileInterface& picture)
{
    int changes[256] = { 0, 9, 8 };
    run.Do("palette", { kNothing, {}, true },
           [&] { return picture.ApplyPaletteChanges(changes, Cyan, 8) != nullptr ? 1 : 0; });
}

void AskRows(Run& run, CtFileInterface& picture)
{
    constexpr May kRow{ kNothing, { 90001, 90030, 90064 } };
    constexpr May kRows{ kNothing, { 90001, 90030, 90033 } };
    const double across = picture.ResolutionOnScanAxis(), down = picture.ResolutionOnXScanAxis();
    for (const double ratio : { 1.0, 2.0 }) {
        Room room(ratio == 1.0 ? 5 : 10);
        const std::uint64_t given = run.Do("row", kRow, [&] {
            return picture.GetPictureRow(room.data(), 1, Cyan, across * ratio, down, room.size());
        });
        run.FoldGiven(room, given);
    }
    Room room(15, 0xA5); // rows that aren't there leave it as it was
    unsigned long offsets[8] = {};
    unsigned int rowsInfo = 0;
    run.Do("rows", kRows, [&] {
        return picture.GetPictureRows(room.data(), 0, 3, rowsInfo, offsets, Black, room.size(),
                                      false);
    });
    run.FoldGiven(room, room.size());
    unsigned long inks = 0;
    run.Do("inks", { kFile }, [&] { return inks = picture.ExtractCMYKPixelInfo(1, 1), 1; });
    run.Fold(std::uint64_t{ inks });
}

void Ask(Run& run, CtFileInterface& picture)
{
    AskGeometry(run, picture);
    AskRows(run, picture);
    run.Draw("colours", kShows, [&](CDC& dc) { picture.Display(0, 2, dc); });
    run.Draw("a plate", kShows, [&](CDC& dc) { picture.Display(0, 2, &dc, Magenta); });
    for (const Preview& preview : kPreviews)
        AskPreview(run, picture, preview);
    AskPalette(run, picture);
}

void Read(Run& run)
{
    AskFactory(run, kPath);
    AskCheck(run, kPath);
    PlayReading<CtFileInterface>(
        run, kPath, { kOpens, kOpens, kShows }, [] { return create_ct_file_object(kPath, true); },
        [&](CtFileInterface& picture) { Ask(run, picture); });
}

void WriteRows(Run& run, CtFileInterface& picture)
{
    PictureParameters record;
    record.WidthInPixels(3.0);
    record.HeightInPixels(2.0);
    record.DefineAvailableSeparations(15);
    const unsigned char row[] = { 9, 8, 7 };
    run.Do("header", { kFile }, [&] {
        picture.StorePictureParams(&record);
        return picture.SavePictureParams() ? 1 : 0;
    });
    run.Do("row", { kFile }, [&] { return picture.SavePictureRow(row, 1, Black, 3), 1; });
}

void Write(Run& run)
{
    PlayWriting<CtFileInterface>(
        run, kNewPath, nullptr, kOpens, [] { return create_ct_file_object(kNewPath, false); },
        [&](CtFileInterface& picture) { WriteRows(run, picture); });
}

} // namespace

std::vector<Scenario> CtScenarios()
{
    const CtSample sample{ .width = 5, .height = 3 };
    return { { .name = "CT read",
               .files = { { kPath, AsBytes(sample.Bytes()) } },
               .play = Read,
               .fields = CommonHeaderFields(),
               .changedBytes = { 2048 },
               .heads = { 2048 },
               .gentle = { "rows", // "leaves its bytes as they were"
                           "inks", // "is 0, no ink"
                           "shown", "colours", "a plate", "preview", "plate's preview",
                           "plate's preview again", "preview again" } }, // "are no ink"
             { .name = "CT write", .files = {}, .play = Write } };
}

} // namespace tympan::test
