// Any bytes as a JPEG and its side file: the index is that of the bytes, and every form of taking
// bands gives what a walk by hand takes. The first bytes draw the questions; then a byte tells how
// many of the others, by the four, are the side file's.
#include "fuzz/any_file.h"
#include "jpeg/jpeg_file.h"
#include "support/ask_jpeg.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace {

using tympan::fuzz::Drawn;
using tympan::fuzz::Input;
using tympan::test::Require;
using Bytes = std::vector<unsigned char>;

struct Block {
    std::uint64_t first = 0, last = 0;
};

std::vector<Block> BlocksByHand(Input side)
{
    const auto number = [&](std::size_t at) {
        return side[at] | std::uint64_t{ side[at + 1] } << 8U |
               std::uint64_t{ side[at + 2] } << 16U | std::uint64_t{ side[at + 3] } << 24U;
    };
    std::vector<Block> blocks;
    for (std::size_t at = 256; at + 8 <= side.size(); at += 8)
        blocks.push_back({ number(at), number(at + 4) });
    return blocks;
}

enum class End { allTaken, outsideIndex, notTaken };

struct Taken {
    Bytes bytes;
    std::vector<std::size_t> offsets;
    End end = End::allTaken;
};

/// Takes the blocks of the rows one by one into so much room.
Taken TakenByHand(Input stream, const std::vector<Block>& blocks, unsigned int firstRow,
                  unsigned int lastRow, std::size_t room)
{
    const std::size_t first = firstRow / 8, last = lastRow / 8;
    Taken taken;
    if (first >= blocks.size()) {
        taken.end = End::outsideIndex;
        return taken;
    }
    for (std::size_t number = first;; number = number + 1) {
        if (last < first)
            number %= blocks.size();
        if (number >= blocks.size()) {
            taken.end = End::outsideIndex;
            return taken;
        }
        const Block& block = blocks[number];
        const bool isThere = block.last >= block.first && block.last < stream.size();
        if (!isThere || block.last - block.first + 1 > room - taken.bytes.size()) {
            taken.end = End::notTaken;
            return taken;
        }
        taken.offsets.push_back(taken.bytes.size());
        taken.bytes.insert(taken.bytes.end(), stream.begin() + static_cast<long>(block.first),
                           stream.begin() + static_cast<long>(block.last) + 1);
        if (number == last)
            return taken;
    }
}

struct Question {
    unsigned int first, last;
    bool wrap;
    std::size_t room;
};

/// The buffer form, where its arguments are those that it takes.
void AskBuffer(JpegFileInterface& picture, const Question& asked, const Taken& wanted)
{
    Bytes given(asked.room);
    std::vector<unsigned long> offsets(wanted.offsets.size() + 2, 77);
    unsigned int lastTaken = 0;
    unsigned long stored = 0;
    bool isStopped = false;
    picture.TraceStatus(0);
    try {
        stored = picture.GetPictureRows(given.data(), asked.first, asked.last, lastTaken,
                                        offsets.data(), Cyan, given.size(), asked.wrap);
    } catch (ReadFileException* stop) {
        delete stop;
        isStopped = true;
    }
    Require(isStopped == (wanted.end == End::notTaken), "a block that can't be taken stops");
    Require(std::equal(wanted.bytes.begin(), wanted.bytes.end(), given.begin()),
            "the bands are those of the walk");
    Require(std::equal(wanted.offsets.begin(), wanted.offsets.end(), offsets.begin()),
            "the offsets are those of the walk");
    Require(isStopped || stored == wanted.bytes.size(), "the bytes of the bands are told");
    Require((picture.TraceStatus() == 90062) == (wanted.end == End::outsideIndex),
            "a block outside the index is told");
    Require(wanted.end != End::allTaken || offsets[wanted.offsets.size()] == 0,
            "a 0 stands behind the offsets");
}

void AskObject(JpegFileInterface& picture, const Question& asked, const Taken& wanted)
{
    std::unique_ptr<PictureRowsData> rows;
    tympan::test::AskOrStop(
        [&] { rows.reset(picture.GetPictureRows(Cyan, asked.first, asked.last, asked.wrap)); });
    if (rows == nullptr || rows->TraceStatus() != 0)
        return;
    Require(rows->DataSize() == wanted.bytes.size() &&
                rows->DataBlocks() == wanted.offsets.size() &&
                std::equal(wanted.bytes.begin(), wanted.bytes.end(), rows->Data()) &&
                std::equal(wanted.offsets.begin(), wanted.offsets.end(), rows->RowsOffsets()),
            "an object has the bands of the walk");
}

void AskPlaces(JpegFileInterface& picture, const Question& asked, const std::vector<Block>& blocks)
{
    unsigned long start = 1, end = 2;
    const std::size_t first = asked.first / 8, last = asked.last / 8;
    const bool isThere = first <= last && last < blocks.size();
    Require(picture.GetCompressedBlocksOffsetInfo(asked.first, asked.last, start, end) == isThere,
            "the places of blocks in the index are told");
    Require(isThere ? start == blocks[first].first && end == blocks[last].last
                    : start == 1 && end == 2,
            "the places are those of the blocks");
}

void AskIndex(JpegFileInterface& picture, Input stream, const std::vector<Block>& blocks,
              Drawn& drawn)
{
    const std::size_t rows = 8 * blocks.size() + 9;
    const Question asked{ drawn.Below(rows), drawn.Below(rows), drawn.Coin(),
                          1 + drawn.Below(2000) };
    AskPlaces(picture, asked, blocks);
    // A single row has no offsets; a first row behind the last has bands only when it wraps. One in
    // the band of the last row is left to the object's own rule.
    const bool isWrapped = asked.first / 8 > asked.last / 8;
    if (asked.first / 8 == asked.last / 8 || (isWrapped && !asked.wrap))
        return;
    if (isWrapped && asked.first / 8 >= blocks.size())
        return;
    AskBuffer(picture, asked, TakenByHand(stream, blocks, asked.first, asked.last, asked.room));
    AskObject(picture, asked,
              TakenByHand(stream, blocks, asked.first, asked.last, stream.size() * 256 + 1));
}

/// The payload of a segment without its first byte, by the scan that a head is read with.
std::optional<Bytes> FirstQuantization(Input stream)
{
    for (std::size_t at = 0; at + 2 <= std::min<std::size_t>(stream.size(), 327);) {
        if (stream[at] != 0xFF) {
            ++at;
            continue;
        }
        if (stream[at + 1] == 0xDB && at + 4 <= stream.size()) {
            const std::size_t length = stream[at + 2] * std::size_t{ 256 } + stream[at + 3];
            if (length < 4 || at + 2 + length > stream.size())
                return std::nullopt;
            return Bytes(stream.begin() + static_cast<long>(at) + 5,
                         stream.begin() + static_cast<long>(at + 2 + length));
        }
        at += 2;
    }
    return std::nullopt;
}

void AskTable(const JpegFileInterface& picture, Input stream)
{
    unsigned char* table = nullptr;
    const unsigned short length = picture.RetrieveQuantizationTable(table);
    const std::unique_ptr<unsigned char[]> owned(table);
    const auto wanted = FirstQuantization(stream);
    Require(!wanted || (length == wanted->size() && owned != nullptr &&
                        std::equal(wanted->begin(), wanted->end(), owned.get())),
            "the quantization table is that of the stream");
}

void Ask(JpegFileInterface& picture, Input stream, Input side, Drawn& drawn)
{
    const std::vector<Block> blocks = BlocksByHand(side);
    const auto index = tympan::IndexOf(picture);
    Require(index &&
                std::equal(index->blocks.begin(), index->blocks.end(), blocks.begin(), blocks.end(),
                           [](const CompressedLine& is, const Block& should) {
                               return is.StartOffset == should.first && is.EndOffset == should.last;
                           }),
            "the index is that of the side file");
    for (int i = 0; i < 3; ++i)
        AskIndex(picture, stream, blocks, drawn);
    AskTable(picture, stream);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn input(data, size);
    Drawn questions(input.Bytes(12));
    const Input side = input.Bytes(input.Byte() * std::size_t{ 4 });
    const Input stream = input.Rest();
    tympan::fuzz::WithFile(stream, [&](auto& files) {
        tympan::fuzz::Put(files, "picture.bin", side);
        tympan::fuzz::CheckedFile(tympan::fuzz::kPath);
        const std::unique_ptr<JpegFileInterface> picture(
            create_jpeg_file_object(tympan::fuzz::kPath, true));
        if (picture->ObjectStatus())
            Ask(*picture, stream, side, questions);
        tympan::test::AskEverything(*picture);
        tympan::fuzz::RequireCode(*picture, { 90001, 90040, 90062, 90063 });
        picture->ClosePictureFile();
        tympan::test::AskEverything(*picture);
    });
    return 0;
}
