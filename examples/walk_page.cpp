// Walks the entries of a page: where each picture stands, and how many pixels it has.
#include "example.h"

#include <iostream>
#include <string>

namespace {

// An entry has an object for its picture that nobody has opened.
BasePictureIF& OpenPictureOf(const PagePictureEntry& entry)
{
    BasePictureIF& picture = *entry.PictureHandle();
    const CString& path = entry.PictureFileName();
    if (!picture.OpenPictureFile(path, true, false, nullptr))
        throw example::FailureOf(picture, path.GetString(), "can't be opened");
    return picture;
}

void PrintPlace(const PagePictureEntry& entry)
{
    // The entries' own classes keep their sizes to themselves.
    const auto placement = tympan::PlacementOf(entry);
    if (!placement)
        return;
    std::cout << placement->width << " x " << placement->height << " inches at "
              << placement->xOffset << ", " << placement->yOffset << ", turned by "
              << placement->rotation << " degrees";
    if (placement->container)
        std::cout << ", through colours of entry " << *placement->container;
}

void WalkPage(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const auto page = example::Open<PageFileInterface>(path);
    std::cout << path << ": " << page->FileWidthInUnits() << " x " << page->FileHeightInUnits()
              << " inches, " << page->GetEntriesNumber() << " entries\n";
    for (unsigned short index = 0; index < page->GetEntriesNumber(); ++index) {
        const PagePictureEntry* const entry = page->GetEntry(index);
        if (entry == nullptr)
            throw example::Failure(path, "has fewer entries than it counts");
        const BasePictureIF& picture = OpenPictureOf(*entry);
        std::cout << index << ": " << entry->PictureFileName() << ", "
                  << picture.FileWidthInPixels() << " x " << picture.FileHeightInPixels()
                  << " pixels, ";
        PrintPlace(*entry);
        std::cout << '\n';
    }
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "FILE.pg" }, WalkPage);
}
