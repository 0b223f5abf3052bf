// The header record: what it reads, what it writes, what a copy takes over.
#include "core/failures.h"
#include "core/picture_parameters.h"
#include "platform/file.h"
#include "support/ct_samples.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>

namespace {

using tympan::test::BytesOf;
using tympan::test::CtSample;
using tympan::test::TemporaryFolder;
using Bytes = std::vector<unsigned char>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

bool LoadFrom(const Bytes& bytes, PictureParameters& record, ULONGLONG* position = nullptr)
{
    const TemporaryFolder folder;
    CFile file(folder.File("header", bytes).c_str(), CFile::modeRead);
    const bool loaded = record.Load(file);
    if (position != nullptr)
        *position = file.GetPosition();
    return loaded;
}

Bytes Changed(const std::function<void(Bytes&)>& change)
{
    Bytes bytes = CtSample().Header();
    change(bytes);
    return bytes;
}

TEST(PictureParameters, AFreshRecordIsEmpty)
{
    const PictureParameters record;
    EXPECT_EQ(record.TraceStatus(), 0U);
    EXPECT_EQ(record.FileSizeUnitsFactor(), 1.0);
    EXPECT_FALSE(record.Nlw());
    EXPECT_EQ(record.NumberOfSeparations(), 0U);
    EXPECT_EQ(record.Separation(0), NoSeparation);
    EXPECT_EQ(record.Separation(4), NoSeparation);
    EXPECT_FALSE(record.SeparationExists(NoSeparation));
    EXPECT_TRUE(record.FileType().IsEmpty());
}

TEST(PictureParameters, LoadsTheCommonHeader)
{
    Bytes bytes =
        CtSample{ .width = 600, .height = 1200, .inchesHigh = 4.0, .inchesWide = 2.0 }.Bytes();
    bytes[2] = 2;
    bytes[80] = 'C';
    bytes[81] = 'T';
    bytes[1026] = 77; // reserved: whatever it holds
    PictureParameters record;
    ULONGLONG position = 0;
    ASSERT_TRUE(LoadFrom(bytes, record, &position));
    EXPECT_EQ(position, 1080U);
    EXPECT_TRUE(record.Nlw());
    EXPECT_STREQ(record.FileType(), "CT");
    EXPECT_EQ(record.HeightInUnits(), 4.0);
    EXPECT_EQ(record.WidthInUnits(), 2.0);
    EXPECT_EQ(record.SizeInPixels(), std::make_pair(1200.0, 600.0));
    EXPECT_DOUBLE_EQ(record.ResolutionOnScanAxis(), 300.0);  // of the height
    EXPECT_DOUBLE_EQ(record.ResolutionOnXScanAxis(), 300.0); // of the width
    EXPECT_EQ(record.NumberOfSeparations(), 4U);
    for (unsigned int slot = 0; slot < 4; ++slot)
        EXPECT_EQ(record.Separation(slot), static_cast<ColorSeparationType>(slot));
}

struct SeparationsCase {
    const char* name;
    unsigned char count, mask;
    unsigned int separations; // 0: refused
    ColorSeparationType first;
};

const SeparationsCase kSeparationsCases[] = {
    { "four", 4, 15, 4, Cyan },
    { "black alone", 1, 8, 1, Black },
    { "count 1, mask of four", 1, 15, 4, Cyan },
    { "count 4, mask of one", 4, 4, 1, Yellow },
    { "bits above the fourth", 1, 0xF2, 1, Magenta },
    { "no count", 0, 15, 0, Cyan },
    { "two plates", 2, 3, 0, Cyan },
    { "a mask of two", 4, 3, 0, Cyan },
    { "a mask of three", 4, 7, 0, Cyan },
    { "no mask", 1, 0, 0, Cyan },
    { "a bit that adds nothing", 1, 16, 0, Cyan },
    { "a large count", 255, 15, 0, Cyan },
};

TEST(PictureParameters, TakesOneOrFourSeparationsByTheMask)
{
    for (const SeparationsCase& one : kSeparationsCases) {
        SCOPED_TRACE(one.name);
        PictureParameters record;
        record.RowSize(9);
        const bool loaded = LoadFrom(Changed([&](Bytes& bytes) {
                                         bytes[1025] = one.count;
                                         bytes[1027] = one.mask;
                                     }),
                                     record);
        EXPECT_EQ(loaded, one.separations != 0);
        EXPECT_EQ(record.NumberOfSeparations(), one.separations);
        EXPECT_EQ(record.TraceStatus(), loaded ? 0U : 90066U);
        EXPECT_EQ(record.RowSize(), loaded ? 9U : 0U); // a refusal clears the record
        if (loaded) {
            EXPECT_EQ(record.Separation(0), one.first);
        }
    }
}

TEST(PictureParameters, EveryUnitsCodeButOneIsMillimetres)
{
    for (const int code : { 0, 2, 255 }) {
        PictureParameters record;
        ASSERT_TRUE(LoadFrom(Changed([&](Bytes& bytes) {
                                 bytes[1024] = static_cast<unsigned char>(code);
                                 CtSample::PutText(bytes, 1028, "+.25400000E+03");
                             }),
                             record));
        EXPECT_DOUBLE_EQ(record.HeightInUnits(), 10.0);
        EXPECT_EQ(record.FileSizeUnitsFactor(), 1.0);
    }
}

struct SizeCase {
    const char* name;
    const char* units;  // of the width
    const char* pixels; // of the width
    double inches, wide, resolution;
};

const SizeCase kSizeCases[] = {
    { "blank", "              ", "            ", 0.0, 0.0, kNan },
    { "no units", "+.00000000E+00", "+00000000004", 0.0, 4.0, kInf },
    { "no pixels", "+.10000000E+01", "+00000000000", 1.0, 0.0, 0.0 },
    { "negative", "-.10000000E+01", "-00000000004", -1.0, -4.0, 4.0 },
    { "the largest whole number", "+.10000000E+01", "+02147483647", 1.0, 2147483647.0,
      2147483647.0 },
    { "more than that", "+.10000000E+01", "+99999999999", 1.0, 2147483647.0, 2147483647.0 },
    { "beyond all doubles", "+.1000000E+999", "+00000000004", kInf, 4.0, 0.0 },
    { "words", "inches        ", "pixels      ", 0.0, 0.0, kNan },
    { "infinity by name", "inf           ", "nan         ", 0.0, 0.0, kNan },
    { "cut, not rounded", "+.10000000E+02", "+00002999999", 10.0, 2999999.0, 299999.9 },
};

TEST(PictureParameters, ReadsSizesThatMeanNothing)
{
    for (const SizeCase& size : kSizeCases) {
        SCOPED_TRACE(size.name);
        PictureParameters record;
        ASSERT_TRUE(LoadFrom(Changed([&](Bytes& bytes) {
                                 CtSample::PutText(bytes, 1042, size.units);
                                 CtSample::PutText(bytes, 1068, size.pixels);
                             }),
                             record));
        EXPECT_EQ(record.WidthInUnits(), size.inches);
        EXPECT_EQ(record.WidthInPixels(), size.wide);
        if (std::isnan(size.resolution)) {
            EXPECT_TRUE(std::isnan(record.ResolutionOnXScanAxis()));
        } else {
            EXPECT_DOUBLE_EQ(record.ResolutionOnXScanAxis(), size.resolution);
        }
    }
}

// What a short file doesn't hold reads as 0, and never as bytes of another field.
TEST(PictureParameters, LoadsAHeaderCutShortAnywhere)
{
    const Bytes whole = CtSample{ .width = 44444, .height = 55555 }.Header();
    for (std::size_t length = 1020; length <= 1080; ++length) {
        PictureParameters record;
        const bool loaded = LoadFrom(
            Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), record);
        ASSERT_EQ(loaded, length >= 1028) << length;
        // "+.10000000E+01" without its exponent is 0.1
        const bool heightIsThere = length >= 1042;
        if (length >= 1031) {
            ASSERT_EQ(record.HeightInUnits(), heightIsThere ? 1.0 : 0.1) << length;
        }
        ASSERT_EQ(record.WidthInPixels(),
                  length < 1080
                      ? std::floor(44444.0 /
                                   std::pow(10.0, static_cast<double>(
                                                      1080 - std::max<std::size_t>(length, 1068))))
                      : 44444.0)
            << length;
    }
}

struct TextCase {
    double value;
    const char* text;
};

TEST(PictureParameters, WritesFloatingText)
{
    // A size below 0.1 has fewer digits and a terminator behind them.
    const TextCase kCases[] = {
        { 12.5, "+.12500000E+02" },        { 0.0, "+.0\0\0\0\0\0\0\0E+00" },
        { 1.0, "+.10000000E+01" },         { 0.5, "+.50000000E+00" },
        { 99999999.0, "+.99999999E+08" },  { 1234.56789, "+.12345678E+04" },
        { 0.05, "+.5000000\0E+00" },       { -3.0, "+.0\0\0\0\0\0\0\0E+00" },
        { kNan, "+.0\0\0\0\0\0\0\0E+00" }, { kInf, "+.99999999E+08" },
        { 1e300, "+.99999999E+08" },       { 99.99999999999999, "+.99999999E+02" },
    };
    for (const TextCase& one : kCases) {
        unsigned char buffer[16];
        std::memset(buffer, 0xA5, sizeof buffer);
        PictureParameters::SizeToBuffer(one.value, buffer);
        EXPECT_EQ(std::memcmp(buffer, one.text, 15), 0) << one.value << ' ' << buffer;
        EXPECT_EQ(buffer[15], 0xA5);
    }
}

TEST(PictureParameters, WritesWholeNumberText)
{
    const TextCase kCases[] = {
        { 0.0, "+00000000000" },  { 1234.0, "+00000001234" }, { 1000000.0, "+00001000000" },
        { 7.9, "+00000000007" },  { 0.5, "+00000000000" },    { 2147483647.0, "+02147483647" },
        { 1e12, "+02147483647" }, { -5.0, "+00000000000" },   { kNan, "+00000000000" },
    };
    for (const TextCase& one : kCases) {
        unsigned char buffer[14];
        std::memset(buffer, 0xA5, sizeof buffer);
        PictureParameters::SizeInPixelsToBuffer(one.value, buffer);
        EXPECT_STREQ(reinterpret_cast<const char*>(buffer), one.text) << one.value;
        EXPECT_EQ(buffer[13], 0xA5);
    }
}

TEST(PictureParameters, CountsTheOrderOfANumber)
{
    const std::pair<double, int> kCases[] = {
        { 0.0, 0 },   { 1.0, 1 },  { 12.5, 2 }, { 1234.0, 4 }, { 0.5, -1 }, { 0.05, -2 },
        { -12.5, 2 }, { 1e9, 10 }, { kInf, 0 }, { -kInf, 0 },  { kNan, 0 },
    };
    for (const auto& [value, order] : kCases)
        EXPECT_EQ(PictureParameters::GetNumberOrder(value), order) << value;
}

TEST(PictureParameters, SavesWhatItLoadsAgain)
{
    const TemporaryFolder folder;
    std::mt19937 random(3);
    for (int i = 0; i < 200; ++i) {
        PictureParameters written;
        written.HeightInPixels(static_cast<double>(random() % 2147483648U));
        written.WidthInPixels(static_cast<double>(random() % 100000));
        written.HeightInUnits(static_cast<double>(random() % 1000000) / 1000.0 + 0.1);
        written.WidthInUnits(0.0);
        written.DefineAvailableSeparations(15);
        const bool inInches = i % 2 == 0;
        written.FileSizeUnitsFactor(inInches ? 1.0 : 0.0);
        CFile file(folder.Path("saved").c_str(), CFile::modeCreate | CFile::modeWrite);
        ASSERT_TRUE(written.Save(file));
        EXPECT_EQ(file.GetPosition(), 1080U);
        file.Close();
        const Bytes bytes = BytesOf(folder.Path("saved"));
        EXPECT_EQ(bytes.size(), 1080U);
        PictureParameters read;
        ASSERT_TRUE(LoadFrom(bytes, read));
        EXPECT_EQ(read.SizeInPixels(), written.SizeInPixels());
        const double inches = written.HeightInUnits() * (inInches ? 1.0 : 1.0 / 25.4);
        EXPECT_NEAR(read.HeightInUnits(), inches, inches * 1e-7);
        EXPECT_EQ(read.WidthInUnits(), 0.0);
    }
}

TEST(PictureParameters, RefusesToSaveWhatTheTextCannotHold)
{
    const TemporaryFolder folder;
    const std::function<void(PictureParameters&)> kChanges[] = {
        [](auto& record) { record.HeightInPixels(2147483648.0); },
        [](auto& record) { record.WidthInPixels(-1.0); },
        [](auto& record) { record.WidthInPixels(kNan); },
        [](auto& record) { record.HeightInUnits(1e8); },
        [](auto& record) { record.WidthInUnits(-0.5); },
        [](auto& record) { record.WidthInUnits(kInf); },
    };
    for (const auto& change : kChanges) {
        PictureParameters record;
        change(record);
        CFile file(folder.Path("saved").c_str(), CFile::modeCreate | CFile::modeWrite);
        EXPECT_FALSE(record.Save(file));
        EXPECT_EQ(file.GetLength(), 0U);
    }
}

TEST(PictureParameters, TheMaskNumbersSlotsAndNotSeparations)
{
    PictureParameters record;
    record.NumberOfSeparations(1);
    record.Separation(0, Yellow);
    EXPECT_EQ(record.DefineAvailableSeparations(), 1);
    EXPECT_TRUE(record.SeparationExists(Yellow));
    EXPECT_FALSE(record.SeparationExists(Cyan));
}

// Appending to a full record counts on, and touches no memory behind the slots.
TEST(PictureParameters, KeepsToFourSlots)
{
    PictureParameters record;
    EXPECT_TRUE(record.DefineAvailableSeparations(15));
    EXPECT_FALSE(record.DefineAvailableSeparations(15));
    EXPECT_EQ(record.NumberOfSeparations(), 8U);
    EXPECT_EQ(record.Separation(3), Black);
    EXPECT_EQ(record.Separation(7), NoSeparation);
    record.NumberOfSeparations(4000000000U);
    EXPECT_FALSE(record.SeparationExists(AllSeparations));
}

TEST(PictureParameters, ResolutionIsOneWhenTheAxesAgree)
{
    PictureParameters record;
    const std::tuple<double, double, double> kCases[] = {
        { 300.0, 300.05, 300.05 }, { 300.0, 300.2, -1.0 }, { 150.0, 150.0, 150.0 },
        { kInf, kInf, kInf },      { kNan, 300.0, -1.0 },  { kInf, 300.0, -1.0 },
    };
    for (const auto& [x, y, single] : kCases) {
        record.Resolution({ x, y });
        EXPECT_EQ(record.Resolution(), single) << x << ' ' << y;
        EXPECT_EQ(record.ResolutionOnXScanAxis() == x || std::isnan(x), true);
    }
    EXPECT_DOUBLE_EQ(PictureParameters::CalculateResolution(29999996.0, 100000.0), 299.9999);
}

TEST(PictureParameters, ACopyTakesOverSomeFields)
{
    PictureParameters source;
    ASSERT_TRUE(LoadFrom(CtSample{ .width = 600, .height = 300 }.Bytes(), source));
    source.RowSize(1);
    source.BitsPerSample(2);
    source.TraceStatus(3);
    source.Nlw(true);
    source.FileType("CT");
    source.FileSizeUnitsFactor(0.5);
    const auto expectTaken = [&](const PictureParameters& target) {
        EXPECT_EQ(target.ResolutionOnScanAxis(), source.ResolutionOnXScanAxis());
        EXPECT_EQ(target.ResolutionOnXScanAxis(), source.ResolutionOnScanAxis());
        EXPECT_EQ(target.FileSizeUnitsFactor(), 0.5);
        EXPECT_EQ(target.SizeInPixels(), source.SizeInPixels());
        EXPECT_EQ(target.NumberOfSeparations(), 4U);
        EXPECT_EQ(target.Separation(3), Black);
    };
    const PictureParameters copy(source);
    expectTaken(copy);
    EXPECT_EQ(copy.SizeInUnits(), std::make_pair(0.0, 0.0));
    EXPECT_EQ(copy.RowSize() + copy.BitsPerSample() + copy.TraceStatus(), 0U);

    PictureParameters assigned;
    assigned.HeightInUnits(9.0);
    assigned.RowSize(8);
    assigned = source;
    expectTaken(assigned);
    EXPECT_EQ(assigned.HeightInUnits(), 9.0);
    EXPECT_EQ(assigned.RowSize(), 8U);
    EXPECT_FALSE(assigned.Nlw());
    EXPECT_TRUE(assigned.FileType().IsEmpty());
    const PictureParameters& itself = assigned;
    assigned = itself; // exchanges nothing
    expectTaken(assigned);

    assigned.Clear();
    EXPECT_EQ(assigned.NumberOfSeparations() + assigned.RowSize(), 0U);
    EXPECT_EQ(assigned.Separation(3), NoSeparation);
    EXPECT_EQ(assigned.HeightInUnits(), 9.0);
    EXPECT_EQ(assigned.FileSizeUnitsFactor(), 0.5);
}

// The header field by field, as derived records use it.
class Fields : public PictureParameters {
  public:
    using PictureParameters::LoadFileHeight;
    using PictureParameters::LoadFileHeightInPixels;
    using PictureParameters::LoadFileNlwBit;
    using PictureParameters::LoadFileSizeUnits;
    using PictureParameters::LoadFileType;
    using PictureParameters::LoadFileWidth;
    using PictureParameters::LoadFileWidthInPixels;
    using PictureParameters::LoadSeparationsInfo;
    using PictureParameters::SaveFileHeight;
    using PictureParameters::SaveFileHeightInPixels;
    using PictureParameters::SaveFileSizeUnits;
    using PictureParameters::SaveFileWidth;
    using PictureParameters::SaveFileWidthInPixels;
    using PictureParameters::SaveSeparationsInfo;
    using PictureParameters::SizeInPixels;
    using PictureParameters::SizeInUnits;
};

TEST(PictureParameters, SingleFieldsMakeTheWholeHeader)
{
    const TemporaryFolder folder;
    Fields written;
    written.SizeInPixels(640.0, 480.0);            // width first
    written.SizeInUnits(std::make_pair(1.5, 2.5)); // height first
    written.DefineAvailableSeparations(15);
    unsigned char buffer[15];
    const std::string path = folder.Path("fields");
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Seek(1024, CFile::begin);
    written.SaveFileSizeUnits(file);
    written.SaveSeparationsInfo(file);
    written.SaveFileHeight(file, buffer);
    written.SaveFileWidth(file, buffer);
    written.SaveFileHeightInPixels(file, buffer);
    written.SaveFileWidthInPixels(file, buffer);
    file.Close();
    const Bytes fields = BytesOf(path);

    CFile whole(folder.Path("whole").c_str(), CFile::modeCreate | CFile::modeWrite);
    ASSERT_TRUE(written.Save(whole));
    whole.Close();
    EXPECT_EQ(fields, BytesOf(folder.Path("whole")));

    Fields read;
    CFile input(path.c_str(), CFile::modeRead);
    input.Seek(1024, CFile::begin);
    read.LoadFileSizeUnits(input);
    read.LoadSeparationsInfo(input);
    read.LoadFileHeight(input, buffer);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer), "+.15000000E+01");
    read.LoadFileWidth(input, buffer);
    read.LoadFileHeightInPixels(input, buffer);
    read.LoadFileWidthInPixels(input, buffer);
    EXPECT_EQ(input.GetPosition(), 1080U);
    EXPECT_EQ(read.SizeInPixels(), std::make_pair(480.0, 640.0));
    EXPECT_EQ(read.SizeInUnits(), std::make_pair(1.5, 2.5));
    EXPECT_EQ(read.NumberOfSeparations(), 4U);
}

TEST(PictureParameters, SingleFieldsTellAndRefuse)
{
    const TemporaryFolder folder;
    const Bytes bytes = { 2, 'L', 'W', 2, 0, 3, 4, 0, 7 };
    CFile file(folder.File("fields", bytes).c_str(), CFile::modeRead);
    Fields record;
    unsigned char buffer[15];
    record.LoadFileNlwBit(file);
    record.LoadFileType(file, buffer);
    EXPECT_TRUE(record.Nlw());
    EXPECT_STREQ(record.FileType(), "LW");
    for (const char* text : { "Illegal separations number!", "Illegal separations mask!" }) {
        try {
            record.LoadSeparationsInfo(file);
            FAIL() << text;
        } catch (const LoadFailedException& failure) {
            EXPECT_STREQ(failure.MessageText(), text);
        }
    }
    record.LoadFileWidth(file, buffer); // at the end of the file: nothing, and not the last text
    EXPECT_EQ(record.WidthInUnits(), 0.0);
    EXPECT_EQ(buffer[0], '\0');
}

} // namespace
