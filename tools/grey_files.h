// The picture files that one separation is written to, and the raw one, behind one interface.
#pragma once

#include "output_file.h"
#include "row_writer.h"

#include <memory>
#include <string_view>

namespace tympan::tool {

/// The endings that `MakeGreyFile` takes.
std::span<const std::string_view> GreyEndings();

/// A file of one byte a pixel, 255 white, of the kind that the ending names: .pgm, .png, .tif,
/// .tiff, or .raw, the rows and nothing else.
/// \throws FileFailure when the file can't be begun.
std::unique_ptr<RowWriter> MakeGreyFile(std::string_view ending, const OutputFile& output,
                                        const WrittenForm& form);

} // namespace tympan::tool
