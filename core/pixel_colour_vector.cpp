// Two sets of instructions, each with a function that takes whole rounds of pixels. What they share
// stands in front of them: where a channel's bytes go, and what to do with pixels that fill no
// round.
#include "core/pixel_colour_vector.h"

#include "core/vector_forms.h"

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

#include <immintrin.h>

namespace tympan {

namespace {

enum class Stores { Cached, Streamed };

Plates Part(const Plates& plates, std::size_t first, std::size_t count)
{
    const auto [c, m, y, k] = plates.plate;
    return { { c + first, m + first, y + first, k + first }, count };
}

// How many pixels further on a multiple of `bytes`, 16 or 32, is reached.
std::size_t PixelsToMultiple(const std::uint8_t* bgr, std::size_t bytes)
{
    constexpr std::size_t kThird = 11; // 3 * 11 is 1 in the remainders of 16 and of 32
    return (0 - reinterpret_cast<std::uintptr_t>(bgr)) * kThird % bytes;
}

// A form out of functions that take rounds of `pixels`: `middle` stores at multiples of as many
// bytes. A round at each end, which the middle overlaps, takes the pixels that it leaves.
template <std::size_t pixels, PlatesToBgrForm ends, PlatesToBgrForm middle>
void InRounds(const Plates& plates, std::uint8_t* bgr)
{
    if (plates.count < pixels)
        return PlatesToBgrPlain(plates, bgr);
    const std::size_t first = PixelsToMultiple(bgr, pixels);
    const std::size_t last = plates.count - pixels;
    ends(Part(plates, 0, pixels), bgr);
    ends(Part(plates, last, pixels), bgr + last * 3);
    middle(Part(plates, first, (plates.count - first) / pixels * pixels), bgr + first * 3);
}

// A channel is 255 less the sum of two inks, held to 0: its plate's byte less black's part, held to
// 0. Black darkens by 0.8 of its ink, cut. The upper half of the product of 256 times the ink with
// 205 cuts to the same whole number for each of the 256 inks.
constexpr short kFourFifths = static_cast<short>(205U << 8U);

// Which byte of one channel stands at each of the 48 places of 16 mixed pixels; -1 for a byte of
// another channel.
struct Spread {
    alignas(16) std::int8_t from[3][16];
};

constexpr Spread SpreadOf(int channel)
{
    Spread spread{};
    for (int place = 0; place < 48; ++place)
        spread.from[place / 16][place % 16] =
            place % 3 == channel ? static_cast<std::int8_t>(place / 3) : std::int8_t{ -1 };
    return spread;
}

constexpr Spread kBlue = SpreadOf(0);
constexpr Spread kGreen = SpreadOf(1);
constexpr Spread kRed = SpreadOf(2);

// ---- 16 pixels in a round

[[gnu::target("ssse3")]] inline __m128i Load16(const void* bytes)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

template <Stores stores>
[[gnu::target("ssse3")]] inline void Store16(std::uint8_t* bytes, __m128i value)
{
    auto* const target = reinterpret_cast<__m128i*>(bytes);
    if constexpr (stores == Stores::Streamed)
        _mm_stream_si128(target, value);
    else
        _mm_storeu_si128(target, value);
}

[[gnu::target("ssse3")]] inline __m128i Darkening(__m128i blackPlate)
{
    const __m128i ink = _mm_xor_si128(blackPlate, _mm_set1_epi8(-1));
    const __m128i factor = _mm_set1_epi16(kFourFifths);
    const __m128i none = _mm_setzero_si128();
    return _mm_packus_epi16(_mm_mulhi_epu16(_mm_unpacklo_epi8(ink, none), factor),
                            _mm_mulhi_epu16(_mm_unpackhi_epi8(ink, none), factor));
}

struct Colours16 {
    __m128i blue, green, red;
};

// 16 of the 48 bytes of mixed pixels.
[[gnu::target("ssse3")]] inline __m128i Mixed(const Colours16& colours, std::size_t third)
{
    const __m128i blue = _mm_shuffle_epi8(colours.blue, Load16(kBlue.from[third]));
    const __m128i green = _mm_shuffle_epi8(colours.green, Load16(kGreen.from[third]));
    const __m128i red = _mm_shuffle_epi8(colours.red, Load16(kRed.from[third]));
    return _mm_or_si128(_mm_or_si128(blue, green), red);
}

template <Stores stores>
[[gnu::target("ssse3")]] void RoundsOf16(const Plates& plates, std::uint8_t* bgr)
{
    const auto [cyan, magenta, yellow, black] = plates.plate;
    for (std::size_t at = 0; at < plates.count; at += 16, bgr += 48) {
        const __m128i dark = Darkening(Load16(black + at));
        const Colours16 colours{ _mm_subs_epu8(Load16(yellow + at), dark),
                                 _mm_subs_epu8(Load16(magenta + at), dark),
                                 _mm_subs_epu8(Load16(cyan + at), dark) };
        for (std::size_t third = 0; third < 3; ++third)
            Store16<stores>(bgr + third * 16, Mixed(colours, third));
    }
    if constexpr (stores == Stores::Streamed)
        _mm_sfence();
}

// ---- 32 pixels in a round, 16 in each half of a register

[[gnu::target("avx2")]] inline __m256i Load32(const std::uint8_t* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] inline __m256i InBothHalves(const std::int8_t* bytes)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(bytes)));
}

template <Stores stores>
[[gnu::target("avx2")]] inline void Store32(std::uint8_t* bytes, __m256i value)
{
    auto* const target = reinterpret_cast<__m256i*>(bytes);
    if constexpr (stores == Stores::Streamed)
        _mm256_stream_si256(target, value);
    else
        _mm256_storeu_si256(target, value);
}

[[gnu::target("avx2")]] inline __m256i Darkening(__m256i blackPlate)
{
    const __m256i ink = _mm256_xor_si256(blackPlate, _mm256_set1_epi8(-1));
    const __m256i factor = _mm256_set1_epi16(kFourFifths);
    const __m256i none = _mm256_setzero_si256();
    return _mm256_packus_epi16(_mm256_mulhi_epu16(_mm256_unpacklo_epi8(ink, none), factor),
                               _mm256_mulhi_epu16(_mm256_unpackhi_epi8(ink, none), factor));
}

struct Colours32 {
    __m256i blue, green, red;
};

// 16 of the 48 bytes of mixed pixels of each half.
[[gnu::target("avx2")]] inline __m256i Mixed(const Colours32& colours, std::size_t third)
{
    const __m256i blue = _mm256_shuffle_epi8(colours.blue, InBothHalves(kBlue.from[third]));
    const __m256i green = _mm256_shuffle_epi8(colours.green, InBothHalves(kGreen.from[third]));
    const __m256i red = _mm256_shuffle_epi8(colours.red, InBothHalves(kRed.from[third]));
    return _mm256_or_si256(_mm256_or_si256(blue, green), red);
}

// The three thirds of the lower halves, then those of the upper ones.
template <Stores stores>
[[gnu::target("avx2")]] inline void StoreMixed(const Colours32& colours, std::uint8_t* bgr)
{
    const __m256i first = Mixed(colours, 0);
    const __m256i second = Mixed(colours, 1);
    const __m256i third = Mixed(colours, 2);
    Store32<stores>(bgr, _mm256_permute2x128_si256(first, second, 0x20));
    Store32<stores>(bgr + 32, _mm256_permute2x128_si256(third, first, 0x30));
    Store32<stores>(bgr + 64, _mm256_permute2x128_si256(second, third, 0x31));
}

template <Stores stores>
[[gnu::target("avx2")]] void RoundsOf32(const Plates& plates, std::uint8_t* bgr)
{
    const auto [cyan, magenta, yellow, black] = plates.plate;
    for (std::size_t at = 0; at < plates.count; at += 32, bgr += 96) {
        const __m256i dark = Darkening(Load32(black + at));
        StoreMixed<stores>({ _mm256_subs_epu8(Load32(yellow + at), dark),
                             _mm256_subs_epu8(Load32(magenta + at), dark),
                             _mm256_subs_epu8(Load32(cyan + at), dark) },
                           bgr);
    }
    if constexpr (stores == Stores::Streamed)
        _mm_sfence();
}

template <std::size_t pixels, PlatesToBgrForm cached, PlatesToBgrForm streamed>
constexpr VectorForm FormOf(const char* name)
{
    return { name, InRounds<pixels, cached, cached>, InRounds<pixels, cached, streamed> };
}

constexpr VectorForm kForms[] = {
    FormOf<32, RoundsOf32<Stores::Cached>, RoundsOf32<Stores::Streamed>>("AVX2"),
    FormOf<16, RoundsOf16<Stores::Cached>, RoundsOf16<Stores::Streamed>>("SSSE3"),
};

} // namespace

std::span<const VectorForm> VectorForms()
{
    return FormsOfProcessor(kForms);
}

} // namespace tympan

#else

namespace tympan {

std::span<const VectorForm> VectorForms()
{
    return {};
}

} // namespace tympan

#endif
