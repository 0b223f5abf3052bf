// What the entries of a page file say, for who lists, composes or writes pages: the entries' own
// classes keep most of it to themselves.
#pragma once

#include "page/page_entries.h"
#include "platform/export.h"
#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tympan {

/// The types of entries, by their numbers in the file.
enum class PlacementType : std::uint8_t {
    picture = 1,  ///< a `PagePictureEntry`
    ctWindow = 2, ///< a `PageCTWindowEntry`
    lineWork = 5, ///< a `PageLWEntry`
};

/// What an entry of a page file says. The file has its numbers without a unit and says nothing of
/// where they count from; this library takes them as told here.
struct Placement {
    PlacementType type = PlacementType::picture; ///< what class reads the entry
    CString path{};                              ///< of the picture, as the file has it
    /// In inches, from the page's left edge to that of `BoundsOf`.
    double xOffset = 0.0;
    /// In inches, from the page's upper edge to that of `BoundsOf`.
    double yOffset = 0.0;
    double height = 0.0;   ///< inches, of the picture before it is turned
    double width = 0.0;    ///< inches, of the picture before it is turned
    double rotation = 0.0; ///< degrees, counterclockwise
    /// Of a CT window: the place in the page's list, from 0, of the entry with the LW picture.
    std::optional<unsigned int> container{};
    /// Of a CT window: the colours of that LW picture which the window shows through, by the numbers
    /// that its rows name them by, from 1.
    std::vector<std::uint8_t> colours{};

    /// Whether all fields are the same.
    bool operator==(const Placement&) const = default;
};

inline constexpr std::size_t kLongestPlacedPath = 80;  ///< bytes of an entry's path
inline constexpr std::size_t kMostWindowColours = 31;  ///< numbers that a CT window lists
inline constexpr unsigned int kHighestContainer = 255; ///< place in the list that it can name
inline constexpr std::size_t kMostPageEntries = 65535; ///< entries of a page

/// How an entry that was read by itself turned out.
enum class PageEntryState {
    fine,
    noPicture,   ///< the entry was read, but its path gives no picture object
    unknownType, ///< the type byte is that of no entry that the library knows
    cutShort     ///< the file ends inside the entry
};

/// One entry of a page file.
struct PageEntryReading {
    PageEntryState state = PageEntryState::cutShort; ///< how it turned out
    std::uint8_t typeByte = 0;                       ///< 0 when the file ends in front of it
    std::optional<Placement> placement;   ///< of an entry that is `fine` or has `noPicture`
    std::unique_ptr<BasePageEntry> entry; ///< of the same; its picture handle only when `fine`
    bool coloursDropped = false;          ///< the file lists more colours than an entry holds
};

/// How many entries a page file has room for, the last of them perhaps cut short; no more than
/// `kMostPageEntries`. What a page counts beyond is not there.
/// \throws CFileException* when the file can't tell its length.
TYMPAN_API std::size_t RoomForPageEntries(CFile& page);

/// Reads an entry by itself, so that a missing picture hides no other entry. The count of the page
/// plays no part. The file is left behind what was read.
/// \param page an open page file
/// \throws CFileException* when it can't be read; std::bad_alloc.
TYMPAN_API PageEntryReading ReadPageEntry(CFile& page, unsigned short index);

/// What a loaded entry says.
/// \return nothing for an entry that is of none of the three types.
TYMPAN_API std::optional<Placement> PlacementOf(const BasePageEntry& entry);

/// Writes type letters, count and entries into a page file that is open for writing, and whose
/// header has been or will be saved: the two share no byte. Numbers keep eight digits.
/// \throws std::invalid_argument, with a sentence for a person and nothing written, for what an entry
///   can't hold: a path that is empty, holds a zero byte or is too long, a container or colours of an
///   entry that is no CT window, a CT window without container or with one above `kHighestContainer`,
///   more than `kMostWindowColours` colours or a colour 0, a number that is not finite or has more
///   than two digits of exponent, and for more than `kMostPageEntries` placements.
/// \throws CFileException* of a write that failed.
TYMPAN_API void WritePlacements(CFile& page, std::span<const Placement> placements);

/// A box on the page, in inches from its left and upper edge.
struct PlacementBounds {
    double left = 0.0;   ///< from the page's left edge
    double top = 0.0;    ///< from its upper edge
    double right = 0.0;  ///< from its left edge
    double bottom = 0.0; ///< from its upper edge
};

/// The box around the turned picture: its upper left corner lies at the placement's offsets. Quarter
/// turns come out exact. Not finite when the placement isn't.
TYMPAN_API PlacementBounds BoundsOf(const Placement& placement);

/// The size of a picture.
struct SizeInInches {
    double height = 0.0; ///< inches
    double width = 0.0;  ///< inches
};

/// The size of an open picture: its pixels over its resolution, in a TIFF's own unit.
/// \return nothing for a picture without a resolution above 0.
/// \throws std::bad_alloc.
TYMPAN_API std::optional<SizeInInches> SizeInInchesOf(const BasePictureIF& picture);

} // namespace tympan
