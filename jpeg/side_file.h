// The bytes of the side file that a JPEG's index stands in: a head, and behind it a record of each
// block. Numbers are little-endian.
#pragma once

#include "core/header_layout.h"
#include "jpeg/compressed_blocks.h"
#include "jpeg/jpeg_layout.h"
#include "platform/text.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tympan {

inline constexpr HeaderPlace kSideUnitsCode{ 0, 1, FieldForm::Byte, "units" };
inline constexpr HeaderPlace kSideHeight{ 1, kFloatTextBytes, FieldForm::FloatText, "height" };
inline constexpr HeaderPlace kSideWidth{ 15, kFloatTextBytes, FieldForm::FloatText, "width" };
inline constexpr HeaderPlace kSideMcuNumber{ 29, 4, FieldForm::Number, "MCU number" };
inline constexpr std::size_t kSideWritten = kSideWidth.End(); // the number isn't
inline constexpr std::size_t kSideHeadEnd = kSideMcuNumber.End();
/// The first of the records, which are a `CompressedLine` each.
inline constexpr std::size_t kSideBlocks = 256;

/// What the head of a side file says.
struct SideFileHead {
    double factor = 0.0; // to inches
    double height = 0.0; // in inches
    double width = 0.0;
    std::uint32_t mcuNumber = 0;
};

using SideHeadBytes = std::array<unsigned char, kSideHeadEnd>;

/// What a short file doesn't hold is 0 in the bytes.
SideFileHead ReadSideHead(const SideHeadBytes& bytes);

/// Sizes are written as they stand, without the factor; the number isn't written.
void WriteSideHead(const SideFileHead& head, std::span<unsigned char, kSideWritten> bytes);

/// The name of the side file of a picture. \throws FileNameParser::StripExtensionFailed by value.
CString SideFileName(const CString& pictureName);

/// A record as it stands in the file, made one of this machine, or the other way round.
constexpr CompressedLine InFileOrder(CompressedLine line)
{
    const auto turned = [](std::uint32_t value) {
        return value << 24U | (value & 0xFF00U) << 8U | (value >> 8U & 0xFF00U) | value >> 24U;
    };
    if constexpr (std::endian::native == std::endian::big)
        return { turned(line.StartOffset), turned(line.EndOffset) };
    return line;
}

/// What may be wrong with a block, in the order in which it is looked for.
enum class BlockFault {
    None,
    NoSize,      // it ends before it starts, or 32 bits don't hold its size
    OutsideFile, // its last byte is beyond the file's
    OutOfOrder,  // it doesn't begin behind the block before
    InHead       // it begins before the entropy-coded data
};

/// Proves the blocks of an index one after the other.
class BlockProof {
  public:
    /// \param dataStart file position at which blocks may begin
    BlockProof(std::uint64_t dataStart, std::uint64_t fileLength)
        : dataStart_(dataStart), fileLength_(fileLength)
    {}

    BlockFault Next(const CompressedLine& line);
    /// File position behind the furthest block of the file so far.
    std::uint64_t Reached() const { return reached_; }

  private:
    std::uint64_t dataStart_;
    std::uint64_t fileLength_;
    std::uint64_t reached_ = 0;
};

/// How many blocks a picture has that is so many rows high.
constexpr std::uint64_t BlocksOf(std::uint64_t rows)
{
    return rows / kRowsOfBlock + (rows % kRowsOfBlock != 0 ? 1 : 0);
}

/// Whether a block has bytes, so many as 32 bits hold.
bool HasSize(const CompressedLine& line);

/// The bytes of a block.
/// \throws ReadFileException* ("Given buffer is too small! The reading is stopped!") for one that
///   has no size.
std::uint32_t SizeOf(const CompressedLine& line);

/// Whether an index has a block for each 8 rows or part of them, and none has a fault.
bool IndexFits(std::span<const CompressedLine> blocks, std::uint64_t rows,
               std::uint64_t fileLength);

} // namespace tympan
