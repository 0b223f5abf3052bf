// Where a client enters the library: from a path to a picture object.
#pragma once

#include "core/picture_object.h"
#include "platform/export.h"
#include "platform/text.h"

/// A new object of the format that recognises the file, not opened yet; the caller calls
/// `OpenPictureFile` on it and destroys it. Blanks at the end of the name are cut for the opening.
///
/// The formats are asked in a fixed order, each by a short look at the file. Some look at very
/// little, so that an object may refuse its file when it is opened.
/// \return null when the file can't be opened, memory ran out, or no format recognises the file.
TYMPAN_API BasePictureIF* create_picture_object(const CString& fileName);
