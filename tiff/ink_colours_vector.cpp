// Two sets of instructions, each with a function that takes whole rounds of pixels; a last round that
// overlaps the one before takes the pixels that fill none.
#include "core/vector_forms.h"
#include "tiff/ink_colours.h"

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

#include <immintrin.h>

namespace tympan {

namespace {

constexpr std::size_t kInks = 4;

template <std::size_t pixels, InksToBgrForm rounds>
void InRounds(const std::uint8_t* inks, std::size_t count, std::uint8_t* bgr)
{
    if (count < pixels)
        return InksToBgrPlain(inks, count, bgr);
    rounds(inks, count / pixels * pixels, bgr);
    const std::size_t last = count - pixels;
    rounds(inks + last * kInks, pixels, bgr + last * 3);
}

// A channel is 255 less the sum of its ink and black's part, held to 255. Black's part is 0.8 of its
// ink, cut: the upper half of the product of 256 times the ink with 205 cuts to the same whole number
// for each of the 256 inks.
constexpr short kFourFifths = static_cast<short>(205U << 8U);

// Black's part, which stands in the first byte of each pixel, at its three inks.
alignas(16) constexpr std::int8_t kAtInks[16] = { 0, 0, 0, -1, 4,  4,  4,  -1,
                                                  8, 8, 8, -1, 12, 12, 12, -1 };
// Blue, green, red of four pixels from the inverse of their inks; nothing in the last four bytes.
alignas(16) constexpr std::int8_t kAsBgr[16] = { 2, 1,  0,  6,  5,  4,  10, 9,
                                                 8, 14, 13, 12, -1, -1, -1, -1 };

// ---- 16 pixels in a round

[[gnu::target("ssse3")]] inline __m128i Order16(const std::int8_t* order)
{
    return _mm_load_si128(reinterpret_cast<const __m128i*>(order));
}

// 12 bytes.
[[gnu::target("ssse3")]] inline __m128i FourPixels(const std::uint8_t* inks)
{
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(inks));
    const __m128i part = _mm_mulhi_epu16(_mm_srli_epi32(pixels, 24), _mm_set1_epi16(kFourFifths));
    const __m128i sums = _mm_adds_epu8(pixels, _mm_shuffle_epi8(part, Order16(kAtInks)));
    return _mm_shuffle_epi8(_mm_xor_si128(sums, _mm_set1_epi8(-1)), Order16(kAsBgr));
}

[[gnu::target("ssse3")]] inline void Store16(std::uint8_t* bytes, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

[[gnu::target("ssse3")]] void RoundsOf16(const std::uint8_t* inks, std::size_t count,
                                         std::uint8_t* bgr)
{
    for (std::size_t at = 0; at < count; at += 16, inks += 16 * kInks, bgr += 48) {
        const __m128i a = FourPixels(inks);
        const __m128i b = FourPixels(inks + 16);
        const __m128i c = FourPixels(inks + 32);
        const __m128i d = FourPixels(inks + 48);
        Store16(bgr, _mm_or_si128(a, _mm_slli_si128(b, 12)));
        Store16(bgr + 16, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
        Store16(bgr + 32, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(d, 4)));
    }
}

// ---- 32 pixels in a round, 16 in each half of a register

[[gnu::target("avx2")]] inline __m256i Order32(const std::int8_t* order)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(order)));
}

// Four of the first 16 pixels and four of the next, 12 bytes in each half.
[[gnu::target("avx2")]] inline __m256i EightPixels(const std::uint8_t* inks)
{
    const auto* const first = reinterpret_cast<const __m128i*>(inks);
    const __m256i pixels = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(first)),
                                                   _mm_loadu_si128(first + 4), 1);
    const __m256i part =
        _mm256_mulhi_epu16(_mm256_srli_epi32(pixels, 24), _mm256_set1_epi16(kFourFifths));
    const __m256i sums = _mm256_adds_epu8(pixels, _mm256_shuffle_epi8(part, Order32(kAtInks)));
    return _mm256_shuffle_epi8(_mm256_xor_si256(sums, _mm256_set1_epi8(-1)), Order32(kAsBgr));
}

[[gnu::target("avx2")]] inline void Store32(std::uint8_t* bytes, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}

[[gnu::target("avx2")]] void RoundsOf32(const std::uint8_t* inks, std::size_t count,
                                        std::uint8_t* bgr)
{
    for (std::size_t at = 0; at < count; at += 32, inks += 32 * kInks, bgr += 96) {
        const __m256i a = EightPixels(inks);
        const __m256i b = EightPixels(inks + 16);
        const __m256i c = EightPixels(inks + 32);
        const __m256i d = EightPixels(inks + 48);
        const __m256i first = _mm256_or_si256(a, _mm256_slli_si256(b, 12));
        const __m256i second = _mm256_or_si256(_mm256_srli_si256(b, 4), _mm256_slli_si256(c, 8));
        const __m256i third = _mm256_or_si256(_mm256_srli_si256(c, 8), _mm256_slli_si256(d, 4));
        Store32(bgr, _mm256_permute2x128_si256(first, second, 0x20));
        Store32(bgr + 32, _mm256_permute2x128_si256(third, first, 0x30));
        Store32(bgr + 64, _mm256_permute2x128_si256(second, third, 0x31));
    }
}

constexpr InkColourForm kForms[] = {
    { "AVX2", InRounds<32, RoundsOf32> },
    { "SSSE3", InRounds<16, RoundsOf16> },
};

} // namespace

std::span<const InkColourForm> InkColourForms()
{
    return FormsOfProcessor(kForms);
}

} // namespace tympan

#else

namespace tympan {

std::span<const InkColourForm> InkColourForms()
{
    return {};
}

} // namespace tympan

#endif
