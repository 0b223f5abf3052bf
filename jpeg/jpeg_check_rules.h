// What the check of a JPEG can find wrong, with its head and with its index.
#pragma once

#include "core/check_rule.h"

namespace tympan::jpeg_rule {

inline constexpr char kAnotherCopy[] =
    "Get another copy of the file; this one is damaged or was cut short.";
inline constexpr char kImport[] = "Make a JPEG of the right form from it with \"tympan import\".";
inline constexpr char kMakeIndex[] = "Make the side file anew with \"tympan index\".";

inline constexpr CheckRule kNoJpeg{
    "TYM-JPEG-0001",
    Severity::Error,
    "The file does not begin as a JPEG",
    "A JPEG begins with the bytes FF D8. Nothing else can be checked.",
    "See whether the file is a JPEG at all.",
};
inline constexpr CheckRule kNoJfif{
    "TYM-JPEG-0002",
    Severity::Error,
    "The file has not the letters JFIF",
    "A JPEG is recognised by the letters JFIF at byte 6. Without them no program that asks for the "
    "kind of the file takes it for a JPEG.",
    kImport,
};
inline constexpr CheckRule kHeadDamaged{
    "TYM-JPEG-0003",
    Severity::Error,
    "The head is damaged or cut short",
    "The head is a chain of segments up to the one that begins the picture's data. Here the next "
    "segment doesn't begin, or doesn't fit the file.",
    kAnotherCopy,
};
inline constexpr CheckRule kNotBaseline{
    "TYM-JPEG-0004",
    Severity::Error,
    "The picture is not baseline",
    "The frame header is that of another kind of JPEG, a progressive one for instance. Such a "
    "picture is not opened.",
    kImport,
};
inline constexpr CheckRule kSegmentMissing{
    "TYM-JPEG-0005",
    Severity::Error,
    "A segment of the head is missing",
    "The head needs a segment of quantization tables, a frame header, and two segments of Huffman "
    "tables, one for DC and one for AC.",
    kImport,
};
inline constexpr CheckRule kSegmentElsewhere{
    "TYM-JPEG-0006",
    Severity::Error,
    "A segment of the head is not where it is looked for",
    "Quantization tables, frame header, Huffman tables for DC and those for AC are looked for in "
    "this order, each behind the one before, in the first 328 bytes. This one is not found there, "
    "or other bytes are taken for it.",
    kImport,
};
inline constexpr CheckRule kFurtherSegment{
    "TYM-JPEG-0007",
    Severity::Error,
    "There are more segments of tables than are read",
    "One segment of quantization tables and two of Huffman tables are read. The tables in further "
    "ones are not handed out, so that the picture can't be decoded.",
    kImport,
};
inline constexpr CheckRule kTables{
    "TYM-JPEG-0008",
    Severity::Error,
    "A segment has other tables than are expected",
    "Tables 0, and tables 1 where there are two, of 8 bits; the first Huffman segment holds those "
    "for DC, the second those for AC. Others are taken for these when they are handed out.",
    kImport,
};
inline constexpr CheckRule kFrameValues{
    "TYM-JPEG-0009",
    Severity::Error,
    "The frame header has values that are not expected",
    "Samples have 8 bits, height and width are at least 1, and there are 1, 3 or 4 components, "
    "whose identifiers count from 1.",
    kImport,
};
inline constexpr CheckRule kSubsampled{
    "TYM-JPEG-0010",
    Severity::Error,
    "Components are sampled differently",
    "A band is 8 rows of all components. With fewer samples of one of them the data comes in "
    "larger pieces that can't be told apart.",
    kImport,
};
inline constexpr CheckRule kTableNumbers{
    "TYM-JPEG-0011",
    Severity::Error,
    "A component uses other tables than are expected",
    "The first component uses tables 0, all others tables 1 where there are two, else tables 0.",
    kImport,
};
inline constexpr CheckRule kScanForm{
    "TYM-JPEG-0012",
    Severity::Error,
    "The data is not one scan of all components",
    "The components of a band stand together, in the order of the frame header.",
    kImport,
};
inline constexpr CheckRule kRestarts{
    "TYM-JPEG-0013",
    Severity::Error,
    "Bands do not end at restart markers",
    "Bands can be decoded one by one when a restart marker stands behind each of them, so that the "
    "restart interval is the number of blocks of 8 pixels in a row.",
    kImport,
};
inline constexpr CheckRule kNoSideFile{
    "TYM-JPEG-0014",
    Severity::Error,
    "There is no side file",
    "The places of the bands stand in a file beside the picture, of its name with the extension "
    "\".bin\". Without it the picture is not opened.",
    "Make the side file with \"tympan index\".",
};
inline constexpr CheckRule kSideCutShort{
    "TYM-JPEG-0015",
    Severity::Error,
    "The side file ends inside its head",
    "The picture's size in units stands in the first 29 bytes of the side file. A side file of 0 "
    "bytes is left when the index couldn't be written.",
    kMakeIndex,
};
inline constexpr CheckRule kSideUnits{
    "TYM-JPEG-0016",
    Severity::Remark,
    "Unknown code of units in the side file",
    "The code of the units is 1 for inches and 0 for millimetres. Any other code is taken as "
    "millimetres.",
    "See whether the picture's size is what it should be; if not, make the side file anew.",
};
inline constexpr CheckRule kSideNoSize{
    "TYM-JPEG-0017",
    Severity::Remark,
    "A size in units is not a number above 0",
    "The picture has no resolution, so that its size on paper isn't known. Its bands can be read.",
    "Make the side file anew with the picture's true size.",
};
inline constexpr CheckRule kSideRest{
    "TYM-JPEG-0018",
    Severity::Remark,
    "The side file ends inside a block's record",
    "Each record has 8 bytes. What is left behind the last whole one is not read.",
    kMakeIndex,
};
inline constexpr CheckRule kBlockCount{
    "TYM-JPEG-0019",
    Severity::Error,
    "The index has not one block for each band",
    "There is a band for each 8 rows of the picture or a part of them. Rows whose band isn't in "
    "the "
    "index can't be read.",
    kMakeIndex,
};
inline constexpr CheckRule kBlockSize{
    "TYM-JPEG-0020",
    Severity::Error,
    "A block ends before it starts",
    "The index has the file positions of a block's first and last byte. The last stands before the "
    "first, or so far behind it that the block's size can't be told.",
    kMakeIndex,
};
inline constexpr CheckRule kBlockOutside{
    "TYM-JPEG-0021",
    Severity::Error,
    "A block is outside the file",
    "The block's last byte is beyond the end of the picture's file.",
    "Get another copy of the file if it was cut short; else make the side file anew with "
    "\"tympan index\".",
};
inline constexpr CheckRule kBlockOrder{
    "TYM-JPEG-0022",
    Severity::Error,
    "A block does not stand behind the one before",
    "The bands stand in the file in the order of the picture's rows, and no two share a byte.",
    kMakeIndex,
};
inline constexpr CheckRule kBlockInHead{
    "TYM-JPEG-0023",
    Severity::Error,
    "A block begins inside the head",
    "The bands stand behind the head of the file.",
    kMakeIndex,
};

} // namespace tympan::jpeg_rule
