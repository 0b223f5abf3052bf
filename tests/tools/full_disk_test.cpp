// The command on a disk that is full, and on pictures that another program cuts short meanwhile: its
// outputs are whole or not there.
#include "support/small_disk.h"
#include "tools/ct_pictures.h"
#include "tools/endless_pictures.h"
#include "tools/lw_pictures.h"
#include "tools/source_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

using testing::HasSubstr;

Samples RandomSamples()
{
    constexpr std::uint32_t kWidth = 120, kHeight = 80;
    const CtPicture picture = RandomCt(kWidth, kHeight);
    Samples samples{ kWidth, kHeight, 3, {} };
    samples.numbers.assign(picture.bytes.begin(), picture.bytes.begin() + 3L * kWidth * kHeight);
    return samples;
}

// The pictures that the subcommands read.
struct Sources : TemporaryFolder {
    Sources()
    {
        WriteFile(*this / "a.ct", RandomCt(80, 60).File());
        WriteFile(*this / "a.lw", ReadFile(LwFolder(RandomLw(300, 40)) / "a.lw"));
        WritePng(*this / "a.png", RandomSamples(), { PNG_COLOR_TYPE_RGB });
        Samples fewColours = RandomSamples();
        for (std::uint16_t& number : fewColours.numbers)
            number &= 128U;
        WritePng(*this / "few.png", fewColours, { PNG_COLOR_TYPE_RGB });
        WriteJpeg(*this / "a.jpg", RandomSamples(), {});
        EXPECT_EQ(RunWords("import @a.jpg -o @b.jpg", *this).status, 0);
    }
};

// Outputs stand where % is, and inputs that must stand beside them too.
struct DiskCase {
    const char* words;
    std::vector<std::string> outputs;
    std::vector<std::string> inputs = {};
};

const DiskCase kDiskCases[] = {
    { "import @a.png -o %out.ct", { "out.ct" } },
    { "import @few.png -o %out.lw", { "out.lw" } },
    { "import @a.png -o %out.jpg", { "out.jpg", "out.bin" } },
    { "import @a.jpg -o %out.jpg", { "out.jpg", "out.bin" } },
    { "index %a.lw", { "a.bin" }, { "a.lw" } },
    { "index %b.jpg", { "b.bin" }, { "b.jpg" } },
    { "crop @a.lw %out.lw --left 2", { "out.lw" } },
    { "stream @a.lw -o %runs --separation cyan --offsets %offsets", { "runs", "offsets" } },
    { "stream @a.lw -o %runs --indexes --white 1 --lut %lut --offsets %offsets",
      { "runs", "offsets", "lut" } },
    { "page %out.pg --size 8x5 --resolution 300 --place %a.lw@1,1", { "out.pg" }, { "a.lw" } },
    { "preview @a.ct -o %out.png", { "out.png" } },
    { "export @a.ct -o %out.tif", { "out.tif" } },
    { "rows @a.ct --separation cyan -o %out.tif", { "out.tif" } },
    { "rows @a.ct --separation cyan -o %out.pgm", { "out.pgm" } },
};

Outcome RunBetween(const std::string& words, const TemporaryFolder& from, const TemporaryFolder& to)
{
    std::string placed;
    for (const char letter : words)
        placed += letter == '%' ? to / "" : std::string(1, letter);
    return RunWords(placed, from);
}

using Contents = std::map<std::string, std::string>;

Contents ContentsOf(const TemporaryFolder& folder)
{
    Contents contents;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        contents[entry.path().filename().string()] = ReadFile(entry.path().string());
    return contents;
}

void Prepare(const DiskCase& asked, const Sources& sources, const TemporaryFolder& folder)
{
    for (const std::string& input : asked.inputs)
        std::filesystem::copy_file(sources / input, folder / input);
}

// The earlier outputs are those of the library's kinds, which some subcommands look into.
void MakeEarlier(const DiskCase& asked, const TemporaryFolder& folder)
{
    for (const std::string& output : asked.outputs)
        WriteFile(folder / output, output.ends_with(".bin") ? "" : "earlier");
}

void ExpectFullIsTold(const DiskCase& asked, const Outcome& outcome)
{
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("No space left on device"));
    bool isNamed = false;
    for (const std::string& output : asked.outputs)
        isNamed = isNamed || outcome.err.find("/" + output + ": ") != std::string::npos;
    EXPECT_TRUE(isNamed) << outcome.err;
}

TEST(FullDisk, OutputsAreWholeOrAsTheyWere)
{
    constexpr std::uint64_t kMostPages = 14;
    const Sources sources;
    for (const DiskCase& asked : kDiskCases) {
        SCOPED_TRACE(asked.words);
        const SmallDisk disk;
        if (!disk.IsThere())
            GTEST_SKIP() << "only root can mount a small disk";
        Prepare(asked, sources, disk.Folder());
        MakeEarlier(asked, disk.Folder());
        std::uint64_t pages = 0;
        for (; pages < kMostPages; ++pages) {
            disk.LeaveFree(pages);
            const Contents before = ContentsOf(disk.Folder());
            const Outcome outcome = RunBetween(asked.words, sources, disk.Folder());
            if (outcome.status == 0)
                break;
            ExpectFullIsTold(asked, outcome);
            EXPECT_TRUE(ContentsOf(disk.Folder()) == before) << pages << " pages were free";
        }
        EXPECT_TRUE(pages > 0 && pages < kMostPages) << pages;
        const TemporaryFolder roomy;
        Prepare(asked, sources, roomy);
        EXPECT_EQ(RunBetween(asked.words, sources, roomy).status, 0);
        for (const std::string& output : asked.outputs)
            EXPECT_TRUE(ReadFile(disk / output) == ReadFile(roomy / output)) << output;
    }
}

// The library leaves the rows that a CT doesn't hold as they were, and tells nothing of them.
// Cuts a CT while a subcommand has most of it still to read. False when the subcommand was too fast.
bool CutsWhileItIsRead(const std::vector<std::string>& asked)
{
    constexpr std::uint32_t kWidth = 6000, kHeight = 12000;
    constexpr std::uint64_t kBegun = 16U << 20U; // of a separation's 72,000,000 bytes
    const TemporaryFolder folder;
    const std::string path = folder / "a.ct";
    WriteFile(path, CtPicture{ kWidth, kHeight, 4, 300.0, 300.0, {} }.Header());
    std::filesystem::resize_file(path, 2048 + std::uintmax_t{ kWidth } * kHeight * 4);
    std::vector<std::string> words{ asked[0], path, "-o", folder / asked[1] };
    words.insert(words.end(), asked.begin() + 2, asked.end());
    RunningCommand running(words);
    const bool isBegun = WaitForEntries(folder, 2);
    running.Signal(SIGSTOP);
    if (!isBegun || running.BytesRead() > kBegun)
        return false;
    std::filesystem::resize_file(path, 4096);
    running.Signal(SIGCONT);
    const Outcome outcome = running.Wait();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(path + ": the file is shorter"));
    EXPECT_EQ(folder.Entries(), 1U);
    return true;
}

TEST(CutShort, LeavesNoOutput)
{
    using Words = std::vector<std::string>;
    for (const Words& asked :
         { Words{ "export", "a.tif" }, Words{ "rows", "a.png", "--separation", "cyan" },
           Words{ "preview", "a.png" }, Words{ "preview", "a.png", "--separation", "black" } }) {
        SCOPED_TRACE(asked.front());
        bool isCut = false;
        for (int trial = 0; trial < 20 && !isCut; ++trial)
            isCut = CutsWhileItIsRead(asked);
        EXPECT_TRUE(isCut) << "it was never caught while it read";
    }
}

} // namespace
} // namespace tympan::test
