// What a tool or a modern client needs beyond the interface of the picture objects.
#pragma once

#include "core/picture_object.h"
#include "platform/export.h"
#include "platform/text.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tympan {

/// The names of the formats that the library reads, such as "CT", in the order in which a path is
/// asked for them. The texts last as long as the library is loaded.
TYMPAN_API std::vector<std::string_view> FormatNames();

/// A picture object on an existing file, and the name of its format.
struct OpenedPicture {
    std::unique_ptr<BasePictureIF> picture; ///< null when no format recognises the file
    std::string_view format;                ///< empty when there is no object
    bool isOpen = false;                    ///< whether the object took the file
};

/// Opens a file as input. The formats' tests look at little, so that an object may refuse a file
/// that its format recognised: then the later formats are asked, and the first whose object opens
/// is taken. When the header names by its type a format that was asked before, as damaged line work
/// does that passes for a CT, that format's object is given, which refuses it. If none opens, the
/// first object that refused is given, for its codes and texts.
/// \throws CFileException* when the file can't be opened at all.
TYMPAN_API OpenedPicture OpenAnyPicture(const CString& path);

/// Opens a file as input with an object of the named format, whatever the file looks like.
/// \return without an object when there is no format of that name.
TYMPAN_API OpenedPicture OpenPictureAs(const CString& path, std::string_view format);

} // namespace tympan
