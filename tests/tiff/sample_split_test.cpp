// Every form of taking samples apart gives what the plain one gives.
#include "tiff/sample_split.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::size_t count)
{
    std::mt19937 random(71);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(SampleSplit, TakesTheWantedSampleOfEachPixel)
{
    for (std::size_t samples = 1; samples <= 9; ++samples)
        for (std::size_t count = 0; count <= 70; ++count)
            for (std::size_t wanted = 0; wanted < samples; ++wanted) {
                const Bytes pixels = RandomBytes(count * samples); // to the byte
                Bytes expected(count);
                for (std::size_t i = 0; i < count; ++i)
                    expected[i] = pixels[i * samples + wanted];
                const tympan::SampleChoice choice{ pixels.data(), count, samples, wanted };
                Bytes taken(count);
                tympan::TakeSample(choice, taken.data());
                ASSERT_EQ(taken, expected) << samples << " samples, " << count << " pixels";
                for (const tympan::SplitForm& form : tympan::SplitForms()) {
                    if (samples < 2 || samples > 8)
                        continue;
                    taken.assign(count, 0);
                    (samples == 3   ? form.ofThree
                     : samples == 4 ? form.ofFour
                                    : form.ofFew)(choice, taken.data());
                    ASSERT_EQ(taken, expected) << form.name << ", " << count;
                }
            }
}

} // namespace
