// Two sets of instructions, each with functions that take whole rounds of pixels; a last round that
// overlaps the one before takes the pixels that fill none.
#include "core/vector_forms.h"
#include "tiff/sample_split.h"

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

#include <immintrin.h>

namespace tympan {

namespace {

using TakeRounds = void (*)(const SampleChoice& choice, std::uint8_t* out);

template <std::size_t pixels, TakeRounds rounds>
void TakeInRounds(const SampleChoice& choice, std::uint8_t* out)
{
    if (choice.count < pixels)
        return TakeSamplePlain(choice, out);
    SampleChoice part = choice;
    part.count = choice.count / pixels * pixels;
    rounds(part, out);
    const std::size_t last = choice.count - pixels;
    part.pixels += last * choice.samples;
    part.count = pixels;
    rounds(part, out + last);
}

// Which byte of each 16 of the 48 of 16 pixels goes to which place; -1 where another 16 have it.
struct Gather {
    alignas(16) std::int8_t from[3][16];
};

constexpr Gather GatherOf(int wanted)
{
    Gather gather{};
    for (int pixel = 0; pixel < 16; ++pixel)
        for (int third = 0; third < 3; ++third) {
            const int place = pixel * 3 + wanted - third * 16;
            gather.from[third][pixel] =
                place >= 0 && place < 16 ? static_cast<std::int8_t>(place) : std::int8_t{ -1 };
        }
    return gather;
}

constexpr Gather kGathers[3] = { GatherOf(0), GatherOf(1), GatherOf(2) };

// ---- 16 pixels in a round

[[gnu::target("ssse3")]] inline __m128i Load16(const void* bytes)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

[[gnu::target("ssse3")]] inline void Store16(std::uint8_t* bytes, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

[[gnu::target("ssse3")]] void TakeOfThree16(const SampleChoice& choice, std::uint8_t* out)
{
    const Gather& gather = kGathers[choice.wanted];
    const __m128i masks[3] = { Load16(gather.from[0]), Load16(gather.from[1]),
                               Load16(gather.from[2]) };
    const std::uint8_t* from = choice.pixels;
    for (std::size_t at = 0; at < choice.count; at += 16, from += 48)
        Store16(out + at, _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(Load16(from), masks[0]),
                                                    _mm_shuffle_epi8(Load16(from + 16), masks[1])),
                                       _mm_shuffle_epi8(Load16(from + 32), masks[2])));
}

// As three samples are taken, with as many parts of 16 pixels as there are samples.
[[gnu::target("ssse3")]] void TakeOfFew16(const SampleChoice& choice, std::uint8_t* out)
{
    constexpr std::size_t kMost = 8;
    const std::size_t samples = choice.samples;
    __m128i masks[kMost];
    for (std::size_t part = 0; part < samples; ++part) {
        std::int8_t mask[16];
        for (std::size_t pixel = 0; pixel < 16; ++pixel) {
            const std::size_t place = pixel * samples + choice.wanted;
            mask[pixel] =
                place / 16 == part ? static_cast<std::int8_t>(place % 16) : std::int8_t{ -1 };
        }
        masks[part] = Load16(mask);
    }
    const std::uint8_t* from = choice.pixels;
    for (std::size_t at = 0; at < choice.count; at += 16) {
        __m128i taken = _mm_setzero_si128();
        for (std::size_t part = 0; part < samples; ++part, from += 16)
            taken = _mm_or_si128(taken, _mm_shuffle_epi8(Load16(from), masks[part]));
        Store16(out + at, taken);
    }
}

// The wanted samples of eight pixels, 16 bits each.
[[gnu::target("ssse3")]] inline __m128i EightOfFour(const std::uint8_t* from, __m128i shift)
{
    const __m128i low = _mm_set1_epi32(0xFF);
    return _mm_packs_epi32(_mm_and_si128(_mm_srl_epi32(Load16(from), shift), low),
                           _mm_and_si128(_mm_srl_epi32(Load16(from + 16), shift), low));
}

[[gnu::target("ssse3")]] void TakeOfFour16(const SampleChoice& choice, std::uint8_t* out)
{
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(choice.wanted * 8));
    const std::uint8_t* from = choice.pixels;
    for (std::size_t at = 0; at < choice.count; at += 16, from += 64)
        Store16(out + at,
                _mm_packus_epi16(EightOfFour(from, shift), EightOfFour(from + 32, shift)));
}

// ---- 32 pixels in a round

[[gnu::target("avx2")]] inline __m256i Load32(const std::uint8_t* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] inline void Store32(std::uint8_t* bytes, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}

// 16 bytes of the first 16 pixels and 16 of the next.
[[gnu::target("avx2")]] inline __m256i LoadHalves(const std::uint8_t* from)
{
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 48)), 1);
}

[[gnu::target("avx2")]] inline __m256i InBothHalves(const std::int8_t* bytes)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(bytes)));
}

[[gnu::target("avx2")]] void TakeOfThree32(const SampleChoice& choice, std::uint8_t* out)
{
    const Gather& gather = kGathers[choice.wanted];
    const __m256i masks[3] = { InBothHalves(gather.from[0]), InBothHalves(gather.from[1]),
                               InBothHalves(gather.from[2]) };
    const std::uint8_t* from = choice.pixels;
    for (std::size_t at = 0; at < choice.count; at += 32, from += 96)
        Store32(out + at, _mm256_or_si256(
                              _mm256_or_si256(_mm256_shuffle_epi8(LoadHalves(from), masks[0]),
                                              _mm256_shuffle_epi8(LoadHalves(from + 16), masks[1])),
                              _mm256_shuffle_epi8(LoadHalves(from + 32), masks[2])));
}

[[gnu::target("avx2")]] inline __m256i SixteenOfFour(const std::uint8_t* from, __m128i shift)
{
    const __m256i low = _mm256_set1_epi32(0xFF);
    return _mm256_packs_epi32(_mm256_and_si256(_mm256_srl_epi32(Load32(from), shift), low),
                              _mm256_and_si256(_mm256_srl_epi32(Load32(from + 32), shift), low));
}

[[gnu::target("avx2")]] void TakeOfFour32(const SampleChoice& choice, std::uint8_t* out)
{
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(choice.wanted * 8));
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7); // packing works by halves
    const std::uint8_t* from = choice.pixels;
    for (std::size_t at = 0; at < choice.count; at += 32, from += 128) {
        const __m256i packed =
            _mm256_packus_epi16(SixteenOfFour(from, shift), SixteenOfFour(from + 64, shift));
        Store32(out + at, _mm256_permutevar8x32_epi32(packed, order));
    }
}

constexpr SplitForm kForms[] = {
    { "AVX2", TakeInRounds<32, TakeOfThree32>, TakeInRounds<16, TakeOfFew16>,
      TakeInRounds<32, TakeOfFour32> },
    { "SSSE3", TakeInRounds<16, TakeOfThree16>, TakeInRounds<16, TakeOfFew16>,
      TakeInRounds<16, TakeOfFour16> },
};

} // namespace

std::span<const SplitForm> SplitForms()
{
    return FormsOfProcessor(kForms);
}

} // namespace tympan

#else

namespace tympan {

std::span<const SplitForm> SplitForms()
{
    return {};
}

} // namespace tympan

#endif
