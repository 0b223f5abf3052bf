// Prints, for the tables of the format guides, what the code knows of them: a line for each row,
// the table's name and the first cells of the row, with tabs between them. The last of these cells
// is what the guide knows its row by; the cells behind it are the guide's own words.
#include "core/header_layout.h"
#include "jpeg/jpeg_layout.h"
#include "jpeg/side_file.h"
#include "lw/lw_layout.h"
#include "page/page_layout.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_kind.h"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tympan;

std::string_view NameOf(FieldForm form)
{
    switch (form) {
    case FieldForm::Unread: break;
    case FieldForm::Byte: return "byte";
    case FieldForm::Text: return "text";
    case FieldForm::FloatText: return "floating text";
    case FieldForm::WholeText: return "whole-number text";
    case FieldForm::Number: return "number";
    }
    return "";
}

void PrintRow(std::string_view table, const std::vector<std::string>& cells)
{
    std::cout << table;
    for (const std::string& cell : cells)
        std::cout << '\t' << cell;
    std::cout << '\n';
}

void PrintField(std::string_view table, const HeaderPlace& place)
{
    PrintRow(table, { std::to_string(place.offset), std::to_string(place.width),
                      std::string(NameOf(place.form)), std::string(place.name) });
}

template <typename Places>
void PrintFields(std::string_view table, const Places& places)
{
    for (const HeaderPlace& place : places)
        PrintField(table, place);
}

HeaderPlace Unread(std::size_t offset, std::size_t end)
{
    return { offset, end - offset, FieldForm::Unread, "not read" };
}

void PrintLineWork()
{
    PrintField("lw-header", kLwName);
    PrintFields("lw-header", kHeaderFields);
    PrintField("lw-header", kLwColoursNumber);
    PrintField("lw-colour", kLwColourNumber);
    PrintField("lw-colour", kLwColourFlags);
    PrintFields("lw-colour", kLwColourInks);
    PrintField("lw-colour", kLwColourReserved);
}

void PrintPage()
{
    constexpr HeaderPlace kCommon{ kHeaderUnitsCode.offset, kHeaderEnd - kHeaderUnitsCode.offset,
                                   FieldForm::Unread, "units, plates and sizes" };
    PrintFields("page-header", std::vector{ kHeaderNlwMark, kHeaderFileType, kCommon, kPageCount,
                                            Unread(kPageCount.End(), kFirstPageEntry) });
    PrintFields("page-entry", std::vector{ kEntryType, kEntryUnread, kEntryPath });
    PrintFields("page-entry", kEntryNumbers);
    PrintFields("page-entry", std::vector{ kEntryContainer, kEntryColours });
    const auto printType = [](PlacementType type, const char* name) {
        PrintRow("page-type", { std::to_string(static_cast<int>(type)), name });
    };
    printType(PlacementType::picture, "picture");
    printType(PlacementType::ctWindow, "CT window");
    printType(PlacementType::lineWork, "LW picture");
}

void PrintMarker(unsigned char marker, const char* segment)
{
    std::ostringstream bytes;
    bytes << std::hex << std::uppercase << int{ kMarkerPrefix } << ' ' << int{ marker };
    PrintRow("jpeg-marker", { bytes.str(), segment });
}

void PrintJpeg()
{
    PrintMarker(marker::kQuantization, "quantization tables");
    PrintMarker(marker::kBaselineFrame, "baseline frame header");
    PrintMarker(marker::kHuffman, "Huffman tables, the first such segment");
    PrintMarker(marker::kHuffman, "Huffman tables, the second");
    PrintFields("jpeg-side", std::vector{ kSideUnitsCode, kSideHeight, kSideWidth, kSideMcuNumber,
                                          Unread(kSideHeadEnd, kSideBlocks) });
    const auto printPosition = [](std::size_t offset, const char* name) {
        PrintRow("jpeg-side",
                 { std::to_string(kSideBlocks + offset) + " + " +
                       std::to_string(sizeof(CompressedLine)) + "n",
                   std::to_string(sizeof(CompressedLine::StartOffset)), "number", name });
    };
    printPosition(offsetof(CompressedLine, StartOffset), "start of block n");
    printPosition(offsetof(CompressedLine, EndOffset), "end of block n");
}

void PrintTiffKinds()
{
    constexpr std::uint16_t kMostBits = 32, kMostSamples = 16, kMostPhotometric = 64;
    for (std::uint16_t bits = 0; bits <= kMostBits; ++bits)
        for (std::uint16_t samples = 0; samples <= kMostSamples; ++samples)
            for (std::uint16_t photometric = 0; photometric <= kMostPhotometric; ++photometric)
                if (const ColorSetType kind = KindOf(bits, samples, photometric);
                    kind != NoColorSet)
                    PrintRow("tiff-kind", { std::to_string(static_cast<int>(kind)),
                                            std::to_string(bits) + ", " + std::to_string(samples) +
                                                ", " + std::to_string(photometric) });
}

void PrintTiffIt()
{
    PrintFields("tiffit-header", std::vector{ kTiffByteOrder, kTiffVersionPlace, kTiffFirstIfd });
    const auto printTag = [](std::uint16_t number, const char* name) {
        PrintRow("tiffit-tag", { std::to_string(number), name });
    };
    printTag(tag::kImageWidth, "ImageWidth");
    printTag(tag::kImageLength, "ImageLength");
    printTag(tag::kBitsPerSample, "BitsPerSample");
    printTag(tag::kStripOffsets, "StripOffsets");
    printTag(tag::kRowsPerStrip, "RowsPerStrip");
    printTag(tag::kStripByteCounts, "StripByteCounts");
    printTag(tag::kColorTable, "ColorTable");
    PrintFields("tiffit-colour", std::vector{ kColourId, kColourFlags, kColourValues });
}

} // namespace

int main()
{
    PrintFields("ct-header", kHeaderFields);
    PrintLineWork();
    PrintJpeg();
    PrintPage();
    PrintTiffKinds();
    PrintTiffIt();
}
