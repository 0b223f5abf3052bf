// Page files made by hand, byte by byte: nothing here uses the library.
#pragma once

#include "support/ct_samples.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tympan::test {

/// An entry of a page file. The numbers are the text that goes into the file.
struct PageEntrySample {
    unsigned char type = 1;
    std::string path = "picture.ct";
    std::string yOffset = "+.10000000E+01";
    std::string xOffset = "+.20000000E+01";
    std::string height = "+.10000000E+01";
    std::string width = "+.10000000E+01";
    std::string angle = "+.00000000E+00";
    std::string window{}; ///< of type 2: container, colours, zero byte

    std::vector<unsigned char> Bytes() const
    {
        const std::size_t numbers = type == 5 ? 84 : 82;
        std::vector<unsigned char> bytes(256, 0);
        bytes[0] = type;
        CtSample::PutText(bytes, 2, path);
        std::size_t at = numbers;
        for (const std::string* text : { &yOffset, &xOffset, &height, &width, &angle }) {
            CtSample::PutText(bytes, at, *text);
            at += 14;
        }
        CtSample::PutText(bytes, at, window);
        return bytes;
    }
};

/// A page of 10 by 8 inches and 100 pixels an inch, with four separations.
struct PageSample {
    std::vector<PageEntrySample> entries{};
    std::string count{}; ///< empty: that of the entries
    std::string letters = "PG";

    static std::size_t Place(std::size_t entry) { return 2048 + 256 * entry; }

    std::vector<unsigned char> Bytes() const
    {
        const CtSample header{
            .width = 1000, .height = 800, .inchesHigh = 8.0, .inchesWide = 10.0
        };
        std::vector<unsigned char> bytes = header.Header();
        CtSample::PutText(bytes, 80, letters);
        CtSample::PutText(bytes, 1080,
                          count.empty()
                              ? CtSample::Text("%06u", static_cast<unsigned int>(entries.size()))
                              : count);
        for (const PageEntrySample& entry : entries) {
            const auto more = entry.Bytes();
            bytes.insert(bytes.end(), more.begin(), more.end());
        }
        return bytes;
    }
};

} // namespace tympan::test
