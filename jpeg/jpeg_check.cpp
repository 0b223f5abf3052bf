// Holds the head of a JPEG against the form in which it can be read and its bands be decoded one by
// one, and the index against the stream. Whether a band decodes is not looked at: the library
// doesn't.
//
// The side file is gone through block by block, so that memory is constant whatever it holds.
#include "jpeg/jpeg_check.h"

#include "core/block_size.h"
#include "core/failure_guard.h"
#include "core/findings.h"
#include "core/header_layout.h"
#include "core/header_text.h"
#include "jpeg/block_file.h"
#include "jpeg/jpeg_head.h"
#include "jpeg/jpeg_layout.h"
#include "jpeg/jpeg_parameters.h"
#include "jpeg/side_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

namespace tympan {

namespace {

constexpr char kAnotherCopy[] =
    "Get another copy of the file; this one is damaged or was cut short.";
constexpr char kImport[] = "Make a JPEG of the right form from it with \"tympan import\".";
constexpr char kMakeIndex[] = "Make the side file anew with \"tympan index\".";

constexpr CheckRule kNoJpeg{
    "TYM-JPEG-0001",
    Severity::Error,
    "The file does not begin as a JPEG",
    "A JPEG begins with the bytes FF D8. Nothing else can be checked.",
    "See whether the file is a JPEG at all.",
};
constexpr CheckRule kNoJfif{
    "TYM-JPEG-0002",
    Severity::Error,
    "The file has not the letters JFIF",
    "A JPEG is recognised by the letters JFIF at byte 6. Without them no program that asks for the "
    "kind of the file takes it for a JPEG.",
    kImport,
};
constexpr CheckRule kHeadDamaged{
    "TYM-JPEG-0003",
    Severity::Error,
    "The head is damaged or cut short",
    "The head is a chain of segments up to the one that begins the picture's data. Here the next "
    "segment doesn't begin, or doesn't fit the file.",
    kAnotherCopy,
};
constexpr CheckRule kNotBaseline{
    "TYM-JPEG-0004",
    Severity::Error,
    "The picture is not baseline",
    "The frame header is that of another kind of JPEG, a progressive one for instance. Such a "
    "picture is not opened.",
    kImport,
};
constexpr CheckRule kSegmentMissing{
    "TYM-JPEG-0005",
    Severity::Error,
    "A segment of the head is missing",
    "The head needs a segment of quantization tables, a frame header, and two segments of Huffman "
    "tables, one for DC and one for AC.",
    kImport,
};
constexpr CheckRule kSegmentElsewhere{
    "TYM-JPEG-0006",
    Severity::Error,
    "A segment of the head is not where it is looked for",
    "Quantization tables, frame header, Huffman tables for DC and those for AC are looked for in "
    "this order, each behind the one before, in the first 328 bytes. This one is not found there, "
    "or other bytes are taken for it.",
    kImport,
};
constexpr CheckRule kFurtherSegment{
    "TYM-JPEG-0007",
    Severity::Error,
    "There are more segments of tables than are read",
    "One segment of quantization tables and two of Huffman tables are read. The tables in further "
    "ones are not handed out, so that the picture can't be decoded.",
    kImport,
};
constexpr CheckRule kTables{
    "TYM-JPEG-0008",
    Severity::Error,
    "A segment has other tables than are expected",
    "Tables 0, and tables 1 where there are two, of 8 bits; the first Huffman segment holds those "
    "for DC, the second those for AC. Others are taken for these when they are handed out.",
    kImport,
};
constexpr CheckRule kFrameValues{
    "TYM-JPEG-0009",
    Severity::Error,
    "The frame header has values that are not expected",
    "Samples have 8 bits, height and width are at least 1, and there are 1, 3 or 4 components, "
    "whose identifiers count from 1.",
    kImport,
};
constexpr CheckRule kSubsampled{
    "TYM-JPEG-0010",
    Severity::Error,
    "Components are sampled differently",
    "A band is 8 rows of all components. With fewer samples of one of them the data comes in "
    "larger pieces that can't be told apart.",
    kImport,
};
constexpr CheckRule kTableNumbers{
    "TYM-JPEG-0011",
    Severity::Error,
    "A component uses other tables than are expected",
    "The first component uses tables 0, all others tables 1 where there are two, else tables 0.",
    kImport,
};
constexpr CheckRule kScanForm{
    "TYM-JPEG-0012",
    Severity::Error,
    "The data is not one scan of all components",
    "The components of a band stand together, in the order of the frame header.",
    kImport,
};
constexpr CheckRule kRestarts{
    "TYM-JPEG-0013",
    Severity::Error,
    "Bands do not end at restart markers",
    "Bands can be decoded one by one when a restart marker stands behind each of them, so that the "
    "restart interval is the number of blocks of 8 pixels in a row.",
    kImport,
};
constexpr CheckRule kNoSideFile{
    "TYM-JPEG-0014",
    Severity::Error,
    "There is no side file",
    "The places of the bands stand in a file beside the picture, of its name with the extension "
    "\".bin\". Without it the picture is not opened.",
    "Make the side file with \"tympan index\".",
};
constexpr CheckRule kSideCutShort{
    "TYM-JPEG-0015",
    Severity::Error,
    "The side file ends inside its head",
    "The picture's size in units stands in the first 29 bytes of the side file. A side file of 0 "
    "bytes is left when the index couldn't be written.",
    kMakeIndex,
};
constexpr CheckRule kSideUnits{
    "TYM-JPEG-0016",
    Severity::Remark,
    "Unknown code of units in the side file",
    "The code of the units is 1 for inches and 0 for millimetres. Any other code is taken as "
    "millimetres.",
    "See whether the picture's size is what it should be; if not, make the side file anew.",
};
constexpr CheckRule kSideNoSize{
    "TYM-JPEG-0017",
    Severity::Remark,
    "A size in units is not a number above 0",
    "The picture has no resolution, so that its size on paper isn't known. Its bands can be read.",
    "Make the side file anew with the picture's true size.",
};
constexpr CheckRule kSideRest{
    "TYM-JPEG-0018",
    Severity::Remark,
    "The side file ends inside a block's record",
    "Each record has 8 bytes. What is left behind the last whole one is not read.",
    kMakeIndex,
};
constexpr CheckRule kBlockCount{
    "TYM-JPEG-0019",
    Severity::Error,
    "The index has not one block for each band",
    "There is a band for each 8 rows of the picture or a part of them. Rows whose band isn't in "
    "the "
    "index can't be read.",
    kMakeIndex,
};
constexpr CheckRule kBlockSize{
    "TYM-JPEG-0020",
    Severity::Error,
    "A block ends before it starts",
    "The index has the file positions of a block's first and last byte. The last stands before the "
    "first, or so far behind it that the block's size can't be told.",
    kMakeIndex,
};
constexpr CheckRule kBlockOutside{
    "TYM-JPEG-0021",
    Severity::Error,
    "A block is outside the file",
    "The block's last byte is beyond the end of the picture's file.",
    "Get another copy of the file if it was cut short; else make the side file anew with "
    "\"tympan index\".",
};
constexpr CheckRule kBlockOrder{
    "TYM-JPEG-0022",
    Severity::Error,
    "A block does not stand behind the one before",
    "The bands stand in the file in the order of the picture's rows, and no two share a byte.",
    kMakeIndex,
};
constexpr CheckRule kBlockInHead{
    "TYM-JPEG-0023",
    Severity::Error,
    "A block begins inside the head",
    "The bands stand behind the head of the file.",
    kMakeIndex,
};

constexpr const CheckRule* kRules[] = {
    &kNoJpeg,           &kNoJfif,         &kHeadDamaged, &kNotBaseline, &kSegmentMissing,
    &kSegmentElsewhere, &kFurtherSegment, &kTables,      &kFrameValues, &kSubsampled,
    &kTableNumbers,     &kScanForm,       &kRestarts,    &kNoSideFile,  &kSideCutShort,
    &kSideUnits,        &kSideNoSize,     &kSideRest,    &kBlockCount,  &kBlockSize,
    &kBlockOutside,     &kBlockOrder,     &kBlockInHead,
};

constexpr std::uint64_t kMarkerBytes = 2;
constexpr unsigned int kNotSubsampled = 0x11;
constexpr unsigned int kAcClass = 1;

std::string Hex(unsigned int byte)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return { kDigits[byte >> 4U & 0xFU], kDigits[byte & 0xFU] };
}

// ---- the head

// Where reading finds the segments: the record itself, asked for it.
class FoundSegments : public JpegPictureParameters {
  public:
    explicit FoundSegments(CFile& file)
    {
        static constexpr FailureRow kNoFrame[] = { { Caught::Anything, 0, nullptr } };
        isWhole_ = Guarded(NoTrace(), kNoFrame, [&] { Load(file); });
    }
    /// Whether it looked for all of them.
    bool IsWhole() const { return isWhole_; }
    using JpegPictureParameters::HuffmanAcOffset;
    using JpegPictureParameters::HuffmanDcOffset;
    using JpegPictureParameters::ImageParamsOffset;
    using JpegPictureParameters::QuantizationOffset;

  private:
    bool isWhole_ = false;
};

class HeadCheck {
  public:
    HeadCheck(const JpegHead& head, Findings& findings) : head_(head), findings_(findings) {}

    void CheckPlaces(const FoundSegments& found)
    {
        CheckPlace("segment of quantization tables", head_.quantization[0],
                   found.QuantizationOffset());
        CheckPlace("frame header", head_.frame, found.ImageParamsOffset());
        if (!found.IsWhole())
            return;
        CheckPlace("segment of Huffman tables for DC", head_.huffman[0], found.HuffmanDcOffset());
        CheckPlace("segment of Huffman tables for AC", head_.huffman[1], found.HuffmanAcOffset());
    }

    // The numbers of tables can't be told where there are further segments of them.
    void CheckTables()
    {
        const auto counted = [&](const HeadSegment& segment, const auto& tables, unsigned int kind,
                                 const HeadSegment& further) {
            const std::size_t count = TablesOf(segment, tables, kind);
            return further.IsThere() ? 0 : count;
        };
        const HeadSegment& furtherQuantization = head_.quantization.back();
        const HeadSegment& furtherHuffman = head_.huffman.back();
        TellFurther(furtherQuantization);
        TellFurther(furtherHuffman);
        quantizationTables_ =
            counted(head_.quantization[0], QuantizationTables(head_.quantization[0]), 0,
                    furtherQuantization);
        dcTables_ = counted(head_.huffman[0], HuffmanTables(head_.huffman[0]), 0, furtherHuffman);
        acTables_ =
            counted(head_.huffman[1], HuffmanTables(head_.huffman[1]), kAcClass, furtherHuffman);
    }

    void CheckFrame()
    {
        const std::vector<HeadComponent> components = head_.FrameComponents();
        const std::size_t count = components.size();
        const bool isCounted = count == 1 || count == 3 || count == 4;
        bool isExpected = isCounted && head_.frame.Byte(0) == 8 && Height() != 0 && Width() != 0;
        std::string identifiers;
        for (std::size_t i = 0; i < std::min<std::size_t>(count, 4); ++i) {
            isExpected = isExpected && components[i].identifier == i + 1;
            identifiers += ' ' + std::to_string(components[i].identifier);
        }
        if (!isExpected)
            findings_.Tell(kFrameValues, PlaceOf(head_.frame), [&] {
                return "The frame header tells samples of " + CountOf(head_.frame.Byte(0), "bit") +
                       ", " + CountOf(Height(), "row") + " of " + CountOf(Width(), "pixel") +
                       ", and " + CountOf(count, "component") + " with the identifiers" +
                       identifiers + ".";
            });
        if (isCounted)
            CheckComponents(components);
    }

    void CheckScan()
    {
        const std::vector<HeadComponent> frame = head_.FrameComponents();
        const std::vector<HeadComponent> scan = head_.ScanComponents();
        const std::size_t behind = 1 + 2 * scan.size();
        const bool isWhole = std::equal(frame.begin(), frame.end(), scan.begin(), scan.end(),
                                        [](const HeadComponent& one, const HeadComponent& other) {
                                            return one.identifier == other.identifier;
                                        }) &&
                             head_.scan.Word(behind) == kAllCoefficients &&
                             head_.scan.Byte(behind + 2) == 0;
        if (!isWhole)
            findings_.Tell(kScanForm, PlaceOf(head_.scan), [&] {
                return "The scan has " + CountOf(scan.size(), "component") + "; all " +
                       std::to_string(frame.size()) +
                       " of the frame header were expected, with all coefficients.";
            });
        const bool hasTables = dcTables_ != 0 && acTables_ != 0;
        for (std::size_t i = 0; i < scan.size() && isWhole && hasTables; ++i)
            CheckNumbers(i, "Huffman tables", head_.scan, scan[i].tables,
                         Expected(dcTables_, i) << 4U | Expected(acTables_, i));
    }

    void CheckRestarts()
    {
        const unsigned int wanted = (Width() + kBlockSide - 1) / kBlockSide;
        if (Height() > kRowsOfBlock && head_.RestartInterval() != wanted)
            findings_.Tell(kRestarts, PlaceOf(head_.scan), [&] {
                return "The restart interval is " + std::to_string(head_.RestartInterval()) +
                       "; with " + CountOf(Width(), "pixel") + " in a row " +
                       std::to_string(wanted) + " was expected.";
            });
    }

    unsigned int Height() const { return head_.frame.Word(1); }

  private:
    static constexpr unsigned int kAllCoefficients = 63; // from 0 to 63, as two bytes
    static constexpr unsigned int kBlockSide = 8;        // pixels

    unsigned int Width() const { return head_.frame.Word(3); }
    static Place PlaceOf(const HeadSegment& segment)
    {
        return { {}, segment.offset - kMarkerBytes };
    }

    void CheckPlace(const std::string& name, const HeadSegment& segment, std::uint64_t found)
    {
        if (!segment.IsThere())
            findings_.Tell(kSegmentMissing, { {}, head_.end },
                           [&] { return "The head has no " + name + "."; });
        else if (segment.offset != found)
            findings_.Tell(kSegmentElsewhere, PlaceOf(segment), [&] {
                return "The " + name + " stands here, and reading finds " +
                       (found == 0 ? "none." : "one at byte " + std::to_string(found - 2) + ".");
            });
    }

    void TellFurther(const HeadSegment& segment)
    {
        if (segment.IsThere())
            findings_.Tell(kFurtherSegment, PlaceOf(segment),
                           [] { return "A further segment of tables stands here."; });
    }

    // How many tables the segment has, when they are 0, or 0 and 1, of that class; else 0.
    std::size_t TablesOf(const HeadSegment& segment,
                         const std::optional<std::vector<unsigned int>>& tables, unsigned int kind)
    {
        if (!segment.IsThere())
            return 0;
        const unsigned int first = kind << 4U;
        if (tables &&
            (*tables == std::vector{ first } || *tables == std::vector{ first, first + 1 }))
            return tables->size();
        findings_.Tell(kTables, PlaceOf(segment), [&] {
            std::string list;
            for (std::size_t i = 0; tables && i < std::min<std::size_t>(tables->size(), 8); ++i)
                list += ' ' + Hex((*tables)[i]);
            const std::string expected = Hex(first) + ", or " + Hex(first) + ' ' + Hex(first + 1);
            return (tables ? "The tables are" + list : "The tables don't add up to the segment") +
                   "; " + expected + " were expected, class and number of each.";
        });
        return 0;
    }

    static unsigned int Expected(std::size_t tables, std::size_t component)
    {
        return component != 0 && tables > 1 ? 1 : 0;
    }

    void CheckComponents(const std::vector<HeadComponent>& components)
    {
        for (std::size_t i = 0; i < components.size() && quantizationTables_ != 0; ++i)
            CheckNumbers(i, "quantization table", head_.frame, components[i].tables,
                         Expected(quantizationTables_, i));
        const auto odd = std::find_if(components.begin(), components.end(), [](const auto& one) {
            return one.sampling != kNotSubsampled;
        });
        if (odd != components.end())
            findings_.Tell(kSubsampled, PlaceOf(head_.frame), [&] {
                return "Component " + std::to_string(odd - components.begin() + 1) + " has " +
                       std::to_string(odd->sampling >> 4U) + " by " +
                       std::to_string(odd->sampling & 0xFU) + " samples; 1 by 1 were expected.";
            });
    }

    void CheckNumbers(std::size_t component, const char* name, const HeadSegment& segment,
                      unsigned int numbers, unsigned int expected)
    {
        if (numbers != expected)
            findings_.Tell(kTableNumbers, PlaceOf(segment), [&] {
                return "Component " + std::to_string(component + 1) + " uses " + name + ' ' +
                       Hex(numbers) + "; " + Hex(expected) + " was expected.";
            });
    }

    const JpegHead& head_;
    Findings& findings_;
    // How many there are; 0 when that can't be told, which has been.
    std::size_t quantizationTables_ = 0, dcTables_ = 0, acTables_ = 0;
};

// The rows of the picture; 0 when the head doesn't tell.
std::uint64_t CheckHead(CFile& file, const JpegHead& head, Findings& findings)
{
    if (!head.isJfif)
        findings.Tell(kNoJfif, { {}, kJfifLetters },
                      [] { return "Other bytes than \"JFIF\" stand here."; });
    if (!head.IsWhole())
        findings.Tell(kHeadDamaged, { {}, head.end },
                      [] { return "No segment that the file holds whole begins here."; });
    const bool isBaseline = head.frameMarker == marker::kBaselineFrame;
    if (head.frame.IsThere() && !isBaseline) {
        findings.Tell(kNotBaseline, { {}, head.frame.offset - kMarkerBytes }, [&] {
            return "The frame header has the marker FF " + Hex(head.frameMarker) +
                   "; FF C0 was expected.";
        });
        return 0;
    }
    if (!head.IsWhole())
        return 0;
    HeadCheck check(head, findings);
    check.CheckPlaces(FoundSegments(file));
    check.CheckTables();
    if (!head.frame.IsThere())
        return 0;
    check.CheckFrame();
    check.CheckScan();
    check.CheckRestarts();
    return check.Height();
}

// ---- the index

class IndexCheck {
  public:
    IndexCheck(CFile& sideFile, Findings& findings)
        : length_(sideFile.GetLength()), file_(sideFile, kBlockBytes), findings_(findings)
    {}

    void CheckFront()
    {
        SideHeadBytes bytes{};
        file_.Read(bytes.data(), static_cast<UINT>(bytes.size()));
        if (length_ < kSideMcuNumber) {
            findings_.Tell(kSideCutShort, {}, [&] {
                return "The side file has " + CountOf(length_, "byte") + "; its head needs " +
                       std::to_string(kSideMcuNumber) + ".";
            });
            return;
        }
        const unsigned int code = bytes[kSideUnitsCode];
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

void CheckIndex(CFile& file, const JpegHead& head, std::uint64_t rows, Findings& findings)
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

// A JPEG of another kind is told what it differs in.
bool Accepts(CFile& file, const CString&)
{
    const JpegHead head = ReadJpegHead(file);
    return head.begins && (head.isJfif || head.frame.IsThere());
}

void Prove(CFile& file, Findings& findings)
{
    const JpegHead head = ReadJpegHead(file);
    if (!head.begins) {
        findings.Tell(kNoJpeg, { {}, 0 }, [] { return "The bytes FF D8 were expected here."; });
        return;
    }
    const std::uint64_t rows = CheckHead(file, head, findings);
    CheckIndex(file, head, rows, findings);
}

} // namespace

FormatCheck JpegFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
