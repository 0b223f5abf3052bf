// The TIFF library of a build without libtiff.
#include "platform/memory_files.h"
#include "platform/tiff_library.h"

#include <gmock/gmock.h>

namespace tympan::test {

namespace {

TEST(TiffLibraryAbsentTest, OpeningSaysThatLibtiffIsMissing)
{
    MemoryFileSystem files;
    const ScopedFileSystem scope(files);
    files.Put("a.tif", "II*");
    EXPECT_EQ(TiffOpen("a.tif", "r"), nullptr);
    EXPECT_EQ(TiffErrorMsg(),
              "a.tif: TIFF files can't be read: the library was built without libtiff");
    const IoResult opened = files.Open("a.tif", {});
    EXPECT_EQ(TifffdOpen(static_cast<int>(opened.value), nullptr, "r"), nullptr);
    EXPECT_TRUE(files.Close(static_cast<int>(opened.value))); // still the caller's
}

} // namespace

} // namespace tympan::test
