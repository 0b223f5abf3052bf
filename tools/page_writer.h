// Writing page files: the page's size and the pictures that stand on it.
#pragma once

#include "output_file.h"
#include "page_paths.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <span>

namespace tympan::tool {

/// What the header of a page says.
struct PageForm {
    SizeInInches size;         ///< becomes that of the nearest whole numbers of pixels
    double resolution = 300.0; ///< pixels per inch
};

/// Writes a page file of four separations under the output's writing path, reads it back and checks
/// it: every picture must be found from there, by its path on the page, and be sound. Remarks of the
/// check are told, but for sizes that aren't the pictures' own.
/// \param paths those by which the page will be read
/// \throws UsageFailure for what a page or an entry can't hold; FileFailure when the file can't be
///   written or isn't read back as it should be.
void WritePage(const OutputFile& output, const PageForm& form,
               std::span<const Placement> placements, const PathOptions& paths = {});

} // namespace tympan::tool
