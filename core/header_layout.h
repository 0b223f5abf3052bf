// How a place of a file is told, and the places of the common header, from the start of the file.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tympan {

/// What the bytes of a field are.
enum class FieldForm {
    Unread,
    Byte,
    Text,
    FloatText, // as "+.12500000E+02"
    WholeText, // as "+00000003088"
    Number,    // of several bytes, in the file's order
};

inline constexpr std::size_t kFloatTextBytes = 14;
inline constexpr std::size_t kWholeTextBytes = 12;

struct HeaderPlace {
    std::size_t offset = 0;
    std::size_t width = 0; // bytes
    FieldForm form = FieldForm::Unread;
    std::string_view name{}; // what messages and the format's guide call it

    constexpr std::size_t End() const { return offset + width; }
};

inline constexpr HeaderPlace kHeaderNlwMark{ 2, 1, FieldForm::Byte, "NLW mark" };
inline constexpr HeaderPlace kHeaderFileType{ 80, 2, FieldForm::Text, "file type" };
inline constexpr HeaderPlace kHeaderUnitsCode{ 1024, 1, FieldForm::Byte, "units" };
inline constexpr HeaderPlace kHeaderCount{ 1025, 1, FieldForm::Byte, "number of plates" };
inline constexpr HeaderPlace kHeaderReserved{ 1026, 1, FieldForm::Byte, "reserved" };
inline constexpr HeaderPlace kHeaderMask{ 1027, 1, FieldForm::Byte, "plates" };
inline constexpr HeaderPlace kHeaderHeight{ 1028, kFloatTextBytes, FieldForm::FloatText,
                                            "height in units" };
inline constexpr HeaderPlace kHeaderWidth{ 1042, kFloatTextBytes, FieldForm::FloatText,
                                           "width in units" };
inline constexpr HeaderPlace kHeaderHeightInPixels{ 1056, kWholeTextBytes, FieldForm::WholeText,
                                                    "height in pixels" };
inline constexpr HeaderPlace kHeaderWidthInPixels{ 1068, kWholeTextBytes, FieldForm::WholeText,
                                                   "width in pixels" };

inline constexpr std::array kHeaderFields{
    kHeaderNlwMark, kHeaderFileType, kHeaderUnitsCode, kHeaderCount,          kHeaderReserved,
    kHeaderMask,    kHeaderHeight,   kHeaderWidth,     kHeaderHeightInPixels, kHeaderWidthInPixels,
};
inline constexpr std::size_t kHeaderEnd = kHeaderFields.back().End();

/// Count, reserved byte and mask, which are refused or taken together.
inline constexpr HeaderPlace kHeaderSeparations{ kHeaderCount.offset,
                                                 kHeaderMask.End() - kHeaderCount.offset };

/// What a format has behind the common header begins in these bytes; the pictures follow them.
inline constexpr std::size_t kHeaderBytes = 2048;

inline constexpr unsigned char kInchesCode = 1;
inline constexpr unsigned char kMillimetresCode = 0; // as every other value but that of inches
inline constexpr double kInchesPerMillimetre = 0.03937007874015748;

} // namespace tympan
