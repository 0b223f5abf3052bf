// What stands at a path that entries of a page name, as the check of pages sees it.
#pragma once

#include "page/placement.h"
#include "platform/text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tympan {

struct PlacedFile {
    enum class State { missing, unrecognised, page, picture };

    State state = State::missing;
    std::string_view format;
    bool isLineWork = false;
    std::uint64_t errors = 0; // that the format's own check finds
    std::string firstError;   // a sentence
    bool isOpen = false;
    std::optional<SizeInInches> size;
    std::optional<unsigned int> colours; // of an LW picture
};

/// Finds the format that the file most certainly is of, has it prove the file, and opens it. The work
/// is linear in the file's size.
/// \throws std::bad_alloc.
PlacedFile LookAtPlaced(const CString& path);

} // namespace tympan
