// TIFF/IT P1 files of both kinds, made of the plates of a picture and of the runs of line work. They
// have one strip, and their numbers have the high byte first.
#pragma once

#include "output_file.h"
#include "picture.h"

namespace tympan::tool {

/// Writes a TIFF/IT file under the output's writing path, row by row.
/// \param picture one whose separations are inks
/// \throws FileFailure when it can't be read, and for a file that would pass 4 GiB.
void WriteTiffItCt(const Picture& picture, const OutputFile& output);

/// The same for line work. Its transparent colours become paper.
/// \throws FileFailure as above, and for a picture that is no line work.
void WriteTiffItLw(const Picture& picture, const OutputFile& output);

} // namespace tympan::tool
