// Page files: their recognition, the count, the list and who owns it.
#include "core/factory.h"
#include "page/placement.h"
#include "page_files.h"
#include "platform/file.h"
#include "support/checking.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace {

using namespace tympan::test;

class Pages : public testing::Test {
  protected:
    ~Pages() override { EXPECT_EQ(files_.Memory().OpenCount(), 0U); }
    PageFiles files_;
};

TEST_F(Pages, AreKnownByTheirLetters)
{
    for (const char* const letters : { "PG", "pg", "Pg", "pG" }) {
        files_.Put("page", PageSample{ .letters = letters }.Bytes());
        const std::unique_ptr<BasePictureIF> picture(create_picture_object("page"));
        EXPECT_NE(dynamic_cast<PageFileInterface*>(picture.get()), nullptr) << letters;
        const auto opened = tympan::OpenAnyPicture("page");
        EXPECT_EQ(opened.format, "Page");
        EXPECT_TRUE(opened.isOpen);
    }
    for (const char* const letters : { "PH", "GP", "  " }) {
        files_.Put("page", PageSample{ .letters = letters }.Bytes());
        EXPECT_NE(tympan::OpenAnyPicture("page").format, "Page") << letters;
    }
}

// What passes for a CT as well is not taken for one.
TEST_F(Pages, ThatAreRefusedStayPages)
{
    files_.Put("page", PageSample{ .entries = { { .path = "missing" } }, .letters = "pg" }.Bytes());
    const auto opened = tympan::OpenAnyPicture("page");
    EXPECT_EQ(opened.format, "Page");
    EXPECT_FALSE(opened.isOpen);
    EXPECT_EQ(opened.picture->PictureParams()->TraceStatus(), 90065U);
}

TEST_F(Pages, GiveTheirEntriesAndMeasures)
{
    files_.Put("page", ThreeEntries().Bytes());
    PageFileInterface page;
    EXPECT_EQ(page.GetEntriesNumber(), 0);
    EXPECT_EQ(page.GetEntry(0), nullptr);
    ASSERT_TRUE(page.OpenPictureFile("page", true, false, nullptr));
    EXPECT_EQ(page.PictureParams()->RowSize(), 1000U);
    EXPECT_EQ(page.PictureParams()->BitsPerSample(), 32U);
    EXPECT_EQ(page.FileWidthInUnits(), 10.0);
    ASSERT_EQ(page.GetEntriesNumber(), 3);
    EXPECT_EQ(page.GetEntry(3), nullptr);
    for (unsigned short i = 0; i < 3; ++i) {
        ASSERT_NE(page.GetEntry(i), nullptr) << i;
        EXPECT_EQ(page.GetEntry(i)->PictureHandle()->FileHeightInPixels(), 0U) << i; // not open
    }
    EXPECT_STREQ(page.GetEntry(1)->PictureFileName(), "picture.lw");
    page.ClosePictureFile();
    EXPECT_NE(page.GetEntry(2), nullptr);
}

struct CountCase {
    const char* text;
    unsigned short count;
};

TEST_F(Pages, CountAsTextDoes)
{
    const CountCase kCases[] = {
        { "000000", 0 }, { "none  ", 0 }, { "000001", 1 }, { "     1", 1 },
        { "1 more", 1 }, { "065537", 1 }, { "-65535", 1 }, { "-65536", 0 },
    };
    for (const CountCase& one : kCases) {
        files_.Put("page", PageSample{ .entries = { {} }, .count = one.text }.Bytes());
        const OpenedPage opened;
        EXPECT_TRUE(opened.isOpen) << one.text;
        EXPECT_EQ(opened.page.GetEntriesNumber(), one.count) << one.text;
    }
    files_.Put("page", PageSample{ .count = "070000" }.Bytes());
    EXPECT_EQ(OpenedPage().page.GetEntriesNumber(), 4464);
}

struct RefusedCase {
    const char* name;
    std::vector<Edit> edits;
    unsigned long code;
    unsigned short count, loaded;
};

const std::size_t kSecond = PageSample::Place(1);
const std::size_t kThird = PageSample::Place(2);

TEST_F(Pages, AreRefusedWithTheEntriesInFrontKept)
{
    const RefusedCase kCases[] = {
        { "a shape", { { kSecond, 1, "\3" } }, 90065, 3, 1 },
        { "a missing picture", { { kSecond + 2, 1, "P" } }, 90065, 3, 1 },
        { "no path", { { kSecond + 2, 1, { 0 } } }, 90065, 3, 1 },
        { "ends in front of the last", { { kThird, kToTheEnd, "" } }, 90065, 3, 2 },
        { "ends in a path", { { kThird + 81, kToTheEnd, "" } }, 90065, 3, 2 },
        { "ends in an offset", { { kThird + 95, kToTheEnd, "" } }, 90065, 3, 2 },
        { "ends in a window", { { kThird + 153, kToTheEnd, "" } }, 90065, 3, 2 },
        { "ends in the colours", { { kThird + 154, kToTheEnd, "" } }, 90065, 3, 2 },
        { "far more than it holds", { { 1080, 6, "065535" } }, 90065, 65535, 3 },
        { "three separations", { { 1025, 1, "\3" } }, 90066, 0, 0 },
    };
    for (const RefusedCase& one : kCases) {
        SCOPED_TRACE(one.name);
        files_.Put("page", Edited(ThreeEntries().Bytes(), one.edits));
        OpenedPage opened;
        EXPECT_FALSE(opened.isOpen);
        EXPECT_FALSE(opened.page.ObjectStatus());
        EXPECT_EQ(opened.page.TraceStatus(), 0U);
        EXPECT_EQ(opened.Code(), one.code);
        EXPECT_EQ(opened.page.PictureParams()->RowSize(), 0U);
        EXPECT_EQ(opened.page.GetEntriesNumber(), one.count);
        for (unsigned short i = 0; i < 5; ++i)
            EXPECT_EQ(opened.page.GetEntry(i) != nullptr, i < one.loaded) << i;
        files_.Put("page", ThreeEntries().Bytes());
        EXPECT_TRUE(opened.page.OpenPictureFile("page", true, true, nullptr));
        EXPECT_TRUE(opened.page.ObjectStatus());
        EXPECT_NE(opened.page.GetEntry(2), nullptr);
    }
}

TEST_F(Pages, ThatEndBehindTheFieldsAreWhole)
{
    files_.Put("page", Edited(ThreeEntries().Bytes(), { { kThird + 155, kToTheEnd, "" } }));
    EXPECT_TRUE(OpenedPage().isOpen);
    files_.Put("page", Edited(PageSample{}.Bytes(), { { 1083, kToTheEnd, "" } }));
    EXPECT_TRUE(OpenedPage().isOpen); // "000" is left of the count
}

// An entry of unknown type meets a record that has failed before: the sizes are taken all the same.
TEST_F(Pages, KeepAnEarlierCode)
{
    files_.Put("page", Edited(ThreeEntries().Bytes(), { { kSecond, 1, "\3" } }));
    PageFileInterface page;
    page.PictureParams()->TraceStatus(7);
    EXPECT_FALSE(page.OpenPictureFile("page", true, true, nullptr));
    EXPECT_EQ(page.PictureParams()->TraceStatus(), 7U);
    EXPECT_EQ(page.PictureParams()->RowSize(), 1000U);
}

TEST_F(Pages, MayPlaceThemselves)
{
    files_.Put("page", PageSample{ .entries = { { .path = "page" } } }.Bytes());
    const OpenedPage opened;
    ASSERT_TRUE(opened.isOpen);
    const auto* const inner =
        dynamic_cast<const PageFileInterface*>(opened.page.GetEntry(0)->PictureHandle());
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->GetEntriesNumber(), 0);
}

// A record whose protected parts can be had.
struct OpenRecord : PageParameters {
    using PageParameters::EntriesList;
    using PageParameters::NumberOfEntries;
};

TEST_F(Pages, ShareTheirListWithCopies)
{
    files_.Put("page", ThreeEntries().Bytes());
    PageParameters copy;
    PageParameters second;
    {
        OpenedPage opened;
        const auto& record = dynamic_cast<const PageParameters&>(*opened.page.PictureParams());
        second = copy = record;
        const PageParameters third(record);
        EXPECT_EQ(third[1], record[1]);
        EXPECT_TRUE(opened.page.OpenPictureFile("page", true, true, nullptr));
        EXPECT_NE(record[1], copy[1]);
    }
    ASSERT_NE(copy[2], nullptr);
    EXPECT_EQ(copy[2], second[2]);
    EXPECT_EQ(copy[2]->XOffset(), 2.0);
}

TEST_F(Pages, GiveUpAListThatIsReplaced)
{
    OpenRecord record;
    record.NumberOfEntries(1);
    EXPECT_EQ(record[0], nullptr);
    auto* const first = new BasePageEntry* [1] { new PagePictureEntry };
    record.EntriesList(first);
    OpenRecord copy(record);
    EXPECT_EQ(record[0], first[0]);
    record.NumberOfEntries(2);
    EXPECT_EQ(record[1], nullptr); // the list was made with one
    auto* const second = new BasePageEntry* [2] {};
    record.EntriesList(second);
    EXPECT_EQ(record[0], nullptr);
    record.EntriesList(second);
    EXPECT_EQ(record.EntriesList(), second);
    record.EntriesList(nullptr);
    EXPECT_EQ(record.EntriesList(), nullptr);
    delete[] second;
    EXPECT_EQ(copy[0], first[0]);
    delete first[0];
    delete[] first;
}

TEST_F(Pages, WithoutARecordHaveNoEntries)
{
    struct Bare : PageFileInterface {
        Bare()
        {
            const std::unique_ptr<PictureParameters> made(PictureParams());
            PictureParams(nullptr);
        }
        using PageFileInterface::PictureParams;
    };
    const Bare page;
    EXPECT_EQ(page.GetEntriesNumber(), 0);
    EXPECT_EQ(page.GetEntry(0), nullptr);
}

TEST_F(Pages, LeaveTheCodeOrTheFailureOfEachOperationThatFails)
{
    files_.Put("page", ThreeEntries().Bytes());
    for (const Failing way : { Failing::once, Failing::fromThereOn })
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(number);
            PageFileInterface page;
            bool isOpen = false;
            bool hasThrown = false;
            files_.Watched().FailAny(number, EIO, way);
            try {
                isOpen = page.OpenPictureFile("page", true, true, nullptr);
            } catch (CFileException* failure) {
                hasThrown = true;
                failure->Delete();
            }
            const bool hasFailed = files_.Watched().HasFailed();
            files_.Watched().FailAny(0, 0);
            if (!hasFailed)
                break;
            EXPECT_EQ(page.ObjectStatus(), isOpen || hasThrown);
            const unsigned long code = page.PictureParams()->TraceStatus();
            EXPECT_TRUE(isOpen || hasThrown ? code == 0 : code == 90065 || number == 1) << code;
            EXPECT_TRUE(page.OpenPictureFile("page", true, true, nullptr));
            EXPECT_NE(page.GetEntry(2), nullptr);
        }
}

} // namespace
