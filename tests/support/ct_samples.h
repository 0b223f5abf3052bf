// CT files made by hand, byte by byte: nothing here uses the library.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace tympan::test {

/// What stands in a CT file. Pixels are random unless they are set.
struct CtSample {
    unsigned int width = 4;
    unsigned int height = 3;
    unsigned int separations = 4;
    double inchesHigh = 1.0;
    double inchesWide = 1.0;
    std::uint32_t seed = 1;

    std::size_t Stride() const { return width + width % 2; }
    std::uint64_t Place(unsigned int row, unsigned int slot) const
    {
        return 2048 + (std::uint64_t{ separations } * row + slot) * Stride();
    }

    std::vector<unsigned char> Header() const
    {
        std::vector<unsigned char> bytes(2048, 0);
        bytes[1024] = 1;
        bytes[1025] = static_cast<unsigned char>(separations);
        bytes[1027] = separations == 4 ? 15 : 1;
        PutSize(bytes, 1028, inchesHigh);
        PutSize(bytes, 1042, inchesWide);
        PutText(bytes, 1056, Text("+%011u", height));
        PutText(bytes, 1068, Text("+%011u", width));
        return bytes;
    }

    std::vector<unsigned char> Bytes() const
    {
        std::vector<unsigned char> bytes = Header();
        std::mt19937 random(seed);
        bytes.resize(Place(height, 0));
        for (std::size_t at = 2048; at < bytes.size(); ++at)
            bytes[at] = static_cast<unsigned char>(random());
        return bytes;
    }

    template <typename... Values>
    static std::string Text(const char* form, Values... values)
    {
        char text[32] = {};
        std::snprintf(text, sizeof text, form, values...);
        return text;
    }
    static void PutText(std::vector<unsigned char>& bytes, std::size_t at, const std::string& text)
    {
        std::memcpy(bytes.data() + at, text.data(), text.size());
    }
    /// A size from 0.1 inches on, or 0, as `+.10000000E+01`.
    static void PutSize(std::vector<unsigned char>& bytes, std::size_t at, double inches)
    {
        int exponent = 0;
        for (; inches >= 1.0; ++exponent)
            inches /= 10.0;
        PutText(bytes, at, Text("+.%08.0fE+%02d", inches * 1e8, exponent));
    }
};

} // namespace tympan::test
