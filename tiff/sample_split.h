// Takes samples that lie side by side apart. The forms for the processor's vectors give the same as
// the plain ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

/// One sample of each pixel.
struct SampleChoice {
    const std::uint8_t* pixels; ///< `count` times `samples` bytes
    std::size_t count;
    std::size_t samples; ///< of a pixel, 1 or more
    std::size_t wanted;  ///< its number, below `samples`
};

/// Stores the wanted sample of each pixel, `choice.count` bytes.
void TakeSample(const SampleChoice& choice, std::uint8_t* out);
void TakeSamplePlain(const SampleChoice& choice, std::uint8_t* out);

/// Pixels of four samples as four planes of their inverse, `count` bytes each.
void SplitInverse(const std::uint8_t* pixels, std::size_t count, std::uint8_t* const planes[4]);
void SplitInversePlain(const std::uint8_t* pixels, std::size_t count,
                       std::uint8_t* const planes[4]);

/// One set of the processor's instructions at the work.
struct SplitForm {
    const char* name;
    void (*ofThree)(const SampleChoice& choice, std::uint8_t* out);
    /// Of two to eight samples.
    void (*ofFew)(const SampleChoice& choice, std::uint8_t* out);
    void (*ofFour)(const SampleChoice& choice, std::uint8_t* out);
    void (*inverse)(const std::uint8_t* pixels, std::size_t count, std::uint8_t* const planes[4]);
};

/// The forms that the processor that runs this has, the fastest first.
std::span<const SplitForm> SplitForms();

} // namespace tympan
