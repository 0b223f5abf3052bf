// Any bytes as an LW file, and calls drawn from the input: every operation answers as the plain
// reference does, by rows and as a whole; and streams of runs keep their own rules.
#include "fuzz/any_file.h"
#include "fuzz/headed_file.h"
#include "lw/lw_dice.h"
#include "lw_variant/lw_whole_trial.h"

#include <cstdint>
#include <iterator>

namespace {

using tympan::fuzz::Drawn;
using tympan::test::Dice;
using tympan::test::LwAnswer;
using tympan::test::LwCall;
using tympan::test::LwOperation;
using tympan::test::LwWholeTrial;
using tympan::test::Require;
using tympan::test::Shape;

constexpr unsigned int kMostWidth = 9000, kMostHeight = 48;
constexpr int kQuestions = 8;

/// A row of a stream that was given without a failure: delimiters around it, white that completes it
/// to parts, and the picture's pixels as they are.
void RequireStreamRow(const unsigned char* row, const unsigned char* end, const LwCall& call)
{
    Require(row[0] == 0 && row[1] == 0 && end[-2] == 0 && end[-1] == 0,
            "a row of a stream stands between delimiters");
    std::uint64_t width = 0;
    for (const unsigned char* run = row + 2; run < end - 2; run += 2)
        width += run[call.flag ? 0 : 1];
    Require(width % 4096 == 0, "a row of a stream is whole parts wide");
}

void RequireStream(const LwAnswer& stream, const LwCall& call)
{
    if (stream.code != 0)
        return;
    for (std::size_t row = 0; row < stream.rows; ++row) {
        const std::uint64_t start = stream.offsets[row] - call.baseOffset;
        const std::uint64_t end =
            row + 1 < stream.rows ? stream.offsets[row + 1] - call.baseOffset : stream.moved;
        Require(start + 4 <= end && end <= stream.bytes.size(), "offsets of a stream rise");
        RequireStreamRow(stream.bytes.data() + start, stream.bytes.data() + end, call);
    }
}

void AskOne(LwWholeTrial& trial, Dice& dice, const Shape& shape)
{
    using namespace tympan::test;
    static const LwOperation kWholeOperations[] = { kPlacing, kSize, kWholeSize, kBuild, kDisplay };
    const LwCall call = RandomCall(dice, shape);
    if (dice.Once(3)) {
        trial.Same(kWholeOperations[dice.Below(std::size(kWholeOperations))], call);
        return;
    }
    const LwOperation& operation =
        dice.Once(3) ? kPlacing : kRowOperations[dice.Below(std::size(kRowOperations))];
    const LwAnswer answer = trial.LwTrial::Same(operation, call);
    if (operation.byTheRules == kPlacing.byTheRules)
        RequireStream(answer, call);
}

void AskAll(const tympan::fuzz::FileBytes& file, Dice dice)
{
    LwWholeTrial trial(file);
    const auto width = static_cast<unsigned int>(trial.Picture().FileWidthInPixels());
    const auto height = static_cast<unsigned int>(trial.Picture().FileHeightInPixels());
    for (int i = 0; i < kQuestions && trial.IsOpen(); ++i)
        AskOne(trial, dice, { width, height });
    trial.Same(tympan::test::kCheck);
}

/// Whether a header is one that the whole-file object takes, and the reference is quick with.
bool IsToBeTried(const tympan::fuzz::FileBytes& bytes)
{
    tympan::test::MemoryFileSystem files;
    tympan::fuzz::Put(files, tympan::fuzz::kPath, bytes);
    const tympan::ScopedFileSystem scoped(files);
    LwPictureParameters record;
    CFile file(tympan::fuzz::kPath, CFile::modeRead);
    return record.Load(file) && record.WidthInPixels() >= 1 &&
           record.WidthInPixels() <= kMostWidth && record.HeightInPixels() >= 1 &&
           record.HeightInPixels() <= kMostHeight;
}

/// The differences that a test would only tell end the program here.
class EndAtDifference : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        Require(!result.failed(), result.message());
    }
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments)
{
    testing::InitGoogleTest(count, *arguments);
    testing::UnitTest::GetInstance()->listeners().Append(new EndAtDifference);
    return 0;
}

// The first bytes draw the calls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn drawn(data, size);
    const std::uint32_t seed = drawn.Word();
    const auto file = tympan::fuzz::HeadedFile(drawn.Rest());
    if (IsToBeTried(file))
        AskAll(file, Dice(seed));
    return 0;
}
