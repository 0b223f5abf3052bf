// The two parts of the check of a JPEG.
#pragma once

#include <cstdint>

class CFile;

namespace tympan {

class Findings;
struct JpegHead;

/// Holds the head against the form in which it can be read and its bands be decoded one by one.
/// \return the rows of the picture; 0 when the head doesn't tell.
std::uint64_t CheckJpegHead(CFile& file, const JpegHead& head, Findings& findings);

/// Holds the index against the stream. The side file is gone through block by block, so that memory is
/// constant whatever it holds.
/// \param rows of the picture; 0 when they aren't known
void CheckJpegIndex(CFile& file, const JpegHead& head, std::uint64_t rows, Findings& findings);

} // namespace tympan
