// Turning pictures into CT, LW and JPEG files: what `tympan import` does, and what it hands to the
// writer of a format.
#pragma once

#include "output_file.h"
#include "picture_source.h"

#include <memory>
#include <optional>
#include <string>

namespace tympan::tool {

/// What to import, and how.
struct ImportOptions {
    std::string picture;              ///< a JPEG, PNG or TIFF file
    std::string output;               ///< its ending tells the format
    std::string profile;              ///< of the CMYK output; empty for the system's
    std::optional<double> resolution; ///< pixels per inch, in place of the picture's own
    std::optional<int> quality;       ///< of a JPEG file, 1 to 100
};

/// Writes the output, a JPEG's side file too, and reads it back before it gets its name.
/// \throws UsageFailure for options that contradict each other; FileFailure.
void ImportPicture(const ImportOptions& options);

struct ImportJob {
    std::string picture;                   ///< its path
    std::string profile;                   ///< of the CMYK output; empty for the system's
    std::optional<int> quality;            ///< of a JPEG file, 1 to 100, when it was asked for
    PixelsPerInch resolution{};            ///< what the file is to say
    std::unique_ptr<PictureSource> source; ///< open, at its first row
    const OutputFile* side = nullptr;      ///< of a JPEG's index

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
