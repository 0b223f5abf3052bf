// The images of a report: a picture small and large, and its separations.
#pragma once

#include "picture.h"
#include "report_folder.h"
#include "standard_output.h"

#include <string>

namespace tympan::tool {

/// Makes the images of a picture, read in bands: the whole of it under `thumb` and `shown`, and, of a
/// picture with rows, under `plates` each separation in grey, 255 for no ink, with its name and the
/// process ink in which it may be shown.
/// \throws FileFailure for a picture that can't be read; none of its images stays then.
void AddImages(const Picture& picture, ReportFolder& folder, Json& entry);

/// The same of a picture in a PNG file, without separations.
void AddImagesOf(const std::string& png, ReportFolder& folder, Json& entry);

} // namespace tympan::tool
