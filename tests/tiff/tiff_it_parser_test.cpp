// The structure of TIFF/IT files: what is read, what is refused, and what a bad file may cost.
#include "core/row_access.h"
#include "platform/file_expectations.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tiff_it_files.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <random>

namespace {

using namespace tympan::test;

// The parser with its inside open.
class Parser : public tympan::TiffItWithoutRows {
  public:
    using TiffItP1Interface::DetectTiffItType;
    using TiffItP1Interface::m_Ifds;
    using TiffItP1Interface::m_ImageLength;
    using TiffItP1Interface::m_ImageWidth;
    using TiffItP1Interface::m_PreviousIfdCount;
    using TiffItP1Interface::m_StripCount;
    using TiffItP1Interface::m_Strips;
    using TiffItP1Interface::Strips;

    bool Open(const char* name = "pic", bool reopen = false)
    {
        return OpenPictureFile(name, true, reopen, nullptr);
    }
    unsigned long Detect()
    {
        CFile file("pic", CFile::modeRead);
        return DetectTiffItType(file);
    }
};

const std::vector<unsigned char> kCt = CtSample(5, 3).Bytes();
constexpr std::size_t kFirstEntry = 10; // behind the header and the count

std::vector<unsigned char> With(std::size_t at, std::initializer_list<unsigned char> bytes)
{
    std::vector<unsigned char> file = kCt;
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
    return file;
}

std::vector<unsigned char> Cut(std::size_t length)
{
    return { kCt.begin(), kCt.begin() + static_cast<std::ptrdiff_t>(length) };
}

struct CodeCase {
    const char* name;
    std::vector<unsigned char> file;
    bool opens;
    unsigned long code;
    unsigned long type;
};

const CodeCase kCodeCases[] = {
    { "sound", kCt, true, 0, 0 },
    { "line work", LwSample(5, 3, 2).Bytes(), true, 0, 1 },
    { "no header", Cut(7), false, 90052, 2 },
    { "version before offset", With(2, { 43, 0, 9 }), false, 90056, 2 },
    { "an odd offset", With(4, { 9 }), false, 90057, 2 },
    { "no directory", With(4, { 0 }), true, 0, 2 },
    { "another byte order is the low byte first", With(0, { 'X', 'Y' }), true, 0, 0 },
    { "a directory behind the end", With(4, { 0, 0, 1 }), false, 90052, 2 },
    { "cut in the count", Cut(9), false, 90052, 2 },
    { "cut in an entry", Cut(30), false, 90052, 2 },
    { "cut in front of the next place", Cut(kFirstEntry + 72 + 3), false, 90052, 2 },
    { "values behind the end", With(kFirstEntry + 24 + 8, { 0, 0, 1 }), false, 90052, 2 },
    { "a count of 4 GiB", With(kFirstEntry + 24 + 4, { 255, 255, 255, 255 }), false, 90052, 2 },
    { "type 7", With(kFirstEntry + 60 + 2, { 7 }), false, 90058, 2 },
    { "type 0", With(kFirstEntry + 60 + 2, { 0 }), false, 90058, 2 },
    { "a loop of one", With(kFirstEntry + 72, { 8 }), false, 90050, 2 },
    { "three values of bits", With(kFirstEntry + 24 + 4, { 3 }), true, 90053, 2 },
    { "no field of bits", With(kFirstEntry + 24, { 9 }), true, 0, 2 },
};

TEST(TiffItParser, TellsEachFaultByItsCode)
{
    for (const CodeCase& one : kCodeCases) {
        SCOPED_TRACE(one.name);
        const OneFile files(one.file);
        Parser opened;
        EXPECT_EQ(opened.Open(), one.opens);
        EXPECT_EQ(opened.TraceStatus(), one.opens ? 0 : one.code);
        EXPECT_TRUE(opened.ObjectStatus());
        Parser asked;
        EXPECT_EQ(asked.Detect(), one.type);
        EXPECT_EQ(asked.TraceStatus(), one.code);
        EXPECT_EQ(asked.Detect(), one.code == 0 ? one.type : 2);
        EXPECT_EQ(std::string(asked.ErrorMsg().GetString()), "BasePictureIF:\n No Error !");
    }
}

TEST(TiffItParser, BothByteOrdersGiveTheSame)
{
    for (const WordOrder16 order : { WordOrder16::LowFirst, WordOrder16::HighFirst }) {
        TiffItSample sample = CtSample(1000, 300);
        sample.order = order;
        sample.directories[0].push_back({ 282, 5, { 600, 2 } });
        sample.directories[0].push_back({ 305, 2, { 'a', 'b', 'c' } });
        sample.directories[0].push_back({ 9, 3, { 1, 0xFFFE } });
        const OneFile files(sample.Bytes());
        Parser parser;
        ASSERT_TRUE(parser.Open());
        EXPECT_EQ(parser.FileWidthInPixels(), 1000U);
        EXPECT_EQ(parser.FileHeightInPixels(), 300U);
        const auto entries = Parser::m_Ifds.at(0).Entries();
        ASSERT_EQ(entries.size(), 9U);
        EXPECT_EQ(std::get<std::vector<double>>(entries[6].Data), std::vector{ 300.0 });
        EXPECT_NE(entries[6].ValueOffset, 0U);
        EXPECT_EQ(std::get<std::vector<std::uint8_t>>(entries[7].Data),
                  (std::vector<std::uint8_t>{ 'a', 'b', 'c' }));
        EXPECT_EQ(std::get<std::vector<std::uint16_t>>(entries[8].Data),
                  (std::vector<std::uint16_t>{ 1, 0xFFFE }));
        EXPECT_EQ(entries[8].ValueOffset, 0U);
        EXPECT_EQ(parser.FileHandle().GetPosition(), 0U);
    }
}

struct StripCase {
    const char* name;
    std::vector<TiffItField> fields; // of a second directory
    std::uint32_t count;
    std::vector<StripInfo> strips;
};

TEST(TiffItParser, StripFieldsMeetInOneTable)
{
    constexpr std::uint32_t kAll = 0xFFFFFFFF;
    const StripCase kCases[] = {
        { "none", {}, 0, {} },
        { "one value of rows for three strips",
          { { 273, 4, { 7, 8, 9 } }, { 278, 3, { 2 } }, { 279, 3, { 4, 5, 6 } } },
          3,
          { { 7, 2, 4 }, { 8, kAll, 5 }, { 9, kAll, 6 } } },
        { "the first field makes the table",
          { { 278, 3, { 2 } }, { 273, 4, { 7, 8, 9 } } },
          3,
          { { 7, 2, 0 } } },
        { "a later directory overwrites",
          { { 273, 4, { 7, 8 } }, { 273, 3, { 5, 6, 4 } } },
          3,
          { { 5, kAll, 0 }, { 6, kAll, 0 } } },
        { "bytes are no places", { { 273, 1, { 7 } }, { 279, 5, { 7, 1 } } }, 0, {} },
        { "no values", { { 273, 4, {} } }, 0, {} },
    };
    for (const StripCase& one : kCases) {
        SCOPED_TRACE(one.name);
        TiffItSample sample;
        sample.directories = { { { 256, 3, { 5 } }, { 257, 1, { 3 } } },
                               { { 256, 4, { 70000 } }, { 256, 3, {} } } };
        for (const TiffItField& field : one.fields)
            sample.directories[1].push_back(field);
        const OneFile files(sample.Bytes());
        Parser parser;
        ASSERT_TRUE(parser.Open());
        EXPECT_EQ(parser.FileWidthInPixels(), 70000U);
        EXPECT_EQ(parser.FileHeightInPixels(), 0U);
        EXPECT_EQ(Parser::m_StripCount, one.count);
        ASSERT_EQ(Parser::Strips().size(), one.strips.size());
        for (std::size_t i = 0; i < one.strips.size(); ++i) {
            EXPECT_EQ(Parser::Strips()[i].Offset, one.strips[i].Offset);
            EXPECT_EQ(Parser::Strips()[i].RowsPerStrip, one.strips[i].RowsPerStrip);
            EXPECT_EQ(Parser::Strips()[i].ByteCount, one.strips[i].ByteCount);
        }
        EXPECT_EQ(Parser::m_Ifds.at(0).Entries().size(), 2U);
        EXPECT_EQ(Parser::m_Ifds.at(1).Entries().size(), 4 + one.fields.size());
        EXPECT_EQ(Parser::m_Ifds.at(1).NumberOfEntries, 2 + one.fields.size());
    }
}

// Directories that share their bytes or their values would ask for more than the file has.
TEST(TiffItParser, WhatIsReadKeepsToTheFile)
{
    TiffItSample sample = CtSample(5, 3);
    sample.data.resize(4096);
    for (int i = 0; i < 40; ++i)
        sample.directories[0].push_back({ 9, 1, std::vector<std::uint32_t>(8, 1), 4000 });
    const OneFile files(sample.Bytes());
    Parser parser;
    EXPECT_FALSE(parser.Open());
    EXPECT_EQ(parser.TraceStatus(), 90050U);
    // A chain of directories inside each other, and a loop of three.
    OneFile nested(
        { 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 14, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 0, 8, 0, 0, 0 });
    Parser looped;
    EXPECT_FALSE(looped.Open());
    EXPECT_EQ(looped.TraceStatus(), 90050U);
}

TEST(TiffItParser, ThereIsOneResultForAllObjects)
{
    OneFile files(kCt);
    Parser parser;
    ASSERT_TRUE(parser.Open());
    EXPECT_EQ(Parser::Strips().size(), 1U);
    EXPECT_TRUE(parser.Open()); // the bare name of the open file
    EXPECT_TRUE(Parser::Strips().empty());
    EXPECT_EQ(parser.FileWidthInPixels(), 5U);
    EXPECT_TRUE(parser.Open("pic", true));
    EXPECT_EQ(Parser::m_PreviousIfdCount, 1U);
    EXPECT_EQ(Parser::Strips().size(), 1U);
    {
        const Parser other;
    }
    EXPECT_TRUE(Parser::Strips().empty());
    parser.ClosePictureFile();
    EXPECT_EQ(Parser::m_Ifds.size(), 1U);
    EXPECT_FALSE(parser.Open("missing"));
    EXPECT_FALSE(parser.ObjectStatus());
    CFileException failure;
    try {
        parser.OpenPictureFile("missing", true, false, &failure);
        ADD_FAILURE() << "a given failure is thrown";
    } catch (CFileException* thrown) {
        EXPECT_EQ(thrown, &failure);
        EXPECT_EQ(thrown->m_cause, CFileException::fileNotFound);
    }
}

TEST(TiffItParser, AReadThatFailsIsToldOrThrown)
{
    OneFile files(LwSample(5, 3, 2).Bytes());
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE(number);
        Parser parser;
        files.Watched().FailAny(number, EIO);
        bool isOpen = false, isThrown = false;
        try {
            isOpen = parser.Open();
        } catch (CFileException* thrown) {
            isThrown = true;
            thrown->Delete();
        }
        const bool failed = files.Watched().HasFailed();
        files.Watched().FailAny(0, 0);
        EXPECT_EQ(isOpen, !failed);
        if (failed && !isThrown && number > 2) {
            EXPECT_EQ(parser.TraceStatus(), 90001U);
            EXPECT_FALSE(parser.TraceStatusString().IsEmpty());
        }
        if (!failed)
            break;
        EXPECT_TRUE(parser.Open("pic", true));
    }
    EXPECT_EQ(files.Memory().OpenCount(), 0U);
}

// What is private of a kind. An explicit instantiation may name it.
template <typename Kind>
struct Inside {
    static inline Kind* (*create)(const CString&, bool) = nullptr;
    static inline bool (Kind::*isTypeOf)(CFile&) = nullptr;
};
template <typename Kind, auto create, auto isTypeOf>
struct Opened {
    static inline const bool isDone = [] {
        Inside<Kind>::create = create;
        Inside<Kind>::isTypeOf = isTypeOf;
        return true;
    }();
};
template struct Opened<TiffItCtP1Interface, &TiffItCtP1Interface::Create,
                       &TiffItCtP1Interface::isTypeOf>;
template struct Opened<TiffItLwP1Interface, &TiffItLwP1Interface::Create,
                       &TiffItLwP1Interface::isTypeOf>;

template <typename Kind>
void ExpectKind(bool expected)
{
    const std::unique_ptr<Kind> picture(Inside<Kind>::create("pic", true));
    ASSERT_NE(picture, nullptr); // whatever the file is
    EXPECT_EQ(picture->FileWidthInPixels(), 5U);
    CFile file("pic", CFile::modeRead);
    EXPECT_EQ((picture.get()->*Inside<Kind>::isTypeOf)(file), expected);
    EXPECT_EQ(file.GetPosition(), 0U);
}

TEST(TiffItParser, EachKindKnowsItsOwn)
{
    OneFile files(kCt);
    ExpectKind<TiffItCtP1Interface>(true);
    ExpectKind<TiffItLwP1Interface>(false);
    files.Put(LwSample(5, 3, 2).Bytes());
    ExpectKind<TiffItCtP1Interface>(false);
    ExpectKind<TiffItLwP1Interface>(true);
}

TEST(TiffItParser, KindsAreToldAndOpened)
{
    OneFile files(kCt);
    EXPECT_EQ(tympan::TiffItKindOf("pic"), tympan::TiffItKind::ContinuousTone);
    auto opened = tympan::OpenPictureAs("pic", tympan::kTiffItName);
    EXPECT_TRUE(opened.isOpen);
    EXPECT_NE(dynamic_cast<TiffItCtP1Interface*>(opened.picture.get()), nullptr);
    opened = {};
    files.Put(LwSample(5, 3, 2).Bytes());
    opened = tympan::OpenTiffIt("pic");
    EXPECT_TRUE(opened.isOpen);
    EXPECT_NE(dynamic_cast<TiffItLwP1Interface*>(opened.picture.get()), nullptr);
    opened = {};
    files.Put(With(4, { 0 }));
    opened = tympan::OpenTiffIt("pic");
    EXPECT_FALSE(opened.isOpen);
    EXPECT_EQ(opened.picture->TraceStatus(), 90053U);
    EXPECT_EQ(tympan::TiffItKindOf("pic"), std::nullopt);
    files.Watched().Fail(FileOperation::readAt, 1, EIO);
    EXPECT_EQ(ThrownCause([] { tympan::TiffItKindOf("pic"); }), CFileException::genericException);
}

TEST(TiffItParser, SurvivesRandomBytes)
{
    std::mt19937 random(72);
    for (int trial = 0; trial < 3000; ++trial) {
        std::vector<unsigned char> file = LwSample(5, 3, 2).Bytes();
        for (int change = 0; change < 4; ++change)
            file[random() % 120] = static_cast<unsigned char>(random() % 3 == 0 ? 8 : random());
        const OneFile files(file);
        Parser parser;
        if (parser.Open())
            EXPECT_LE(Parser::Strips().size(), file.size());
        else
            EXPECT_NE(parser.TraceStatus(), 0U);
    }
}

} // namespace
