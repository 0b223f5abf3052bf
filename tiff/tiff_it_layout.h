// The bytes of TIFF/IT files: numbers, tags, types of values, and what stands in a colour's record.
#pragma once

#include "core/header_layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tympan {

inline constexpr std::uint16_t kHighByteFirst = 0x4D4D;
inline constexpr std::uint16_t kTiffVersion = 42;
inline constexpr HeaderPlace kTiffByteOrder{ 0, 2, FieldForm::Number, "byte order" };
inline constexpr HeaderPlace kTiffVersionPlace{ 2, 2, FieldForm::Number, "version" };
inline constexpr HeaderPlace kTiffFirstIfd{ 4, 4, FieldForm::Number, "first directory" };
inline constexpr std::size_t kTiffHeaderBytes = kTiffFirstIfd.End();
inline constexpr std::size_t kIfdEntryBytes = 12;
inline constexpr std::size_t kInlineBytes = 4; ///< values of up to so many stand inside the entry

namespace tag {
inline constexpr std::uint16_t kImageWidth = 256;
inline constexpr std::uint16_t kImageLength = 257;
inline constexpr std::uint16_t kBitsPerSample = 258;
inline constexpr std::uint16_t kCompression = 259;
inline constexpr std::uint16_t kPhotometric = 262;
inline constexpr std::uint16_t kStripOffsets = 273;
inline constexpr std::uint16_t kRowsPerStrip = 278;
inline constexpr std::uint16_t kStripByteCounts = 279;
inline constexpr std::uint16_t kPlanarConfiguration = 284;
inline constexpr std::uint16_t kColorTable = 34022;
} // namespace tag

namespace field {
inline constexpr std::uint16_t kByte = 1;
inline constexpr std::uint16_t kAscii = 2;
inline constexpr std::uint16_t kShort = 3;
inline constexpr std::uint16_t kLong = 4;
inline constexpr std::uint16_t kRational = 5;
} // namespace field

/// Bytes of a value; 0 for a type that isn't known.
constexpr std::uint64_t BytesOfValue(std::uint16_t type)
{
    constexpr std::array<std::uint8_t, 6> kBytes{ 0, 1, 1, 2, 4, 8 };
    return type < kBytes.size() ? kBytes[type] : 0;
}

/// Takes numbers out of bytes in a file's order. The place must lie inside.
class TiffNumbers {
  public:
    TiffNumbers(std::span<const std::byte> bytes, bool highByteFirst)
        : bytes_(bytes), highByteFirst_(highByteFirst)
    {}

    std::uint16_t Short(std::size_t place) const
    {
        return static_cast<std::uint16_t>(Number(place, 2));
    }
    std::uint32_t Long(std::size_t place) const { return Number(place, 4); }

  private:
    std::uint32_t Number(std::size_t place, std::size_t size) const
    {
        const std::span<const std::byte> digits = bytes_.subspan(place, size);
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < size; ++i)
            number = number << 8U |
                     std::to_integer<std::uint32_t>(digits[highByteFirst_ ? i : size - 1 - i]);
        return number;
    }

    std::span<const std::byte> bytes_;
    bool highByteFirst_;
};

// A record of the field ColorTable.
inline constexpr std::size_t kColourRecordBytes = 20;
inline constexpr HeaderPlace kColourId{ 1, 1, FieldForm::Byte, "number" };
inline constexpr HeaderPlace kColourFlags{ 3, 1, FieldForm::Byte, "flags" }; ///< bit 3 is the first
inline constexpr HeaderPlace kColourValues{ 4, 4, FieldForm::Byte, "inks" };

inline constexpr std::uint64_t kCtPixelBytes = 4;
inline constexpr std::uint64_t kLwStripLead = 2; ///< bytes in front of a strip's runs
inline constexpr std::size_t kLwRowEnd = 4;      ///< bytes behind each row

} // namespace tympan
