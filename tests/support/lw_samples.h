// LW files made by hand, byte by byte: nothing here uses the library.
#pragma once

#include "support/ct_samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace tympan::test {

struct LwRun {
    unsigned char index; // of a colour, from 1
    unsigned char length;
    bool operator==(const LwRun&) const = default;
};
using LwRow = std::vector<LwRun>;

struct LwColour {
    std::array<unsigned char, 4> inks{ 255, 255, 255, 255 };
    unsigned char flags = 0; // bit 7 transparent in cyan, to bit 4 in black
};

/// What stands in an LW file. The header may say a height that the rows are not.
struct LwPicture {
    unsigned int width = 5;
    unsigned int height = 1;
    unsigned char mask = 15; // of the separations
    double inchesHigh = 1.0;
    double inchesWide = 1.0;
    std::vector<LwColour> colours{ { { 10, 20, 30, 40 } }, { { 50, 60, 70, 80 } } };
    std::vector<LwRow> rows{ { { 1, 3 }, { 2, 2 } } };

    std::size_t Start() const { return 2048 + 18 * colours.size(); }
    /// Where a row begins, its delimiter included.
    std::size_t Place(std::size_t row) const
    {
        std::size_t place = Start();
        for (std::size_t i = 0; i < row; ++i)
            place += 2 * rows[i].size() + 4;
        return place;
    }

    std::vector<unsigned char> Header() const
    {
        std::vector<unsigned char> bytes(Start(), 0);
        CtSample::PutText(bytes, 1, "line work");
        CtSample::PutText(bytes, 80, "LW");
        bytes[1024] = 1;
        bytes[1025] = static_cast<unsigned char>(std::popcount(mask));
        bytes[1027] = mask;
        CtSample::PutSize(bytes, 1028, inchesHigh);
        CtSample::PutSize(bytes, 1042, inchesWide);
        CtSample::PutText(bytes, 1056, CtSample::Text("+%011u", height));
        CtSample::PutText(bytes, 1068, CtSample::Text("+%011u", width));
        bytes[1080] = static_cast<unsigned char>(colours.size());
        for (std::size_t i = 0; i < colours.size(); ++i) {
            unsigned char* const record = bytes.data() + 2048 + 18 * i;
            record[0] = static_cast<unsigned char>(i + 1);
            record[1] = colours[i].flags;
            std::copy(colours[i].inks.begin(), colours[i].inks.end(), record + 2);
        }
        return bytes;
    }

    std::vector<unsigned char> Bytes() const
    {
        std::vector<unsigned char> bytes = Header();
        for (const LwRow& row : rows) {
            bytes.insert(bytes.end(), { 0, 0 });
            for (const LwRun run : row)
                bytes.insert(bytes.end(), { run.index, run.length });
            bytes.insert(bytes.end(), { 0, 0 });
        }
        return bytes;
    }

    /// The colour index of each pixel of a row.
    std::vector<unsigned char> Indexes(std::size_t row) const
    {
        std::vector<unsigned char> pixels;
        for (const LwRun run : rows[row])
            pixels.insert(pixels.end(), run.length, run.index);
        return pixels;
    }
    /// The ink value of each pixel of a row, as the colour records have it.
    std::vector<unsigned char> Inks(std::size_t row, std::size_t separation) const
    {
        std::vector<unsigned char> pixels = Indexes(row);
        for (unsigned char& pixel : pixels)
            pixel = colours[pixel - std::size_t{ 1 }].inks[separation];
        return pixels;
    }
};

enum class LwRuns {
    dense,   // of 6 pixels in the mean
    sparse,  // of 60
    single,  // of 1
    longest, // of 255
    hollow,  // of 0 for the most part
    mixed,   // of any length
    blank,   // a row of one colour
};
inline constexpr LwRuns kLwRuns[] = { LwRuns::dense,   LwRuns::sparse, LwRuns::single,
                                      LwRuns::longest, LwRuns::hollow, LwRuns::mixed,
                                      LwRuns::blank };

/// Colours of random inks, some of them transparent.
inline std::vector<LwColour> RandomColours(std::mt19937& random, std::size_t count)
{
    std::vector<LwColour> colours(count);
    for (LwColour& colour : colours) {
        for (unsigned char& ink : colour.inks)
            ink = static_cast<unsigned char>(random());
        colour.flags = static_cast<unsigned char>(random() % 8 == 0 ? random() : 0);
    }
    return colours;
}

/// Runs of any of `colours` colours that add up to `width`, which is not 0.
inline LwRow RandomRow(std::mt19937& random, unsigned int width, std::size_t colours, LwRuns kind)
{
    const auto length = [&](unsigned int left) -> unsigned int {
        switch (kind) {
        case LwRuns::dense: return std::min(left, 1 + static_cast<unsigned int>(random() % 11));
        case LwRuns::sparse: return std::min(left, 1 + static_cast<unsigned int>(random() % 119));
        case LwRuns::single: return 1;
        case LwRuns::hollow:
            return random() % 8 != 0 ? 0 : std::min(left, static_cast<unsigned int>(random() % 60));
        case LwRuns::mixed:
            return std::min({ left, 255U, static_cast<unsigned int>(random() % 512) });
        default: return std::min(left, 255U);
        }
    };
    LwRow row;
    auto index = static_cast<unsigned char>(1 + random() % colours);
    for (unsigned int left = width; left != 0; left -= row.back().length) {
        if (kind != LwRuns::blank)
            index = static_cast<unsigned char>(1 + random() % colours);
        row.push_back({ index, static_cast<unsigned char>(length(left)) });
    }
    return row;
}

/// A picture without a fault.
inline LwPicture RandomPicture(std::mt19937& random, unsigned int width, unsigned int height,
                               std::size_t colours, LwRuns kind)
{
    LwPicture picture{ .width = width,
                       .height = height,
                       .mask =
                           static_cast<unsigned char>(random() % 2 != 0 ? 15 : 1 << random() % 4),
                       .colours = RandomColours(random, colours),
                       .rows = {} };
    for (unsigned int row = 0; row < height; ++row)
        picture.rows.push_back(RandomRow(random, width, colours, kind));
    return picture;
}

/// For what takes the contents of a file as text.
inline std::string_view AsText(const std::vector<unsigned char>& bytes)
{
    return { reinterpret_cast<const char*>(bytes.data()), bytes.size() };
}

} // namespace tympan::test
