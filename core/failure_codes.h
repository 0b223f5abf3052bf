// The codes that operations leave in `TraceStatus`: 0 until a failure, the last code after one.
#pragma once

namespace tympan::code {

inline constexpr unsigned long kFileFailed = 90001;     // opening failed, or a file operation
inline constexpr unsigned long kLwUnexpected = 90020;   // anything else while LW rows were read
inline constexpr unsigned long kLwRowDelimiter = 90024; // an LW row's delimiter has the wrong form
inline constexpr unsigned long kLwCorrupted = 90025;    // an LW file contradicts itself
inline constexpr unsigned long kLwValidityRead =
    90026;                                            // short read in the whole-file validity check
inline constexpr unsigned long kCtUnexpected = 90030; // anything else in a CT row or display
inline constexpr unsigned long kCtRowRange = 90032;   // last row not above the first
inline constexpr unsigned long kCtBufferTooSmall = 90033; // rows do not fit the buffer
inline constexpr unsigned long kCtCorrupted = 90034;      // a CT file contradicts itself
inline constexpr unsigned long kJpegUnexpected = 90040;   // anything else in a JPEG opening
inline constexpr unsigned long kJpegHeadRefused = 90043;  // the JPEG record refuses its file
inline constexpr unsigned long kTiffFailed = 90050;       // a TIFF failure
inline constexpr unsigned long kTiffNotOpened = 90051;   // the TIFF library could not open the file
inline constexpr unsigned long kTiffItShortRead = 90052; // a read came up short
inline constexpr unsigned long kTiffItNeitherKind = 90053; // neither CT nor LW
inline constexpr unsigned long kTiffItVersion = 90056;     // the version isn't 42
inline constexpr unsigned long kTiffItOddOffset = 90057;   // the first IFD's offset is odd
inline constexpr unsigned long kTiffItFieldType = 90058;   // unknown field type
inline constexpr unsigned long kBlockOutsideIndex = 90062; // a block number outside the JPEG index
inline constexpr unsigned long kIllegalSize = 90063; // a buffer of an illegal size was asked for
inline constexpr unsigned long kCtRequestRefused = 90064; // resolution, buffer or state
inline constexpr unsigned long kPageEntryRefused = 90065; // an entry of a page file is wrong
inline constexpr unsigned long kHeaderRefused = 90066;    // the common header is refused

} // namespace tympan::code
