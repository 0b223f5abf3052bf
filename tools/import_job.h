// What `tympan import` hands to the writer of a format.
#pragma once

#include "output_file.h"
#include "picture_source.h"

#include <memory>
#include <optional>
#include <string>

namespace tympan::tool {

struct ImportJob {
    std::string picture;                   ///< its path
    std::string profile;                   ///< of the CMYK output; empty for the system's
    std::optional<int> quality;            ///< of a JPEG file, 1 to 100, when it was asked for
    PixelsPerInch resolution{};            ///< what the file is to say
    std::unique_ptr<PictureSource> source; ///< open, at its first row

    const SourceForm& Form() const { return source->Form(); }
};

/// \name Writers
/// They write the picture under the output's writing path and give the number of separations.
/// \throws FileFailure
/// @{
unsigned int WriteCt(ImportJob& job, const OutputFile& output);
unsigned int WriteLw(ImportJob& job, const OutputFile& output);
unsigned int WriteJpeg(ImportJob& job, const OutputFile& output);
/// @}

} // namespace tympan::tool
