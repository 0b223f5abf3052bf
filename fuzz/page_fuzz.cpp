// Any bytes as a page file: opened, its entries read one by one, asked and written anew. The files that
// it may place are itself, a CT and an LW picture.
#include "fuzz/any_file.h"
#include "page/page_file.h"
#include "page/placement.h"
#include "support/lw_samples.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace {

using tympan::Placement;

void Put(const char* path, const std::vector<unsigned char>& bytes)
{
    CFile(path, CFile::modeCreate | CFile::modeWrite)
        .Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

void OpenAgainAndAgain(PageFileInterface& page)
{
    for (int i = 0; i < 2; ++i) {
        page.OpenPictureFile(tympan::fuzz::kPath, true, true, nullptr);
        for (unsigned int entry = 0; entry <= page.GetEntriesNumber(); entry += 17)
            page.GetEntry(static_cast<unsigned short>(entry));
    }
}

std::vector<Placement> ReadEntries()
{
    std::vector<Placement> read;
    CFile file(tympan::fuzz::kPath, CFile::modeRead);
    const std::size_t room = std::min<std::size_t>(tympan::RoomForPageEntries(file), 100);
    for (std::size_t i = 0; i <= room; ++i) {
        const auto reading = tympan::ReadPageEntry(file, static_cast<unsigned short>(i));
        if (!reading.placement)
            continue;
        tympan::BoundsOf(*reading.placement);
        read.push_back(*reading.placement);
    }
    return read;
}

void WriteEntries(const std::vector<Placement>& placements)
{
    CFile file("written", CFile::modeCreate | CFile::modeWrite);
    try {
        tympan::WritePlacements(file, placements);
    } catch (const std::invalid_argument&) {
        return; // an empty path, or a number that has no text
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::WithFile(data, size, [] {
        Put("a.ct", tympan::test::CtSample{}.Bytes());
        Put("a.lw", tympan::test::LwPicture{}.Bytes());
        tympan::CheckFile(tympan::fuzz::kPath, {});
        PageFileInterface page;
        OpenAgainAndAgain(page);
        const PageParameters copy(dynamic_cast<const PageParameters&>(*page.PictureParams()));
        WriteEntries(ReadEntries());
        page.ClosePictureFile();
    });
    return 0;
}
