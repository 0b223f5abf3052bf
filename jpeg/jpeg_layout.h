// The markers of a JPEG stream, and where reading looks for them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tympan {

inline constexpr unsigned char kMarkerPrefix = 0xFF;

/// File position at which the scan of a head for markers ends.
inline constexpr std::uint32_t kJpegScanEnd = 328;

/// Where the letters of a JFIF file stand.
inline constexpr std::size_t kJfifLetters = 6;

inline constexpr std::uint32_t kRowsOfBlock = 8;

/// Second bytes of markers.
namespace marker {

inline constexpr unsigned char kBaselineFrame = 0xC0;
inline constexpr unsigned char kHuffman = 0xC4;
inline constexpr unsigned char kLastFrame = 0xCF;  // with kBaselineFrame: the kinds of frames
inline constexpr unsigned char kExtension = 0xC8;  // among the kinds of frames, and none
inline constexpr unsigned char kArithmetic = 0xCC; // the same
inline constexpr unsigned char kFirstRestart = 0xD0;
inline constexpr unsigned char kLastRestart = 0xD7;
inline constexpr unsigned char kStart = 0xD8;
inline constexpr unsigned char kEnd = 0xD9;
inline constexpr unsigned char kScan = 0xDA;
inline constexpr unsigned char kQuantization = 0xDB;
inline constexpr unsigned char kRestartInterval = 0xDD;

} // namespace marker

} // namespace tympan
