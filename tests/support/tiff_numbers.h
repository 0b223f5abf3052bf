// TIFF's numbers by short names, for tables of test cases. libtiff's header can't stand beside that
// of the platform: each declares a `tiff`.
#pragma once

#include <cstdint>

namespace tympan::test {

enum Packing : std::uint16_t {
    kUncompressed = 1,
    kFaxG3 = 3,
    kFaxG4 = 4,
    kLzw = 5,
    kJpeg = 7,
    kDeflate = 8,
    kPackBits = 32773,
    kJbig = 34661
};
enum Photometric : std::uint16_t {
    kWhiteIsZero,
    kBlackIsZero,
    kRgb,
    kPalette,
    kSeparated = 5,
    kYCbCr,
    kLab = 8
};
enum ExtraSample : int { kNoExtra = -1, kUnknownExtra, kMultipliedAlpha, kAlpha };

} // namespace tympan::test
