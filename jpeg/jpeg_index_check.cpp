// Holds the index of a JPEG against the stream, block by block.
#include "core/block_size.h"
#include "core/findings.h"
#include "core/header_layout.h"
#include "core/header_text.h"
#include "jpeg/block_file.h"
#include "jpeg/jpeg_check_parts.h"
#include "jpeg/jpeg_check_rules.h"
#include "jpeg/jpeg_head.h"
#include "jpeg/side_file.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace tympan {

using namespace jpeg_rule;

namespace {

class IndexCheck {
  public:
    IndexCheck(CFile& sideFile, Findings& findings)
        : length_(sideFile.GetLength()), file_(sideFile, kBlockBytes), findings_(findings)
    {}

    void CheckFront()
    {
        SideHeadBytes bytes{};
        file_.Read(bytes.data(), static_cast<UINT>(bytes.size()));
        if (length_ < kSideWritten) {
            findings_.Tell(kSideCutShort, {}, [&] {
                return "The side file has " + CountOf(length_, "byte") + "; its head needs " +
                       std::to_string(kSideWritten) + ".";
            });
            return;
        }
        const unsigned int code = bytes[kSideUnitsCode.offset];
        if (code != kInchesCode && code != kMillimetresCode)
            findings_.Tell(kSideUnits, {}, [&] {
                return "The code of the units is " + std::to_string(code) +
                       "; 1 for inches or 0 for millimetres was expected.";
            });
        const SideFileHead head = ReadSideHead(bytes);
        CheckSize("height", head.height);
        CheckSize("width", head.width);
    }

    void CheckBlocks(std::uint64_t rows, std::uint64_t dataStart, std::uint64_t fileLength)
    {
        const std::uint64_t bytes = length_ - std::min<std::uint64_t>(length_, kSideBlocks);
        const std::uint64_t count = bytes / sizeof(CompressedLine);
        if (bytes % sizeof(CompressedLine) != 0)
            findings_.Tell(kSideRest, {}, [&] {
                return CountOf(bytes % sizeof(CompressedLine), "byte") + " behind " +
                       CountOf(count, "whole record") + " of the side file.";
            });
        if (rows != 0 && count != BlocksOf(rows))
            findings_.Tell(kBlockCount, {}, [&] {
                return "The index has " + CountOf(count, "block") + "; with " +
                       CountOf(rows, "row") + ' ' + std::to_string(BlocksOf(rows)) +
                       (BlocksOf(rows) == 1 ? " was expected." : " were expected.");
            });
        CheckEach(BlockProof(dataStart, fileLength), dataStart, fileLength);
    }

  private:
    void CheckSize(const std::string& side, double size)
    {
        if (!(size > 0.0) || !std::isfinite(size))
            findings_.Tell(kSideNoSize, {}, [&] {
                return "The " + side + " in the side file is no number above 0.";
            });
    }

    void CheckEach(BlockProof proof, std::uint64_t dataStart, std::uint64_t fileLength)
    {
        CompressedLine line{};
        file_.Seek(kSideBlocks, CFile::begin);
        for (std::uint64_t number = 0; file_.Read(&line, sizeof line) == sizeof line; ++number) {
            const CompressedLine block = InFileOrder(line);
            const std::uint64_t reached = proof.Reached();
            const Place place{ number * kRowsOfBlock, {} };
            switch (proof.Next(block)) {
            case BlockFault::None: break;
            case BlockFault::NoSize: Tell(kBlockSize, place, block, "one that ends behind"); break;
            case BlockFault::OutsideFile:
                Tell(kBlockOutside, place, block, "one before byte " + std::to_string(fileLength));
                break;
            case BlockFault::OutOfOrder:
                Tell(kBlockOrder, place, block, "one from byte " + std::to_string(reached) + " on");
                break;
            case BlockFault::InHead:
                Tell(kBlockInHead, place, block,
                     "one from byte " + std::to_string(dataStart) + " on");
                break;
            }
        }
    }

    template <typename Text>
    void Tell(const CheckRule& rule, const Place& place, const CompressedLine& block,
              Text&& expected)
    {
        findings_.Tell(rule, place, [&] {
            return "Block " + std::to_string(*place.row / kRowsOfBlock) + " is from byte " +
                   std::to_string(block.StartOffset) + " to byte " +
                   std::to_string(block.EndOffset) + "; " + expected + " was expected.";
        });
    }

    std::uint64_t length_;
    BlockFile file_;
    Findings& findings_;
};

} // namespace

void CheckJpegIndex(CFile& file, const JpegHead& head, std::uint64_t rows, Findings& findings)
{
    const CString name = SideFileName(file.GetFilePath());
    CFile sideFile;
    if (sideFile.Open(name, CFile::modeRead) == FALSE) {
        findings.Tell(kNoSideFile, {},
                      [&] { return "The side file " + Quoted(name.View()) + " can't be opened."; });
        return;
    }
    IndexCheck check(sideFile, findings);
    check.CheckFront();
    check.CheckBlocks(rows, head.IsWhole() ? head.end : 0, file.GetLength());
}

} // namespace tympan
