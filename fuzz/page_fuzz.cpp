// A bundle of named files, the first of which is opened as a page: its entries are those that are
// read one by one, and written anew they are the same.
//
// The bundle is: count; then for each file the length of its name, its name, two bytes of length, a
// byte that is odd for a file of the house's header, its bytes.
#include "fuzz/any_file.h"
#include "fuzz/headed_file.h"
#include "page/page_file.h"
#include "page/placement.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using tympan::PageEntryState;
using tympan::Placement;
using tympan::fuzz::Drawn;
using tympan::test::Require;

constexpr std::size_t kMostFiles = 5;
constexpr std::size_t kMostEntries = 100;
constexpr char kWritten[] = "written";

tympan::fuzz::FileBytes DrawnFile(Drawn& drawn)
{
    const std::size_t length = drawn.Word();
    const bool isHeaded = drawn.Coin();
    const tympan::fuzz::Input bytes = drawn.Bytes(length);
    return isHeaded ? tympan::fuzz::HeadedFile(bytes)
                    : tympan::fuzz::FileBytes(bytes.begin(), bytes.end());
}

/// The first file goes by the target's name.
void Unpack(Drawn& drawn, tympan::test::MemoryFileSystem& files)
{
    for (std::size_t i = 0, count = 1 + drawn.Below(kMostFiles); i < count; ++i) {
        const tympan::fuzz::Input name = drawn.Bytes(drawn.Byte());
        const std::string path =
            i == 0 ? tympan::fuzz::kPath : std::string(name.begin(), name.end());
        tympan::fuzz::Put(files, path.c_str(), DrawnFile(drawn));
    }
}

std::vector<tympan::PageEntryReading> ReadEntries(const char* path)
{
    std::vector<tympan::PageEntryReading> read;
    CFile file(path, CFile::modeRead);
    const std::size_t room = std::min(tympan::RoomForPageEntries(file), kMostEntries);
    for (std::size_t i = 0; i < room; ++i)
        read.push_back(tympan::ReadPageEntry(file, static_cast<unsigned short>(i)));
    return read;
}

/// \return false for what no entry can hold.
bool Write(const std::vector<Placement>& placements)
{
    CFile file(kWritten, CFile::modeCreate | CFile::modeWrite);
    try {
        tympan::WritePlacements(file, placements);
        return true;
    } catch (const std::invalid_argument&) {
        Require(file.GetLength() == 0, "what can't be written leaves nothing");
        return false; // an empty path, or a number that has no text
    }
}

std::vector<Placement> PlacementsOf(const std::vector<tympan::PageEntryReading>& read)
{
    std::vector<Placement> placements;
    for (const auto& reading : read) {
        const bool isThere =
            reading.state == PageEntryState::fine || reading.state == PageEntryState::noPicture;
        Require(reading.placement.has_value() == isThere, "an entry that was read says its place");
        if (isThere)
            placements.push_back(*reading.placement);
    }
    return placements;
}

/// Numbers keep eight digits, so that what was written once is what is written again.
void WriteTwice(const std::vector<Placement>& placements)
{
    for (const Placement& one : placements)
        tympan::BoundsOf(one);
    if (!Write(placements))
        return;
    const std::vector<Placement> once = PlacementsOf(ReadEntries(kWritten));
    Require(once.size() == placements.size(), "all entries that were written are read");
    for (std::size_t i = 0; i < once.size(); ++i)
        Require(once[i].type == placements[i].type &&
                    once[i].container == placements[i].container &&
                    once[i].colours == placements[i].colours,
                "an entry that was written is what it was");
    Require(Write(once), "what was read can be written");
    Require(PlacementsOf(ReadEntries(kWritten)) == once, "written again it is the same");
}

void OpenPicture(const PagePictureEntry& entry)
{
    BasePictureIF* const picture = entry.PictureHandle();
    Require(picture != nullptr, "an entry of a page that opened has a picture object");
    picture->OpenPictureFile(entry.PictureFileName(), true, false, nullptr);
    tympan::SizeInInchesOf(*picture);
    picture->ClosePictureFile();
}

void CompareEntries(const PageFileInterface& page,
                    const std::vector<tympan::PageEntryReading>& read)
{
    const std::size_t count = page.GetEntriesNumber();
    Require(page.GetEntry(static_cast<unsigned short>(count)) == nullptr,
            "behind the last is none");
    for (std::size_t i = 0; i < std::min(count, kMostEntries); ++i) {
        const PagePictureEntry* const entry = page.GetEntry(static_cast<unsigned short>(i));
        Require(entry != nullptr && i < read.size() && read[i].state == PageEntryState::fine,
                "a page that opened has all its entries");
        // Numbers may be none, which are never equal.
        Require(tympan::PlacementOf(*entry)->path == read[i].placement->path &&
                    tympan::PlacementOf(*entry)->colours == read[i].placement->colours,
                "an entry is what it is by itself");
        OpenPicture(*entry);
    }
}

void Ask(PageFileInterface& page)
{
    const bool isOpen = page.OpenPictureFile(tympan::fuzz::kPath, true, true, nullptr);
    Require(isOpen == page.ObjectStatus(), "the status is what was returned");
    tympan::fuzz::RequireCode(*page.PictureParams(), { 90001, 90065, 90066 });
    const PageParameters copy(dynamic_cast<const PageParameters&>(*page.PictureParams()));
    Require(copy.NumberOfEntries() == page.GetEntriesNumber(), "a copy shares the entries");
    const auto read = ReadEntries(tympan::fuzz::kPath);
    if (isOpen)
        CompareEntries(page, read);
    WriteTwice(PlacementsOf(read));
    page.ClosePictureFile();
    page.GetEntry(0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn drawn(data, size);
    tympan::fuzz::WithFile({}, [&](auto& files) {
        Unpack(drawn, files);
        tympan::fuzz::CheckedFile(tympan::fuzz::kPath);
        PageFileInterface page;
        for (int times = 0; times < 2; ++times)
            Ask(page);
    });
    return 0;
}
