#include "jpeg/side_file.h"

#include "core/failures.h"
#include "core/file_names.h"
#include "core/header_layout.h"
#include "core/header_text.h"
#include "core/picture_parameters.h"

#include <algorithm>
#include <limits>

namespace tympan {

namespace {

double SizeIn(const SideHeadBytes& bytes, HeaderPlace place, double factor)
{
    const auto* const text = reinterpret_cast<const char*>(bytes.data() + place.offset);
    return FloatFromText({ text, place.width }) * factor;
}

void PutSize(double size, std::span<unsigned char, kSideWritten> bytes, HeaderPlace place)
{
    std::array<unsigned char, kFloatTextBytes + 1> text{}; // with a terminator
    PictureParameters::SizeToBuffer(size, text.data());
    std::copy_n(text.begin(), place.width,
                bytes.begin() + static_cast<std::ptrdiff_t>(place.offset));
}

} // namespace

bool HasSize(const CompressedLine& line)
{
    const std::uint32_t lastOf = line.EndOffset - line.StartOffset;
    return line.EndOffset >= line.StartOffset &&
           lastOf != std::numeric_limits<std::uint32_t>::max();
}

SideFileHead ReadSideHead(const SideHeadBytes& bytes)
{
    SideFileHead head;
    head.factor = bytes[kSideUnitsCode.offset] == kInchesCode ? 1.0 : kInchesPerMillimetre;
    head.height = SizeIn(bytes, kSideHeight, head.factor);
    head.width = SizeIn(bytes, kSideWidth, head.factor);
    for (std::size_t at = kSideMcuNumber.End(); at > kSideMcuNumber.offset; --at)
        head.mcuNumber = head.mcuNumber << 8U | bytes[at - 1];
    return head;
}

void WriteSideHead(const SideFileHead& head, std::span<unsigned char, kSideWritten> bytes)
{
    bytes[kSideUnitsCode.offset] = head.factor != 0.0 ? kInchesCode : kMillimetresCode;
    PutSize(head.height, bytes, kSideHeight);
    PutSize(head.width, bytes, kSideWidth);
}

CString SideFileName(const CString& pictureName)
{
    CString name;
    FileNameParser::StripExtension(pictureName, name);
    return name + ".bin";
}

BlockFault BlockProof::Next(const CompressedLine& line)
{
    if (!HasSize(line))
        return BlockFault::NoSize;
    if (line.EndOffset >= fileLength_)
        return BlockFault::OutsideFile;
    const bool isInOrder = line.StartOffset >= reached_;
    reached_ = std::max(reached_, std::uint64_t{ line.EndOffset } + 1);
    if (!isInOrder)
        return BlockFault::OutOfOrder;
    return line.StartOffset < dataStart_ ? BlockFault::InHead : BlockFault::None;
}

std::uint32_t SizeOf(const CompressedLine& line)
{
    if (!HasSize(line))
        throw new ReadFileException(kGivenBufferTooSmall);
    return line.EndOffset - line.StartOffset + 1;
}

bool IndexFits(std::span<const CompressedLine> blocks, std::uint64_t rows, std::uint64_t fileLength)
{
    BlockProof proof(0, fileLength);
    return blocks.size() == BlocksOf(rows) &&
           std::all_of(blocks.begin(), blocks.end(), [&](const CompressedLine& line) {
               return proof.Next(line) == BlockFault::None;
           });
}

} // namespace tympan
