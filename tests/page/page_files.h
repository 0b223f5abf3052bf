// A page and the pictures that it can place, in memory.
#pragma once

#include "page/page_file.h"
#include "platform/memory_files.h"
#include "support/lw_samples.h"
#include "support/page_samples.h"

#include <vector>

namespace tympan::test {

/// In the place of the system's files while it lives: "picture.ct", "picture.lw" (two colours), and
/// pages as they are put. All pictures are one inch wide and high.
class PageFiles {
  public:
    PageFiles()
    {
        Put("picture.ct", CtSample{}.Bytes());
        Put("picture.lw", LwPicture{}.Bytes());
    }
    void Put(const char* path, const std::vector<unsigned char>& bytes)
    {
        memory_.Put(path, AsText(bytes));
    }
    WatchedFileSystem& Watched() { return watched_; }
    MemoryFileSystem& Memory() { return memory_; }

  private:
    MemoryFileSystem memory_;
    WatchedFileSystem watched_{ memory_ };
    ScopedFileSystem scoped_{ watched_ };
};

/// A picture, an LW picture, and a window that shows through the latter's second colour.
inline PageSample ThreeEntries()
{
    return { .entries = { { .path = "picture.ct", .angle = "-.90000000E+02" },
                          { .type = 5, .path = "picture.lw", .width = "  2.5 and more" },
                          { .type = 2, .window = { 1, 2, 0 } } } };
}

/// "page", opened.
struct OpenedPage {
    PageFileInterface page;
    bool isOpen = page.OpenPictureFile("page", true, true, nullptr);

    unsigned long Code() const { return page.PictureParams()->TraceStatus(); }
};

} // namespace tympan::test
