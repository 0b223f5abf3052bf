// TIFF files in memory, read row by row, for the tests of the TIFF library.
#pragma once

#include "platform/file.h"
#include "platform/tiff_library.h"
#include "platform/tiff_samples.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <vector>

namespace tympan::test {

struct CloseTiff {
    void operator()(tiff* file) const { TiffClose(file); }
};
using OpenedTiff = std::unique_ptr<tiff, CloseTiff>;

inline OpenedTiff OpenTiffFile(const char* path = "a.tif")
{
    return OpenedTiff(TiffOpen(path, "r"));
}

// A row, nothing when it can't be read.
inline std::optional<Bytes> ReadRow(tiff* file, std::uint32_t row)
{
    Bytes bytes(static_cast<std::size_t>(TiffScanlineSize(file)), std::byte{ 0xA5 });
    const int result = TiffReadScanline(file, bytes.data(), row, 0);
    EXPECT_TRUE(result == 1 || result == -1) << result;
    return result == 1 ? std::optional(bytes) : std::nullopt;
}

enum class Order { forwards, backwards, mixed };

inline std::vector<std::uint32_t> RowNumbers(std::uint32_t length, Order order)
{
    std::vector<std::uint32_t> rows(length);
    std::iota(rows.begin(), rows.end(), 0U);
    if (order == Order::backwards)
        std::reverse(rows.begin(), rows.end());
    if (order == Order::mixed)
        std::shuffle(rows.begin(), rows.end(),
                     std::mt19937(1)); // NOLINT(cert-msc51-cpp): repeatable
    return rows;
}

class TiffLibraryTest : public testing::Test {
  protected:
    ~TiffLibraryTest() override
    {
        EXPECT_EQ(files_.OpenCount(), 0U);
        EXPECT_EQ(ProcessHandlers::CallCount(), 0);
        EXPECT_TRUE(ProcessHandlers::AreInPlace());
    }

    void Put(const TiffLayout& layout) { files_.Put("a.tif", MakeTiff(layout)); }

    MemoryFileSystem files_;
    ScopedFileSystem scope_{ files_ };
    ProcessHandlers handlers_;
};

struct LayoutCase {
    const char* name = nullptr;
    TiffLayout layout;
};

} // namespace tympan::test
