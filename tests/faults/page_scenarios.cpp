#include "faults/scenarios.h"
#include "page/page_file.h"
#include "page/placement.h"
#include "support/lw_samples.h"
#include "support/page_samples.h"

#include <algorithm>
#include <optional>

namespace tympan::test {

namespace {

constexpr char kPath[] = "pic.page";
constexpr char kInnerPath[] = "inner.page";
constexpr May kReopens{ kFile | kMemory, { 90001, 90025, 90065, 90066 }, true };

PageSample Sample()
{
    return { .entries = { { .path = "picture.ct", .angle = "-.90000000E+02" },
                          { .type = 5, .path = "picture.lw", .width = "  2.5 and more" },
                          { .type = 2, .path = "picture.ct", .window = { 1, 2, 0 } },
                          { .path = kInnerPath } } };
}

// The page that stands on the other.
PageSample InnerSample()
{
    return { .entries = { { .path = "picture.ct" } } };
}

void AskPlacement(Run& run, const char* name, const PagePictureEntry& entry)
{
    std::optional<Placement> placement;
    run.Do(name, { kMemory }, [&] {
        placement = PlacementOf(entry);
        return placement.has_value() ? 1 : 0;
    });
    if (!placement)
        return;
    const PlacementBounds bounds = BoundsOf(*placement);
    for (const double number :
         { placement->xOffset, placement->yOffset, bounds.right, bounds.bottom })
        run.Fold(number);
    run.Fold(placement->colours);
}

void AskEntries(Run& run, const char* name, const PageFileInterface& page);

void AskEntry(Run& run, const char* name, const PagePictureEntry& entry)
{
    AskPlacement(run, name, entry);
    BasePictureIF* const picture = entry.PictureHandle();
    if (picture == nullptr)
        return;
    run.Subject(picture);
    run.Do("its picture opened", kReopens, [&] {
        return picture->OpenPictureFile(entry.PictureFileName(), true, true, nullptr) ? 1 : 0;
    });
    AskGeometry(run, *picture);
    if (const auto* const page = dynamic_cast<const PageFileInterface*>(picture);
        page != nullptr && entry.PictureFileName() == kInnerPath)
        AskEntries(run, "inner placement", *page); // no deeper, whatever that page says
    run.Subject(picture);
    run.Do("its picture closed", {}, [&] { return picture->ClosePictureFile(), 1; });
}

void AskEntries(Run& run, const char* name, const PageFileInterface& page)
{
    const auto entries = std::min<unsigned short>(page.GetEntriesNumber(), 4);
    run.Fold(std::uint64_t{ page.GetEntriesNumber() });
    for (unsigned short i = 0; i < entries; ++i)
        if (const PagePictureEntry* const entry = page.GetEntry(i))
            AskEntry(run, name, *entry);
}

// An entry read by itself, though another one's picture be missing.
void AskLoneEntry(Run& run)
{
    PageEntryReading reading;
    run.Do("a lone entry", { kFile | kMemory, {}, true }, [&] {
        CFile page(kPath, CFile::modeRead);
        reading = ReadPageEntry(page, 2);
        return reading.state == PageEntryState::fine ? 1 : 0;
    });
    run.Fold(static_cast<std::uint64_t>(reading.state));
    run.Do("its end", {}, [&] { return reading.entry.reset(), 1; });
}

void Ask(Run& run, PageFileInterface& page)
{
    run.Do("page opened", kReopens,
           [&] { return page.OpenPictureFile(kPath, true, true, nullptr) ? 1 : 0; });
    AskGeometry(run, page);
    AskEntries(run, "placement", page);
    run.Subject(&page);
}

void Read(Run& run)
{
    AskFactory(run, kPath);
    AskCheck(run, kPath);
    AskLoneEntry(run);
    PlayReading<PageFileInterface>(
        run, kPath, { { kMemory }, kReopens, {} }, [] { return new PageFileInterface; },
        [&](PageFileInterface& page) { Ask(run, page); });
}

std::vector<Field> Fields()
{
    std::vector<Field> fields = CommonHeaderFields();
    fields.push_back({ 0, 1080, 6, FieldKind::text });
    for (std::size_t entry = 0; entry < 4; ++entry) {
        const std::size_t at = PageSample::Place(entry), numbers = at + (entry == 1 ? 84 : 82);
        fields.push_back({ 0, at, 1, FieldKind::byte });
        fields.push_back({ 0, at + 2, 80, FieldKind::path });
        for (std::size_t i = 0; i < 5; ++i)
            fields.push_back({ 0, numbers + 14 * i, 14, FieldKind::text });
        for (std::size_t i = 0; i < 3; ++i)
            fields.push_back({ 0, numbers + 70 + i, 1, FieldKind::byte });
    }
    return fields;
}

} // namespace

std::vector<Scenario> PageScenarios()
{
    return { { .name = "page read",
               .files = { { kPath, AsBytes(Sample().Bytes()) },
                          { kInnerPath, AsBytes(InnerSample().Bytes()) },
                          { "picture.ct", AsBytes(CtSample{}.Bytes()) },
                          { "picture.lw", AsBytes(LwPicture{}.Bytes()) } },
               .play = Read,
               .fields = Fields(),
               .changedBytes = { PageSample::Place(4), 0, 0, 0 } } }; // the others' in their own
}

} // namespace tympan::test
