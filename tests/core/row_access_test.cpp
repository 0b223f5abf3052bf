#include "core/failures.h"
#include "core/row_access.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr unsigned int kTop = std::numeric_limits<unsigned int>::max();

struct RangeCase {
    unsigned int first, last, total;
    bool wrap;
    unsigned int rows; // 0: refused
};

const RangeCase kRangeCases[] = {
    { 2, 5, 10, false, 4 },         { 5, 5, 10, false, 1 },
    { 0, 9, 10, true, 10 },         { 8, 1, 10, true, 4 },
    { 8, 1, 10, false, 0 },         { 0, 10, 10, true, 0 },
    { 10, 0, 10, true, 0 },         { 0, 0, 0, true, 0 },
    { 9, 8, 10, true, 10 },         { 0, kTop - 1, kTop, false, kTop },
    { kTop - 1, 0, kTop, true, 2 },
};

TEST(RowAccess, CountsRanges)
{
    for (const RangeCase& range : kRangeCases) {
        SCOPED_TRACE(std::to_string(range.first) + " to " + std::to_string(range.last));
        const auto count = [&] {
            return PictureFileInterface::GetRowsNumber(range.first, range.last, range.total,
                                                       range.wrap);
        };
        if (range.rows == 0) {
            EXPECT_THROW(count(), IllegalRowsException);
        } else {
            EXPECT_EQ(count(), range.rows);
        }
    }
}

// A format that does nothing but show what every format has.
class Rows : public PictureFileInterface {
  public:
    using PictureFileInterface::AllocateRowBuffer;
    using PictureFileInterface::CurrRowBuffer;
    using PictureFileInterface::ReleaseRowBuffer;
    using PictureFileInterface::RowBufferHolds;

    explicit Rows(PictureParameters* record = new PictureParameters) { PictureParams(record); }
    PictureRowsData* GetPictureRow(const ColorSeparationType&, unsigned int, double,
                                   double) override
    {
        return nullptr;
    }
    unsigned long GetPictureRow(unsigned char*, unsigned int, ColorSeparationType, double, double,
                                unsigned long) override
    {
        return 0;
    }
    PictureRowsData* GetPictureRows(const ColorSeparationType&, unsigned int, unsigned int,
                                    bool) override
    {
        return nullptr;
    }
    unsigned long GetPictureRows(unsigned char*, unsigned int, unsigned int, unsigned int&,
                                 unsigned long*, ColorSeparationType, unsigned long, bool) override
    {
        return 0;
    }
};

TEST(RowAccess, OwnsOneRowBuffer)
{
    Rows rows;
    EXPECT_EQ(rows.CurrRowBuffer(), nullptr);
    EXPECT_FALSE(rows.RowBufferHolds(0));
    EXPECT_TRUE(rows.AllocateRowBuffer(0));
    EXPECT_NE(rows.CurrRowBuffer(), nullptr);
    EXPECT_TRUE(rows.AllocateRowBuffer(10)); // the first one is freed: the sanitizers look
    EXPECT_TRUE(rows.RowBufferHolds(20));    // and a larger one taken when it is wanted
    rows.CurrRowBuffer()[19] = 1;
    rows.ReleaseRowBuffer();
    EXPECT_EQ(rows.CurrRowBuffer(), nullptr);

    rows.PictureParams()->RowSize(3);
    rows.CurrRowBuffer(new unsigned char[3]);
    EXPECT_TRUE(rows.RowBufferHolds(3));
    EXPECT_EQ(rows.GetBufferSize(0, 5, false), 0U);
}

TEST(RowAccess, StoresARecordWithItsResolutionsExchanged)
{
    PictureParameters record;
    record.Resolution({ 300.0, 150.0 });
    record.WidthInPixels(12.0);
    Rows first;
    first.StorePictureParams(&record);
    EXPECT_EQ(first.ResolutionOnScanAxis(), 300.0);
    EXPECT_EQ(first.FileWidthInPixels(), 12U);
    Rows second;
    second.StorePictureParams(&first);
    EXPECT_EQ(second.ResolutionOnScanAxis(), 150.0);
    second.StorePictureParams(static_cast<const PictureParameters*>(nullptr));
    EXPECT_EQ(second.FileWidthInPixels(), 12U);

    Rows none(nullptr);
    none.StorePictureParams(&record);
    EXPECT_EQ(none.FileWidthInPixels(), 0U);
    none.CurrRowBuffer(new unsigned char[1]); // of no size that is known
    EXPECT_TRUE(none.RowBufferHolds(0));
}

} // namespace
