// The side file of line work: its name, its bytes, and what becomes of it when things go wrong.
#include "lw_variant/lw_side_file.h"
#include "lw_variant/lw_whole_trial.h"
#include "platform/file_expectations.h"
#include "platform/path_resolver.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace tympan::test;

struct NameCase {
    const char *picture, *side;
};

TEST(LwSideFile, ItsNameIsThePathUpToItsLastPoint)
{
    for (const NameCase& name : { NameCase{ "a.lw", "a.bin" },
                                  { "a.b.lw", "a.b.bin" },
                                  { "plain", ".bin" },
                                  { "folder.x/plain", "folder.bin" },
                                  { "folder.x/a.lw", "folder.x/a.bin" },
                                  { "a.", "a.bin" },
                                  { "", ".bin" } })
        EXPECT_EQ(tympan::LwSideFileName(name.picture), name.side) << name.picture;
}

std::string Padded(std::string text)
{
    text.resize(tympan::kLwSideFileBytes);
    return text;
}

struct SizeCase {
    std::uint64_t size;
    const char* text;
};

TEST(LwSideFile, ASizeIsTextAndZerosAndComesBack)
{
    constexpr std::uint64_t kWhole = std::uint64_t{ 1 } << 32U;
    for (const SizeCase& size : { SizeCase{ 0, "0" },
                                  { 14, "14" },
                                  { 2147483647, "2147483647" },
                                  { 2147483648, "-2147483648" },
                                  { kWhole - 1, "-1" },
                                  { kWhole, "0" },
                                  { kWhole + 14, "0" },
                                  { ~std::uint64_t{ 0 }, "0" } }) {
        const tympan::LwSideFileContent content = tympan::LwSideFileOf(size.size);
        const std::string_view bytes(content.data(), content.size());
        EXPECT_EQ(bytes, Padded(size.text));
        EXPECT_EQ(tympan::LwSizeIn(bytes), size.size < kWhole ? size.size : 0) << size.text;
        EXPECT_EQ(tympan::KeptLwSize(size.size), size.size < kWhole ? size.size : 0) << size.text;
        EXPECT_TRUE(tympan::IsLwSideFile(bytes)) << size.text;
    }
}

struct TextCase {
    const char* name;
    std::string bytes;
    std::uint32_t size;
    bool isSideFile;
};

const TextCase kTextCases[] = {
    { "nothing", "", 0, true },
    { "a number alone", "14", 14, false },
    { "only zeros", Padded(""), 0, false },
    { "blanks in front", Padded(" \t\n\v\f\r3"), 3, false },
    { "a plus", Padded("+7"), 7, false },
    { "two signs", Padded("+-7"), 0, false },
    { "a blank behind the sign", Padded("- 7"), 0, false },
    { "a sign alone", Padded("-"), 0, false },
    { "a plus at the end", "+", 0, false },
    { "blanks alone", "  ", 0, false },
    { "text behind", Padded("12x"), 12, false },
    { "bytes behind the zeros", Padded(std::string("12\0x", 4)), 12, false },
    { "no number", Padded("x12"), 0, false },
    { "100 digits", std::string(100, '9'), 0, true },
    { "100 bytes without an end", std::string(90, '0') + "0000000077", 77, true },
    { "one byte more", Padded("12") + '\0', 12, false },
    { "beyond 32 bits", Padded("4294967296"), 0, true },
    { "beyond a sign's 32 bits", Padded("-2147483649"), 0, true },
};

TEST(LwSideFile, ANumberIsReadAsFarAsItGoes)
{
    for (const TextCase& text : kTextCases) {
        EXPECT_EQ(tympan::LwSizeIn(text.bytes), text.size) << text.name;
        EXPECT_EQ(tympan::IsLwSideFile(text.bytes), text.isSideFile) << text.name;
    }
}

const LwPicture kSound{ .height = 2, .rows{ { { 1, 5 } }, { { 2, 5 } } } };
constexpr unsigned long kSize = 14;

/// Asks for the side file of a path, and gives the size and what was told of the picture.
struct Asked {
    unsigned long size;
    bool isValid;
};
Asked Ask(LwWholeTrial& trial, bool readExisting, bool before, const char* path = "sample.lw")
{
    CString name = path;
    bool isValid = before;
    const unsigned long size = trial.Whole().CreateLwBinFile(name, readExisting, isValid);
    EXPECT_EQ(name, path);
    return { size, isValid };
}

TEST(LwSideFile, IsMadeAndReadWithoutThePicture)
{
    LwWholeTrial trial(kSound);
    trial.Memory().Put("a.b.bin", std::string(300, 'x'));
    const Asked made = Ask(trial, false, false, "a.b.lw");
    EXPECT_EQ(made.size, 0U);
    EXPECT_TRUE(made.isValid);
    EXPECT_EQ(trial.Memory().Text("a.b.bin"), Padded("14"));
    EXPECT_NE(OpenLw::PlacesOf(trial.Whole()), nullptr);
    EXPECT_EQ(trial.Whole().GetLwPictureParams()->LwFileSize(), kSize);

    trial.Memory().Put("sample.bin", Padded("-2147483648"));
    trial.Whole().FileHandle().Seek(77, CFile::begin);
    const std::size_t bytes = trial.Files().ByteCount(FileOperation::readAt);
    for (const bool before : { false, true }) {
        const Asked read = Ask(trial, true, before);
        EXPECT_EQ(read.size, 2147483648U);
        EXPECT_EQ(read.isValid, before);
    }
    EXPECT_EQ(trial.Files().ByteCount(FileOperation::readAt), bytes + 2 * tympan::kLwSideFileBytes);
    EXPECT_EQ(trial.Whole().FileHandle().GetPosition(), 77U);
    EXPECT_EQ(trial.Whole().GetLwPictureParams()->LwFileSize(), kSize);
}

TEST(LwSideFile, WithoutANumberTheRowsAreCounted)
{
    const std::string kWithout[] = { "", Padded("0"), Padded("x"), std::string(100, '9'),
                                     std::string(100, ' ') + "7" };
    LwWholeTrial trial(kSound);
    EXPECT_EQ(Ask(trial, true, false).size, kSize); // there is none
    EXPECT_FALSE(trial.Memory().Exists("sample.bin"));
    for (const std::string& bytes : kWithout) {
        trial.Memory().Put("sample.bin", bytes);
        EXPECT_EQ(Ask(trial, true, false).size, kSize) << bytes;
        EXPECT_EQ(trial.Memory().Text("sample.bin"), bytes); // it isn't written back
    }
    trial.Memory().Put("sample.bin", std::string(99, ' ') + "78");
    EXPECT_EQ(Ask(trial, true, false).size, 7U);
}

TEST(LwSideFile, OfABadPictureIsEmpty)
{
    LwWholeTrial trial(LwPicture{ .height = 2, .rows{ { { 1, 4 } }, { { 2, 5 } } } });
    trial.Memory().Put("sample.bin", Padded("14"));
    for (int closed = 0; closed < 2; ++closed) { // the first check closes the picture
        EXPECT_FALSE(Ask(trial, false, true).isValid);
        EXPECT_TRUE(trial.Memory().Exists("sample.bin"));
        EXPECT_EQ(trial.Memory().Text("sample.bin"), "");
        EXPECT_EQ(trial.Whole().TraceStatus(), closed == 0 ? 90025U : 90001U);
        EXPECT_FALSE(trial.Whole().ObjectStatus());
    }
    EXPECT_EQ(Ask(trial, true, true).size, 0U);
}

// The check doesn't read the last row, which the size needs.
TEST(LwSideFile, KeepsTheEarlierSizeWhenRowsCantBeCounted)
{
    LwPicture picture = kSound;
    picture.rows.back().clear();
    LwWholeTrial trial(picture);
    EXPECT_EQ(trial.Whole().GetLWBufferSize(0, 0, 1, 0, false), 8U);
    EXPECT_TRUE(Ask(trial, false, false).isValid);
    EXPECT_EQ(trial.Whole().TraceStatus(), 90001U);
    EXPECT_EQ(trial.Memory().Text("sample.bin"), Padded("8"));
}

struct RefusedCase {
    const char *picture, *opened, *asked;
    int cause;
};

TEST(LwSideFile, ThatCantBeCreatedThrowsAndThePictureStays)
{
    const std::vector<unsigned char> bytes = kSound.Bytes();
    for (const RefusedCase& refused :
         { RefusedCase{ "a.bin", "a.bin", "a.bin", CFileException::sharingViolation },
           { "a.bin", "a.bin", "a.lw", CFileException::sharingViolation },
           { "a.bin", "./a.bin", "a.lw", CFileException::sharingViolation },
           { "a.lw", "a.lw", "missing/a.lw", CFileException::fileNotFound } })
        for (const bool before : { false, true }) {
            const TemporaryFolder folder;
            const std::string picture = folder.File(refused.picture, bytes);
            const auto whole = OpenedWhole(folder.Path(refused.opened).c_str());
            CString path = folder.Path(refused.asked).c_str();
            bool isValid = before;
            EXPECT_EQ(ThrownCause([&] { whole->CreateLwBinFile(path, false, isValid); }),
                      refused.cause);
            EXPECT_EQ(isValid, before);
            EXPECT_EQ(OpenLw::PlacesOf(*whole), nullptr);
            EXPECT_EQ(whole->GetLWBufferSize(), kSize);
            EXPECT_EQ(BytesOf(picture), bytes);
        }
}

// Paths that lead nowhere in the system: that of the side file, and that of the picture.
TEST(LwSideFile, GoesByThePathsThatLeadSomewhere)
{
    for (const char* const nowhere : { "other.bin", "sample.lw" }) {
        SCOPED_TRACE(nowhere);
        LwWholeTrial trial(kSound);
        tympan::SetPathResolver([&](const CString& path) {
            return path == nowhere ? throw std::runtime_error("no drive") : path;
        });
        CString name = "other.lw";
        bool isValid = false;
        const auto create = [&] { trial.Whole().CreateLwBinFile(name, false, isValid); };
        if (nowhere == std::string("other.bin"))
            EXPECT_EQ(ThrownCause(create), CFileException::fileNotFound);
        else
            EXPECT_NO_THROW(create());
        tympan::SetPathResolver({});
        EXPECT_EQ(trial.Memory().Exists("other.bin"), nowhere != std::string("other.bin"));
    }
}

} // namespace
