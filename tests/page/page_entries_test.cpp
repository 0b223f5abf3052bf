// Entries by themselves: made, read, written, and where they lie.
#include "lw/lw_file.h"
#include "page/placement.h"
#include "page_files.h"
#include "platform/file.h"
#include "support/checking.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <typeinfo>

namespace {

using namespace tympan::test;
using tympan::PageEntryState;
using tympan::Placement;
using tympan::PlacementType;

TEST(PageEntries, AreMadeByTheirType)
{
    const PagePictureEntry picture;
    const PageCTWindowEntry window;
    const PageLWEntry lineWork;
    const BasePageEntry* const kMade[] = { nullptr, &picture,  &window, nullptr,
                                           nullptr, &lineWork, nullptr };
    for (unsigned char type = 0; type < 7; ++type) {
        const std::unique_ptr<BasePageEntry> entry(create_page_entry_object(type));
        ASSERT_EQ(entry != nullptr, kMade[type] != nullptr) << int{ type };
        if (entry == nullptr)
            continue;
        const BasePageEntry& made = *entry;
        const BasePageEntry& expected = *kMade[type];
        EXPECT_EQ(typeid(made), typeid(expected)) << int{ type };
    }
}

TEST(PageEntries, TellTheirTypeAtTheFilesPosition)
{
    PageFiles files;
    files.Put("types", { 1, 2, 5 });
    CFile file("types", CFile::modeRead);
    PagePictureEntry picture;
    PageCTWindowEntry window;
    PageLWEntry lineWork;
    EXPECT_TRUE(picture.isTypeOf(file));
    EXPECT_TRUE(window.isTypeOf(file));
    EXPECT_TRUE(lineWork.isTypeOf(file));
    EXPECT_FALSE(picture.isTypeOf(file));
    EXPECT_EQ(picture.TraceStatus(), 0U);
    file.Close();
    EXPECT_EQ(picture.getEntryType(file), 0);
    EXPECT_EQ(picture.TraceStatus(), 90001U);
    EXPECT_EQ(create_page_entry_object(file), nullptr);
}

tympan::PageEntryReading ReadAlone(PageFiles& files, const PageEntrySample& entry)
{
    files.Put("page", PageSample{ .entries = { entry } }.Bytes());
    CFile page("page", CFile::modeRead);
    return tympan::ReadPageEntry(page, 0);
}

template <typename Entry>
void ExpectCopies(const BasePageEntry& entry)
{
    const auto* const source = dynamic_cast<const Entry*>(&entry);
    ASSERT_NE(source, nullptr);
    const Entry copy(*source);
    Entry assigned;
    assigned = *source;
    for (const PagePictureEntry* const one : { static_cast<const PagePictureEntry*>(&copy),
                                               static_cast<const PagePictureEntry*>(&assigned) }) {
        EXPECT_TRUE(tympan::PlacementOf(*one) == tympan::PlacementOf(entry));
        EXPECT_EQ(one->PictureHandle(), source->PictureHandle());
    }
}

TEST(PageEntries, ReadEachFieldFromItsPlace)
{
    PageFiles files;
    files.Put("page", ThreeEntries().Bytes());
    CFile page("page", CFile::modeRead);
    const Placement kPlain{
        .path = "picture.ct", .xOffset = 2, .yOffset = 1, .height = 1, .width = 1
    };
    Placement kTurned = kPlain;
    kTurned.rotation = -90;
    Placement kLineWork = kPlain;
    kLineWork.type = PlacementType::lineWork;
    kLineWork.path = "picture.lw";
    kLineWork.width = 2.5;
    Placement kWindow = kPlain;
    kWindow.type = PlacementType::ctWindow;
    kWindow.container = 1;
    kWindow.colours = { 2 };
    const Placement kExpected[] = { kTurned, kLineWork, kWindow };
    void (*const kExpectCopies[])(const BasePageEntry&) = { ExpectCopies<PagePictureEntry>,
                                                            ExpectCopies<PageLWEntry>,
                                                            ExpectCopies<PageCTWindowEntry> };
    for (unsigned short i = 0; i < 3; ++i) {
        const auto reading = tympan::ReadPageEntry(page, i);
        ASSERT_EQ(reading.state, PageEntryState::fine) << i;
        EXPECT_EQ(reading.typeByte, static_cast<std::uint8_t>(kExpected[i].type));
        EXPECT_TRUE(reading.placement == kExpected[i]) << i;
        EXPECT_TRUE(tympan::PlacementOf(*reading.entry) == kExpected[i]) << i;
        kExpectCopies[i](*reading.entry);
    }
    struct : BasePageEntry {
        bool Load(CFile&) override { return false; }
    } unknown;
    EXPECT_FALSE(tympan::PlacementOf(unknown));
}

struct ReadCase {
    const char* name = nullptr;
    PageEntrySample entry{};
    PageEntryState state = PageEntryState::fine;
    std::size_t colours = 0;
    bool dropped = false;
};

PageEntrySample Window(std::size_t colours, const std::string& behind)
{
    return { .type = 2, .window = "!" + std::string(colours, 'c') + behind };
}

TEST(PageEntries, ReadWhatIsOdd)
{
    constexpr auto kFine = PageEntryState::fine;
    const std::string longPath = std::string(69, '.') + "/picture.ct"; // 80 characters
    const ReadCase kCases[] = {
        { "blanks behind the path", { .path = "picture.ct  " }, kFine },
        { "80 characters", { .path = longPath }, kFine },
        { "no picture", { .path = "other" }, PageEntryState::noPicture },
        { "no colours", Window(0, ""), kFine },
        { "31 colours", Window(31, ""), kFine, 31 },
        { "32 colours", Window(32, ""), kFine, 31, true },
        { "colours up to the end", Window(103, ""), kFine, 31, true },
        { "bytes behind the colours", Window(3, { 0, 'c', 'c' }), kFine, 3 },
        { "a shape", { .type = 3 }, PageEntryState::unknownType },
    };
    PageFiles files;
    files.Put(longPath.c_str(), CtSample{}.Bytes());
    for (const ReadCase& one : kCases) {
        SCOPED_TRACE(one.name);
        const auto reading = ReadAlone(files, one.entry);
        EXPECT_EQ(reading.state, one.state);
        EXPECT_EQ(reading.typeByte, one.entry.type);
        EXPECT_EQ(reading.coloursDropped, one.dropped);
        ASSERT_EQ(reading.placement.has_value(), one.state != PageEntryState::unknownType);
        if (!reading.placement)
            continue;
        EXPECT_EQ(reading.placement->path, one.entry.path.c_str());
        EXPECT_EQ(reading.placement->colours.size(), one.colours);
        EXPECT_TRUE(tympan::PlacementOf(*reading.entry) == reading.placement);
    }
}

TEST(PageEntries, AreCutShortUpToTheirLastField)
{
    PageFiles files;
    for (const std::uint8_t type : std::vector<std::uint8_t>{ 1, 2, 5 }) {
        const PageEntrySample entry{ .type = type, .window = type == 2 ? "\1\2" : "" };
        const std::size_t whole = type == 1 ? 152 : type == 2 ? 155 : 154;
        for (const std::size_t length : { std::size_t{ 0 }, std::size_t{ 1 }, std::size_t{ 81 },
                                          std::size_t{ 100 }, whole - 1, whole }) {
            files.Put("page", Edited(PageSample{ .entries = { entry } }.Bytes(),
                                     { { 2048 + length, kToTheEnd, "" } }));
            CFile page("page", CFile::modeRead);
            const auto reading = tympan::ReadPageEntry(page, 0);
            EXPECT_EQ(reading.state == PageEntryState::cutShort, length < whole)
                << int{ type } << ", " << length;
            EXPECT_EQ(tympan::RoomForPageEntries(page), length == 0 ? 0U : 1U);
        }
    }
}

// An entry whose protected parts can be had.
struct OpenEntry : PagePictureEntry {
    using PagePictureEntry::PictureHandle;
};

TEST(PageEntries, ShareTheirPictureWithCopies)
{
    OpenEntry copy;
    auto* const given = new PageFileInterface;
    auto* const other = new PageFileInterface;
    {
        OpenEntry entry;
        entry.PictureHandle(given);
        entry.PictureHandle(given);
        copy = entry;
        const OpenEntry third(entry);
        EXPECT_EQ(third.PictureHandle(), given);
        entry.PictureHandle(other);
        EXPECT_EQ(copy.PictureHandle(), given);
        copy = entry;
    }
    EXPECT_EQ(copy.PictureHandle(), other);
    delete given; // what a setter has replaced is the caller's
    copy.PictureHandle(nullptr);
    EXPECT_EQ(copy.PictureHandle(), nullptr);
    delete other;
}

struct WindowCase {
    const char* name;
    std::vector<LwColour> colours;
    std::string window;
    unsigned short transparent; // in cyan
    bool valid;
};

TEST(PageEntries, MakeColoursOfTheContainerTransparent)
{
    std::vector<LwColour> kAll(255);
    for (std::size_t i = 0; i < kAll.size(); ++i)
        kAll[i].inks[0] = static_cast<unsigned char>(i);
    const std::vector<LwColour> kTwo{ { { 0, 9, 9, 9 } }, { { 1, 9, 9, 9 } } };
    const WindowCase kCases[] = {
        { "the first free value", kTwo, { 0, 1, 0 }, 2, true },
        { "colours past the table", kTwo, { 0, 1, 2, 77, 0 }, 2, true },
        { "nothing but such colours", kTwo, { 0, 77, 0 }, 2, true },
        { "no free value", kAll, { 0, 1, 0 }, 65535, false },
        { "transparent colours of its own", { { { 0, 9, 9, 9 }, 0xF0 } }, { 0, 1, 0 }, 1, true },
    };
    PageFiles files;
    for (const WindowCase& one : kCases) {
        SCOPED_TRACE(one.name);
        files.Put("container",
                  LwPicture{ .colours = one.colours, .rows = { { { 1, 5 } } } }.Bytes());
        const std::unique_ptr<LWFileInterface> container(create_lw_file_object("container", true));
        const auto reading = ReadAlone(files, { .type = 2, .window = one.window });
        auto& window = dynamic_cast<PageCTWindowEntry&>(*reading.entry);
        EXPECT_EQ(window.ValidateContainer(container.get()), one.valid);
        const auto& record = dynamic_cast<LwPictureParameters&>(*container->PictureParams());
        EXPECT_EQ(record.GetTransparentColor(Cyan), one.transparent);
        EXPECT_TRUE(window.ValidateContainer(nullptr));
        EXPECT_TRUE(window.ValidateContainer(window.PictureHandle())); // a CT picture
    }
}

// ---- writing

TEST(Placements, ComeBackAsTheyWereWritten)
{
    const std::vector<Placement> kWritten{
        { .type = PlacementType::picture,
          .path = "picture.ct",
          .xOffset = -0.0125,
          .height = 12345678.0,
          .width = 99.999999,
          .rotation = -7.5 },
        { .type = PlacementType::lineWork, .path = "picture.lw", .xOffset = 1e-98, .height = 1e98 },
        { .type = PlacementType::ctWindow,
          .path = "nowhere",
          .container = 255,
          .colours = { 255, 1 } },
    };
    PageFiles files;
    {
        PageFileInterface page;
        ASSERT_TRUE(page.OpenPictureFile("page", false, false, nullptr));
        page.PictureParams()->DefineAvailableSeparations(15);
        EXPECT_TRUE(page.SavePictureParams());
        tympan::WritePlacements(page.FileHandle(), kWritten);
        page.ClosePictureFile();
    }
    EXPECT_EQ(files.Memory().Text("page").size(), 2048U + 3 * 256);
    EXPECT_EQ(files.Memory().Text("page").substr(2048 + 82, 28), "+.00000000E+00-.12500000E-01");
    CFile page("page", CFile::modeRead);
    EXPECT_TRUE(PageFileInterface::isTypeOf(page));
    for (unsigned short i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const auto reading = tympan::ReadPageEntry(page, i);
        EXPECT_EQ(reading.state, i < 2 ? PageEntryState::fine : PageEntryState::noPicture);
        EXPECT_TRUE(reading.placement == kWritten[i]);
    }
    EXPECT_EQ(OpenedPage().page.GetEntriesNumber(), 3);
}

TEST(Placements, ThatNoEntryHoldsAreRefused)
{
    const double kInfinity = std::numeric_limits<double>::infinity();
    constexpr auto kWindow = PlacementType::ctWindow;
    const std::vector<Placement> kCases{
        { .path = "" },
        { .path = CString(std::string_view("a\0b", 3)) },
        { .path = CString('a', 81) },
        { .path = "a", .xOffset = kInfinity },
        { .path = "a", .yOffset = std::nan("") },
        { .path = "a", .height = 1e99 },
        { .path = "a", .width = 1e-101 },
        { .path = "a", .container = 1 },
        { .type = PlacementType::lineWork, .path = "a", .colours = { 1 } },
        { .type = kWindow, .path = "a" },
        { .type = kWindow, .path = "a", .container = 256 },
        { .type = kWindow, .path = "a", .container = 0, .colours = { 1, 0 } },
        { .type = kWindow,
          .path = "a",
          .container = 0,
          .colours = std::vector<std::uint8_t>(32, 1) },
    };
    PageFiles files;
    CFile page("page", CFile::modeCreate | CFile::modeWrite);
    for (std::size_t i = 0; i < kCases.size(); ++i)
        EXPECT_THROW(tympan::WritePlacements(page, std::span(kCases).subspan(i, 1)),
                     std::invalid_argument)
            << i;
    EXPECT_THROW(tympan::WritePlacements(page, std::vector<Placement>(65536, { .path = "a" })),
                 std::invalid_argument);
    EXPECT_EQ(page.GetLength(), 0U);
}

struct BoundsCase {
    double angle, width, height;
};

TEST(Placements, LieInTheBoxAroundThem)
{
    const double kHalf = std::sqrt(0.5);
    const BoundsCase kCases[] = {
        { 0, 4, 2 },
        { 90, 2, 4 },
        { -90, 2, 4 },
        { 180, 4, 2 },
        { 270, 2, 4 },
        { 3690, 2, 4 },
        { 45, 6 * kHalf, 6 * kHalf },
        { 30, 4 * std::sqrt(0.75) + 1, 2 + 2 * std::sqrt(0.75) },
    };
    for (const BoundsCase& one : kCases) {
        const auto box = tympan::BoundsOf(
            { .xOffset = -1, .yOffset = 5, .height = 2, .width = 4, .rotation = one.angle });
        EXPECT_EQ(box.left, -1.0);
        EXPECT_EQ(box.top, 5.0);
        EXPECT_DOUBLE_EQ(box.right, -1 + one.width) << one.angle;
        EXPECT_DOUBLE_EQ(box.bottom, 5 + one.height) << one.angle;
    }
}

TEST(Placements, TakeAPicturesSizeFromItsResolution)
{
    PageFiles files;
    files.Put("wide.ct", CtSample{ .inchesHigh = 3.0, .inchesWide = 0.5 }.Bytes());
    files.Put("none.ct", CtSample{ .inchesHigh = 3.0, .inchesWide = 0.0 }.Bytes());
    const auto sizeOf = [](const char* path) {
        return tympan::SizeInInchesOf(*tympan::OpenAnyPicture(path).picture);
    };
    EXPECT_DOUBLE_EQ(sizeOf("wide.ct")->height, 3.0);
    EXPECT_DOUBLE_EQ(sizeOf("wide.ct")->width, 0.5);
    EXPECT_FALSE(sizeOf("none.ct"));
    PageFileInterface unopened; // pixels, and a resolution of 0
    unopened.FileHeightInPixels(5);
    unopened.FileWidthInPixels(5);
    EXPECT_FALSE(tympan::SizeInInchesOf(unopened));
    EXPECT_FALSE(tympan::SizeInInchesOf(BasePictureIF()));
}

} // namespace
