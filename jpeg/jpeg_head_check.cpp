// Holds the head of a JPEG against the form in which it can be read and its bands be decoded one by one.
#include "core/failure_guard.h"
#include "core/findings.h"
#include "jpeg/jpeg_check_parts.h"
#include "jpeg/jpeg_check_rules.h"
#include "jpeg/jpeg_head.h"
#include "jpeg/jpeg_layout.h"
#include "jpeg/jpeg_parameters.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tympan {

using namespace jpeg_rule;

namespace {

constexpr std::uint64_t kMarkerBytes = 2;
constexpr unsigned int kNotSubsampled = 0x11;
constexpr unsigned int kAcClass = 1;

std::string Hex(unsigned int byte)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return { kDigits[byte >> 4U & 0xFU], kDigits[byte & 0xFU] };
}

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

} // namespace

std::uint64_t CheckJpegHead(CFile& file, const JpegHead& head, Findings& findings)
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

} // namespace tympan
