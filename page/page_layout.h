// Where the fields of a page file stand beside the common header: how many entries there are, and
// the entries, one behind the other. The places of an entry's fields count from its own start.
//
// In an entry of an LW picture two bytes more stand behind the path, and all numbers that much
// further on.
#pragma once

#include "core/header_layout.h"
#include "page/placement.h"
#include "platform/text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

class CFile;

namespace tympan {

inline constexpr HeaderPlace kPageCount{ kHeaderEnd, 6, FieldForm::WholeText, "number of entries" };
inline constexpr std::size_t kFirstPageEntry = kHeaderBytes;
inline constexpr std::size_t kPageEntryBytes = 256;
inline constexpr std::string_view kPageLetters = "PG";

constexpr std::uint64_t PlaceOfPageEntry(std::size_t index)
{
    return kFirstPageEntry + std::uint64_t{ kPageEntryBytes } * index;
}

inline constexpr HeaderPlace kEntryType{ 0, 1, FieldForm::Byte, "type" };
inline constexpr HeaderPlace kEntryUnread{ 1, 1, FieldForm::Unread, "unread" };
inline constexpr HeaderPlace kEntryPath{ 2, kLongestPlacedPath, FieldForm::Text, "path" };
struct EntryNumber : HeaderPlace {
    double Placement::*value;

    constexpr EntryNumber(std::string_view called, std::size_t at, double Placement::*number)
        : HeaderPlace{ at, kFloatTextBytes, FieldForm::FloatText, called }, value(number)
    {}
};
inline constexpr std::array kEntryNumbers{
    EntryNumber{ "Y offset", 82, &Placement::yOffset },
    EntryNumber{ "X offset", 96, &Placement::xOffset },
    EntryNumber{ "height", 110, &Placement::height },
    EntryNumber{ "width", 124, &Placement::width },
    EntryNumber{ "angle", 138, &Placement::rotation },
};
static_assert(kEntryPath.End() == kEntryNumbers.front().offset);

inline constexpr HeaderPlace kEntryContainer{ kEntryNumbers.back().End(), 1, FieldForm::Byte,
                                              "container" };
inline constexpr HeaderPlace kEntryColours{ kEntryContainer.End(),
                                            kPageEntryBytes - kEntryContainer.End(),
                                            FieldForm::Byte, "colours" };
/// Container and colours, which a CT window alone has.
inline constexpr HeaderPlace kEntryWindow{ kEntryContainer.offset,
                                           kPageEntryBytes - kEntryContainer.offset };

/// How much further on the numbers of an LW picture's entry stand.
inline constexpr std::size_t kLineWorkShift = 2;

constexpr std::size_t ShiftOf(PlacementType type)
{
    return type == PlacementType::lineWork ? kLineWorkShift : 0;
}

std::optional<PlacementType> PlacementTypeOf(std::uint8_t typeByte);

/// What a CT window's entry has behind its numbers.
struct WindowFields {
    std::optional<std::uint8_t> container; ///< nothing when no byte is there
    std::span<const std::uint8_t> colours; ///< all that are listed, from the bytes
    bool isWhole = false;                  ///< the bytes hold all of it
    std::size_t length = 0;                ///< bytes, the zero byte included where there is one

    /// Those that an entry holds.
    std::span<const std::uint8_t> KeptColours() const
    {
        return colours.first(std::min(colours.size(), kMostWindowColours));
    }
};

/// \param bytes up to `kEntryWindow.width` of them; a list without a zero byte ends with the last
WindowFields WindowFieldsIn(std::span<const std::uint8_t> bytes);

/// The path in a field's bytes: up to a zero byte or the end.
CString EntryPathIn(std::string_view bytes);

/// The bytes of one entry, as many as the file holds.
struct EntryRecord {
    std::array<std::uint8_t, kPageEntryBytes> bytes{};
    std::size_t held = 0;

    std::uint8_t TypeByte() const { return bytes[kEntryType.offset]; }
    /// Whether the file holds all fields of an entry of the type.
    bool IsWhole(PlacementType type) const;
    std::string_view NumberText(const EntryNumber& number, PlacementType type) const;
    WindowFields Window() const;
    Placement Read(PlacementType type) const;
};

/// \throws CFileException*.
EntryRecord ReadEntryRecord(CFile& page, std::size_t index);

/// The bytes of an entry that says what the placement does.
/// \throws std::invalid_argument as `WritePlacements`, with a sentence that begins with the name.
std::array<std::uint8_t, kPageEntryBytes> EntryBytes(const Placement& placement,
                                                     const std::string& name);

} // namespace tympan
