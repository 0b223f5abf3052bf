#include "tiff/sample_split.h"

namespace tympan {

namespace {

// A count that the compiler knows makes a loop without a multiplication.
template <std::size_t samples>
void TakeOf(const SampleChoice& choice, std::uint8_t* out)
{
    const std::uint8_t* const from = choice.pixels + choice.wanted;
    for (std::size_t i = 0; i < choice.count; ++i)
        out[i] = from[i * samples];
}

void TakeOfAny(const SampleChoice& choice, std::uint8_t* out)
{
    const std::uint8_t* from = choice.pixels + choice.wanted;
    for (std::size_t i = 0; i < choice.count; ++i, from += choice.samples)
        out[i] = *from;
}

SplitForm FastestForm() noexcept
{
    const auto forms = SplitForms();
    return forms.empty() ? SplitForm{ "plain", TakeSamplePlain, TakeSamplePlain, TakeSamplePlain }
                         : forms.front();
}

} // namespace

void TakeSample(const SampleChoice& choice, std::uint8_t* out)
{
    static const SplitForm kForm = FastestForm();
    switch (choice.samples) {
    case 3: return kForm.ofThree(choice, out);
    case 4: return kForm.ofFour(choice, out);
    case 2:
    case 5:
    case 6:
    case 7:
    case 8: return kForm.ofFew(choice, out);
    default: return TakeSamplePlain(choice, out);
    }
}

void TakeSamplePlain(const SampleChoice& choice, std::uint8_t* out)
{
    switch (choice.samples) {
    case 3: return TakeOf<3>(choice, out);
    case 4: return TakeOf<4>(choice, out);
    default: return TakeOfAny(choice, out);
    }
}

} // namespace tympan
