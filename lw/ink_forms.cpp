// For any processor: run by run into pixels, four runs at a time into a stream. With vectors of 32
// bytes: a run into pixels by a store or a few, sixteen runs at a time into a stream.
#include "lw/ink_forms.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
#include <immintrin.h>
#endif

namespace tympan {

namespace {

// Four runs at a time, where the first of them stands in the lowest bits of a number.
template <RunOrder order>
std::uint8_t* TranslateByFour(std::span<const Run> runs, const ByteTable& values, std::uint8_t* out)
{
    constexpr std::size_t kAtOnce = sizeof(std::uint64_t) / sizeof(Run);
    constexpr std::uint64_t kLowBytes = 0x00FF00FF00FF00FF;
    while (std::endian::native == std::endian::little && runs.size() >= kAtOnce) {
        std::uint64_t four = 0;
        std::memcpy(&four, runs.data(), sizeof four);
        std::uint64_t inks = 0;
        for (unsigned int bit = 0; bit < 64; bit += 16)
            inks |= std::uint64_t{ values[static_cast<std::uint8_t>(four >> bit)] } << bit;
        if constexpr (order == RunOrder::ColourFirst)
            four = (four & ~kLowBytes) | inks;
        else
            four = (four >> 8U & kLowBytes) | inks << 8U;
        std::memcpy(out, &four, sizeof four);
        out += sizeof four;
        runs = runs.subspan(kAtOnce);
    }
    for (const Run run : runs)
        out = StoreRun(values[run.index], run.length, order, out);
    return out;
}

std::uint8_t* ExpandByOne(std::span<const Run> runs, const ByteTable& values, std::uint8_t* out)
{
    for (const Run run : runs)
        out = std::fill_n(out, run.length, values[run.index]);
    return out;
}

std::uint8_t* Expand(const RunStretch& stretch, const ByteTable& values, std::uint8_t* out)
{
    return ExpandByOne(stretch.runs, values, out);
}

std::uint8_t* Translate(std::span<const Run> runs, const ByteTable& values, std::uint8_t,
                        RunOrder order, std::uint8_t* out)
{
    return order == RunOrder::ColourFirst
               ? TranslateByFour<RunOrder::ColourFirst>(runs, values, out)
               : TranslateByFour<RunOrder::LengthFirst>(runs, values, out);
}

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

// Where the longest run ends when it is stored in whole steps of any size.
constexpr std::ptrdiff_t kLongestInSteps = 256;

// Runs are stored in whole steps of vectors as long as a step doesn't pass the end; what a step stores
// too much, the next run stores over.
template <std::size_t vectors>
[[gnu::target("avx2")]] std::uint8_t* ExpandInSteps(const RunStretch& stretch,
                                                    const ByteTable& values, std::uint8_t* out)
{
    constexpr std::size_t kStep = vectors * sizeof(__m256i);
    static_assert(kLongestInSteps % kStep == 0);
    const std::uint8_t* const end = out + stretch.pixels;
    const Run* run = stretch.runs.data();
    const Run* const last = run + stretch.runs.size();
    for (; run != last && end - out >= kLongestInSteps; ++run) {
        const std::size_t length = run->length;
        const __m256i value = _mm256_set1_epi8(static_cast<char>(values[run->index]));
        std::size_t stored = 0;
        do {
            for (std::size_t i = 0; i < kStep; i += sizeof(__m256i))
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + stored + i), value);
            stored += kStep;
        } while (stored < length);
        out += length;
    }
    return ExpandByOne({ run, last }, values, out);
}

// A step that most runs don't pass, for the sake of the processor's guesses.
std::uint8_t* ExpandAvx2(const RunStretch& stretch, const ByteTable& values, std::uint8_t* out)
{
    const std::uint64_t mean = stretch.pixels / std::max<std::size_t>(stretch.runs.size(), 1);
    if (mean < 12)
        return ExpandInSteps<1>(stretch, values, out);
    return mean < 24 ? ExpandInSteps<2>(stretch, values, out)
                     : ExpandInSteps<4>(stretch, values, out);
}

constexpr std::size_t kShuffled = 16;    // values that a shuffle looks up
constexpr std::size_t kMostShuffles = 8; // from there on four at a time are as quick

// In each shuffle only the indexes of its own values have a clear upper bit, and the others give 0.
template <RunOrder order>
[[gnu::target("avx2")]] std::uint8_t* TranslateByShuffles(std::span<const Run> runs,
                                                          const ByteTable& values,
                                                          std::size_t shuffles, std::uint8_t* out)
{
    constexpr std::size_t kAtOnce = sizeof(__m256i) / sizeof(Run);
    __m256i tables[kMostShuffles];
    for (std::size_t i = 0; i < shuffles; ++i)
        tables[i] = _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(values.data() + i * kShuffled)));
    const __m256i colours = _mm256_set1_epi16(0x00FF);
    const __m256i toUpperBit = _mm256_set1_epi8(0x80 - kShuffled);
    const __m256i next = _mm256_set1_epi8(kShuffled);
    for (; runs.size() >= kAtOnce; runs = runs.subspan(kAtOnce), out += sizeof(__m256i)) {
        const __m256i some = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(runs.data()));
        __m256i indexes = some;
        __m256i inks = _mm256_setzero_si256();
        for (std::size_t i = 0; i < shuffles; ++i) {
            const __m256i places = _mm256_adds_epu8(indexes, toUpperBit);
            inks = _mm256_or_si256(inks, _mm256_shuffle_epi8(tables[i], places));
            indexes = _mm256_sub_epi8(indexes, next);
        }
        const __m256i stored =
            order == RunOrder::ColourFirst
                ? _mm256_blendv_epi8(some, inks, colours)
                : _mm256_or_si256(_mm256_srli_epi16(some, 8), _mm256_slli_epi16(inks, 8));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), stored);
    }
    return TranslateByFour<order>(runs, values, out);
}

std::uint8_t* TranslateAvx2(std::span<const Run> runs, const ByteTable& values,
                            std::uint8_t highest, RunOrder order, std::uint8_t* out)
{
    const std::size_t shuffles = highest / kShuffled + 1;
    if (shuffles > kMostShuffles)
        return Translate(runs, values, highest, order, out);
    return order == RunOrder::ColourFirst
               ? TranslateByShuffles<RunOrder::ColourFirst>(runs, values, shuffles, out)
               : TranslateByShuffles<RunOrder::LengthFirst>(runs, values, shuffles, out);
}

constexpr InkForm kForms[] = {
    { "AVX2", ExpandAvx2, TranslateAvx2 },
    { "any", Expand, Translate },
};

#endif

constexpr InkForm kAnyProcessors[] = { { "any", Expand, Translate } };

} // namespace

std::span<const InkForm> InkForms()
{
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
    if (__builtin_cpu_supports("avx2"))
        return kForms;
#endif
    return kAnyProcessors;
}

} // namespace tympan
