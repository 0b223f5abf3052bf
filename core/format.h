// A format as the factory knows it: a row of the list that `formats.cpp` holds.
#pragma once

#include "core/picture_object.h"

#include <memory>
#include <span>
#include <string_view>

namespace tympan {

struct Format {
    /// As people know it, such as "CT".
    std::string_view name;
    /// Whether a file looks like one of the format's. Seeks and reads, and changes nothing else.
    /// The name is the one that the client gave.
    bool (*recognises)(CFile& file, const CString& fileName);
    /// A new object of the format, not opened.
    std::unique_ptr<BasePictureIF> (*make)();
};

/// The formats in the order in which a path is asked for them.
std::span<const Format> Formats();

} // namespace tympan
