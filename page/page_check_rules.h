// The rules of page files.
#pragma once

#include "core/check_rule.h"

namespace tympan::page_rule {

inline constexpr CheckRule kCount{
    "TYM-PAGE-0001",
    Severity::Error,
    "The number of entries is not a whole number from 0 to 65535",
    "Reading takes the number at the start of the text, 0 when there is none, and keeps 16 bits of "
    "it: pictures may be missing from the page.",
    "Write the file anew from its source.",
};
inline constexpr CheckRule kEntriesMissing{
    "TYM-PAGE-0002",
    Severity::Error,
    "The file ends before its entries do",
    "The page counts more entries than the file has room for. No program can open the file.",
    "Get another copy of the file; this one was cut short, or counts wrong.",
};
inline constexpr CheckRule kUnknownType{
    "TYM-PAGE-0003",
    Severity::Error,
    "An entry of unknown type",
    "An entry is a picture (1), a CT window (2) or an LW picture (5). Shapes are of other types, "
    "and a "
    "page with one isn't opened.",
    "Take the entry out of the page where it was made, and write the file anew.",
};
inline constexpr CheckRule kEntryCutShort{
    "TYM-PAGE-0004",
    Severity::Error,
    "The file ends inside an entry",
    "Fields of the last entry are missing. No program can open the file.",
    "Get another copy of the file; this one was cut short.",
};
inline constexpr CheckRule kNumber{
    "TYM-PAGE-0005",
    Severity::Error,
    "A number of an entry is none",
    "Offsets, sizes and angle of an entry are text, a number each. One that isn't there reads as "
    "0.",
    "Write the file anew from its source.",
};
inline constexpr CheckRule kNumberForm{
    "TYM-PAGE-0006",
    Severity::Remark,
    "A number of an entry has other bytes beside it",
    "Reading takes the number at the start of the text and leaves the rest. Other programs may "
    "refuse "
    "it.",
    "See whether the picture stands where it should; if not, write the file anew.",
};
inline constexpr CheckRule kNoSize{
    "TYM-PAGE-0007",
    Severity::Error,
    "An entry expects a size that is not above 0",
    "The height and the width that the picture is to have on the page are numbers above 0.",
    "Write the file anew with the size of the picture.",
};
inline constexpr CheckRule kNoPath{
    "TYM-PAGE-0008",
    Severity::Error,
    "An entry without a path",
    "The entry names no picture. A page with one isn't opened.",
    "Write the file anew from its source.",
};
inline constexpr CheckRule kNotFound{
    "TYM-PAGE-0009",
    Severity::Error,
    "A placed picture can't be opened or read",
    "A page is opened only when all its pictures are found. Paths are often those of another "
    "machine.",
    "Put the picture beside the page, or say where it is: see --root and --map of the command.",
};
inline constexpr CheckRule kNotRecognised{
    "TYM-PAGE-0010",
    Severity::Error,
    "A placed file is of no known format",
    "The file is there, but no format recognises it. A page with one isn't opened.",
    "See whether the path leads to the picture that was meant.",
};
inline constexpr CheckRule kUnsound{
    "TYM-PAGE-0011",
    Severity::Error,
    "A placed picture is not sound",
    "The check of the picture's own format finds errors in it, or it isn't opened.",
    "Check the picture's file by itself, and do as is told there.",
};
inline constexpr CheckRule kPlacedPage{
    "TYM-PAGE-0012",
    Severity::Remark,
    "A page is placed on the page",
    "The placed page is recognised, but it is no picture with rows, and its own entries aren't "
    "looked "
    "at.",
    "Check the placed page by itself.",
};
inline constexpr CheckRule kSizeDiffers{
    "TYM-PAGE-0013",
    Severity::Remark,
    "A placed picture has another size than the page expects",
    "Pixels over resolution, in inches, differ from the size in the entry by more than a hundredth "
    "of "
    "it and of an inch. The picture is scaled to the entry's size.",
    "See whether the picture was changed since it was placed.",
};
inline constexpr CheckRule kBeyondEdge{
    "TYM-PAGE-0014",
    Severity::Remark,
    "A placed picture reaches beyond the page",
    "The box around the turned picture passes an edge of the page by more than a hundredth of an "
    "inch. "
    "What lies beyond isn't seen. Offsets are taken as inches from the page's left and upper edge.",
    "See whether the picture was meant to be cut off there.",
};
inline constexpr CheckRule kContainer{
    "TYM-PAGE-0015",
    Severity::Error,
    "The container of a CT window is no LW picture in front of it",
    "A CT window names the entry whose LW picture it shows through. That entry isn't in the list, "
    "stands behind the window, or has another picture.",
    "Write the file anew, the LW picture in front of its windows.",
};
inline constexpr CheckRule kColour{
    "TYM-PAGE-0016",
    Severity::Error,
    "A colour of a CT window is not in its container's table",
    "A CT window shows through colours of its container, by their numbers from 1. Numbers beyond "
    "the "
    "table are passed over.",
    "See whether the LW picture was changed since the window was made.",
};
inline constexpr CheckRule kColours{
    "TYM-PAGE-0017",
    Severity::Error,
    "A CT window lists more colours than an entry holds",
    "An entry holds 31 colours and a zero byte behind them. What is listed beyond is dropped.",
    "Write the file anew with fewer colours for the window.",
};

inline constexpr const CheckRule* kAll[] = {
    &kCount,       &kEntriesMissing, &kUnknownType, &kEntryCutShort, &kNumber,  &kNumberForm,
    &kNoSize,      &kNoPath,         &kNotFound,    &kNotRecognised, &kUnsound, &kPlacedPage,
    &kSizeDiffers, &kBeyondEdge,     &kContainer,   &kColour,        &kColours,
};

} // namespace tympan::page_rule
