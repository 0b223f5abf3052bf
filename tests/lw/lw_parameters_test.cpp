// The record of a line-work file: its colours, which of them are transparent, and the header of a
// new file.
#include "core/failure_codes.h"
#include "lw/lw_parameters.h"
#include "platform/file.h"
#include "support/lw_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tympan::test;
using Bytes = std::vector<unsigned char>;
using Inks = std::array<unsigned char, 4>;
using Columns = std::array<unsigned short, 4>;

constexpr unsigned short kNone = LwPictureParameters::kNoColour;
constexpr Columns kNowhere{ kNone, kNone, kNone, kNone };
constexpr unsigned char kFourPlates = 15, kBlackAlone = 8;

class Record : public LwPictureParameters {
  public:
    using LwPictureParameters::operator();
    using LwPictureParameters::operator=;
    using LwPictureParameters::ColorsTable;
    using LwPictureParameters::CopyParameters;
    using LwPictureParameters::CreateColorsTable;
    using LwPictureParameters::CreateTransparentColorTable;
    using LwPictureParameters::DestroyColorsTable;
    using LwPictureParameters::DestroyTransparentColorTable;
    using LwPictureParameters::FileColorsNumber;
    using LwPictureParameters::ForceTransparentColorTable;
    using LwPictureParameters::TransparentColor;
    using LwPictureParameters::TransparentColorTable;
    using LwPictureParameters::TransparentColorTableSize;

    Columns TransparentColors() const
    {
        Columns values{};
        std::copy_n(TransparentColor(), values.size(), values.begin());
        return values;
    }
    std::vector<Columns> TransparentRows() const
    {
        return Rows<Columns>(TransparentColorTable(), TransparentColorTableSize());
    }
    std::vector<Inks> Colours() const { return Rows<Inks>(ColorsTable(), TableColorsNumber()); }

  private:
    template <typename Row, typename Value>
    static std::vector<Row> Rows(const Value (*table)[4], std::size_t count)
    {
        std::vector<Row> rows(count);
        for (std::size_t i = 0; i < count; ++i)
            std::copy_n(table[i], rows[i].size(), rows[i].begin());
        return rows;
    }
};

Bytes FileOf(const std::vector<LwColour>& colours, unsigned char mask = kFourPlates)
{
    return LwPicture{ .width = 600, .mask = mask, .colours = colours }.Header();
}

/// Loads a file of those bytes and gives the position behind it.
ULONGLONG Load(const Bytes& bytes, Record& record, bool expected = true)
{
    const TemporaryFolder folder;
    CFile file(folder.File("record", bytes).c_str(), CFile::modeRead);
    EXPECT_EQ(record.Load(file), expected);
    return file.GetPosition();
}

/// Colours whose black is each of 255 values, but for one; black is transparent in the first.
std::vector<LwColour> AllBlacksBut(unsigned int missing)
{
    std::vector<LwColour> colours;
    for (unsigned int black = 0; black < 256; ++black)
        if (black != missing)
            colours.push_back({ { 0, 0, 0, static_cast<unsigned char>(black) } });
    colours[0].flags = 0x10;
    return colours;
}

struct LoadCase {
    const char* name;
    unsigned char mask;
    std::vector<LwColour> file;
    std::vector<Columns> transparentRows;
    Columns transparentColors;
    std::vector<Inks> colours;
};

const LoadCase kLoadCases[] = {
    { "no colours", kFourPlates, {}, {}, kNowhere, {} },
    { "low bits", kFourPlates, { { { 1, 2, 3, 4 }, 15 } }, {}, kNowhere, { { 1, 2, 3, 4 } } },
    { "cyan of the third; the others' free values are told all the same",
      kFourPlates,
      { { { 9, 0, 1, 0 } }, { { 9, 1, 2, 0 } }, { { 9, 2, 3, 0 }, 0x80 } },
      { { 2, kNone, kNone, kNone } },
      { 0, 3, 0, 1 },
      { { 9, 0, 1, 0 }, { 9, 1, 2, 0 }, { 0, 2, 3, 0 } } },
    { "two colours, each in its plates, get the plate's value",
      kFourPlates,
      { { { 0, 8, 0, 8 }, 0x50 }, { { 0, 9, 9, 9 }, 0x20 }, { { 0, 0, 0, 7 }, 0x10 } },
      { { kNone, 0, kNone, 0 }, { kNone, kNone, 1, kNone }, { kNone, kNone, kNone, 2 } },
      { 1, 1, 1, 0 },
      { { 0, 1, 0, 0 }, { 0, 9, 1, 9 }, { 0, 0, 0, 0 } } },
    { "a transparent colour's own value counts as used",
      kBlackAlone,
      { { { 0, 0, 0, 0 } }, { { 0, 0, 0, 1 }, 0x10 }, { { 0, 0, 0, 3 } } },
      { { kNone, kNone, kNone, 1 } },
      { kNone, kNone, kNone, 2 },
      { { 0, 0, 0, 0 }, { 0, 0, 0, 2 }, { 0, 0, 0, 3 } } },
    { "a plate that the picture lacks stays; the one it has gets its free value",
      kBlackAlone,
      { { { 5, 5, 5, 0 }, 0x80 } },
      { { 0, kNone, kNone, kNone } },
      { kNone, kNone, kNone, 1 },
      { { 5, 5, 5, 0 } } },
};

TEST(LwParameters, LoadsColoursAndWorksOutTransparentValues)
{
    for (const LoadCase& row : kLoadCases) {
        SCOPED_TRACE(row.name);
        Record record;
        const Bytes bytes = FileOf(row.file, row.mask);
        EXPECT_EQ(Load(bytes, record), bytes.size());
        EXPECT_EQ(record.FileColorsNumber(), row.file.size());
        EXPECT_EQ(record.Colours(), row.colours);
        EXPECT_EQ(std::as_const(record).ColorsTable() == nullptr, row.colours.empty());
        EXPECT_EQ(record.TransparentRows(), row.transparentRows);
        EXPECT_EQ(record.TransparentColors(), row.transparentColors);
        EXPECT_EQ(record.RowSize(), 600U);
        EXPECT_EQ(record.BitsPerSample(), 8 * record.NumberOfSeparations());
    }
}

TEST(LwParameters, TheValueForTransparentIsBelow255)
{
    for (const unsigned int missing : { 254U, 0U, 255U }) {
        Record record;
        EXPECT_EQ(Load(FileOf(AllBlacksBut(missing), kBlackAlone), record), 6638U);
        EXPECT_EQ(record.GetTransparentColor(Black), missing == 255 ? kNone : missing);
        EXPECT_EQ(record.GetColor(0, Black), missing == 255 ? 0 : missing);
    }
}

TEST(LwParameters, AFileThatEndsRepeatsItsLastByteAsInk)
{
    const Bytes whole = FileOf({ { { 144, 2, 3, 4 } }, { { 225, 226, 227, 228 }, 0x10 } });
    const struct {
        const char* name;
        std::size_t length;
        std::vector<Inks> colours;
        std::size_t transparent;
    } kCases[] = {
        { "before the number of colours", 1080, {}, 0 },
        { "before the colours", 2000, { { 2, 2, 2, 2 }, { 2, 2, 2, 2 } }, 0 },
        { "behind a number", 2067, { { 144, 2, 3, 4 }, { 2, 2, 2, 2 } }, 0 },
        { "behind the flags", 2068, { { 144, 2, 3, 4 }, { 16, 16, 16, 0 } }, 1 },
        { "between inks", 2070, { { 144, 2, 3, 4 }, { 225, 226, 226, 0 } }, 1 },
        { "no flags", 2051, { Inks{ 144, 144, 144, 144 }, Inks{ 144, 144, 144, 144 } }, 0 },
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.name);
        Record record;
        EXPECT_EQ(Load(Bytes(whole.begin(), whole.begin() + static_cast<long>(row.length)), record),
                  std::max<ULONGLONG>(row.length, 2048));
        EXPECT_EQ(record.Colours(), row.colours);
        EXPECT_EQ(record.TransparentColorTableSize(), row.transparent);
    }
}

// The tables of one file after those of another: larger, smaller, as large as the count that the
// former left, none.
TEST(LwParameters, EachLoadReplacesTheTables)
{
    Record record;
    for (const auto& [colours, transparent] : std::vector<std::pair<std::size_t, std::size_t>>{
             { 10, 3 }, { 3, 3 }, { 2, 0 }, { 255, 255 }, { 0, 0 }, { 5, 1 } }) {
        std::vector<LwColour> file(colours, LwColour{ { 1, 1, 1, 1 } });
        std::fill_n(file.begin(), transparent, LwColour{ { 3, 3, 3, 3 }, 0xF0 });
        record.Clear();
        Load(FileOf(file), record);
        EXPECT_EQ(record.TableColorsNumber(), colours);
        EXPECT_EQ(record.TransparentColorTableSize(), transparent);
        EXPECT_EQ(record.GetTransparentColor(Cyan), transparent != 0 ? 0 : kNone);
        for (unsigned int row = 0; row < 256; ++row)
            EXPECT_EQ(record.IsColorTransparent(static_cast<unsigned char>(row), Magenta),
                      row < transparent);
    }
    record.Clear();
    Load(FileOf({}, 0), record, false); // refused: the tables stay
    EXPECT_EQ(record.TableColorsNumber(), 5);
    EXPECT_TRUE(record.IsColorTransparent(0, Black));
}

TEST(LwParameters, WhatIsNotInTheTablesIsHarmless)
{
    Record record;
    Load(FileOf({ { { 1, 2, 3, 4 }, 0xF0 } }), record);
    for (const int number : { 4, 6, -1, 2147483647 }) {
        const auto separation = static_cast<ColorSeparationType>(number);
        record.SetColor(separation, 0, 9);
        record.SetTransparentColor(separation, 9);
        EXPECT_EQ(record.GetColor(0, separation), 255);
        EXPECT_EQ(record.GetTransparentColor(separation), kNone);
        EXPECT_FALSE(record.IsColorTransparent(0, separation));
    }
    record.SetColor(Cyan, 1, 9);
    EXPECT_EQ(record.GetColor(1, Cyan), 255);
    EXPECT_TRUE(record.IsColorIndexLegal(1));
    EXPECT_FALSE(record.IsColorIndexLegal(2));

    record.SetTransparentColor(Yellow, 9);
    EXPECT_EQ(record.GetTransparentColor(Yellow), 9);

    record.DestroyColorsTable();
    for (int times = 0; times < 2; ++times)
        record.DestroyTransparentColorTable();
    record.TransparentColorTableSize(300); // more than there are
    EXPECT_EQ(record.GetColor(0, Cyan), 255);
    EXPECT_FALSE(record.IsColorTransparent(0, Cyan));
    record.CreateTransparentColorTable(200);
    record.TransparentColorTableSize(300);
    EXPECT_FALSE(record.IsColorTransparent(0, Cyan));
}

TEST(LwParameters, ForcesTransparentValues)
{
    const Inks kList{ 2, 0, 2, 1 };
    const Columns kFirst{ 3, kNone, kNone, kNone };
    const struct {
        unsigned char mask;
        unsigned short count; // of the list
        Columns values;
        Columns rowOfColour2; // of the transparent colour table
    } kCases[] = {
        { kFourPlates, 0, { 3, 0, 0, 3 }, kNowhere },
        { kFourPlates, 1, { 3, 0, 0, 3 }, { 3, 0, 0, 3 } },
        { kBlackAlone, 4, kFirst, kFirst }, // one plate: the first column
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.count);
        Record record;
        Load(FileOf({ { { 0, 1, 1, 0 } }, { { 1, 2, 2, 1 } }, { { 2, 3, 3, 2 } } }, row.mask),
             record);
        const std::vector<Inks> before = record.Colours();
        EXPECT_TRUE(record.ForceTransparentColorTable(kList.data(), row.count));
        EXPECT_EQ(record.TransparentColors(), row.values);
        EXPECT_EQ(record.Colours(), before);
        EXPECT_EQ(record.TransparentColorTableSize(), 0U);
        EXPECT_FALSE(record.IsColorTransparent(2, Cyan));
        record.TransparentColorTableSize(3);
        EXPECT_EQ(record.TransparentRows()[2], row.rowOfColour2);
    }
    std::vector<LwColour> full = AllBlacksBut(255); // no black is free
    full[0].flags = 0;
    Record record;
    Load(FileOf(full), record);
    const unsigned char list[] = { 7, 255 };
    EXPECT_FALSE(record.ForceTransparentColorTable(nullptr, 1));
    EXPECT_EQ(record.TransparentColors(), kNowhere);
    EXPECT_FALSE(record.ForceTransparentColorTable(list, 1));
    EXPECT_EQ(record.TransparentColors(), (Columns{ 1, 1, 1, kNone })); // those before are done
    EXPECT_FALSE(record.ForceTransparentColorTable(list, 2));           // no row for 255
    Record empty;
    empty.NumberOfSeparations(9);
    EXPECT_FALSE(empty.ForceTransparentColorTable(list, 1));
}

TEST(LwParameters, ACopyHasATableOfZeros)
{
    Record source;
    Load(FileOf({ { { 1, 2, 3, 4 }, 0x80 }, { { 5, 6, 7, 8 } } }), source);
    source.LwFileName("name");
    source.LwFileSize(12);
    const auto expectTaken = [&](const Record& target) {
        EXPECT_EQ(target.Colours(), std::vector<Inks>(2));
        EXPECT_EQ(target.FileColorsNumber(), 2);
        EXPECT_EQ(target.TransparentColors(), source.TransparentColors());
        EXPECT_EQ(target.TransparentColorTableSize(), 0U);
        EXPECT_TRUE(target.LwFileName().IsEmpty());
        EXPECT_EQ(target.LwFileSize(), 0U);
    };
    const Record copy(source);
    expectTaken(copy);
    EXPECT_EQ(copy.NumberOfSeparations(), 0U);
    EXPECT_EQ(copy.WidthInPixels(), 0.0);

    Record assigned;
    assigned = source;
    expectTaken(assigned);
    EXPECT_EQ(assigned.WidthInPixels(), 600.0);
    assigned.SetColor(Cyan, 0, 1);
    assigned = *&assigned; // itself: nothing changes
    EXPECT_EQ(assigned.GetColor(0, Cyan), 1);
    assigned = Record();
    EXPECT_EQ(std::as_const(assigned).ColorsTable(), nullptr);
    Record shortCopy;
    shortCopy.CopyParameters(source);
    EXPECT_EQ(shortCopy.FileColorsNumber(), 2);
    EXPECT_EQ(std::as_const(shortCopy).ColorsTable(), nullptr);
    PictureParameters common;
    EXPECT_EQ(assigned(&source), &source);
    EXPECT_EQ(assigned(&common), nullptr);
    EXPECT_EQ(assigned(nullptr), nullptr);
    const Record empty;
    Record emptyCopy(empty);
    emptyCopy.FileColorsNumber(1); // a record of its own
    EXPECT_EQ(std::as_const(emptyCopy).ColorsTable(), nullptr);
}

TEST(LwParameters, TakesOverTables)
{
    Record record;
    record.CreateColorsTable(2);
    const std::unique_ptr<unsigned char[][4]> before(record.ColorsTable());
    record.ColorsTable(new unsigned char[2][4]{ { 1, 2, 3, 4 }, { 5, 6, 7, 8 } });
    EXPECT_EQ(record.Colours(), (std::vector<Inks>{ { 1, 2, 3, 4 }, { 5, 6, 7, 8 } }));
    record.FileColorsNumber(2);
    record.TransparentColorTable(new unsigned short[2][4]{ { 1, kNone, kNone, kNone }, {} });
    record.TransparentColorTableSize(1);
    EXPECT_TRUE(record.IsColorTransparent(1, Cyan));
    EXPECT_FALSE(record.IsColorTransparent(0, Cyan));
    const std::unique_ptr<unsigned short[][4]> given(record.TransparentColorTable());
    record.TransparentColorTable(nullptr);
    EXPECT_FALSE(record.IsColorTransparent(1, Cyan));
    record.TransparentColor(Columns{ 1, 2, 3, 4 }.data());
    EXPECT_EQ(record.GetTransparentColor(Black), 4);
}

TEST(LwParameters, WritesTheHeaderOfAGreyFile)
{
    const TemporaryFolder folder;
    Record written;
    written.NumberOfSeparations(1);
    written.WidthInPixels(20000.0);
    written.HeightInPixels(3.0);
    written.WidthInUnits(10.0);
    written.HeightInUnits(1.0);
    for (const std::size_t nameLength : { 0U, 79U, 80U, 300U }) {
        SCOPED_TRACE(nameLength);
        const std::string name(nameLength, 'n');
        written.LwFileName(name.c_str());
        CFile file(folder.Path("grey").c_str(), CFile::modeCreate | CFile::modeReadWrite);
        written.SaveHader(file);
        EXPECT_EQ(file.GetPosition(), 6638U);

        const Bytes bytes = BytesOf(folder.Path("grey"));
        ASSERT_EQ(bytes.size(), 6638U);
        const std::string field = '\0' + name.substr(0, 79) + std::string(80, '\0');
        EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 82), field.substr(0, 80) + "LW");
        const Bytes kLastColour{ 255, 0, 255, 255, 255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 };
        EXPECT_EQ(Bytes(bytes.end() - 18, bytes.end()), kLastColour);

        Record read;
        ASSERT_TRUE(read.Load(file));
        EXPECT_EQ(read.NumberOfSeparations(), 1U);
        EXPECT_EQ(read.Separation(0), Black);
        EXPECT_STREQ(read.FileType(), "LW");
        EXPECT_EQ(read.WidthInPixels(), 20000.0);
        EXPECT_EQ(read.TransparentColors(), kNowhere);
        std::vector<Inks> greys;
        for (const LwColour& colour : AllBlacksBut(64))
            greys.push_back({ 255, 255, 255, colour.inks[3] });
        EXPECT_EQ(read.Colours(), greys);
    }
    written.WidthInPixels(-1.0); // doesn't fit its field
    CFile file(folder.Path("refused").c_str(), CFile::modeCreate | CFile::modeWrite);
    written.SaveHader(file);
    EXPECT_EQ(written.TraceStatus(), tympan::code::kHeaderRefused);
    EXPECT_EQ(file.GetLength(), 82U); // name and type
}

} // namespace
