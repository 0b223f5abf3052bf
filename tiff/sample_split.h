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

/// One set of the processor's instructions at the work.
struct SplitForm {
    const char* name;
    void (*ofThree)(const SampleChoice& choice, std::uint8_t* out);
    /// Of two to eight samples.
    void (*ofFew)(const SampleChoice& choice, std::uint8_t* out);
    void (*ofFour)(const SampleChoice& choice, std::uint8_t* out);
};

/// The forms that the processor that runs this has, the fastest first.
std::span<const SplitForm> SplitForms();

} // namespace tympan
