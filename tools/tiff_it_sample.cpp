// Writes a small TIFF/IT file of either kind, for the demo and the tests: `tympan_tiffit_sample ct|lw OUT`.
// It isn't installed, for people get such files from their prepress systems.
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint32_t kWidth = 240;
constexpr std::uint32_t kHeight = 160;

using Bytes = std::string;

// Numbers stand with their high byte first.
void Put(Bytes& bytes, std::uint32_t number, unsigned int size)
{
    while (size-- > 0)
        bytes += static_cast<char>(number >> (8 * size));
}

struct Field {
    std::uint16_t tag, type;
    std::uint32_t count;
    std::uint32_t value; // or the place of the values
};

constexpr std::uint16_t kByte = 1;
constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;

// A value of two bytes stands in front of its four.
void Put(Bytes& bytes, const Field& field)
{
    Put(bytes, field.tag, 2);
    Put(bytes, field.type, 2);
    Put(bytes, field.count, 4);
    const bool isShort = field.type == kShort && field.count == 1;
    Put(bytes, isShort ? field.value << 16U : field.value, 4);
}

// What the two kinds differ in.
struct Kind {
    std::uint32_t samples;
    std::uint32_t compression;
    Bytes table;   // of colours; none without
    Bytes picture; // the one strip
};

constexpr std::uint32_t kHeaderBytes = 8;
constexpr std::uint32_t kFieldBytes = 12;

Bytes FileOf(const Kind& kind)
{
    const std::uint32_t fields = kind.table.empty() ? 9 : 10;
    const std::uint32_t bits = kHeaderBytes + 2 + fields * kFieldBytes + 4;
    const std::uint32_t table = bits + 8;
    const auto tableBytes = static_cast<std::uint32_t>(kind.table.size());
    Bytes file("MM\0*", 4);
    Put(file, kHeaderBytes, 4);
    Put(file, fields, 2);
    Put(file, { 256, kLong, 1, kWidth });
    Put(file, { 257, kLong, 1, kHeight });
    Put(file, { 258, kShort, kind.samples, kind.samples == 1 ? 8 : bits });
    Put(file, { 259, kShort, 1, kind.compression });
    Put(file, { 262, kShort, 1, 5 }); // separated
    Put(file, { 273, kLong, 1, table + tableBytes });
    Put(file, { 277, kShort, 1, kind.samples });
    Put(file, { 278, kLong, 1, kHeight });
    Put(file, { 279, kLong, 1, static_cast<std::uint32_t>(kind.picture.size()) });
    if (tableBytes != 0)
        Put(file, { 34022, kByte, tableBytes, table });
    Put(file, 0, 4); // no further directory
    for (int i = 0; i < 4; ++i)
        Put(file, 8, 2);
    return file + kind.table + kind.picture;
}

// A slope of cyan along the width and one of magenta along the height, over some yellow.
Kind ContinuousTone()
{
    constexpr std::uint32_t kMost = 255;
    constexpr std::uint32_t kSomeYellow = 40;
    Bytes picture;
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x)
            for (const std::uint32_t ink :
                 { x * kMost / kWidth, y * kMost / kHeight, kSomeYellow, 0U })
                Put(picture, ink, 1);
    return { 4, 1, {}, picture };
}

Bytes ColourTable(const std::vector<std::uint32_t>& inks)
{
    constexpr std::size_t kRecordBytes = 20;
    Bytes table;
    for (std::size_t i = 0; i < inks.size(); ++i) {
        Bytes record;
        Put(record, static_cast<std::uint32_t>(i), 2); // its number
        Put(record, 0x0F, 2);                          // all four inks count
        Put(record, inks[i], 4);
        record.resize(kRecordBytes);
        table += record;
    }
    return table;
}

// Paper with a frame of black and bars of the other colours.
Kind LineWork()
{
    constexpr std::uint32_t kCompression = 32896; // line work's own
    constexpr std::uint32_t kFrame = 8;
    constexpr std::uint32_t kBars = 4;
    constexpr std::uint32_t kBlack = kBars;
    Bytes picture(2, '\0');
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        const auto run = [&](std::uint32_t colour, std::uint32_t length) {
            Put(picture, colour, 1);
            Put(picture, length, 1);
        };
        const bool isFrame = y < kFrame || y >= kHeight - kFrame;
        run(kBlack, kFrame);
        for (std::uint32_t bar = 0; bar < kBars; ++bar)
            run(isFrame ? kBlack : bar, (kWidth - 2 * kFrame) / kBars);
        run(kBlack, kFrame);
        Put(picture, 0, 4); // behind each row
    }
    return { 1, kCompression,
             ColourTable({ 0x00000000, 0xFF000000, 0x00FF0000, 0x0000FF00, 0x000000FF }), picture };
}

int Write(std::string_view kind, const std::string& path)
{
    std::ofstream out(path, std::ios::binary);
    out << FileOf(kind == "ct" ? ContinuousTone() : LineWork());
    out.close();
    if (out)
        return 0;
    std::cerr << path << ": can't be written\n";
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const std::vector<std::string> words(argv, argv + argc);
        if (words.size() == 3 && (words[1] == "ct" || words[1] == "lw"))
            return Write(words[1], words[2]);
        std::cerr << "usage: tympan_tiffit_sample ct|lw OUT\n";
        return 2;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
