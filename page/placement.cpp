// Entries of a page file by themselves: read, looked into, written, and where they lie on the page.
#include "page/placement.h"

#include "core/failure_guard.h"
#include "core/format.h"
#include "core/header_layout.h"
#include "page/page_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>
#include <numbers>
#include <stdexcept>
#include <string>
#include <utility>

namespace tympan {

// What an entry keeps from its clients.
struct PageEntryAccess {
    static Placement Read(const PagePictureEntry& entry, PlacementType type)
    {
        Placement placement;
        placement.type = type;
        placement.path = entry.PictureFileName();
        placement.xOffset = entry.XOffset();
        placement.yOffset = entry.YOffset();
        placement.height = entry.PictureSupposedHeight();
        placement.width = entry.PictureSupposedWidth();
        placement.rotation = entry.PictureRotationAngle();
        return placement;
    }
};

namespace {

constexpr FailureRow kEndsMeanwhile[] = { { Caught::EntryError, 0, nullptr } };

struct Turn {
    double sine, cosine; // without sign
};

Turn TurnOf(double degrees)
{
    constexpr double kHalfCircle = 180.0;
    const double half = std::fmod(std::abs(degrees), kHalfCircle);
    if (half == 0.0)
        return { 0.0, 1.0 };
    if (half == kHalfCircle / 2)
        return { 1.0, 0.0 };
    const double radians = half / kHalfCircle * std::numbers::pi;
    return { std::abs(std::sin(radians)), std::abs(std::cos(radians)) };
}

// From the resolutions of a picture's record to pixels per inch.
double PerInch(const BasePictureIF& picture)
{
    for (const Format& format : Formats()) {
        const auto perInch = format.perInch == nullptr ? std::nullopt : format.perInch(picture);
        if (perInch)
            return *perInch;
    }
    return 1.0;
}

PageEntryState StateOf(BasePageEntry& entry, CFile& page)
{
    bool loaded = false;
    const bool isThere = Guarded(NoTrace(), kEndsMeanwhile, [&] { loaded = entry.Load(page); });
    if (!isThere)
        return PageEntryState::cutShort;
    return loaded ? PageEntryState::fine : PageEntryState::noPicture;
}

// Makes the entry of a record that holds one, and its picture object.
void LoadInto(PageEntryReading& reading, const EntryRecord& record, PlacementType type, CFile& page,
              std::uint64_t place)
{
    std::unique_ptr<BasePageEntry> entry(create_page_entry_object(reading.typeByte));
    if (entry == nullptr)
        throw std::bad_alloc();
    page.Seek(static_cast<LONGLONG>(place + kEntryType.width), CFile::begin);
    reading.state = StateOf(*entry, page);
    if (reading.state == PageEntryState::cutShort)
        return;
    reading.placement = record.Read(type);
    reading.entry = std::move(entry);
    reading.coloursDropped =
        type == PlacementType::ctWindow && record.Window().colours.size() > kMostWindowColours;
}

} // namespace

std::size_t RoomForPageEntries(CFile& page)
{
    const std::uint64_t length = std::max<std::uint64_t>(page.GetLength(), kFirstPageEntry);
    const std::uint64_t bytes = length - kFirstPageEntry;
    const std::uint64_t begun = bytes / kPageEntryBytes + (bytes % kPageEntryBytes != 0 ? 1 : 0);
    return static_cast<std::size_t>(std::min<std::uint64_t>(begun, kMostPageEntries));
}

PageEntryReading ReadPageEntry(CFile& page, unsigned short index)
{
    const EntryRecord record = ReadEntryRecord(page, index);
    PageEntryReading reading;
    if (record.held == 0)
        return reading;
    reading.typeByte = record.TypeByte();
    const auto type = PlacementTypeOf(reading.typeByte);
    if (!type)
        reading.state = PageEntryState::unknownType;
    else if (record.IsWhole(*type))
        LoadInto(reading, record, *type, page, PlaceOfPageEntry(index));
    return reading;
}

std::optional<Placement> PlacementOf(const BasePageEntry& entry)
{
    if (const auto* const window = dynamic_cast<const PageCTWindowEntry*>(&entry)) {
        Placement placement = PageEntryAccess::Read(*window, PlacementType::ctWindow);
        placement.container = window->ContainerEntry();
        placement.colours.assign(window->Colors(), window->Colors() + window->NumberOfColors());
        return placement;
    }
    if (const auto* const lineWork = dynamic_cast<const PageLWEntry*>(&entry))
        return PageEntryAccess::Read(*lineWork, PlacementType::lineWork);
    if (const auto* const picture = dynamic_cast<const PagePictureEntry*>(&entry))
        return PageEntryAccess::Read(*picture, PlacementType::picture);
    return std::nullopt;
}

void WritePlacements(CFile& page, std::span<const Placement> placements)
{
    if (placements.size() > kMostPageEntries)
        throw std::invalid_argument(std::to_string(placements.size()) + " pictures; a page holds " +
                                    std::to_string(kMostPageEntries) + ".");
    std::vector<std::uint8_t> bytes(kFirstPageEntry - kPageCount.offset);
    std::string count(kPageCount.width + 1, '\0');
    std::snprintf(count.data(), count.size(), "%06u", static_cast<unsigned>(placements.size()));
    std::copy_n(count.begin(), kPageCount.width, bytes.begin());
    for (std::size_t i = 0; i < placements.size(); ++i) {
        const auto entry = EntryBytes(placements[i], "Entry " + std::to_string(i));
        bytes.insert(bytes.end(), entry.begin(), entry.end());
    }
    page.Seek(kHeaderFileType.offset, CFile::begin);
    page.Write(kPageLetters.data(), static_cast<UINT>(kPageLetters.size()));
    page.Seek(kPageCount.offset, CFile::begin);
    page.Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

PlacementBounds BoundsOf(const Placement& placement)
{
    const auto [sine, cosine] = TurnOf(placement.rotation);
    const double width = placement.width * cosine + placement.height * sine;
    const double height = placement.width * sine + placement.height * cosine;
    return { placement.xOffset, placement.yOffset, placement.xOffset + width,
             placement.yOffset + height };
}

std::optional<SizeInInches> SizeInInchesOf(const BasePictureIF& picture)
{
    const PictureParameters* const record = picture.PictureParams();
    if (record == nullptr)
        return std::nullopt;
    const double perInch = PerInch(picture);
    const SizeInInches size{ record->HeightInPixels() / (record->ResolutionOnScanAxis() * perInch),
                             record->WidthInPixels() /
                                 (record->ResolutionOnXScanAxis() * perInch) };
    const auto isSize = [](double inches) { return inches > 0.0 && std::isfinite(inches); };
    return isSize(size.height) && isSize(size.width) ? std::optional(size) : std::nullopt;
}

} // namespace tympan
