// What the readers of rows rest on: the sums of many runs at a time and the test of their indexes
// against plain loops, and the reader's blocks, places and failures.
#include "core/block_size.h"
#include "core/failures.h"
#include "lw/ink_forms.h"
#include "lw/run_reader.h"
#include "lw/run_sums.h"
#include "platform/memory_files.h"
#include "support/lw_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace {

using tympan::RunReader;
using tympan::RunStretch;

constexpr std::uint64_t kEndless = ~std::uint64_t{ 0 };

// The rule is the loop run by run. The memory ends with the runs, for the sanitizer to see a step over.
TEST(RunSums, AreThoseOfTheLoop)
{
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        const std::size_t shift = random() % 9;
        std::vector<tympan::Run> memory(shift + random() % (i % 50 == 0 ? 6000 : 130));
        const std::span runs = std::span(memory).subspan(shift);
        const unsigned int longest = random() % 3 == 0 ? 8 : 256;
        const auto zeros = random() % 100; // of a hundred
        for (tympan::Run& run : runs) {
            run = { static_cast<std::uint8_t>(random() % 100 < zeros ? 0 : random()),
                    static_cast<std::uint8_t>(random() % 100 < zeros ? 0 : random() % longest) };
            if (i % 3 == 0) // so that sums come near the ends of their types
                run = { 1, 255 };
        }
        const std::uint64_t all = tympan::RunsThatHoldPlain(runs, kEndless).pixels;
        const auto some = runs.first(random() % (runs.size() + 1));
        const std::uint64_t part = tympan::RunsThatHoldPlain(some, kEndless).pixels;
        for (const std::uint64_t wanted :
             { std::uint64_t{ 0 }, std::uint64_t{ 1 }, part, part + 1, all, all + 1, kEndless }) {
            const RunStretch plain = tympan::RunsThatHoldPlain(runs, wanted);
            const std::size_t expected = random() % (2 * runs.size() + 1);
            for (const tympan::RunSumForm& form : tympan::RunSumForms()) {
                const RunStretch stretch =
                    form.runsThatHold(runs, wanted, i % 2 == 0 ? 0 : expected);
                ASSERT_EQ(stretch.runs.size(), plain.runs.size()) << form.name << ' ' << i;
                ASSERT_EQ(stretch.runs.data(), runs.data());
                ASSERT_EQ(stretch.pixels, plain.pixels) << form.name << ' ' << i;
            }
            ASSERT_EQ(tympan::RunsThatHold(runs, wanted).pixels, plain.pixels);
        }
        const auto met = std::find_if(runs.begin(), runs.end(), tympan::IsDelimiter);
        ASSERT_EQ(tympan::RunsBeforeDelimiter(runs).size(),
                  static_cast<std::size_t>(met - runs.begin()));
    }
    constexpr tympan::Run kRuns[] = { { 1, 3 }, { 2, 2 }, { 2, 0 }, { 0, 0 }, { 1, 1 } };
    constexpr std::size_t kCounts[] = { 0, 1, 1, 1, 2, 2, 5, 5 };
    for (std::size_t wanted = 0; wanted < std::size(kCounts); ++wanted)
        EXPECT_EQ(tympan::RunsThatHoldPlain(kRuns, wanted).runs.size(), kCounts[wanted]);
}

TEST(RunSums, OneStrayIndexIsFoundAtAnyPlace)
{
    for (const unsigned int colours : { 1U, 2U, 127U, 128U, 129U, 254U, 255U })
        for (std::size_t count = 0; count < 80; ++count) {
            std::vector<tympan::Run> memory(count + count % 9);
            const std::span runs = std::span(memory).subspan(count % 9);
            for (std::size_t i = 0; i < count; ++i)
                runs[i] = { static_cast<std::uint8_t>(1 + i % colours),
                            static_cast<std::uint8_t>(i) };
            ASSERT_TRUE(tympan::AllNameColours(runs, colours)) << colours << ' ' << count;
            for (tympan::Run& run : runs)
                for (const unsigned int stray : { 0U, colours + 1, 255U }) {
                    const auto index = static_cast<std::uint8_t>(stray);
                    const std::uint8_t before = std::exchange(run.index, index);
                    ASSERT_EQ(tympan::AllNameColours(runs, colours), index - 1U < colours)
                        << colours << ' ' << count << ' ' << stray;
                    run.index = before;
                }
        }
    EXPECT_FALSE(tympan::AllNameColours(std::vector<tympan::Run>{ { 1, 1 } }, 0));
}

// Every form of this processor, not the fastest alone, into memory that ends with what is stored.
TEST(InkForms, StoreWhatTheRunsSay)
{
    std::mt19937 random(4);
    tympan::ByteTable values;
    for (std::uint8_t& value : values)
        value = static_cast<std::uint8_t>(random());
    for (int i = 0; i < 5000; ++i) {
        const std::size_t highest = i % 3 == 0 ? 1 + random() % 15 : 1 + random() % 255;
        const std::size_t longest = 1 + random() % 255;
        std::vector<tympan::Run> runs(1 + random() % (i % 50 == 0 ? 2000 : 90));
        std::vector<std::uint8_t> pixels, valueFirst, lengthFirst;
        for (tympan::Run& run : runs) {
            run = { static_cast<std::uint8_t>(1 + random() % highest),
                    static_cast<std::uint8_t>(random() % (longest + 1)) };
            pixels.insert(pixels.end(), run.length, values[run.index]);
            valueFirst.insert(valueFirst.end(), { values[run.index], run.length });
            lengthFirst.insert(lengthFirst.end(), { run.length, values[run.index] });
        }
        for (const tympan::InkForm& form : tympan::InkForms()) {
            std::vector<std::uint8_t> out(pixels.size());
            ASSERT_EQ(form.expand({ runs, pixels.size() }, values, out.data()),
                      out.data() + out.size());
            ASSERT_EQ(out, pixels) << form.name << ' ' << i;
            for (const auto order :
                 { tympan::RunOrder::ColourFirst, tympan::RunOrder::LengthFirst }) {
                out.assign(2 * runs.size(), 0);
                ASSERT_EQ(form.translate(runs, values, static_cast<std::uint8_t>(highest), order,
                                         out.data()),
                          out.data() + out.size());
                ASSERT_EQ(out, order == tympan::RunOrder::ColourFirst ? valueFirst : lengthFirst)
                    << form.name << ' ' << i;
            }
        }
    }
}

class Reading : public testing::Test {
  protected:
    explicit Reading(std::size_t bytes = 3 * tympan::kRunBlockBytes + 7) : bytes_(bytes)
    {
        for (unsigned char& byte : bytes_)
            byte = static_cast<unsigned char>(1 + random_() % 200);
        memory_.Put("runs", tympan::test::AsText(bytes_));
        file_.Open("runs", CFile::modeRead);
    }
    tympan::Run At(std::uint64_t place) const { return { bytes_[place], bytes_[place + 1] }; }

    std::mt19937 random_{ 9 };
    std::vector<unsigned char> bytes_;
    tympan::test::MemoryFileSystem memory_;
    tympan::test::WatchedFileSystem files_{ memory_ };
    tympan::ScopedFileSystem scoped_{ files_ };
    CFile file_;
    tympan::RunBlock block_;
};

// Wherever a reader starts, expects to end and is sent to.
TEST_F(Reading, GivesTheRunsOfTheFileFromAnyPlace)
{
    for (int i = 0; i < 300; ++i) {
        std::uint64_t place = random_() % bytes_.size();
        {
            RunReader reader(file_, block_, place, random_() % (2 * bytes_.size()));
            for (int step = 0; step < 20 && place + 2 <= bytes_.size(); ++step) {
                ASSERT_EQ(reader.Position(), place);
                if (random_() % 4 == 0)
                    reader.GoTo(place = random_() % 2 != 0 ? random_() % (bytes_.size() - 1)
                                                           : place - random_() % (place + 1) / 8);
                if (place + 2 > bytes_.size())
                    break;
                const RunStretch stretch = reader.Take(1 + random_() % 3000);
                ASSERT_FALSE(stretch.runs.empty());
                std::uint64_t pixels = 0;
                for (const tympan::Run run : stretch.runs) {
                    ASSERT_EQ(run.index, At(place).index);
                    pixels += run.length;
                    place += 2;
                }
                ASSERT_EQ(stretch.pixels, pixels);
            }
        }
        ASSERT_EQ(file_.GetPosition(), place);
    }
}

TEST_F(Reading, ReadsBlocksUpToTheExpectedEnd)
{
    const std::uint64_t end = 2 * tympan::kRunBlockBytes;
    RunReader reader(file_, block_, 0, end);
    while (reader.Position() < end)
        reader.Take(1000);
    EXPECT_EQ(files_.Count(tympan::test::FileOperation::readAt), 2U);
    EXPECT_EQ(files_.ByteCount(tympan::test::FileOperation::readAt), end);
}

TEST_F(Reading, EndsWithTheFile)
{
    for (const std::uint64_t left : { 0U, 1U, 2U, 3U }) {
        {
            RunReader reader(file_, block_, bytes_.size() - left, bytes_.size());
            for (std::uint64_t runs = left / 2; runs != 0; --runs)
                reader.TakeOne();
            for (int again = 0; again < 2; ++again)
                try {
                    reader.TakeOne();
                    ADD_FAILURE() << "there is no run";
                } catch (ReadFileException* failure) {
                    EXPECT_EQ(failure->MessageText(), "Could not read LW file!");
                    delete failure;
                }
        }
        EXPECT_EQ(file_.GetPosition(), bytes_.size()) << left;
    }
}

} // namespace
