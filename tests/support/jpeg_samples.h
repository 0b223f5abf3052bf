// JPEG files and their side files made by hand, byte by byte: nothing here uses the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tympan::test {

/// What stands in a JPEG and its side file. The bands are random bytes that hold no marker: nothing
/// decodes them.
struct JpegSample {
    using Bytes = std::vector<unsigned char>;
    using Blocks = std::vector<std::pair<std::uint32_t, std::uint32_t>>; ///< first byte, last byte

    unsigned int width = 20;
    unsigned int height = 27;
    unsigned int components = 3;
    std::string units{ '\1' };
    std::string inchesHigh = "+.27000000E+01";
    std::string inchesWide = "+.20000000E+01";
    std::uint32_t mcuNumber = 12;

    unsigned int Bands() const { return (height + 7) / 8; }
    unsigned int Tables() const { return components > 1 ? 2 : 1; }

    /// SOI and APP0, quantization, frame, Huffman DC, Huffman AC, restart interval, scan.
    Bytes Head() const
    {
        Bytes head{ 0xFF, 0xD8 };
        const auto put = [&](unsigned char marker, const Bytes& payload) {
            const std::size_t length = payload.size() + 2;
            Append(head, { 0xFF, marker, High(length), Low(length) });
            Append(head, payload);
        };
        put(0xE0, { 'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0 });
        put(0xDB, TablesOf(0x00, 64));
        Bytes frame{ 8, High(height), Low(height), High(width), Low(width), Low(components) };
        Bytes scan{ Low(components) };
        for (unsigned int i = 0; i < components; ++i) {
            const unsigned int tables = i != 0 && Tables() == 2 ? 1 : 0;
            Append(frame, { Low(i + 1), 0x11, Low(tables) });
            Append(scan, { Low(i + 1), Low(tables * 0x11) });
        }
        Append(scan, { 0, 63, 0 });
        put(0xC0, frame);
        put(0xC4, TablesOf(0x00, 16)); // tables of no symbols
        put(0xC4, TablesOf(0x10, 16));
        put(0xDD, { 0, Low((width + 7) / 8) });
        put(0xDA, scan);
        return head;
    }

    /// The bytes of one band.
    Bytes Band(unsigned int number) const
    {
        std::mt19937 random(number + 1);
        Bytes band(5 + random() % 90);
        for (unsigned char& byte : band)
            byte = static_cast<unsigned char>(random() % 255);
        return band;
    }

    Bytes Stream() const
    {
        Bytes stream = Head();
        for (unsigned int i = 0; i < Bands(); ++i) {
            Append(stream, Band(i));
            Append(stream, { 0xFF, Low(i + 1 < Bands() ? 0xD0 + i % 8 : 0xD9) });
        }
        return stream;
    }

    Blocks Index() const
    {
        Blocks blocks;
        std::size_t at = Head().size();
        for (unsigned int i = 0; i < Bands(); ++i) {
            const std::size_t end = at + Band(i).size();
            blocks.emplace_back(at, end - 1);
            at = end + 2;
        }
        return blocks;
    }

    Bytes SideFile() const { return SideFile(Index()); }
    Bytes SideFile(const Blocks& blocks) const
    {
        const std::string texts = units + inchesHigh + inchesWide;
        Bytes bytes(texts.begin(), texts.end());
        Append(bytes, LittleEndian(mcuNumber));
        bytes.resize(256);
        for (const auto& [first, last] : blocks) {
            Append(bytes, LittleEndian(first));
            Append(bytes, LittleEndian(last));
        }
        return bytes;
    }

    static void Append(Bytes& bytes, const Bytes& more)
    {
        bytes.insert(bytes.end(), more.begin(), more.end());
    }

  private:
    static unsigned char Low(std::size_t value) { return static_cast<unsigned char>(value); }
    static unsigned char High(std::size_t value) { return Low(value >> 8U); }
    static Bytes LittleEndian(std::uint32_t value)
    {
        return { Low(value), Low(value >> 8U), Low(value >> 16U), Low(value >> 24U) };
    }
    // Of values that tell the tables apart, but for Huffman ones, which count symbols by theirs.
    Bytes TablesOf(unsigned int kind, std::size_t values) const
    {
        Bytes tables;
        for (unsigned int i = 0; i < Tables(); ++i) {
            tables.push_back(Low(kind + i));
            for (std::size_t at = 0; at < values; ++at)
                tables.push_back(values == 16 ? Low(0) : Low(1 + at + i * 64));
        }
        return tables;
    }
};

} // namespace tympan::test
