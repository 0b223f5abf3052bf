#include "faults/scenarios.h"
#include "support/tiff_it_samples.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tympan/check.h"
#include "tympan/inspect.h"

namespace tympan::test {

namespace {

constexpr char kPath[] = "pic.tif";
constexpr unsigned kThrows = kFile | kMemory;
constexpr May kOpens{ kThrows, { 90001, 90050, 90052, 90056, 90057, 90058 }, true };
constexpr May kShows{ kNothing, { 90001, 90050, 90051 } };

TiffItSample SoundCt()
{
    TiffItSample sample = CtSample(3, 2);
    for (unsigned char i = 0; i < 24; ++i)
        sample.data.push_back(static_cast<unsigned char>(i * 9));
    return sample;
}

// Two rows of three pixels in two colours.
TiffItSample SoundLw()
{
    TiffItSample sample = LwSample(3, 2, 2);
    sample.data = { 0, 0, 0, 1, 1, 2, 0, 0, 0, 0, 1, 0, 0, 3, 0, 0, 0, 0 };
    return sample;
}

void AskKind(Run& run)
{
    run.Subject(nullptr);
    run.Do("kind", { kFile | kMemory, {}, true },
           [] { return TiffItKindOf(kPath).has_value() ? 1 : 0; });
    OpenedPicture opened;
    run.Do("opened by its kind", { kFile | kMemory, {}, true }, [&] {
        opened = OpenTiffIt(kPath);
        return opened.isOpen ? 1 : 0;
    });
    run.Do("destroyed", {}, [&] { return opened.picture.reset(), 1; });
    run.Do("checked", { kMemory, {}, true }, [] {
        CheckOptions options;
        options.formats.push_back(kTiffItName);
        const Verdict verdict = CheckFile(kPath, {}, options).verdict;
        return verdict == Verdict::Valid || verdict == Verdict::ValidWithRemarks ? 1 : 0;
    });
}

template <typename Picture>
void Read(Run& run)
{
    AskKind(run);
    PlayReading<Picture>(
        run, kPath, { kOpens, kOpens, kShows }, [] { return new Picture(kPath, true); },
        [&](Picture& picture) {
            AskGeometry(run, picture);
            run.Draw("display", kShows, [&](CDC& dc) { picture.Display(0, 1, dc); });
            run.StandsOnEarlier(); // without a structure there is nothing to draw, and no failure
        });
}

// The end of the directory's values; zeros stand behind it up to the strip.
constexpr std::size_t kChanged = 160;

Scenario ScenarioOf(const char* name, const TiffItSample& sample, void (*play)(Run&))
{
    Scenario scenario{ .name = name,
                       .files = { { kPath, AsBytes(sample.Bytes()) } },
                       .play = play };
    scenario.fields = DirectoryFields(scenario.files[0].second);
    for (std::size_t at = TiffItSample::kData; at < scenario.files[0].second.size(); at += 2)
        scenario.fields.push_back({ 0, at, 2, FieldKind::run });
    scenario.changedBytes = { kChanged };
    return scenario;
}

} // namespace

std::vector<Scenario> TiffItScenarios()
{
    return { ScenarioOf("TIFF/IT CT", SoundCt(), Read<TiffItCtP1Interface>),
             ScenarioOf("TIFF/IT LW", SoundLw(), Read<TiffItLwP1Interface>) };
}

} // namespace tympan::test
