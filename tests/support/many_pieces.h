// Hostile files: each made of as many small pieces of one kind as its bytes hold.
#pragma once

#include "support/ct_samples.h"
#include "support/jpeg_samples.h"
#include "support/lw_samples.h"
#include "support/page_samples.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace tympan::test {

inline void PutLittle(std::vector<unsigned char>& bytes, std::uint64_t number, unsigned int size)
{
    for (unsigned int i = 0; i < size; ++i)
        bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
}

/// A field of a TIFF's directory: numbers of 32 bits.
struct LongField {
    std::uint32_t tag, count, value;
};

inline void PutDirectory(std::vector<unsigned char>& bytes, std::initializer_list<LongField> fields,
                         bool isLast)
{
    constexpr std::uint32_t kLong = 4;
    PutLittle(bytes, fields.size(), 2);
    for (const LongField field : fields) {
        PutLittle(bytes, field.tag, 2);
        PutLittle(bytes, kLong, 2);
        PutLittle(bytes, field.count, 4);
        PutLittle(bytes, field.value, 4);
    }
    PutLittle(bytes, isLast ? 0 : bytes.size() + 4, 4);
}

inline std::vector<unsigned char> NarrowTone(unsigned int rows)
{
    return CtSample{ .width = 2, .height = rows }.Bytes();
}

/// Line work with runs of no length, the most work that its bytes can hold.
inline std::vector<unsigned char> HollowRows(unsigned int rows)
{
    LwRow row(40, { 1, 0 });
    row.push_back({ 2, 5 });
    return LwPicture{ .height = rows, .rows = std::vector<LwRow>(rows, row) }.Bytes();
}

/// Line work of which each row is one run.
inline std::vector<unsigned char> ShortRows(unsigned int rows)
{
    return LwPicture{ .height = rows, .rows = std::vector<LwRow>(rows, { { 1, 5 } }) }.Bytes();
}

/// Line work of which each row is too long, and of a colour that isn't there.
inline std::vector<unsigned char> FaultyRows(unsigned int rows)
{
    const LwRow row{ { 9, 3 }, { 2, 3 } };
    return LwPicture{ .height = rows, .rows = std::vector<LwRow>(rows, row) }.Bytes();
}

/// A JPEG with empty comments ahead of its frame, each a segment of its own.
inline std::vector<unsigned char> ManySegments(unsigned int segments)
{
    constexpr std::size_t kStart = 2; // behind the marker that a JPEG begins with
    const std::vector<unsigned char> stream = JpegSample{}.Stream();
    std::vector<unsigned char> bytes(stream.begin(), stream.begin() + kStart);
    for (unsigned int i = 0; i < segments; ++i)
        JpegSample::Append(bytes, { 0xFF, 0xFE, 0, 2 });
    bytes.insert(bytes.end(), stream.begin() + kStart, stream.end());
    return bytes;
}

/// A page that places a picture that isn't there, again and again.
inline std::vector<unsigned char> ManyEntries(unsigned int entries)
{
    const PageEntrySample entry{ .path = "/missing.ct" };
    return PageSample{ .entries = std::vector<PageEntrySample>(entries, entry) }.Bytes();
}

/// A TIFF of directories that each hold a width and a height.
inline std::vector<unsigned char> ManyDirectories(unsigned int directories)
{
    std::vector<unsigned char> bytes{ 'I', 'I', 42, 0, 8, 0, 0, 0 };
    for (unsigned int i = 0; i < directories; ++i)
        PutDirectory(bytes, { { 256, 1, 7 }, { 257, 1, 7 } }, i + 1 == directories);
    return bytes;
}

/// A grey TIFF one pixel wide whose rows are strips: more bytes of places than of pixels.
inline std::vector<unsigned char> ManyStrips(unsigned int strips)
{
    constexpr std::uint32_t kEnd = 8 + 2 + 8 * 12 + 4; // of the directory
    std::vector<unsigned char> bytes{ 'I', 'I', 42, 0, 8, 0, 0, 0 };
    PutDirectory(bytes,
                 { { 256, 1, 1 },
                   { 257, 1, strips },
                   { 258, 1, 8 },
                   { 259, 1, 1 },
                   { 262, 1, 1 },
                   { 273, strips, kEnd },
                   { 278, 1, 1 },
                   { 279, strips, kEnd + 4 * strips } },
                 true);
    for (unsigned int i = 0; i < strips; ++i)
        PutLittle(bytes, kEnd + 8 * std::uint64_t{ strips } + i, 4);
    for (unsigned int i = 0; i < strips; ++i)
        PutLittle(bytes, 1, 4);
    bytes.resize(bytes.size() + strips);
    return bytes;
}

} // namespace tympan::test
