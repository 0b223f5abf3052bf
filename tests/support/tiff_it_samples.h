// TIFF/IT files made field by field, so that any of them can be wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tympan::test {

/// A field; values are numbers of the type's size, a RATIONAL is two of them.
struct TiffItField {
    std::uint16_t tag = 0, type = 0;
    std::vector<std::uint32_t> values;
    std::uint32_t count = 0; ///< 0: as many as there are values
};

enum class WordOrder16 { LowFirst, HighFirst };

/// A file of directories, then `data` at `DataPlace()`.
class TiffItSample {
  public:
    WordOrder16 order = WordOrder16::LowFirst;
    std::vector<std::vector<TiffItField>> directories;
    std::vector<unsigned char> data;
    std::uint32_t version = 42;

    static constexpr std::uint32_t kData = 4096; ///< where the data stand

    std::vector<unsigned char> Bytes() const
    {
        std::vector<unsigned char> file(kData);
        Put(file, 0, order == WordOrder16::HighFirst ? 0x4D4D : 0x4949, 2);
        Put(file, 2, version, 2);
        std::size_t place = 8, values = 2048;
        Put(file, 4, directories.empty() ? 0 : 8, 4);
        for (std::size_t i = 0; i < directories.size(); ++i) {
            const auto& fields = directories[i];
            Put(file, place, static_cast<std::uint32_t>(fields.size()), 2);
            place += 2;
            for (const TiffItField& field : fields) {
                PutField(file, place, values, field);
                place += 12;
            }
            place += 4;
            Put(file, place - 4, i + 1 < directories.size() ? static_cast<std::uint32_t>(place) : 0,
                4);
        }
        file.insert(file.end(), data.begin(), data.end());
        return file;
    }

    std::string Text() const
    {
        const std::vector<unsigned char> bytes = Bytes();
        return { bytes.begin(), bytes.end() };
    }

  private:
    void Put(std::vector<unsigned char>& file, std::size_t place, std::uint32_t number,
             std::size_t size) const
    {
        for (std::size_t i = 0; i < size; ++i)
            file[order == WordOrder16::HighFirst ? place + size - 1 - i : place + i] =
                static_cast<unsigned char>(number >> (8 * i));
    }

    void PutField(std::vector<unsigned char>& file, std::size_t place, std::size_t& values,
                  const TiffItField& field) const
    {
        const std::size_t size = field.type == 3 ? 2 : field.type < 3 ? 1 : 4;
        const std::size_t bytes = size * field.values.size();
        const std::size_t perValue = field.type == 5 ? 2 : 1;
        Put(file, place, field.tag, 2);
        Put(file, place + 2, field.type, 2);
        Put(file, place + 4,
            field.count != 0 ? field.count
                             : static_cast<std::uint32_t>(field.values.size() / perValue),
            4);
        std::size_t at = place + 8;
        if (bytes > 4) {
            Put(file, at, static_cast<std::uint32_t>(values), 4);
            at = values;
            values += bytes;
        }
        for (const std::uint32_t value : field.values) {
            Put(file, at, value, size);
            at += size;
        }
    }
};

/// As a TIFF/IT CT of one strip.
inline TiffItSample CtSample(std::uint32_t width, std::uint32_t height)
{
    TiffItSample sample;
    sample.directories = { { { 256, 3, { width } },
                             { 257, 3, { height } },
                             { 258, 3, { 8, 8, 8, 8 } },
                             { 273, 4, { TiffItSample::kData } },
                             { 278, 3, { height } },
                             { 279, 4, { width * height * 4 } } } };
    return sample;
}

/// As a TIFF/IT LW of one strip, with a table of so many colours.
inline TiffItSample LwSample(std::uint32_t width, std::uint32_t height, std::uint32_t colours)
{
    TiffItSample sample = CtSample(width, height);
    sample.directories[0][2].values = { 8 };
    sample.directories[0][5].values = { 0 };
    TiffItField table{ 34022, 1, {} };
    for (std::uint32_t i = 0; i < colours * 20; ++i)
        table.values.push_back((i / 20 * 53 + i % 20 * 29 + 7) % 256);
    sample.directories[0].push_back(table);
    return sample;
}

} // namespace tympan::test
