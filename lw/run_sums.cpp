// The two questions that every row is asked about many runs at a time: how many of them hold so many
// pixels, and whether all of them name colours. On a processor with vectors of bytes a row is summed
// up to its delimiter, which the runs of a sound row can't look like; the sum then tells whether the
// row ends there. Run by run where it doesn't.
#include "lw/run_sums.h"

#include <algorithm>
#include <array>
#include <bit>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tympan {

RunStretch RunsThatHoldPlain(std::span<const Run> runs, std::uint64_t wanted, std::size_t)
{
    std::uint64_t pixels = 0;
    std::size_t taken = 0;
    for (; taken < runs.size() && pixels < wanted; ++taken)
        pixels += runs[taken].length;
    return { runs.first(taken), pixels };
}

namespace {

// `from` on; none of the runs in front of it is a delimiter.
std::span<const Run> RunsBeforeDelimiterPlain(std::span<const Run> runs, std::size_t from)
{
    const auto rest = runs.subspan(from);
    const auto met = std::find_if(rest.begin(), rest.end(), IsDelimiter);
    return runs.first(static_cast<std::size_t>(met - runs.begin()));
}

} // namespace

#if defined(__SSE2__)

namespace {

// Both forms take steps of so many runs, 64 bytes.
constexpr std::size_t kStepRuns = 32;

struct SummedRuns {
    std::size_t count;
    std::uint64_t pixels;
    bool metDelimiter;
};

// Sums whole steps, the first `unlooked` of them whatever they hold, and then up to the first
// delimiter: to the last whole step, or as far as its numbers hold.
using SumForm = SummedRuns (*)(std::span<const Run> runs, std::size_t unlooked);

// Ones for the first runs of a step, from any place in it.
alignas(32) constexpr auto kFirstRuns = [] {
    std::array<std::uint16_t, 2 * kStepRuns> mask{};
    std::fill_n(mask.begin(), kStepRuns, std::uint16_t{ 0xFFFF });
    return mask;
}();

constexpr const std::uint16_t* MaskOfFirst(std::size_t count)
{
    return kFirstRuns.data() + (kStepRuns - count);
}

// A lane is a signed 16-bit number, to which each step adds some runs.
constexpr std::size_t StepsInLanes(std::size_t runsOfLane)
{
    return 32767 / (runsOfLane * kLongestRun);
}

std::uint64_t SumOf32BitLanes(__m128i sums)
{
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, 0b01'00'11'10));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, 0b10'11'00'01));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums));
}

// ---- vectors of 16 bytes, which every such processor has

constexpr std::size_t kVectors = 4; // of a step
constexpr std::size_t kVectorRuns = kStepRuns / kVectors;

struct Step {
    __m128i part[kVectors];
};

__m128i Load16(const void* bytes)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

Step LoadStep(const Run* runs)
{
    Step step{};
    for (std::size_t i = 0; i < kVectors; ++i)
        step.part[i] = Load16(runs + i * kVectorRuns);
    return step;
}

// The lengths, which are the upper bytes of 16-bit numbers, added lane by lane.
__m128i LengthsOf(const Step& step)
{
    const auto both = [](__m128i left, __m128i right) {
        return _mm_add_epi16(_mm_srli_epi16(left, 8), _mm_srli_epi16(right, 8));
    };
    return _mm_add_epi16(both(step.part[0], step.part[1]), both(step.part[2], step.part[3]));
}

// The smaller of 16-bit numbers needs newer instructions: so a step without a delimiter is taken for
// one that has one when it holds a zero among its indexes and one among its lengths.
bool MayHoldDelimiter(const Step& step)
{
    const __m128i least = _mm_min_epu8(_mm_min_epu8(step.part[0], step.part[1]),
                                       _mm_min_epu8(step.part[2], step.part[3]));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(least, _mm_setzero_si128())) != 0;
}

// A bit for each run.
std::uint32_t DelimitersOf(const Step& step)
{
    const __m128i zero = _mm_setzero_si128();
    const auto bits = [&](__m128i low, __m128i high) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(
            _mm_packs_epi16(_mm_cmpeq_epi16(low, zero), _mm_cmpeq_epi16(high, zero))));
    };
    return bits(step.part[0], step.part[1]) | bits(step.part[2], step.part[3]) << 2 * kVectorRuns;
}

Step FirstOf(Step step, std::size_t count)
{
    const std::uint16_t* const mask = MaskOfFirst(count);
    for (std::size_t i = 0; i < kVectors; ++i)
        step.part[i] = _mm_and_si128(step.part[i], Load16(mask + i * kVectorRuns));
    return step;
}

std::uint64_t SumOfLanes(__m128i lanes)
{
    return SumOf32BitLanes(_mm_madd_epi16(lanes, _mm_set1_epi16(1)));
}

// Step by step, behind `taken` runs that hold less than `wanted`.
RunStretch RunsThatHoldBySteps(std::span<const Run> runs, std::uint64_t wanted, std::size_t taken,
                               std::uint64_t pixels)
{
    for (; taken + kStepRuns <= runs.size(); taken += kStepRuns) {
        const std::uint64_t more = SumOfLanes(LengthsOf(LoadStep(runs.data() + taken)));
        if (pixels + more >= wanted)
            break;
        pixels += more;
    }
    const RunStretch rest = RunsThatHoldPlain(runs.subspan(taken), wanted - pixels);
    return { runs.first(taken + rest.runs.size()), pixels + rest.pixels };
}

SummedRuns SumBy16(std::span<const Run> runs, std::size_t unlooked)
{
    const std::size_t steps = std::min(runs.size() / kStepRuns, StepsInLanes(kVectors));
    __m128i lanes = _mm_setzero_si128();
    for (std::size_t i = 0; i < steps; ++i) {
        const Step step = LoadStep(runs.data() + i * kStepRuns);
        if (i >= unlooked && MayHoldDelimiter(step)) {
            const std::uint32_t delimiters = DelimitersOf(step);
            if (delimiters != 0) {
                const auto before = static_cast<std::size_t>(std::countr_zero(delimiters));
                lanes = _mm_add_epi16(lanes, LengthsOf(FirstOf(step, before)));
                return { i * kStepRuns + before, SumOfLanes(lanes), true };
            }
        }
        lanes = _mm_add_epi16(lanes, LengthsOf(step));
    }
    return { steps * kStepRuns, SumOfLanes(lanes), false };
}

// ---- vectors of 32 bytes

[[gnu::target("avx2")]] inline __m256i Load32(const void* bytes)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] inline __m256i LengthsOf(__m256i low, __m256i high)
{
    return _mm256_add_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8));
}

[[gnu::target("avx2")]] inline std::uint64_t SumOfLanes(__m256i lanes)
{
    const __m256i sums = _mm256_madd_epi16(lanes, _mm256_set1_epi16(1));
    return SumOf32BitLanes(
        _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1)));
}

// Two bits for each run.
[[gnu::target("avx2")]] inline std::uint32_t ZerosOf(__m256i runs)
{
    return static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(runs, _mm256_setzero_si256())));
}

[[gnu::target("avx2")]] SummedRuns SumBy32(std::span<const Run> runs, std::size_t unlooked)
{
    constexpr std::size_t kVectorHolds = kStepRuns / 2;
    const std::size_t steps = std::min(runs.size() / kStepRuns, StepsInLanes(2));
    const Run* at = runs.data();
    const Run* const looked = at + std::min(unlooked, steps) * kStepRuns;
    const Run* const end = at + steps * kStepRuns;
    __m256i lanes = _mm256_setzero_si256();
    for (; at != looked; at += kStepRuns)
        lanes = _mm256_add_epi16(lanes, LengthsOf(Load32(at), Load32(at + kVectorHolds)));
    for (; at != end; at += kStepRuns) {
        const __m256i low = Load32(at);
        const __m256i high = Load32(at + kVectorHolds);
        if (ZerosOf(_mm256_min_epu16(low, high)) != 0) {
            const std::uint64_t delimiters = ZerosOf(low) | std::uint64_t{ ZerosOf(high) } << 32U;
            const auto before = static_cast<std::size_t>(std::countr_zero(delimiters)) / 2;
            const std::uint16_t* const mask = MaskOfFirst(before);
            lanes = _mm256_add_epi16(
                lanes, LengthsOf(_mm256_and_si256(low, Load32(mask)),
                                 _mm256_and_si256(high, Load32(mask + kVectorHolds))));
            return { static_cast<std::size_t>(at - runs.data()) + before, SumOfLanes(lanes), true };
        }
        lanes = _mm256_add_epi16(lanes, LengthsOf(low, high));
    }
    return { steps * kStepRuns, SumOfLanes(lanes), false };
}

// Rows are like the rows before them, most of them: so their first part isn't looked at.
[[gnu::target("avx2"), gnu::flatten]] std::size_t
SoundRowsBy32(std::span<const Run> runs, std::uint64_t width, std::span<std::uint32_t> lengths)
{
    std::size_t expected = 0;
    std::size_t rows = 0;
    for (; rows < lengths.size() && runs.size() > kStepRuns && IsDelimiter(runs[0]); ++rows) {
        std::size_t count = 0;
        std::uint64_t pixels = 0;
        SummedRuns sum{};
        do {
            const std::size_t unlooked = (expected - std::min(expected, count)) / kStepRuns;
            sum = SumBy32(runs.subspan(1 + count), unlooked);
            count += sum.count;
            pixels += sum.pixels;
        } while (!sum.metDelimiter && sum.count != 0 && pixels < width);
        if (!sum.metDelimiter || pixels != width || runs[count].length == 0)
            break;
        lengths[rows] = static_cast<std::uint32_t>(count);
        expected = count - count / 8;
        runs = runs.subspan(count + 2);
    }
    return rows;
}

template <SumForm sumOf>
RunStretch RunsThatHoldBy(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected)
{
    std::uint64_t pixels = 0;
    std::size_t taken = 0;
    while (pixels < wanted && runs.size() - taken >= kStepRuns) {
        const std::size_t unlooked = (expected - std::min(expected, taken)) / kStepRuns;
        const SummedRuns sum = sumOf(runs.subspan(taken), unlooked);
        const std::size_t behind = taken + sum.count;
        if (pixels + sum.pixels == wanted && runs[behind - 1].length != 0)
            return { runs.first(behind), wanted };
        if (pixels + sum.pixels < wanted) {
            pixels += sum.pixels;
            taken = behind + (sum.metDelimiter ? 1 : 0); // inside a row it is a run without pixels
        } else if (unlooked != 0) {
            expected = 0;
        } else {
            break;
        }
    }
    return RunsThatHoldBySteps(runs, wanted, taken, pixels);
}

constexpr RunSumForm kForms[] = {
    { "AVX2", RunsThatHoldBy<SumBy32> },
    { "SSE2", RunsThatHoldBy<SumBy16> },
};

} // namespace

std::span<const RunSumForm> RunSumForms()
{
    return std::span(kForms).subspan(__builtin_cpu_supports("avx2") ? 0 : 1);
}

RunStretch RunsThatHold(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected)
{
    static const auto fastest = RunSumForms().front().runsThatHold;
    return fastest(runs, wanted, expected);
}

std::size_t SoundRows(std::span<const Run> runs, std::uint64_t width,
                      std::span<std::uint32_t> lengths)
{
    static const bool hasForm = __builtin_cpu_supports("avx2");
    return hasForm ? SoundRowsBy32(runs, width, lengths) : 0;
}

RunStretch RunsInsideThatHold(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected)
{
    const std::size_t steps =
        std::min(std::min(expected, runs.size()) / kStepRuns, StepsInLanes(kVectors));
    __m128i lanes = _mm_setzero_si128();
    for (std::size_t i = 0; i < steps; ++i)
        lanes = _mm_add_epi16(lanes, LengthsOf(LoadStep(runs.data() + i * kStepRuns)));
    const std::uint64_t pixels = SumOfLanes(lanes);
    return pixels < wanted ? RunsThatHoldBySteps(runs, wanted, steps * kStepRuns, pixels)
                           : RunsThatHoldBySteps(runs, wanted, 0, 0);
}

std::span<const Run> RunsBeforeDelimiter(std::span<const Run> runs)
{
    std::size_t i = 0;
    while (i + kStepRuns <= runs.size() && !MayHoldDelimiter(LoadStep(runs.data() + i)))
        i += kStepRuns;
    return RunsBeforeDelimiterPlain(runs, i);
}

bool AllNameColours(std::span<const Run> runs, unsigned int colours)
{
    const __m128i indexes = _mm_set1_epi16(0x00FF);
    const __m128i one = _mm_set1_epi16(0x0001);
    __m128i highest = _mm_setzero_si128(); // index less 1, so that index 0 is the highest of all
    std::size_t i = 0;
    for (; i + kVectorRuns <= runs.size(); i += kVectorRuns) {
        const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i*>(runs.data() + i));
        highest = _mm_max_epu8(highest, _mm_sub_epi8(_mm_and_si128(some, indexes), one));
    }
    alignas(16) std::array<std::uint8_t, sizeof(__m128i)> bytes{};
    _mm_store_si128(reinterpret_cast<__m128i*>(bytes.data()), highest);
    const std::uint8_t found = *std::max_element(bytes.begin(), bytes.end());
    return (i == 0 || found < colours) &&
           std::all_of(runs.begin() + static_cast<std::ptrdiff_t>(i), runs.end(),
                       [&](Run run) { return run.index - 1U < colours; });
}

#else

std::span<const RunSumForm> RunSumForms()
{
    return {};
}

RunStretch RunsThatHold(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected)
{
    return RunsThatHoldPlain(runs, wanted, expected);
}

std::size_t SoundRows(std::span<const Run>, std::uint64_t, std::span<std::uint32_t>)
{
    return 0;
}

RunStretch RunsInsideThatHold(std::span<const Run> runs, std::uint64_t wanted, std::size_t expected)
{
    return RunsThatHoldPlain(runs, wanted, expected);
}

std::span<const Run> RunsBeforeDelimiter(std::span<const Run> runs)
{
    return RunsBeforeDelimiterPlain(runs, 0);
}

bool AllNameColours(std::span<const Run> runs, unsigned int colours)
{
    return std::all_of(runs.begin(), runs.end(), [&](Run run) { return run.index - 1U < colours; });
}

#endif

} // namespace tympan
