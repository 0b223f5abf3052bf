#include "faults/lw_questions.h"
#include "lw_variant/velmar_lw_file.h"
#include "tympan/inspect.h"

namespace tympan::test {

namespace {

constexpr May kOpens{ kNothing, { 90001, 90066 }, true };
constexpr May kReopens{ kFile, { 90001, 90025, 90066 }, true };
constexpr May kShows{ kNothing, { 90001, 90020, 90025 } };
constexpr May kProves{ kNothing, { 90001, 90025, 90026 }, true };
constexpr May kSideFile{ kFile, { 90001, 90025, 90026 } };

void AskColours(Run& run, VelmarLWFileInterface& picture)
{
    std::unique_ptr<unsigned char[]> table;
    run.Do("lookup table", { kMemory }, [&] {
        table.reset(picture.GetSeparationLut(Black, true, nullptr));
        return table != nullptr ? 1 : 0;
    });
    const LwPictureParameters* const record = picture.GetLwPictureParams();
    if (table != nullptr && record != nullptr)
        run.Fold({ table.get(), record->FileColorsNumber() });
    run.Do("transparent", {}, [&] { return 1 + picture.GetTransparentColor(Black); });
}

void AskSideFile(Run& run, VelmarLWFileInterface& picture)
{
    for (const bool readExisting : { false, true }) {
        bool isValid = false;
        run.Do(readExisting ? "side file read" : "side file made", kSideFile, [&] {
            CString path(kLwPath);
            const unsigned long size = picture.CreateLwBinFile(path, readExisting, isValid);
            return readExisting ? size : 1UL;
        });
        run.Fold(std::uint64_t{ isValid });
        if (readExisting)
            run.StandsOnEarlier();
        run.LookAt("the side file", "pic.bin");
    }
    SideFileState state = SideFileState::none; // also one that can't be read
    run.Do("side file's state", { kFile | kMemory, {}, true }, [&] {
        state = SideFileOf(kLwPath, *picture.GetLwPictureParams()).state;
        return state != SideFileState::none ? 1 : 0;
    });
    run.StandsOnEarlier(); // on the making
    run.Fold(static_cast<std::uint64_t>(state));
}

void Ask(Run& run, VelmarLWFileInterface& picture)
{
    AskGeometry(run, picture);
    AskPlacingStream(run, picture);
    AskColours(run, picture);
    // Without places, what needs them fails as for a row beyond the height.
    if (run.Do("places", { kNothing, {}, true }, [&] { return picture.BuildLwOffsetBuffer(); }) !=
        0)
        AskLw(run, picture);
    run.Do("rows proved", kProves, [&] { return picture.FileValidityCheck() ? 1 : 0; });
    AskSideFile(run, picture);
}

void Read(Run& run)
{
    AskFactory(run, kLwPath);
    AskCheck(run, kLwPath);
    PlayReading<VelmarLWFileInterface>(
        run, kLwPath, { kOpens, kReopens, kShows },
        [] { return create_velmar_lw_file_object(kLwPath, true); },
        [&](VelmarLWFileInterface& picture) { Ask(run, picture); },
        [](VelmarLWFileInterface& picture, CDC& dc) {
            picture.BuildLwOffsetBuffer();
            picture.Display(0, 2, dc);
        });
}

} // namespace

std::vector<Scenario> LwWholeScenarios()
{
    return { { .name = "LW as a whole",
               .files = { { kLwPath, AsBytes(LwFaultSample().Bytes()) } },
               .play = Read,
               .fields = LwFields(),
               .heads = { LwFaultSample().Start() } } };
}

} // namespace tympan::test
